#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tests/support/process.h"
#include "tests/tools/lut_command_files.h"

namespace meridian {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test::contentsOf;
using test::lut;
using test::LutCommand;
using test::Outcome;
using test::Words;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST_F(LutCommand, InfoShowsEachKind) {
  const std::string integers = writeCube("code\xff values\n.cube", [](int red, int green, int blue) {
    return std::to_string(red * 511) + " " + std::to_string(green * 511) + " " + std::to_string(blue * 511);
  });
  const Outcome outcome = lut({"info", "--json", identityCube(), integers, table()});
  EXPECT_EQ(outcome.status, 0);
  json documents = json::parse(outcome.output);
  for (json& document : documents) {
    for (json& warning : document["warnings"]) {
      EXPECT_THAT(warning["message"].get<std::string>(), HasSubstr("; "));  // a remedy
      warning = warning["reading"].get<std::string>() + ' ' + warning["warning"].get<std::string>();
    }
  }
  const json stage{
      {"stage", "cube of 3 points per axis"}, {"domainMinimum", {0.0, 0.0, 0.0}}, {"domainMaximum", {1.0, 1.0, 1.0}}};
  const json expected[]{
      {{"file", path("identity.cube")},
       {"class", "ParsedThreeDimensionalFloatingPointFile"},
       {"dimensions", "cube"},
       {"markup", "txt"},
       {"rows", 27},
       {"faceSize", 3},
       {"lowValue", 0.0},
       {"highValue", 1.0},
       {"format", "cube"},
       {"stages", {stage}},
       {"warnings", {"suite otherAxisOrder"}}},
      {{"file", path("code\xef\xbf\xbd values\n.cube")},
       {"class", "ParsedThreeDimensionalIntegerFile"},
       {"dimensions", "cube"},
       {"markup", "txt"},
       {"rows", 27},
       {"faceSize", 3},
       {"bitDepth", 10},
       {"lowValue", 0.0},
       {"highValue", 1022.0},
       {"format", "cube"},
       {"stages", {stage}},
       {"warnings", {"suite highestBelowFullScale", "suite otherAxisOrder", "published wholeNumbers"}}},
      {{"file", path("table.lut")},
       {"class", "ParsedOneDimensionLutFile"},
       {"dimensions", "oneD"},
       {"markup", "txt"},
       {"rows", 256},
       {"lutBitDepth", 8},
       {"lowValue", 0.0},
       {"highValue", 255.0},
       {"warnings", {"published noPublishedFormat"}}}};
  EXPECT_EQ(documents, json(expected));
  EXPECT_THAT(outcome.errors, HasSubstr("code\\xff values\\n.cube\" is not valid UTF-8"));
  EXPECT_THAT(lut({"info", integers}).output, AllOf(HasSubstr("code\\xff values\\n.cube\n"), HasSubstr("bitDepth")));
  const std::string wide = write("wide.cube", "LUT_3D_SIZE 1\nDOMAIN_MAX 4 4 4\n0 0 1\n");
  EXPECT_THAT(lut({"info", wide}).output,
              AllOf(HasSubstr("domainMaximum  4.0 4.0 4.0\n"), HasSubstr("the suite's reading: is a cube of one point"),
                    HasSubstr("error          the published reading: declares a size")));
  const std::string two = write("two.cube", "LUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE -1 3\n0 0 0\n1 1 1\n");
  EXPECT_THAT(lut({"info", two}).output,
              AllOf(HasSubstr("error   the suite's reading: is a 1D LUT of fewer than 256 rows"),
                    HasSubstr("stage   curve of 2 rows, inputs -1.0 -1.0 -1.0 to 3.0 3.0 3.0\n")));
}

TEST_F(LutCommand, InfoSaysWhyAFileIsNotALutAndShowsTheOthers) {
  const std::string fifo = path("fifo.cube");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
#ifdef MERIDIAN_HAS_LUT_FORMATS
  const std::string spi3dError = "notReadByLibrary";
#else
  const std::string spi3dError = "otherPublishedFormat";
#endif
  const struct {
    std::string file, error, says;
  } cases[]{{write("a.cube", "no numbers"), "noRows", "no row of three numbers"},
            {write("b.cube", "<a/>"), "xmlDocument", "XML document"},
            {path("\x1b[2J.cube"), "notOpened", "\\x1b[2J.cube\": cannot be opened: No such file or directory; check"},
            {write("c.lut", "1 2 3\n4 5 6\n"), "tooFewRows", "fewer than 256 rows: 2 rows read; export it"},
            {write("d.spi3d", "SPILUT 1.0\n3 3\n2 2 2\n0 0 0\n0 0 1\n"), spi3dError, "Imageworks 3D LUT (.spi3d)"},
            {fifo, "notRegularFile", "is not a regular file: a FIFO; name the file that holds the LUT"}};
  for (const auto& [file, error, says] : cases) {
    const Outcome outcome = lut({"info", file, table(), "--json"});
    EXPECT_EQ(outcome.status, 1) << says;
    const json documents = json::parse(outcome.output);
    ASSERT_EQ(documents.size(), 2U);
    EXPECT_EQ(documents[0]["error"], error);
    EXPECT_EQ(documents[1]["rows"], 256);
    // Once only: the library's own log message is suppressed.
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    EXPECT_THAT(outcome.errors, HasSubstr(says));
    EXPECT_THAT(lut({"info", file, table()}).output, AllOf(HasSubstr("ParsedOneDimension"), Not(HasSubstr("error"))));
  }
}

TEST_F(LutCommand, SamplePrintsWhatTheConverterReturns) {
  const std::vector<RGBSample> samples{{0, 1, 2}, {1023, 512, 511}, {100, 700, 1023}};
  for (const std::string& file : {identityCube(), inverseCube(), table()}) {
    const auto parsed = ParsedLutFactory::parsed(Url::fromFilePath(file));
    ASSERT_TRUE(parsed);
    for (const std::int64_t outputDepth : {8, 10, 16}) {
      Words words{"sample", file, "--depth", "10", "--out-depth", std::to_string(outputDepth)};
      json expected;
      for (const auto& [red, green, blue] : samples) {
        for (const std::uint64_t value : {red, green, blue}) words.push_back(std::to_string(value));
        const RGBSample result = parsed->inputConverter().convert(red, green, blue, 10, outputDepth);
        expected.push_back({result.red, result.green, result.blue});
      }
      EXPECT_EQ(json::parse(lut(words).output), expected);
    }
  }
}

TEST_F(LutCommand, SampleFailsIfAResultIsNotACodeValue) {
  const std::string negative =
      writeCube("negative.cube", [](int red, int, int) { return std::to_string(red - 1.5) + " 0 0.5"; });
  const std::string large = exactIdentityCube();
  const std::string zeros = writeCube("zeros.cube", [](int, int, int) { return "0 0 0"; });
  const struct {
    Words words;
    int status;
    std::string says;
  } cases[]{{{negative, "--depth", "8", "9", "9", "255", "9", "9", "0"}, 1, "sample 2 (9, 9, 0) has no code value"},
            {{negative, "--depth", "8", "0", "0", "0"}, 1, "negative"},
            {{zeros, "--depth", "8", "1", "2", "3"}, 1, "nothing but zeros"},
            {{large, "--depth", "4", "18446744073709551615", "2", "3"}, 1, "from 4 bits to the LUT's 16"},
            {{"/missing.cube", "--depth", "8", "1", "2", "3"}, 1, "cannot be opened"},
            {{zeros, "1", "2", "3"}, 2, "--depth is missing"},
            {{zeros, "--depth", "64", "1", "2", "3"}, 1, "from 1 to 63"},
            {{zeros, "--depth", "8", "--out-depth", "0", "1", "2", "3"}, 1, "from 1 to 63"},
            {{zeros, "--depth", "8", "1", "2", "3", "4"}, 2, "4 were given"},
            {{zeros, "--depth", "8", "1", "-2", "3"}, 1, "\"-2\" is negative"},
            {{zeros, "--depth", "8", "1", "18446744073709551616", "3"}, 1, "does not fit in 64 bits"},
            {{zeros, "--depth", "8", "1", "2.5", "3"}, 1, "\"2.5\" is not a code value"},
            {{zeros, "--depth", "8"}, 2, "VALUE is missing"}};
  for (auto [words, status, says] : cases) {
    words.insert(words.begin(), "sample");
    const Outcome outcome = lut(words);
    EXPECT_EQ(outcome.status, status) << says;
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, HasSubstr(says));
  }
}

