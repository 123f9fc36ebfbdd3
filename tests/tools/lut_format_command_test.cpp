// Files of every published format through the command, held to OpenColorIO.
#include <OpenColorIO/OpenColorIO.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/numbers.h"
#include "tests/lut/published_files.h"
#include "tests/tools/lut_command_files.h"

#ifdef MERIDIAN_HAS_IMAGE_FILES
#include <OpenImageIO/imageio.h>
#endif

namespace meridian {
namespace {

namespace ocio = OCIO_NAMESPACE;
using nlohmann::json;
using test::lut;
using test::LutCommand;
using test::Outcome;
using test::PublishedFile;
using test::randomCodes;
using test::randomRows;
using test::Words;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Returns this many random numbers, a line each.
std::string randomNumbers(std::mt19937& random, std::size_t count, double low, double high) {
  std::uniform_real_distribution<double> number(low, high);
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += fixedDecimalText(number(random), 6) + '\n';
  return text;
}

/// Returns the rows with the three indices of each before it, in an order of their own.
std::string indexed(const std::string& rows, std::size_t face, std::mt19937& random) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t i = 0; begin < rows.size(); ++i) {
    const std::size_t end = rows.find('\n', begin);
    lines.push_back(std::to_string(i / face / face) + ' ' + std::to_string(i / face % face) + ' ' +
                    std::to_string(i % face) + rows.substr(begin, end - begin) + '\n');
    begin = end + 1;
  }
  std::ranges::shuffle(lines, random);
  std::string text;
  for (const std::string& line : lines) text += line;
  return text;
}

std::string clf(const std::string& operations, std::string_view attribute = "compCLFversion=\"3\"") {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- made -->\n<ProcessList id=\"made\" " +
         std::string(attribute) + ">\n" + operations + "</ProcessList>\n";
}

std::string operation(const std::string& name, const std::string& content, const std::string& attributes = {}) {
  return '<' + name + " inBitDepth=\"32f\" outBitDepth=\"32f\" " + attributes + ">\n" + content + "</" + name + ">\n";
}

std::string array(const std::string& dimensions, const std::string& numbers) {
  return "<Array dim=\"" + dimensions + "\">\n" + numbers + "</Array>\n";
}

/// The rows of a 1D LUT for each half-precision number, from a curve.
std::string halfRows() {
  std::string text;
  for (int i = 0; i < 65536; ++i) text += std::to_string(i % 1000) + ' ' + std::to_string(i % 700) + " 0.5\n";
  return text;
}

