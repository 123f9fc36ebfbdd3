#include "meridian/lut/published_lut.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "meridian/lut/bit_depth.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class PublishedLutFiles : public testing::Test {
 protected:
  Expected<PublishedLut, LutError> read(const std::string& name, std::string_view text) {
    return readPublishedLut(Url::fromFilePath(directory_.write(name, text)));
  }

  test::TemporaryDirectory directory_;
};

const LutCubeStage& cubeOf(const PublishedLut& lut) { return std::get<LutCubeStage>(lut.stages.back()); }

TEST_F(PublishedLutFiles, CubeFilesHaveRedFastestOnTheirDomain) {
  // Rows name their own place: red, green, blue.
  const std::string rows = "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n";
  for (const std::string header : {"LUT_3D_SIZE 2\n", "\xef\xbb\xbf# 1D\nTITLE \"1D\"\nlut_3d_size   2\n",
                                   "LUT_3D_SIZE 2\nDOMAIN_MIN 0 0 0\n\nDOMAIN_MAX\t1 1 1\n"}) {
    const auto lut = read("look.cube", header + rows);
    ASSERT_TRUE(lut) << lut.error().message();
    EXPECT_EQ(lut->format, LutFormat::cube);
    EXPECT_THAT(lut->warnings, IsEmpty());
    EXPECT_EQ(applied(*lut, {0.25, 0.5, 1}), (LutColor{0.25, 0.5, 1}));
    EXPECT_EQ((*cubeOf(*lut).points)[1], (LutColor{0, 0, 1}));  // blue runs fastest in the stage
  }
  // Line ends, blanks and comments are those of any program; the last newline may be missing.
  const auto untidy =
      read("look", "LUT_3D_SIZE 2\r0 0 0\r\n  1\t 0  0 \n\n# 0 1 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1e0 +1 1.");
  ASSERT_TRUE(untidy) << untidy.error().message();
  EXPECT_EQ(applied(*untidy, {0.25, 0.5, 1}), (LutColor{0.25, 0.5, 1}));

  const auto wide = read("wide.cube", "DOMAIN_MAX 2 4 1\nDOMAIN_MIN -2 0 0\nLUT_3D_SIZE 2\n" + rows);
  ASSERT_TRUE(wide);
  EXPECT_EQ(applied(*wide, {0, 1, 0.5}), (LutColor{0.5, 0.25, 0.5}));
  EXPECT_EQ(applied(*wide, {-9, 9, std::nan("")}), (LutColor{0, 1, 0}));
}

