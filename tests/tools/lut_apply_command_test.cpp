#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "meridian/lut/parsed_lut_factory.h"
#include "tests/support/process.h"
#include "tests/tools/lut_command_files.h"

#ifdef MERIDIAN_HAS_IMAGE_FILES
#include <OpenImageIO/imageio.h>
#endif

namespace meridian {
namespace {

namespace fs = std::filesystem;
using test::lut;
using test::LutCommand;
using test::Outcome;
using testing::HasSubstr;

#ifdef MERIDIAN_HAS_IMAGE_FILES

using OIIO::ImageInput;
using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;
using test::contentsOf;
using test::Words;
using testing::IsEmpty;

/// An image as OpenImageIO reads it: single precision holds every sample of the kinds that are tested here.
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

/// Returns every code value of the depth, or as many samples of floating point, each channel in another order.
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

TEST_F(LutCommand, AnIdentityLeavesEveryKindOfImageAsItIs) {
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

TEST_F(LutCommand, ApplyChangesOnlyTheColoursAlsoInPlace) {
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

TEST_F(LutCommand, ApplyReturnsWhatSampleReturnsAtAnImagesRealDepth) {
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

TEST_F(LutCommand, WhiteOfTenBitsIsWhiteInAFileOfSixteenBits) {
  ImageSpec spec(4, 1, 3, TypeDesc::UINT16);
  spec.attribute("oiio:BitsPerSample", 10);
  const std::vector<float> greys{0, 0, 0, 512 / 1023.0F, 512 / 1023.0F, 512 / 1023.0F, 1, 1, 1, 0, 1, 1};
  writeImage(path("ten.dpx"), spec, greys);
  ASSERT_EQ(lut({"apply", exactIdentityCube(), path("ten.dpx"), path("sixteen.png")}).status, 0);
  const Image after = readImage(path("sixteen.png"));
  const auto code = [&after](std::size_t place) { return std::lround(after.samples[place] * 65535); };
  EXPECT_EQ(after.spec.format, TypeDesc::UINT16);
  EXPECT_EQ(code(0), 0);
  EXPECT_EQ(code(3), 512 << 6 | 512 >> 4);
  EXPECT_EQ(code(6), 65535);
  EXPECT_EQ(code(9), 0);
  EXPECT_EQ(code(10), 65535);
}

TEST_F(LutCommand, ApplyFollowsItsOptions) {
  // Read in the other order, the rows exchange red and blue.
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

TEST_F(LutCommand, AFailureLeavesOutAsItWasAndNoTemporaryFile) {
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
  } cases[]{{written("grey.png", 1, TypeDesc::UINT8), old, "has 1 channel; a LUT needs red, green and blue"},
            {written("double.tif", 3, TypeDesc::DOUBLE), path("old.tif"), "double"},
            {several, path("old.tif"), "holds several images"},
            {cut(written("whole.tif", 3, TypeDesc::FLOAT), "cut.tif"), path("old.tif"), "cannot be read"},
            {cut(written("whole.dpx", 3, TypeDesc::UINT16), "cut.dpx"), path("old.dpx"), "ends before its last row"},
            {cut(written("whole.exr", 3, TypeDesc::HALF), "cut.exr"), path("old.exr"), "be read: OpenEXR"},
            {write("text.png", "no image"), old, "is not an image that can be read"},
            {path("missing\n.png"), old, "missing\\n.png\" cannot be read: No such file or directory"},
            {path("folder.png"), old, "is not a file"},
            {path("whole.exr"), old, "do not hold samples of type \"half\""},
            {written("seven.tif", 7, TypeDesc::UINT8), path("old.dpx"), "do not hold the 7 channels"},
            {written("seven.tif", 7, TypeDesc::UINT8), path("old.jpg"), "do not hold the 7 channels"},
            {written("alpha.png", 4, TypeDesc::UINT8), path("old.jpg"), "do not hold the 4 channels"},
            {good, path("link.png"), "a link to a file that does not exist"},
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

TEST_F(LutCommand, AnInterruptedApplyLeavesNoTemporaryFile) {
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

}  // namespace
}  // namespace meridian