TEST_F(LutCommand, SampleAppliesTheOptionsAsImagesDo) {
  // Red and blue change places with the order of the axes; the declared domain ends at 2.
  std::string text = "LUT_3D_SIZE 3\nDOMAIN_MAX 2 2 2\n";
  for (int place = 0; place < 27; ++place) {
    text += std::to_string(place % 3 * 0.25) + " " + std::to_string(place / 3 % 3 * 0.5) + " 0.75\n";
  }
  const std::string file = write("look.cube", text);
  const auto parsed = ParsedLutFactory::parsed(Url::fromFilePath(file));
  const struct {
    Words words;
    ImageLutOptions options;
  } cases[]{{{}, {}},
            {{"--axis-order", "red-fastest"}, {.axisOrder = LutAxisOrder::redFastest}},
            {{"--domain", "declared"}, {.domain = LutInputDomain::declared}},
            {{"--interpolation", "tetrahedral"}, {.interpolation = LutInterpolation::tetrahedral}},
            {{"--round"}, {.rounding = LutRounding::nearest}}};
  for (const auto& [words, options] : cases) {
    SCOPED_TRACE(testing::PrintToString(words));
    Words codes{"sample", file, "--depth", "10", "--out-depth", "12", "700", "301", "7"};
    codes.insert(codes.end(), words.begin(), words.end());
    EXPECT_EQ(json::parse(lut(codes).output)[0],
              json(ImageLut::forCodeValues(*parsed, 10, 12, options)->pixel(700, 301, 7)));
    if (options.rounding == LutRounding::nearest) continue;
    Words numbers{"sample", file, "--float", "0.7", "3.1e-1", "1.75", "-0.5", "2", "-0"};
    numbers.insert(numbers.end(), words.begin(), words.end());
    json expected;
    for (const LutColor& input : {LutColor{0.7, 0.31, 1.75}, {-0.5, 2, 0}}) {
      const LutColor color = ImageLut::forFloats(*parsed, options).pixel(input);
      expected.push_back({color.red, color.green, color.blue});
    }
    EXPECT_EQ(json::parse(lut(numbers).output), expected);
  }
}