TEST_F(PublishedLutFiles, NewlinesMayBeAnywhereInAFile) {
  // Rows of many lengths, so that newlines are at the ends of the pieces in which a file is read, and a long comment.
  std::vector<std::string> lines{"LUT_1D_SIZE 60000", "#" + std::string(400'000, ' '),
                                 "#" + std::string(2'000'000, 'x')};
  std::vector<LutColor> rows;
  for (int i = 0; i < 60000; ++i) {
    rows.push_back({i + 0.25, 0, i % 7 * 0.5});
    lines.push_back(std::to_string(i) + ".25" + std::string(static_cast<std::size_t>(1 + i % 13), ' ') + "0e0\t" +
                    std::to_string(i % 7 * 0.5));
  }
  for (const std::string newline : {"\n", "\r\n", "\r", "\n\n"}) {
    std::string text;
    for (const std::string& line : lines) text += line + newline;
    const auto lut = read("long.cube", text);
    ASSERT_TRUE(lut) << lut.error().message();
    EXPECT_EQ(*std::get<LutCurve>(lut->stages.front()).rows, rows);
    const auto damaged = read("long.cube", text + "0 0");
    EXPECT_EQ(damaged.error().detail, newline == "\n\n" ? "line 120007: 0 0" : "line 60004: 0 0");
  }
}

TEST_F(PublishedLutFiles, CurvesAreLinearBetweenAnyNumberOfRows) {
  const auto curve = read("curve.cube", "LUT_1D_SIZE 3\n0 0 1\n0.6 -1 0.5\n1 4 0\n");
  ASSERT_TRUE(curve) << curve.error().message();
  EXPECT_EQ(applied(*curve, {0.25, 0.5, 0.75}), (LutColor{0.3, -1, 0.25}));
  EXPECT_EQ(applied(*curve, {-1, 2, 1}), (LutColor{0, 4, 0}));
}

TEST_F(PublishedLutFiles, CurveAndCubeAreAppliedOneAfterTheOther) {
  // The curve halves 0 to 2 into 0 to 1, which the cube covers from 0.5 on.
  const auto both =
      read("both.cube",
           "LUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE 0 2\nLUT_3D_SIZE 2\nLUT_3D_INPUT_RANGE 0.5 1\n0 0 0\n1 1 1\n"
           "0 0 0\n10 0 0\n0 20 0\n10 20 0\n0 0 40\n10 0 40\n0 20 40\n10 20 40\n");
  ASSERT_TRUE(both) << both.error().message();
  ASSERT_EQ(both->stages.size(), 2U);
  EXPECT_EQ(applied(*both, {1, 1.5, 2}), (LutColor{0, 10, 40}));
}

TEST_F(PublishedLutFiles, ThreeDlFilesHaveBlueFastestAndADepth) {
  struct Case {
    std::string text;
    double unit;
  };
  const auto rows = [](int white) {
    const std::string one = std::to_string(white);
    return "0 0 0\n0 0 " + one + "\n0 " + one + " 0\n0 " + one + ' ' + one + '\n' + one + "  0   0\n" + one + " 0 " +
           one + '\n' + one + ' ' + one + " 0\n" + one + ' ' + one + ' ' + one + '\n';
  };
  for (const Case& each : {Case{rows(511), 255},
                           {rows(512), 1023},
                           {rows(2048), 4095},
                           {rows(8192), 65535},
                           {"3DMESH\nMesh 0 12\n" + rows(1000), 4095},
                           {"Mesh 0 14\n" + rows(16383), 16383},
                           {"#\n0 341 682 1023\n" + rows(255), 255}}) {
    const auto lut = read("look.3dl", each.text);
    ASSERT_TRUE(lut) << lut.error().message() << each.text;
    EXPECT_EQ(lut->format, LutFormat::threeDl);
    EXPECT_EQ(lut->stages.size(), 1U) << "a straight shaper adds no stage";
    const double white = (*cubeOf(*lut).points)[7].red;
    EXPECT_DOUBLE_EQ(std::round(white * each.unit), white * each.unit) << each.text;
    EXPECT_EQ((*cubeOf(*lut).points)[1], (LutColor{0, 0, white})) << each.text;
  }
  for (const auto& [mesh, white, unit, code] : {std::tuple{10, 65535, 65535.0, LutWarningCode::depthExceeded},
                                                {12, 1023, 4095.0, LutWarningCode::depthUnused}}) {
    const auto lut = read("look.3dl", "Mesh 0 " + std::to_string(mesh) + '\n' + rows(white));
    ASSERT_TRUE(lut);
    EXPECT_DOUBLE_EQ(applied(*lut, {1, 1, 1}).red, white / unit);
    ASSERT_EQ(lut->warnings.size(), 1U);
    EXPECT_EQ(lut->warnings.front().code, code);
  }

  const auto shaped = read("shaped.3dl", "0 100 400 1023\n" + rows(1023));
  ASSERT_TRUE(shaped);
  ASSERT_EQ(shaped->stages.size(), 2U);
  EXPECT_DOUBLE_EQ(applied(*shaped, {1.0 / 3, 0, 0}).red, 100 / 1023.0);
}

TEST_F(PublishedLutFiles, WarningsSayWhatTheValuesMayMean) {
  using Code = LutWarningCode;
  struct Case {
    std::string rows;
    std::vector<Code> codes;
  };
  const std::string both = "LUT_3D_SIZE 2\n";
  const std::string ten = "0 0 0\n1 1 1\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n";
  const std::string domain = "DOMAIN_MAX 2 2 2\n";
  const std::vector<Case> cases{{"0 0 0\n1 1 1\n", {}},
                                {domain + "LUT_1D_INPUT_RANGE 0 2\n0 0 0\n1 1 1\n", {}},
                                {domain + "LUT_1D_INPUT_RANGE 0 1\n0 0 0\n1 1 1\n", {Code::domainPartlyApplied}},
                                {both + domain + ten, {Code::domainPartlyApplied}},
                                {both + domain + "LUT_3D_INPUT_RANGE 0 2\n" + ten, {}},
                                {both + "DOMAIN_MAX 1 1 1\n" + ten, {}},
                                {"0 0 0\n126 0 0\n", {}},
                                {"0 0 0\n255 255 255\n", {Code::wholeNumbers}},
                                {"0 0 0.5\n255 255 255\n", {}},
                                {"-0.25 0 0\n1 1 1\n", {Code::negativeResults}},
                                {"0 0 -1\n1023 1 1\n", {Code::wholeNumbers, Code::negativeResults}}};
  for (const auto& [rows, codes] : cases) {
    const auto lut = read("look.cube", "LUT_1D_SIZE 2\n" + rows);
    ASSERT_TRUE(lut);
    std::vector<Code> found;
    for (const LutWarning& warning : lut->warnings) {
      found.push_back(warning.code);
      EXPECT_EQ(warning.place, lut->path);
      EXPECT_FALSE(warning.detail.empty());
    }
    EXPECT_EQ(found, codes) << rows;
  }
}

TEST_F(PublishedLutFiles, CodeValuesAreRoundedToTheNearestOfAnyDepth) {
  const auto lut = read("look.cube", "LUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE 0 2\n0 -1 0\n1 1 9\n");
  ASSERT_TRUE(lut);
  using Codes = std::array<std::uint64_t, 3>;
  EXPECT_EQ(appliedToCodeValues(*lut, {255, 255, 255}, 8, 8), (Codes{128, 0, 255}));
  EXPECT_EQ(appliedToCodeValues(*lut, {1, 1, 1}, 1, 32), (Codes{0x80000000, 0, 0xFFFFFFFF}));
  EXPECT_EQ(appliedToCodeValues(*lut, {0, 0, std::uint64_t{1} << 62}, 63, 63), (Codes{0, 0, largestCodeValue(63)}));
  for (const std::uint64_t code : {0U, 1U, 300U, 1022U, 1023U}) {
    const auto expected = ImageLut::forCodeValues(*lut, 10, 12)
                              ->pixel(static_cast<std::uint16_t>(code), 0, static_cast<std::uint16_t>(1023 - code));
    const Codes actual = appliedToCodeValues(*lut, {code, 0, 1023 - code}, 10, 12);
    EXPECT_TRUE(std::ranges::equal(actual, expected)) << code;
  }
  EXPECT_DEATH(static_cast<void>(appliedToCodeValues(*lut, {}, 8, 64)), "1 to 63");
  EXPECT_DEATH(static_cast<void>(applied(LutStage(LutFunction{}), {})), "function is empty");
}

TEST_F(PublishedLutFiles, DescriptionsAreOfTheLastTableAndTheDomainOfTheFirst) {
  const auto lut =
      read("both.cube",
           "LUT_1D_SIZE 3\nLUT_1D_INPUT_RANGE -1 2\nLUT_3D_SIZE 2\n0 0 0\n5 5 5\n9 9 9\n0 0 0\n1 0 0\n0 1 0\n"
           "1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 -0.5\n");
  ASSERT_TRUE(lut) << lut.error().message();
  EXPECT_EQ(describe(*lut), (LutDescription{.dimensions = LutDimensions::cube,
                                            .size = 2,
                                            .lowValue = -0.5,
                                            .highValue = 1,
                                            .declaredDomain = {{-1, -1, -1}, {2, 2, 2}, true}}));
}

TEST_F(PublishedLutFiles, DamagedFilesSayWhatIsWrongWhere) {
  using Code = LutErrorCode;
  struct Case {
    std::string text;
    Code code;
    std::string detail{};
    std::string name = "look.cube";
  };
  const std::string two = "0 0 0\n1 1 1\n";
  const std::vector<Case> cases{
      {"LUT_1D_SIZE 3\n" + two, Code::truncated, "2 of 3 rows"},
      {"LUT_3D_SIZE 256\n" + two, Code::truncated, "2 of 16777216 rows"},
      {"LUT_1D_SIZE 2\nLUT_3D_SIZE 2\n" + two, Code::truncated, "2 of 10 rows"},
      {"LUT_1D_SIZE 2\n" + two + "2 2 2\n", Code::surplusRows, "line 4: 2 2 2"},
      {"LUT_3D_SIZE 100000\n" + two, Code::unsupportedSize, "line 1: LUT_3D_SIZE 100000"},
      {"LUT_3D_SIZE 1\n0 0 0\n", Code::unsupportedSize},
      {"LUT_1D_SIZE 1\n0 0 0\n", Code::unsupportedSize},
      {"LUT_1D_SIZE 65537\n", Code::unsupportedSize},
      {"LUT_1D_SIZE -2\n", Code::unsupportedSize},
      {"LUT_1D_SIZE 99999999999999999999\n", Code::malformedLine},
      {"LUT_1D_SIZE\n" + two, Code::malformedLine},
      {"LUT_1D_SIZE 2\nLUT_1D_SIZE 2\n" + two, Code::malformedLine, "line 2"},
      {"LUT_1D_SIZE 2\n0 0 0\n0 nan 0\n", Code::malformedLine, "line 3: 0 nan 0"},
      {"LUT_1D_SIZE 2\nnan 0 0\n0 0 0\n", Code::malformedLine, "line 2"},
      {"LUT_1D_SIZE 3\n0 0 0\n0.1", Code::truncated, "1 of 3 rows"},
      {"LUT_1D_SIZE 2\n" + two + "0.1", Code::malformedLine, "line 4"},
      {"LUT_1D_SIZE 2\n0 0 0\ninf 0 0\n", Code::malformedLine},
      {"LUT_1D_SIZE 2\n0 0 0\n0 1e999 0\n", Code::malformedLine},
      {"LUT_1D_SIZE 2\n0 0 0\n0 0\n", Code::malformedLine},
      {"LUT_1D_SIZE 2\n0 0 0\n0 0 0 0\n", Code::malformedLine},
      {"LUT_1D_SIZE 2\n0 0 0\n0,5 0,5 0,5\n", Code::malformedLine},
      {"LUT_1D_SIZE 2\n0 0 0\nDOMAIN_MIN 0 0 0\n1 1 1\n", Code::malformedLine},
      {"LUT_1D_SIZE 2\n" + std::string(1'000'001, '0') + " 0 0\n1 1 1\n", Code::malformedLine, "..."},
      {"LUT_1D_SIZE 2\nDOMAIN_MIN 0 0\n" + two, Code::malformedLine},
      {"LUT_1D_SIZE 2\nDOMAIN_MAX 1 0 1\n" + two, Code::invalidDomain},
      {"LUT_1D_SIZE 2\nDOMAIN_MIN 2 0 0\n" + two, Code::invalidDomain},
      {"LUT_1D_SIZE 2\nDOMAIN_MIN -1e308 0 0\nDOMAIN_MAX 1e308 1 1\n" + two, Code::invalidDomain},
      {"LUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE 1 1\n" + two, Code::invalidDomain, "line 2"},
      {"LUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE 0 1\nLUT_1D_INPUT_RANGE 0 2\n" + two, Code::malformedLine, "line 3"},
      {"LUT_1D_SIZE 2\nDOMAIN_MAX 1 1 1\nDOMAIN_MAX 2 2 2\n" + two, Code::malformedLine, "line 3"},
      {"Mesh 4 12\n0 0 4095\n0 0 0\n", Code::truncated, "2 of 4913 rows"},
      {"Mesh 4 12\n0 0 4095\n65", Code::truncated, "1 of 4913 rows"},
      {"0 300 700 1023\n0 0 4095\n0 0", Code::truncated, "1 of 64 rows", "look.3dl"},
      {"0 300 700 1023\n0 0 4095\n0 0 0\n", Code::truncated, "2 of 64 rows", "look.3dl"},
      {"0 0 4095\n0 0 0\n", Code::unknownCubeSize, "2 rows read", "look.3dl"},
      {"Mesh 40 12\n", Code::unsupportedSize},
      {"Mesh 4 32\n", Code::malformedLine},
      {"0 300 700 1023\n0 0 4095\n0 300 700 1023\n", Code::malformedLine, "line 3", "look.3dl"},
      {"0 0 4095\n0 0 0.5\n", Code::malformedLine, "line 2", "look.3dl"},
      {"0 0 1\n0 0 0\n0 0 1\n0 0 1\n0 0 1\n0 0 1\n0 0 1\n0 0 1\n", Code::implausibleValues, "", "look.3dl"},
  };
  for (const Case& each : cases) {
    const auto lut = read(each.name, each.text);
    ASSERT_FALSE(lut) << each.text.substr(0, 80);
    EXPECT_EQ(rawValue(lut.error().code), rawValue(each.code)) << each.text.substr(0, 80);
    EXPECT_THAT(lut.error().detail, HasSubstr(each.detail));
    EXPECT_LT(lut.error().detail.size(), 100U);
  }
  const auto missing = readPublishedLut(Url::fromFilePath(directory_.path().string() + "/missing.cube"));
  EXPECT_EQ(missing.error().code, Code::notOpened);
  EXPECT_TRUE(missing.error().systemError);
  ASSERT_EQ(mkfifo((directory_.path() / "fifo.cube").c_str(), 0600), 0);
  const auto fifo = readPublishedLut(Url::fromFilePath((directory_.path() / "fifo.cube").string()));
  EXPECT_EQ(fifo.error().code, Code::notRegularFile);
}

TEST_F(PublishedLutFiles, FilesThatReferToOtherFilesAreErrors) {
  ASSERT_EQ(mkfifo((directory_.path() / "fifo.cube").c_str(), 0600), 0);
  const std::string fifo = (directory_.path() / "fifo.cube").string();
  const std::string padding(100'000, ' ');
  struct Case {
    std::string root;
    std::string content;
    std::string name;
  };
  for (const Case& each : std::vector<Case>{
           {"<ProcessList id=\"a\">", "<Reference path=\"" + fifo + "\"/>", fifo},
           {"<ProcessList compCLFversion=\"3\">", "<Reference path=\"look.cube\"></Reference>", "look.cube"},
           {"<ProcessList id=\"a\">", padding + "<x><a:REFERENCE PATH='/dev/zero'/></x>", "/dev/zero"},
           {"<ProcessList id=\"a\">", "<Reference alias=\"a\"/>", ""},
           {"<!DOCTYPE a [<!ENTITY b '<Reference path=\"c\"/>'>]>\n<ProcessList id=\"a\">", "&b;", "c"}}) {
    const auto lut = read("look.ctf", each.root + each.content + "</ProcessList>");
    ASSERT_FALSE(lut);
    EXPECT_EQ(rawValue(lut.error().code), rawValue(LutErrorCode::refersToOtherFile)) << each.content;
    EXPECT_EQ(lut.error().detail, each.name);
    EXPECT_FALSE(isOfOtherFormat(lut.error()));
  }
  const auto own = read("look.ctf", "<ProcessList id=\"a\"><!-- <Reference/> --><Referenced/></ProcessList>");
  EXPECT_TRUE(isOfOtherFormat(own.error()));
  const auto large = read("look.ctf", "<ProcessList id=\"" + std::string(20'000'000, 'a') + "\"><Reference/>");
  EXPECT_EQ(rawValue(large.error().code), rawValue(LutErrorCode::notReadByLibrary));
}

TEST_F(PublishedLutFiles, UnknownLinesAreWarnedOf) {
  const auto lut = read("look.cube", "LUT_1D_SIZE 2\nLUT_IN_VIDEO_RANGE\n0 0 0\n1 1 1\nthe end\n");
  ASSERT_TRUE(lut) << lut.error().message();
  ASSERT_EQ(lut->warnings.size(), 1U);
  EXPECT_EQ(lut->warnings.front().code, LutWarningCode::ignoredLines);
  EXPECT_EQ(lut->warnings.front().detail, "line 2: LUT_IN_VIDEO_RANGE and 1 more");
}

TEST_F(PublishedLutFiles, FormatsAreKnownByTheirContents) {
  struct Case {
    std::string name;
    std::string text;
    std::optional<LutFormat> format;
  };
  const std::vector<Case> cases{
      {"a.txt", "# 3D\nDOMAIN_MIN 0 0 0\nLUT_3D_SIZE 2\n", LutFormat::cube},
      {"a.itx", "LUT_3D_SIZE 2\n", LutFormat::itx},
      {"a.lut", "0 341 682 1023\n\n0 0 0\n", LutFormat::threeDl},
      {"a.3dl", "0 0 0\n0 0 1\n", LutFormat::threeDl},
      {"a.txt", "3DMESH\n", LutFormat::threeDl},
      {"a.csp", "CSPLUTV100\n3D\n", LutFormat::cinespace},
      {"a.spi1d", "Version 1\nFrom 0.0 1.0\n", LutFormat::spi1d},
      {"a.spi3d", "SPILUT 1.0\n3 3\n2 2 2\n0 0 0 0 0 0\n", LutFormat::spi3d},
      {"a.spimtx", "1 0 0 0\n0 1 0 0\n0 0 1 0\n", LutFormat::spimtx},
      {"a.lut", "Version\t\t3\nFormat\t\tany\n", LutFormat::houdini},
      {"a.lut", "#\nLUT: 3 1024\n", std::nullopt},
      {"a.lut", "LUT: 3 1024\n", LutFormat::discreet},
      {"a.m3d", "# made\nchannel 3d\nin 4096\n", LutFormat::pandora},
      {"a.vf", "#Inventor V2.1 ascii\ngrid_size 2 2 2\n", LutFormat::nukeField},
      {"a.cub", "# Truelight Cube v2.0\n", LutFormat::truelight},
      {"a.xml", "<?xml version=\"1.0\"?>\n<!-- --><ProcessList id=\"1\"\n compCLFversion=\"3.0\">\n", LutFormat::clf},
      {"a.clf", "<ProcessList id=\"1\" version=\"1.7\"><X compCLFversion=\"3\"/>", LutFormat::ctf},
      {"a.xml", "<html>\n", std::nullopt},
      {"a.cube", "0 0 0\nLUT_3D_SIZE 2\n", std::nullopt},
      {"a.cube", "my LUT_3D_SIZE 2\n0 0 0\n", std::nullopt},
      {"a.3dl", "0.5 0.5 0.5\n", std::nullopt},
      {"a.txt", "1 0 0 0\n0 1 0 0\n0 0 1 0\n", std::nullopt},
      {"a.cube", std::string("\0\1\2", 3), std::nullopt},
      {"a.cube", "", std::nullopt},
  };
  for (const Case& each : cases) {
    const std::string path = directory_.write(each.name, each.text);
    const auto format = publishedLutFormat(Url::fromFilePath(path));
    ASSERT_EQ(format.has_value(), each.format.has_value()) << each.name << ": " << each.text;
    if (!format) {
      EXPECT_EQ(format.error().code, LutErrorCode::noPublishedFormat);
      continue;
    }
    EXPECT_EQ(rawValue(*format), rawValue(*each.format));
    if (*format == LutFormat::cube || *format == LutFormat::threeDl) continue;
    const auto lut = readPublishedLut(Url::fromFilePath(path));
    EXPECT_TRUE(!lut && isOfOtherFormat(lut.error()));
    EXPECT_EQ(lut.error().detail, description(*format));
  }
}

TEST(LutStages, MatricesAndRangesAreWhatTheySay) {
  const LutMatrix matrix{{{{1, 2, 3}, {0, 1, 0}, {-1, 0, 0.5}}}, {0.5, 0, 1}};
  EXPECT_EQ(applied(matrix, {1, 2, 4}), (LutColor{17.5, 2, 2}));
  const LutRange range{.scale = {2, 1, 1}, .offset = {-1, 0, 0.5}, .lowest = {-2, 0, 0}, .highest = {9, 1, 0.75}};
  EXPECT_EQ(applied(range, {0.25, 3, 1}), (LutColor{-0.5, 1, 0.75}));
  EXPECT_EQ(applied(range, {-9, -9, -9}), (LutColor{-2, 0, 0}));
  EXPECT_EQ(applied(PublishedLut{.stages = {matrix, range}}, {1, 2, 4}), (LutColor{9, 1, 0.75}));
  EXPECT_EQ(applied(PublishedLut{}, {1, -2, 4}), (LutColor{1, -2, 4}));
}

TEST(LutStages, WarningsAreOfTheResultsOfAllStages) {
  const auto rows = [](double lowest) {
    return LutCurve{std::make_shared<const std::vector<LutColor>>(std::vector<LutColor>{{0, lowest, 0}, {1, 1, 1}})};
  };
  const LutMatrix negative{{{{1, 0, 0}, {0, 1, 0}, {-0.25, 0, 1}}}, {0, 0, 0}};
  const LutRange clamps{.lowest = {0, 0, 0}};
  const LutFunction function{[](std::span<float>, std::span<float>, std::span<float>) {}};
  using Code = LutWarningCode;
  struct Case {
    std::vector<LutStage> stages;
    std::vector<std::pair<Code, std::string>> warnings;
  };
  for (const Case& each : std::vector<Case>{{{negative}, {{Code::negativeResults, "down to -0.25"}}},
                                            {{negative, clamps}, {}},
                                            {{LutRange{.offset = {0, -1e-9, 0}}}, {}},
                                            {{rows(-0.5)}, {{Code::negativeResults, "down to -0.5"}}},
                                            {{rows(-0.5), clamps}, {}},
                                            {{rows(-0.5), rows(0)}, {}},
                                            {{LutRange{.offset = {0, -1, 0}}}, {{Code::negativeResults, "down to -1"}}},
                                            {{rows(-0.5), function}, {}},
                                            {{rows(std::nan(""))}, {{Code::nanValues, "1 value"}}}}) {
    PublishedLut lut{.stages = each.stages};
    warnOfResults(lut);
    std::vector<std::pair<Code, std::string>> found;
    for (const LutWarning& warning : lut.warnings) found.emplace_back(warning.code, warning.detail);
    EXPECT_EQ(found, each.warnings);
  }
}

TEST(LutStagesDeathTest, UnusableStagesTerminateTheProcess) {
  const auto colors = std::make_shared<const std::vector<LutColor>>(9);
  EXPECT_DEATH(static_cast<void>(applied(LutCurve{}, {})), "needs rows");
  EXPECT_DEATH(static_cast<void>(applied(LutCubeStage{2, colors}, {})), "as many colours");
  EXPECT_DEATH(static_cast<void>(applied(LutCubeStage{std::numeric_limits<std::int64_t>::max(), colors}, {})),
               "as many colours");
}

}  // namespace
}  // namespace meridian
