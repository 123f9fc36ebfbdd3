#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "meridian/lut/parsed_lut_factory.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

#ifdef MERIDIAN_HAS_IMAGE_FILES
#include <OpenImageIO/imageio.h>
#endif

namespace meridian {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test::Outcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Words = std::vector<std::string>;

Outcome lut(Words words) {
  words.insert(words.begin(), {MERIDIAN_COMMAND, "lut"});
  return test::run(words);
}

[[maybe_unused]] std::string contentsOf(const fs::path& path) {
  std::ostringstream contents;
  contents << std::ifstream(path, std::ios::binary).rdbuf();
  return contents.str();
}

/// Files in a folder of their own, which goes away with the test.
class LutCommand : public testing::Test {
 protected:
  [[nodiscard]] std::string path(const std::string& name) const { return (folder_.path() / name).string(); }

  std::string write(const std::string& name, const std::string& text) const { return folder_.write(name, text); }

  /// A cube of three points per axis; `change` makes a colour's row of its place from 0 to 2 on each axis.
  std::string writeCube(const std::string& name, const std::function<std::string(int, int, int)>& change) const {
    std::string text = "LUT_3D_SIZE 3\n";
    for (int place = 0; place < 27; ++place) text += change(place / 9, place / 3 % 3, place % 3) + "\n";
    return write(name, text);
  }
  [[nodiscard]] std::string identityCube() const {
    return writeCube("identity.cube", [](int red, int green, int blue) {
      return std::to_string(red / 2.0) + " " + std::to_string(green / 2.0) + " " + std::to_string(blue / 2.0);
    });
  }
  /// Its results are exact for code values: all its numbers are powers of two.
  [[nodiscard]] std::string exactIdentityCube() const {
    return writeCube("exact.cube", [](int red, int green, int blue) {
      return std::to_string(red << 15) + " " + std::to_string(green << 15) + " " + std::to_string(blue << 15);
    });
  }
  [[nodiscard]] std::string inverseCube() const {
    return writeCube("inverse.cube", [](int red, int green, int blue) {
      return std::to_string(1 - red / 2.0) + " " + std::to_string(1 - green / 2.0) + " " +
             std::to_string(1 - blue / 2.0);
    });
  }
  /// 256 rows, red doubled.
  [[nodiscard]] std::string table() const {
    std::string text;
    for (int row = 0; row < 256; ++row) {
      text += std::to_string(std::min(2 * row, 255)) + " " + std::to_string(row) + " " + std::to_string(row) + "\n";
    }
    return write("table.lut", text);
  }

  [[nodiscard]] Words fileNames() const {
    Words names;
    for (const auto& entry : fs::directory_iterator(folder_.path())) names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
  }