TEST_F(LutCommand, TheReadingDecidesAndTheOptionsOfTheSuitesChooseIt) {
  // As published, red is 0 to 4 and lifted.
  const std::string file = write("wide.cube",
                                 "LUT_3D_SIZE 2\nDOMAIN_MAX 4 4 4\n0.2 0 0\n0.8 0 0\n0.2 1 0\n0.8 1 0\n"
                                 "0.2 0 1\n0.8 0 1\n0.2 1 1\n0.8 1 1\n");
  const Words numbers{"1", "2", "3"};
  const auto sampled = [&](Words words) {
    words.insert(words.begin(), {"sample", file, "--float"});
    words.insert(words.end(), numbers.begin(), numbers.end());
    return lut(words);
  };
  const Outcome published = sampled({"--reading", "published"});
  EXPECT_EQ(json::parse(published.output), json::parse("[[0.35000000000000003, 0.5, 0.75]]"));
  EXPECT_THAT(published.errors, IsEmpty());
  EXPECT_EQ(sampled({"--axis-order", "red-fastest", "--domain", "declared"}).output, published.output);
  const Outcome suite = sampled({});
  EXPECT_EQ(suite.output, sampled({"--reading", "suite"}).output);
  EXPECT_NE(suite.output, published.output);
  EXPECT_THAT(
      suite.errors,
      AllOf(HasSubstr("wide.cube\": warning: declares a domain that is not applied: 0 to 4; "),
            HasSubstr("(--domain declared, or --reading published)\n"),
            HasSubstr("warning: is not read with the axis order of its format: red is fastest in the format, "
                      "blue in this reading; read the file as its format publishes it (--reading published)\n")));
  for (const std::string option : {"--axis-order=red-fastest", "--domain=data"}) {
    const Outcome outcome = sampled({"--reading", "published", option});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr(" is for --reading suite; a published format says itself"));
  }
  // Code values are rounded: an identity changes none.
  Words codes{"sample", identityCube(), "--reading", "published", "--depth", "8"};
  json expected;
  for (int code = 0; code < 256; ++code) {
    for (int channel = 0; channel < 3; ++channel) codes.push_back(std::to_string(code));
    expected.push_back({code, code, code});
  }
  EXPECT_EQ(json::parse(lut(codes).output), expected);
  // Texts in no published format keep the suite's reading.
  const Words rows{"sample", table(), "--depth", "8", "100", "200", "255"};
  Words asPublished = rows;
  asPublished.insert(asPublished.begin() + 2, {"--reading", "published"});
  EXPECT_EQ(lut(asPublished).output, lut(rows).output);
  EXPECT_THAT(lut(asPublished).errors,
              HasSubstr("is not in a published LUT format and is read as the suite reads it; "));
}