/// Files whose stages are not so steep, one after the other, that they multiply the errors of single precision.
std::vector<PublishedFile> filesOfOtherFormats() {
  std::mt19937 random(2021);
  const auto wide = [&random](std::size_t count) { return randomRows(random, count, -0.4, 1.6); };
  const std::string matrix = operation("Matrix", array("3 4", "0.9 0.2 -0.1 0.01\n0.1 0.8 0.1 0\n0 0.3 0.7 -0.2\n"));
  const std::string cube = operation("LUT3D", array("3 3 3 3", wide(27)), "interpolation=\"tetrahedral\"");
  const std::string log = operation("Log", "", "style=\"log2\"");
  const std::string range =
      operation("Range",
                "<minInValue>0.1</minInValue><maxInValue>0.8</maxInValue><minOutValue>-0.1</minOutValue>"
                "<maxOutValue>1.3</maxOutValue>\n");
  return {
      {"shaped.csp",
       "CSPLUTV100\n3D\n\nBEGIN METADATA\nx\nEND METADATA\n\n4\n-0.2 0.3 0.9 2\n0 0.5 0.7 1\n2\n0 1\n0 1\n"
       "2\n0 4\n0 1\n\n5 5 5\n" +
           wide(125)},
      {"curve.csp", "CSPLUTV100\n1D\n\n2\n0 2\n0 1\n2\n0 1\n0 1\n2\n-1 1\n0 1\n\n33\n" + wide(33)},
      {"domain.spi1d",
       "Version 1\nFrom -0.25 1.75\nLength 40\nComponents 1\n{\n" + randomNumbers(random, 40, -1, 2) + "}\n"},
      {"three.spi1d", "Version 1\nFrom 0 1\nLength 64\nComponents 3\n{\n" + wide(64) + "}\n"},
      {"rows.spi3d", "SPILUT 1.0\n3 3\n4 4 4\n" + indexed(wide(64), 4, random)},
      {"camera.spimtx", "0.9 0.1 0.1 6553.5\n0.2 0.7 -0.3 0\n0.1 0.1 1.1 -3000\n"},
      {"film.itx", "LUT_3D_SIZE 4\n" + wide(64)},
      {"curve.lut",
       "Version\t\t1\nFormat\t\tany\nType\t\tC\nFrom\t\t-0.1 1.3\nTo\t\t0.0 1.0\nBlack\t\t0.0\nWhite\t\t0.99\n"
       "Length\t\t9\nLUT:\nRGB {\n" +
           randomNumbers(random, 9, -0.2, 1.4) + "}\n"},
      {"cube.lut",
       "Version\t\t2\nFormat\t\tany\nType\t\t3D\nFrom\t\t0.2 0.9\nTo\t\t0.0 1.0\nBlack\t\t0.0\nWhite\t\t0.99\n"
       "Length\t\t3\nLUT:\n {\n" +
           wide(27) + "}\n"},
      {"shaped.lut",
       "Version\t\t3\nFormat\t\tany\nType\t\t3D+1D\nFrom\t\t0.0 1.0\nTo\t\t0.0 1.0\nBlack\t\t0.0\nWhite\t\t1.0\n"
       "Length\t\t3 8\nLUT:\nPre {\n" +
           randomNumbers(random, 8, 0, 1) + "}\n3D {\n" + wide(27) + "}\n"},
      {"discreet.lut", "LUT: 3 256\n\n" +
                           [&random] {
                             std::string text;
                             for (int i = 0; i < 768; ++i) text += std::to_string(random() % 256) + '\n';
                             return text;
                           }()},
      {"look.m3d", "channel 3d\nin 27\nout 4096\nformat lut\nvalues\tred\tgreen\tblue\n" +
                       [&random] {
                         std::string text;
                         for (int i = 0; i < 27; ++i) {
                           const unsigned level = random() % 2048;
                           text += std::to_string(i) + randomCodes(random, 1, 2048 + level);
                         }
                         return text;
                       }()},
      {"field.vf",
       "#Inventor V2.1 ascii\ngrid_size 3 3 3\nglobal_transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\ndata\n" + wide(27)},
      {"film.cub",
       "# Truelight Cube v2.0\n# lutLength 6\n# iDims     3\n# oDims     3\n# width     3 3 3\n\n# InputLUT\n" +
           randomRows(random, 6, 0, 2) + "\n# Cube\n" + wide(27) + "\n# end\n"},
      {"all.clf", clf(matrix + range + operation("LUT1D", array("5 3", wide(5))) + cube)},
      {"two.clf", clf(operation("LUT3D", array("2 2 2 3", wide(8)), "interpolation=\"trilinear\"") + cube)},
      {"log.clf",
       clf(log + operation("Exponent", "<ExponentParams exponent=\"2.2\"/>\n", "style=\"basicMirrorFwd\"") + cube)},
      {"cdl.clf", clf(operation("ASC_CDL",
                                "<SOPNode><Slope>1.1 0.9 1</Slope><Offset>0.05 0 -0.02</Offset><Power>1.2 1 0.8</Power>"
                                "</SOPNode><SatNode><Saturation>0.7</Saturation></SatNode>\n",
                                "style=\"Fwd\"") +
                      matrix)},
      {"half.clf", clf(operation("LUT1D", array("65536 3", halfRows()), "halfDomain=\"true\""))},
      {"inverse.ctf", clf(operation("InverseLUT1D", array("4 1", "0\n0.1\n0.5\n1\n")) + matrix, "version=\"1.7\"")},
      {"fromAlpha.ctf",
       clf(operation("Matrix", array("4 5 4", "1 0 0 0.5 0\n0 1 0 0 0\n0 0 0.5 0 0\n0 0 0 1 0\n")), "version=\"1.7\"")},
      {"toAlpha.ctf",
       clf(operation("Matrix", array("4 5 4", "1 0 0 0 0\n0 1 0 0 0\n0 0 0.5 0 0\n0 0 0 0.5 0\n")), "version=\"1.7\"")},
  };
}