 private:
  test::TemporaryFolder folder_;
};

TEST_F(LutCommand, InfoShowsEachKind) {
  const std::string integers = writeCube("code\xff values\n.cube", [](int red, int green, int blue) {
    return std::to_string(red * 511) + " " + std::to_string(green * 511) + " " + std::to_string(blue * 511);
  });
  const Outcome outcome = lut({"info", "--json", identityCube(), integers, table()});
  EXPECT_EQ(outcome.status, 0);
  const json documents = json::parse(outcome.output);
  const json expected[]{{{"file", path("identity.cube")},
                         {"class", "ParsedThreeDimensionalFloatingPointFile"},
                         {"dimensions", "cube"},
                         {"markup", "txt"},
                         {"rows", 27},
                         {"faceSize", 3},
                         {"lowValue", 0.0},
                         {"highValue", 1.0}},
                        {{"file", path("code\xef\xbf\xbd values\n.cube")},
                         {"class", "ParsedThreeDimensionalIntegerFile"},
                         {"dimensions", "cube"},
                         {"markup", "txt"},
                         {"rows", 27},
                         {"faceSize", 3},
                         {"bitDepth", 10},
                         {"lowValue", 0.0},
                         {"highValue", 1022.0}},
                        {{"file", path("table.lut")},
                         {"class", "ParsedOneDimensionLutFile"},
                         {"dimensions", "oneD"},
                         {"markup", "txt"},
                         {"rows", 256},
                         {"lutBitDepth", 8},
                         {"lowValue", 0.0},
                         {"highValue", 255.0}}};
  EXPECT_EQ(documents, json(expected));
  EXPECT_THAT(outcome.errors, HasSubstr("code\\xff values\\n.cube\" is not valid UTF-8"));
  EXPECT_THAT(lut({"info", integers}).output, AllOf(HasSubstr("code\\xff values\\n.cube\n"), HasSubstr("bitDepth")));
}

TEST_F(LutCommand, InfoSaysWhyAFileIsRefusedAndShowsTheOthers) {
  const struct {
    std::string file, refusal, says;
  } cases[]{{write("a.cube", "no numbers"), "noRows", "no row of three numbers"},
            {write("b.cube", "<a/>"), "xmlDocument", "XML document"},
            {path("\x1b[2J.cube"), "notOpened", "\\x1b[2J.cube\" is refused as a look-up table: it cannot be opened"},
            {write("c.lut", "1 2 3\n4 5 6\n"), "tooFewRows", "fewer than 256 rows"}};
  for (const auto& [file, refusal, says] : cases) {
    const Outcome outcome = lut({"info", file, table(), "--json"});
    EXPECT_EQ(outcome.status, 1) << says;
    const json documents = json::parse(outcome.output);
    ASSERT_EQ(documents.size(), 2U);
    EXPECT_EQ(documents[0]["refusal"], refusal);
    EXPECT_EQ(documents[1]["rows"], 256);
    // Once and no more: the library's own message is held back.
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    EXPECT_THAT(outcome.errors, HasSubstr(says));
    EXPECT_THAT(lut({"info", file, table()}).output, AllOf(HasSubstr("ParsedOneDimension"), Not(HasSubstr("refus"))));
  }
}

TEST_F(LutCommand, SampleGivesWhatTheConverterGives) {
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

TEST_F(LutCommand, SampleRefusesWhatHasNoCodeValue) {
  const std::string negative =
      writeCube("negative.cube", [](int red, int, int) { return std::to_string(red - 1.5) + " 0 0.5"; });
  const std::string large = exactIdentityCube();
  const std::string zeros = writeCube("zeros.cube", [](int, int, int) { return "0 0 0"; });
  const struct {
    Words words;
    int status;
    std::string says;
  } cases[]{{{negative, "--depth", "8", "255", "9", "9", "0", "9", "9"}, 1, "sample 2 (0, 9, 9) has no code value"},
            {{negative, "--depth", "8", "0", "0", "0"}, 1, "below 0"},
            {{zeros, "--depth", "8", "1", "2", "3"}, 1, "nothing but zeros"},
            {{large, "--depth", "4", "18446744073709551615", "2", "3"}, 1, "from 4 bits to the table's 16"},
            {{"/missing.cube", "--depth", "8", "1", "2", "3"}, 1, "cannot be opened"},
            {{zeros, "1", "2", "3"}, 2, "--depth is missing"},
            {{zeros, "--depth", "64", "1", "2", "3"}, 2, "from 1 to 63"},
            {{zeros, "--depth", "8", "--out-depth", "0", "1", "2", "3"}, 2, "from 1 to 63"},
            {{zeros, "--depth", "8", "1", "2", "3", "4"}, 2, "4 are given"},
            {{zeros, "--depth", "8", "1", "-2", "3"}, 2, "\"-2\" is below 0"},
            {{zeros, "--depth", "8", "1", "18446744073709551616", "3"}, 2, "does not fit in 64 bits"},
            {{zeros, "--depth", "8", "1", "2.5", "3"}, 2, "\"2.5\" is no code value"},
            {{zeros, "--depth", "8"}, 2, "VALUE is missing"}};
  for (auto [words, status, says] : cases) {
    words.insert(words.begin(), "sample");
    const Outcome outcome = lut(words);
    EXPECT_EQ(outcome.status, status) << says;
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, HasSubstr(says));
  }
}

TEST_F(LutCommand, TheGroupIsThereInHelpCompletionAndManual) {
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
  EXPECT_EQ(completions("lut apply --axis-order r"), "red-fastest\n");
  EXPECT_EQ(completions("lut info ''"), "\n");  // left to file names
}

#ifdef MERIDIAN_HAS_IMAGE_FILES

using OIIO::ImageInput;
using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

/// An image as OpenImageIO gives it: single precision holds every sample of the kinds that are tried here.
struct Image {
  ImageSpec spec;
  std::vector<float> samples;
};

void writeImage(const std::string& path, const ImageSpec& spec, const std::vector<float>& samples) {
  const auto output = ImageOutput::create(path);
  ASSERT_TRUE(output && output->open(path, spec)) << path;
  ASSERT_TRUE(output->write_image(TypeDesc::FLOAT, samples.data()) && output->close()) << output->geterror();
}

Image readImage(const std::string& path) {
  ImageSpec wishes;
  wishes.attribute("oiio:UnassociatedAlpha", 1);
  const auto input = ImageInput::open(path, &wishes);
  if (!input) throw std::runtime_error(OIIO::geterror());
  Image image{input->spec(), {}};
  image.samples.resize(image.spec.image_pixels() * static_cast<std::size_t>(image.spec.nchannels));
  EXPECT_TRUE(input->read_image(0, 0, 0, image.spec.nchannels, TypeDesc::FLOAT, image.samples.data()));
  return image;
}

/// Every code value that the depth has, or as many samples of floating point, each channel in another order.
std::vector<float> ramps(const ImageSpec& spec, int bits) {
  const auto count = static_cast<std::size_t>(spec.image_pixels()) * static_cast<std::size_t>(spec.nchannels);
  const std::size_t largest = (std::size_t{1} << static_cast<unsigned>(bits)) - 1;
  std::vector<float> samples(count);
  for (std::size_t place = 0; place < count; ++place) {
    samples[place] = static_cast<float>(place * 7 % (largest + 1)) / static_cast<float>(largest);
  }
  return samples;
}

struct Kind {
  std::string name;
  TypeDesc type;
  int bits;
  int channels;
};

const Kind kinds[]{{"ten.dpx", TypeDesc::UINT16, 10, 3},     {"twelve.dpx", TypeDesc::UINT16, 12, 3},
                   {"sixteen.dpx", TypeDesc::UINT16, 16, 3}, {"alpha.dpx", TypeDesc::UINT16, 10, 4},
                   {"eight.png", TypeDesc::UINT8, 8, 3},     {"sixteen.png", TypeDesc::UINT16, 16, 4},
                   {"eight.tif", TypeDesc::UINT8, 8, 4},     {"twelve.tif", TypeDesc::UINT16, 12, 3},
                   {"sixteen.tif", TypeDesc::UINT16, 16, 3}, {"float.tif", TypeDesc::FLOAT, 16, 3},
                   {"half.exr", TypeDesc::HALF, 10, 4},      {"float.exr", TypeDesc::FLOAT, 16, 6}};

ImageSpec specOf(const Kind& kind) {
  ImageSpec spec(300, 80, kind.channels, kind.type);
  spec.attribute("oiio:BitsPerSample", kind.bits);
  spec.attribute("oiio:UnassociatedAlpha", 1);
  spec.attribute("compression", "zip");
  spec.attribute("ImageDescription", "a chart");
  if (kind.channels == 6) spec.channelnames = {"normal.X", "B", "G", "R", "A", "Z"};
  return spec;
}

TEST_F(LutCommand, ApplyingTheIdentityLeavesEveryKindOfImageAsItIs) {
  for (const Kind& kind : kinds) {
    writeImage(path(kind.name), specOf(kind), ramps(specOf(kind), kind.bits));
    const Image before = readImage(path(kind.name));
    const bool hasCodeValues = kind.type == TypeDesc::UINT8 || kind.type == TypeDesc::UINT16;
    const std::string cube = hasCodeValues ? exactIdentityCube() : identityCube();
    const Outcome outcome = lut({"apply", cube, path(kind.name), path("out-" + kind.name), "--threads", "1"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output + outcome.errors, IsEmpty());
    const Image after = readImage(path("out-" + kind.name));
    EXPECT_TRUE(before.samples == after.samples) << kind.name;
    EXPECT_EQ(after.spec.format, before.spec.format) << kind.name;
    EXPECT_EQ(after.spec.channelnames, before.spec.channelnames) << kind.name;
    for (const std::string attribute : {"oiio:BitsPerSample", "ImageDescription", "oiio:UnassociatedAlpha"}) {
      EXPECT_EQ(after.spec[attribute].get(), before.spec[attribute].get()) << kind.name << attribute;
    }
  }
}

TEST_F(LutCommand, ApplyChangesTheColoursAloneAndMayDoSoInPlace) {
  for (const Kind& kind : kinds) {
    const std::string file = path(kind.name);
    writeImage(file, specOf(kind), ramps(specOf(kind), kind.bits));
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    const Image before = readImage(file);
    ASSERT_EQ(lut({"apply", inverseCube(), file, file}).status, 0);
    const Image after = readImage(file);
    // One code value, spread over a sample: results are truncated.
    const float tolerance = kind.type == TypeDesc::FLOAT ? 1e-6F : 1.2F / static_cast<float>((1 << kind.bits) - 1);
    int wrong = 0;
    for (std::size_t place = 0; place < before.samples.size(); ++place) {
      const std::string& channel = before.spec.channelnames[place % before.spec.channelnames.size()];
      const bool isColor = channel == "R" || channel == "G" || channel == "B";
      const float expected = isColor ? 1 - before.samples[place] : before.samples[place];
      wrong += std::abs(after.samples[place] - expected) > (isColor ? tolerance : 0) ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0) << kind.name;
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  }
}

TEST_F(LutCommand, ApplyGivesWhatSampleGivesAtAnImagesRealDepth) {
  const std::string file = path("ten.dpx");
  writeImage(file, specOf(kinds[0]), ramps(specOf(kinds[0]), 10));
  const Image before = readImage(file);
  for (const std::string& cube : {inverseCube(), table()}) {
    ASSERT_EQ(lut({"apply", cube, file, path("out.dpx")}).status, 0);
    const Image after = readImage(path("out.dpx"));
    const auto converter = ParsedLutFactory::parsed(Url::fromFilePath(cube));
    const auto code = [](float sample) { return static_cast<std::uint64_t>(std::lround(sample * 1023)); };
    for (std::size_t place = 0; place < before.samples.size(); place += 3) {
      const float* const from = &before.samples[place];
      const float* const to = &after.samples[place];
      ASSERT_EQ((RGBSample{code(to[0]), code(to[1]), code(to[2])}),
                converter->inputConverter().convert(code(from[0]), code(from[1]), code(from[2]), 10))
          << place;
    }
  }
}

TEST_F(LutCommand, ApplyTakesItsOptions) {
  // Red comes out as what was blue when the rows are read in the other order.
  const std::string cube = identityCube();
  const ImageSpec spec(1, 1, 3, TypeDesc::UINT8);
  writeImage(path("in.png"), spec, {1, 0, 0});
  ASSERT_EQ(lut({"apply", cube, path("in.png"), path("out.png"), "--axis-order", "red-fastest"}).status, 0);
  EXPECT_EQ(readImage(path("out.png")).samples, (std::vector<float>{0, 0, 1}));
  const std::string half = writeCube("half.cube", [](int red, int green, int blue) {
    return std::to_string(red * 0.25) + " " + std::to_string(green * 0.25) + " " + std::to_string(blue * 0.25);
  });
  for (const auto& [domain, red] : {std::pair{"data", 0.5F}, {"declared", 0.25F}}) {
    writeImage(path("in.exr"), ImageSpec(1, 1, 3, TypeDesc::FLOAT), {0.5F, 0, 0});
    ASSERT_EQ(lut({"apply", half, path("in.exr"), path("out.exr"), "--domain", domain}).status, 0);
    EXPECT_NEAR(readImage(path("out.exr")).samples[0], red, 1e-6) << domain;
  }
}

TEST_F(LutCommand, ARefusedImageLeavesOutAsItWasAndNothingBehind) {
  const std::string cube = identityCube();
  const auto written = [this](const std::string& name, int channels, TypeDesc type) {
    writeImage(path(name), ImageSpec(64, 64, channels, type),
               std::vector<float>(static_cast<std::size_t>(64 * 64 * channels), 0.5F));
    return path(name);
  };
  const auto cut = [this](const std::string& from, const std::string& name) {
    const std::string all = contentsOf(from);
    return write(name, all.substr(0, all.size() / 2));
  };
  const std::string good = written("good?a=b.png", 3, TypeDesc::UINT8);
  const std::string several = path("several.tif");
  {
    const auto output = ImageOutput::create(several);
    const std::vector<ImageSpec> specs(2, ImageSpec(8, 8, 3, TypeDesc::UINT8));
    ASSERT_TRUE(output->open(several, 2, specs.data()));
    const std::vector<float> grey(192, 0.5F);
    ASSERT_TRUE(output->write_image(TypeDesc::FLOAT, grey.data()));
    ASSERT_TRUE(output->open(several, specs[1], ImageOutput::AppendSubimage));
    ASSERT_TRUE(output->write_image(TypeDesc::FLOAT, grey.data()) && output->close());
  }
  const std::string old = write("old.png", "what was there");
  fs::create_directory(path("folder.png"));
  fs::create_symlink("not there.png", path("link.png"));
  const struct {
    std::string in, out, says;
  } cases[]{{written("grey.png", 1, TypeDesc::UINT8), old, "has 1 channel; a look-up table needs red, green and blue"},
            {written("double.tif", 3, TypeDesc::DOUBLE), path("old.tif"), "double"},
            {several, path("old.tif"), "holds several images"},
            {cut(written("whole.tif", 3, TypeDesc::FLOAT), "cut.tif"), path("old.tif"), "cannot be read"},
            {cut(written("whole.dpx", 3, TypeDesc::UINT16), "cut.dpx"), path("old.dpx"), "ends before its last row"},
            {cut(written("whole.exr", 3, TypeDesc::HALF), "cut.exr"), path("old.exr"), "be read: OpenEXR"},
            {write("text.png", "no image"), old, "is no image that can be read"},
            {path("missing\n.png"), old, "missing\\n.png\" cannot be read: No such file or directory"},
            {path("folder.png"), old, "is no file"},
            {path("whole.exr"), old, "hold no samples of the kind \"half\""},
            {written("seven.tif", 7, TypeDesc::UINT8), path("old.dpx"), "do not hold the 7 channels"},
            {written("seven.tif", 7, TypeDesc::UINT8), path("old.jpg"), "do not hold the 7 channels"},
            {written("alpha.png", 4, TypeDesc::UINT8), path("old.jpg"), "do not hold the 4 channels"},
            {good, path("link.png"), "a link to a file that is not there"},
            {good, path("none/out.png"), "No such file or directory"},
            {good, path("out"), "has no extension"},
            {good, path("out.xyz"), "has the extension \"xyz\""},
            {good, path("folder.png"), "Is a directory"}};
  for (const auto& each : cases) {
    if (each.out.find("old.") != std::string::npos) write(fs::path(each.out).filename(), "what was there");
    const Words before = fileNames();
    const Outcome outcome = lut({"apply", cube, each.in, each.out});
    EXPECT_EQ(outcome.status, 1) << each.says;
    EXPECT_THAT(outcome.errors, HasSubstr(each.says));
    EXPECT_EQ(fileNames(), before) << each.says;
    const bool wasThere = each.out.find("old.") != std::string::npos;
    EXPECT_TRUE(!wasThere || contentsOf(each.out) == "what was there") << each.says;
  }
  EXPECT_EQ(lut({"apply", cube, good, old, "--threads", "-1"}).status, 2);
}

TEST_F(LutCommand, ApplyLeavesNothingBehindWhenItIsInterrupted) {
  // Packing such an image takes far longer than the signal.
  writeImage(path("in.tif"), ImageSpec(2000, 1500, 3, TypeDesc::UINT16),
             ramps(ImageSpec(2000, 1500, 3, TypeDesc::UINT16), 16));
  const Outcome outcome =
      test::run({"bash", "-c",
                 "(cd \"$1\" && exec \"$0\" lut apply table.lut in.tif out.png) & "
                 "cd \"$1\"; until compgen -G '.meridian-*' >&2 || ! kill -0 $!; do sleep 0.01; done; "
                 "kill -TERM $!; wait $!",
                 MERIDIAN_COMMAND, fs::path(table()).parent_path()});
  EXPECT_EQ(outcome.status, 128 + SIGTERM);
  EXPECT_THAT(outcome.errors, HasSubstr(".meridian-"));
  EXPECT_THAT(fileNames(), testing::ElementsAre("in.tif", "table.lut"));
}

#else

TEST_F(LutCommand, ApplySaysThatThisBuildHasNoImages) {
  const Outcome outcome = lut({"apply", table(), "in.png", "out.png"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("cannot read and write images"));
}

#endif

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
  EXPECT_EQ(lut({"plot", table(), path("plot.jpg")}).status, 2);
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