TEST_F(LutCommand, ErrorsAndWarningsNameTheReadingThatHelps) {
  const std::string rows = "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n";
  const struct {
    std::string file, reading;
    int status;
    std::string says;
  } cases[]{
      {write("cut.cube", "LUT_3D_SIZE 2\n" + rows), "published", 1,
       "7 of 8 rows; copy or export the LUT again, or try --reading suite"},
      {path("cut.cube"), "suite", 0, "warning: has fewer rows than its size needs: 7 of 8; "},
      {write("two.cube", "LUT_1D_SIZE 2\n0 0 0\n1 1 1\n"), "suite", 1, "at least 256 rows, or try --reading published"},
      {write("codes.cube", "LUT_3D_SIZE 2\n" + rows + "255 255 255\n"), "published", 0,
       "warning: has whole numbers like code values, although 1 is white in its format: the highest is 255; "},
      {write("negative.cube", "LUT_3D_SIZE 2\n" + rows + "1 1 -0.5\n"), "published", 0,
       "warning: has negative results, which become 0 in images of code values: down to -0.5; apply"},
      {path("negative.cube"), "suite", 0, "and for which sample converters have no result: the lowest is -0.5; apply"},
      {write("notes.cube", "LUT_3D_SIZE 2\n" + rows + "1 1 1\nmade by hand\n"), "published", 0,
       "warning: has lines that are ignored: line 10: made by hand; "},
      {path("notes.cube"), "suite", 0, "has lines that are ignored: 1 after the first row, the first is line 10; "},
      {write("both.cube", "LUT_1D_SIZE 2\nLUT_3D_SIZE 2\n0 0 0\n1 1 1\n" + rows + "1 1 1\n"), "suite", 0,
       "warning: declares a 1D and a 3D size, but is read as one LUT"},
      {path("both.cube"), "published", 0, ""},
      {write("one.cube", "LUT_3D_SIZE 1\n0 0 1\n"), "suite", 0, "warning: is a cube of one point"},
      {write("flame.spi3d", "SPILUT 1.0\n3 3\n2 2 2\n0 0 0 0 0 0\n"), "suite", 1,
       "is in a LUT format that is not read here: Imageworks 3D LUT (.spi3d); export the LUT as .cube, or try "
       "--reading"}};
  for (const auto& [file, reading, status, says] : cases) {
    const Outcome outcome = lut({"sample", file, "--float", "--reading", reading, "0.1", "0.2", "0.3"});
    EXPECT_EQ(outcome.status, status) << says << outcome.errors;
    EXPECT_THAT(outcome.errors, HasSubstr(says));
    EXPECT_TRUE(!says.empty() || outcome.errors.empty()) << outcome.errors;
  }
}

