#include "meridian/lut/lut_warning.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lut/lut_files.h"

namespace meridian {
namespace {

std::string repeated(std::string_view line, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += line;
  return text;
}

TEST(LutWarnings, SayWhatTheSuitesReadingOfAFileMakesOfIt) {
  using Code = LutWarningCode;
  struct Case {
    std::string text;
    std::vector<std::pair<Code, std::string>> warnings;
    ImageLutOptions options{};
    std::string name = "look.txt";
  };
  const std::string cube = "3D\n";  // a title that says so
  const std::string eight = repeated("0 1 0\n", 8);
  const ImageLutOptions published{.axisOrder = LutAxisOrder::redFastest, .domain = LutInputDomain::declared};
  const std::vector<Case> cases{
      {cube + eight, {}},
      {cube + "DOMAIN_MIN 0 0 0\nDOMAIN_MAX 4 4 4\n" + eight, {{Code::domainNotApplied, "0 to 4"}}},
      {cube + "DOMAIN_MAX 1 2 1\n" + eight, {{Code::domainNotApplied, "0 to 1 2 1"}}},
      {cube + "DOMAIN_MAX 1 1 1\n" + eight, {}},
      {cube + "DOMAIN_MAX 4 4 4\n" + eight, {}, published},
      {cube + repeated("0 0.5 0\n", 8), {{Code::highestBelowFullScale, "0.5 of 1"}}},
      {cube + repeated("0 1020 0\n", 8), {{Code::highestBelowFullScale, "1020 of 1023"}}},
      {cube + repeated("0 1023 0\n", 8), {}},
      {repeated("0 1 0\n", 4096), {{Code::oneDimensionalByRowCount, "4096 rows"}}},
      {repeated("0 1 0\n", 4096), {{Code::cubeReadAs1D, "4096 rows"}}, {}, "look.3dl"},
      {"0 300 700 1023\n" + repeated("0 1 0\n", 4096), {{Code::cubeReadAs1D, "4096 rows"}}},
      {cube + repeated("0 1.25 0\n", 8), {{Code::highestAboveFullScale, "1.25 instead of 1"}}},
      {cube + "DOMAIN_MAX 1 1 1\n" + repeated("0 1.25 0\n", 8), {{Code::domainNotApplied, "0 to 1"}}},
      {"LUT_3D_SIZE 9223372036854775807\n" + eight, {{Code::tooFewRows, "8 of an unreadable number"}}, published},
      {repeated("0 1 0\n", 1024), {}},
      {"1D\n" + repeated("0 1 0\n", 4096), {}},
      {"LUT_1D_SIZE 8\nLUT_3D_SIZE 2\n" + eight, {{Code::bothSizesDeclared, "read as a cube"}}, published},
      {cube + "0 1 0\n", {{Code::cubeOfOnePoint, ""}}},
      {cube + repeated("-0.25 1 0\n", 8), {{Code::negativeValues, "the lowest is -0.25"}}},
      {"LUT_3D_SIZE 3\n" + eight, {{Code::tooFewRows, "8 of 27"}}, published},
      {"LUT_1D_SIZE 512\n" + repeated("0 1 0\n", 256), {{Code::tooFewRows, "256 of 512"}}},
      {cube + repeated("0 1 0\n", 22), {{Code::tooFewRows, "22 of 27"}}},
      {"LUT_3D_SIZE 2\n" + eight, {{Code::otherAxisOrder, "red is fastest in the format, blue in this reading"}}},
      {"LUT_3D_SIZE 2\n" + eight, {}, published},
      {cube + eight,
       {{Code::otherAxisOrder, "blue is fastest in the format, red in this reading"}},
       published,
       "3d.3dl"},
      {cube + "\r\n\r\n0 1 0\r\n# comment\r\n0 1\r\n" + eight + "the end",
       {{Code::ignoredLines, "2 after the first row, the first is line 6"}}},
      {cube + "0 1 0\r0  1 0\r" + repeated("0 1 0\r", 7),
       {{Code::ignoredLines, "1 after the first row, the first is line 3"}}},
      {cube + eight + std::string(1'000'001, 'x') + "\n",
       {{Code::ignoredLines, "1 after the first row, the first is line 10"}}},
  };
  const test::TemporaryDirectory directory;
  for (const Case& each : cases) {
    SCOPED_TRACE(each.text.substr(0, 60));
    const auto file = ParsedLutFactory::parsing(Url::fromFilePath(directory.write(each.name, each.text)));
    ASSERT_TRUE(file) << file.error().message();
    std::vector<std::pair<Code, std::string>> found;
    for (const LutWarning& warning : warningsOf(**file, each.options)) found.emplace_back(warning.code, warning.detail);
    EXPECT_EQ(found, each.warnings);
  }
}

}  // namespace
}  // namespace meridian