/// Random colours, of which some are beyond 0 and 1.
std::vector<float> randomColors(std::size_t count) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> wide(-0.7F, 2.2F);
  std::uniform_real_distribution<float> unit(0, 1);
  std::vector<float> samples;
  for (std::size_t i = 0; i < count * 3; ++i) samples.push_back(i % 2 == 0 ? wide(random) : unit(random));
  return samples;
}

/// Returns what OpenColorIO makes of the colours.
std::vector<float> peersResults(const std::string& path, std::vector<float> samples) {
  ocio::SetLoggingLevel(ocio::LOGGING_LEVEL_NONE);
  const auto file = ocio::FileTransform::Create();
  file->setSrc(path.c_str());
  const auto processor =
      ocio::Config::CreateRaw()->getProcessor(file)->getOptimizedCPUProcessor(ocio::OPTIMIZATION_LOSSLESS);
  ocio::PackedImageDesc image(samples.data(), static_cast<long>(samples.size() / 3), 1, 3);
  processor->apply(image);
  return samples;
}

void expectNear(const std::vector<float>& actual, const std::vector<float>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    ASSERT_NEAR(actual[i], expected[i], 1e-5F * std::max(1.0F, std::fabs(expected[i]))) << "sample " << i;
  }
}

class LutFormats : public LutCommand {};

TEST_F(LutFormats, SampleAgreesWithOpenColorIOInEveryFormat) {
  const std::vector<float> colors = randomColors(100);
  for (const PublishedFile& made : filesOfOtherFormats()) {
    SCOPED_TRACE(made.name);
    const std::string file = write(made.name, made.text);
    Words words{"sample", file, "--float", "--reading", "published", "--"};
    for (const float sample : colors) words.push_back(plainDecimalText(static_cast<double>(sample)));
    const Outcome outcome = lut(words);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::vector<float> results;
    for (const json& color : json::parse(outcome.output)) {
      for (const json& sample : color) results.push_back(sample.get<float>());
    }
    expectNear(results, peersResults(file, colors));
  }
}