TEST_F(LutCommand, WithoutTheModuleAFormatIsAnErrorWithARemedy) {
  // A copy of the command alone finds no module beside it.
  fs::copy_file(MERIDIAN_COMMAND, path("meridian"));
  const std::string file = write("look.spi3d", "SPILUT 1.0\n3 3\n2 2 2\n0 0 0 0 0 0\n");
  for (const Words& words : {Words{"lut", "sample", file, "--float", "--reading", "published", "0", "0", "0"},
                             {"lut", "plot", file, path("plot.png")},
                             {"lut", "info", file}}) {
    Words all = words;
    all.insert(all.begin(), path("meridian"));
    const Outcome outcome = test::run(all);
    EXPECT_EQ(outcome.status, 1);
    if (words[1] == "plot") continue;  // also without the module that draws
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr("Imageworks 3D LUT (.spi3d)"), HasSubstr("needs OpenColorIO"),
                                      HasSubstr("; export the LUT as .cube\n")));
  }
}

TEST_F(LutCommand, SampleNamesTheWordThatIsWrongAndWhatWasExpected) {
  const std::string cube = identityCube();
  const std::string steep = writeCube("steep.cube", [](int red, int, int) {
    return red == 1 ? std::string("1.7e308 0 0") : std::string("-1.7e308 0 1");
  });
  const struct {
    Words words;
    int status;
    std::string says;
  } cases[]{
      {{cube, "--float", "nan", "0", "0"}, 1, "\"nan\" is not a number; expected a decimal number such as 0.18"},
      {{cube, "--float", "0", "inf", "0"}, 1, "\"inf\" is not a number"},
      {{cube, "--float", "--", "0", "-inf", "-.5"}, 1, "\"-inf\" is not a number"},
      {{cube, "--float", "0", "0", ""}, 1, "\"\" is not a number"},
      {{cube, "--float", "0", "0x1p3", "0"}, 1, "\"0x1p3\" is not a number"},
      {{cube, "--float", "0", "0,5", "0"}, 1, "\"0,5\" is not a number"},
      {{cube, "--float", "0", "-1e400", "0"}, 1, "\"-1e400\" is out of range; expected a number between"},
      {{cube, "--float", "1", "2"}, 2, "three numbers (red, green, blue), but 2 were given"},
      {{cube, "--float", "--depth", "8", "1", "2", "3"}, 2, "--depth is for code values"},
      {{cube, "--float", "--out-depth", "8", "1", "2", "3"}, 2, "--out-depth is for code values"},
      {{cube, "--float", "--round", "1", "2", "3"}, 2, "--round is for code values"},
      {{cube, "0.1", "0.2", "0.3"}, 2, "or --float"},
      {{cube, "--depth", "8", "0.1", "0.2", "0.3"}, 1, "\"0.1\" is not a code value; expected an integer, or --fl"},
      {{cube, "--depth", "8", "nan", "2", "3"}, 1, "\"nan\" is not a code value; expected an integer\n"},
      {{cube, "--depth", "17", "--round", "1", "2", "3"}, 1, "1 to 16 bits, not 17"},
      {{cube, "--depth", "8", "--round", "1", "65536", "3"}, 1, "at most 65535, not 65536"},
      {{cube, "--depth", "8", "--domain", "all", "1", "2", "3"}, 2, "unknown domain \"all\""},
      {{steep, "--float", "--interpolation", "tetrahedral", "--domain", "declared", "0", "0", "0.4"},
       1,
       "sample 1 (0, 0, 0.4) has no finite result"}};
  for (auto [words, status, says] : cases) {
    words.insert(words.begin(), "sample");
    const Outcome outcome = lut(words);
    EXPECT_EQ(outcome.status, status) << says;
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, HasSubstr(says));
  }
}