#ifdef MERIDIAN_HAS_IMAGE_FILES
TEST_F(LutFormats, ApplyAgreesWithOpenColorIOInEveryFormat) {
  // More pixels than a block that passes through the stages.
  constexpr int width = 3000;
  const std::vector<float> colors = randomColors(width);
  const OIIO::ImageSpec spec(width, 1, 3, OIIO::TypeDesc::FLOAT);
  const auto output = OIIO::ImageOutput::create("exr");
  ASSERT_TRUE(output->open(path("in.exr"), spec) && output->write_image(OIIO::TypeDesc::FLOAT, colors.data()) &&
              output->close());
  for (const PublishedFile& made : filesOfOtherFormats()) {
    SCOPED_TRACE(made.name);
    const std::string file = write(made.name, made.text);
    const Outcome outcome = lut({"apply", file, path("in.exr"), path("out.exr"), "--threads", "2"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::vector<float> results(colors.size());
    const auto input = OIIO::ImageInput::open(path("out.exr"));
    ASSERT_TRUE(input && input->read_image(0, 0, 0, 3, OIIO::TypeDesc::FLOAT, results.data()));
    expectNear(results, peersResults(file, colors));
  }
}
#endif

TEST_F(LutFormats, WarningsSayWhatOpenColorIOComputes) {
  for (const PublishedFile& made : filesOfOtherFormats()) {
    const Outcome outcome =
        lut({"sample", write(made.name, made.text), "--float", "--reading", "published", "0", "0", "0"});
    const auto computes = [&](const std::string& names) {
      return HasSubstr("\": warning: has operations that another library computes: " + names +
                       " (OpenColorIO); export");
    };
    if (made.name == "log.clf") {
      EXPECT_THAT(outcome.errors, computes("logarithm, exponent"));
    } else if (made.name == "cdl.clf") {
      EXPECT_THAT(outcome.errors, computes("ASC CDL"));
    } else if (made.name == "half.clf") {
      EXPECT_THAT(outcome.errors, computes("1D LUT with half-float inputs or hue adjustment"));
    } else if (made.name == "inverse.ctf") {
      EXPECT_THAT(outcome.errors, computes("inverted 1D LUT"));
    } else if (made.name == "fromAlpha.ctf" || made.name == "toAlpha.ctf") {
      EXPECT_THAT(outcome.errors, computes("matrix with alpha, which counts as 0 and is not changed"));
    } else {
      EXPECT_THAT(outcome.errors, Not(HasSubstr("another library"))) << made.name;
    }
  }
}

TEST_F(LutFormats, InfoShowsStagesAndNoRowsOfTheSuites) {
  for (const PublishedFile& made : filesOfOtherFormats()) {
    const Outcome outcome = lut({"info", "--json", write(made.name, made.text)});
    ASSERT_EQ(outcome.status, 0) << made.name << outcome.errors;
    const json document = json::parse(outcome.output)[0];
    EXPECT_FALSE(document["stages"].empty()) << made.name;
    EXPECT_FALSE(document.contains("rows")) << document;
    const bool warns = document["warnings"].dump().find("otherPublishedFormat") != std::string::npos;
    EXPECT_NE(document.contains("suiteError"), warns) << document;
    const std::string text = lut({"info", path(made.name)}).output;
    if (made.name == "domain.spi1d") {
      EXPECT_THAT(text, HasSubstr("matrix, times 0.5 0.5 0.5, plus 0.125 0.125 0.125"));
    }
    EXPECT_THAT(text, Not(HasSubstr("suiteError")));
    EXPECT_THAT(outcome.errors, IsEmpty());
  }
}

TEST_F(LutFormats, DamagedFilesAreErrorsWithAReason) {
  for (const PublishedFile& made : filesOfOtherFormats()) {
    const std::string file = write(made.name, made.text.substr(0, made.text.size() * 2 / 3));
    const Outcome outcome = lut({"sample", file, "--float", "--reading", "published", "0", "0", "0"});
    EXPECT_EQ(outcome.status, 1) << made.name << outcome.output;
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr(made.name), HasSubstr("OpenColorIO: "),
                                      testing::EndsWith("; copy or export the LUT again\n")));
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
  }
}

TEST_F(LutFormats, FilesThatReferToOtherFilesAreErrors) {
  write("clip.cube", "LUT_1D_SIZE 2\n0 0 0\n1 1 1\n");
  for (const std::string& name : {std::string("clip.cube"), path("clip.cube"), std::string("/dev/zero")}) {
    for (const std::string_view version : {"compCLFversion=\"3\"", "version=\"1.7\""}) {
      const std::string file = write("look.ctf", clf(operation("Reference", "", "path=\"" + name + '"'), version));
      for (const Words& words :
           {Words{"info", file}, {"sample", file, "--float", "--reading=published", "1", "1", "1"}}) {
        const Outcome outcome = lut(words);
        EXPECT_EQ(outcome.status, 1) << outcome.output;
        EXPECT_EQ(outcome.errors,
                  "meridian: \"" + file + "\": refers to another file: " + name + "; export it as one file\n");
      }
    }
  }
}

TEST_F(LutFormats, SizesThatAreTooLargeAreErrors) {
  const Outcome outcome = lut({"info", write("huge.itx", "LUT_3D_SIZE 20000\n0 0 0\n")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("IRIDAS 3D LUT (.itx), declares a size that is too large; copy"));
}

TEST_F(LutFormats, VariablesInNamesStayAsTheyAre) {
  const std::string file = write("$HOME %HOME% ${HOME}.spimtx", "1 0 0 0\n0 1 0 0\n0 0 2 0\n");
  const Outcome outcome = lut({"sample", file, "--float", "--reading", "published", "1", "2", "3"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(json::parse(outcome.output), json::parse("[[1.0, 2.0, 6.0]]"));
}

}  // namespace
}  // namespace meridian