TEST_F(LutCommand, HelpCompletionAndManualCoverTheGroup) {
  EXPECT_THAT(lut({"--help"}).output, AllOf(HasSubstr("info"), HasSubstr("sample"), HasSubstr("apply"),
                                            HasSubstr("plot"), HasSubstr("Example:\n  ")));
  for (const std::string name : {"info", "sample", "apply", "plot"}) {
    EXPECT_THAT(lut({name, "--help"}).output,
                AllOf(HasSubstr("meridian lut " + name), HasSubstr("Example:\n  "), HasSubstr("FILE")));
  }
  const Outcome alone = lut({});
  EXPECT_EQ(alone.status, 2);
  EXPECT_THAT(alone.errors, HasSubstr("\"meridian lut --help\""));
  EXPECT_THAT(lut({"apply", "--nonsense"}).errors, HasSubstr("\"meridian lut apply --help\""));
  EXPECT_THAT(lut({"parse"}).errors, HasSubstr("unknown subcommand \"parse\""));
  EXPECT_THAT(test::run({MERIDIAN_COMMAND, "manual"}).output,
              AllOf(HasSubstr(".SS meridian lut apply"), HasSubstr("\\-\\-axis\\-order")));

  const auto completions = [](const std::string& words) {
    return test::run({"bash", "-c",
                      "source <(\"$0\" completion bash); COMP_WORDS=(meridian " + words +
                          "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _meridian; echo \"${COMPREPLY[@]}\"",
                      MERIDIAN_COMMAND})
        .output;
  };
  EXPECT_EQ(completions("lu"), "lut\n");
  EXPECT_EQ(completions("lut ''"), "info sample apply plot --help\n");
  EXPECT_EQ(completions("lut apply --ax"), "--axis-order\n");
  EXPECT_EQ(completions("lut apply --reading ''"), "published suite\n");
  EXPECT_EQ(completions("lut apply --axis-order r"), "red-fastest\n");
  EXPECT_EQ(completions("lut info ''"), "\n");  // left to file names
}

#ifdef MERIDIAN_HAS_PLOTS

TEST_F(LutCommand, PlotWritesAnImageOfItsSize) {
  for (const std::string& file : {identityCube(), table()}) {
    const Outcome outcome = lut({"plot", file, path("plot.png")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const std::string image = contentsOf(path("plot.png"));
    EXPECT_EQ(image.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(image.substr(16, 8), std::string("\0\0\x06\x40\0\0\x03\x84", 8));  // 1600 x 900
    fs::rename(path("plot.png"), path("last.png"));
    if (file != table()) fs::rename(path("last.png"), path("cube.png"));
  }
  EXPECT_NE(contentsOf(path("cube.png")), contentsOf(path("last.png")));
  EXPECT_EQ(lut({"plot", table(), path("plot.jpg")}).status, 1);
  EXPECT_THAT(lut({"plot", table(), path("none/plot.png")}).errors, HasSubstr("No such file or directory"));
  EXPECT_EQ(lut({"plot", write("bad.cube", ""), path("plot.png")}).status, 1);
  EXPECT_THAT(fileNames(), testing::ElementsAre("bad.cube", "cube.png", "identity.cube", "last.png", "table.lut"));
}

#else

TEST_F(LutCommand, PlotSaysThatThisBuildCannotDraw) {
  EXPECT_THAT(lut({"plot", table(), path("plot.png")}).errors, HasSubstr("cannot draw"));
}

#endif

TEST(LutDemonstration, ShowsAImageBeforeAndAfterAndLeavesNothingBehind) {
  const fs::path folder = fs::temp_directory_path() / "meridian-demonstration";
  fs::create_directories(folder);
  const test::RunOptions options{{"TMPDIR=" + folder.string(), "TERM=xterm"}, {}};
  const Outcome plain = test::run({MERIDIAN_COMMAND}, options);
  EXPECT_EQ(plain.status, 0);
  EXPECT_THAT(plain.output, AllOf(HasSubstr("middle grey"), HasSubstr("3840 x 2160 pixels"), Not(HasSubstr("\x1b"))));
  const Outcome coloured = test::runOnTerminal({MERIDIAN_COMMAND}, options);
  EXPECT_THAT(coloured.output, AllOf(HasSubstr("\u2580"), HasSubstr("\x1b[38;2;"), Not(HasSubstr("middle grey"))));
  EXPECT_TRUE(fs::is_empty(folder));
  fs::remove_all(folder);
}

}  // namespace
}  // namespace meridian
