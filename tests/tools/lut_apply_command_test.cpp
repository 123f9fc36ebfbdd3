#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <random>
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
                   {"eight.bmp", TypeDesc::UINT8, 8, 3},     {"eight.tga", TypeDesc::UINT8, 8, 4},
                   {"eight.ppm", TypeDesc::UINT8, 8, 3},     {"ten.tif", TypeDesc::UINT16, 10, 3},
                   {"eight.tif", TypeDesc::UINT8, 8, 4},     {"twelve.tif", TypeDesc::UINT16, 12, 3},
                   {"sixteen.tif", TypeDesc::UINT16, 16, 3}, {"float.tif", TypeDesc::FLOAT, 16, 3},
                   {"half.exr", TypeDesc::HALF, 10, 4},      {"float.exr", TypeDesc::FLOAT, 16, 6}};

ImageSpec specOf(const Kind& kind) {
  // More rows than are converted at a time.
  ImageSpec spec(60, 400, kind.channels, kind.type);
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
    const Outcome outcome = lut({"apply", identityCube(), path(kind.name), path("out-" + kind.name), "--threads", "1"});
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
    ASSERT_EQ(lut({"apply", cube, file, path("out.dpx"), "--reading", "suite"}).status, 0);
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
  ASSERT_EQ(lut({"apply", identityCube(), path("ten.dpx"), path("sixteen.png")}).status, 0);
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
  // Read in the suite's order, the rows exchange red and blue.
  const std::string cube = identityCube();
  const ImageSpec spec(1, 1, 3, TypeDesc::UINT8);
  writeImage(path("in.png"), spec, {1, 0, 0});
  ASSERT_EQ(lut({"apply", cube, path("in.png"), path("out.png"), "--axis-order", "blue-fastest"}).status, 0);
  EXPECT_EQ(readImage(path("out.png")).samples, (std::vector<float>{0, 0, 1}));
  ASSERT_EQ(lut({"apply", cube, path("in.png"), path("out.png")}).status, 0);
  EXPECT_EQ(readImage(path("out.png")).samples, (std::vector<float>{1, 0, 0}));
  const std::string half = writeCube("half.cube", [](int red, int green, int blue) {
    return std::to_string(red * 0.25) + " " + std::to_string(green * 0.25) + " " + std::to_string(blue * 0.25);
  });
  for (const auto& [domain, red] : {std::pair{"data", 0.5F}, {"declared", 0.25F}}) {
    writeImage(path("in.exr"), ImageSpec(1, 1, 3, TypeDesc::FLOAT), {0.5F, 0.5F, 0.5F});
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
  fs::create_directory(path("directory.png"));
  fs::create_symlink("not there.png", path("link.png"));
  const struct {
    std::string in, out, says;
  } cases[]{{written("grey.png", 1, TypeDesc::UINT8), old, "has 1 channel; a LUT needs red, green and blue"},
            {written("double.tif", 3, TypeDesc::DOUBLE), path("old.tif"), "double"},
            {several, path("old.tif"), "holds several images"},
            {cut(written("whole.tif", 3, TypeDesc::FLOAT), "cut.tif"), path("old.tif"), "cannot be read"},
            {cut(written("whole.dpx", 3, TypeDesc::UINT16), "cut.dpx"), path("old.dpx"), "ends before its last row"},
            {cut(written("whole.exr", 3, TypeDesc::HALF), "cut.exr"), path("old.exr"), "be read: OpenEXR"},
            {write("text.png", "no image"), old, "is not an image of a supported format; supported are DPX, EXR"},
            {path("missing\n.png"), old, "missing\\n.png\" cannot be read: No such file or directory"},
            {path("directory.png"), old, "is not a regular file"},
            {path("whole.exr"), old, "do not hold the samples of type \"half\""},
            {written("seven.tif", 7, TypeDesc::UINT8), path("old.dpx"), "do not hold the 7 channels"},
            {written("seven.tif", 7, TypeDesc::UINT8), path("old.jpg"), "do not hold the 7 channels"},
            {written("alpha.png", 4, TypeDesc::UINT8), path("old.jpg"), "do not hold the 4 channels"},
            {good, path("link.png"), "a link to a file that does not exist"},
            {good, path("none/out.png"), "No such file or directory"},
            {good, path("out"), "has no extension"},
            {good, path("out.xyz"), "has the extension \"xyz\""},
            {good, path("directory.png"), "Is a directory"}};
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
  EXPECT_EQ(lut({"apply", cube, good, old, "--threads", "-1"}).status, 1);
}

TEST_F(LutCommand, ApplyLeavesNoUnfinishedFileHoweverItEnds) {
  // Packing such an image takes far longer than the signal.
  writeImage(path("in.tif"), ImageSpec(2000, 1500, 3, TypeDesc::UINT16),
             ramps(ImageSpec(2000, 1500, 3, TypeDesc::UINT16), 16));
  const std::string directory = fs::path(table()).parent_path();
  for (const int signal : {SIGTERM, SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGKILL}) {
    const Outcome outcome =
        test::run({"bash", "-c",
                   // The address sanitizer would report these signals and exit instead.
                   "export ASAN_OPTIONS=$ASAN_OPTIONS:handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_abort=0; "
                   "ulimit -c 0; (cd \"$1\" && exec \"$0\" lut apply table.lut in.tif out.png) & "
                   "until ls -l /proc/$!/fd 2>/dev/null | grep -F \"$1/\" | grep -e deleted -e .meridian- >&2; do "
                   "kill -0 $! || exit 99; sleep 0.01; done; "
                   "kill -$2 $!; wait $!",
                   MERIDIAN_COMMAND, directory, std::to_string(signal)});
    EXPECT_EQ(outcome.status, 128 + signal) << outcome.errors;
    EXPECT_THAT(fileNames(), testing::ElementsAre("in.tif", "table.lut"));
  }
}

TEST_F(LutCommand, AFullDiskLeavesTheImageAsItWas) {
  // A limit on the size of files fails the same writes as a disk that is full.
  for (const std::string extension : {"bmp", "tga", "ppm", "png", "jpg", "webp", "dpx", "tif", "exr", "hdr"}) {
    const std::string file = path("shot." + extension);
    const bool isFloat = extension == "exr" || extension == "hdr";
    const ImageSpec spec(320, 200, 3, isFloat ? TypeDesc::FLOAT : TypeDesc::UINT8);
    std::vector<float> noise(std::size_t{320} * 200 * 3);
    std::mt19937 random(1);
    for (float& sample : noise) sample = static_cast<float>(random() % 256) / 255;
    writeImage(file, spec, noise);
    const std::string before = contentsOf(file);
    const std::string cube = identityCube();
    const Words names = fileNames();
    for (const int kibibytes : {1, 16}) {
      ASSERT_GT(before.size(), 1024U * static_cast<unsigned>(kibibytes)) << extension;
      const Outcome outcome =
          test::run({"bash", "-c", "trap '' XFSZ; ulimit -f $3; exec \"$0\" lut apply \"$1\" \"$2\" \"$2\"",
                     MERIDIAN_COMMAND, cube, file, std::to_string(kibibytes)});
      EXPECT_EQ(outcome.status, 1) << extension << kibibytes << outcome.errors;
      EXPECT_THAT(outcome.errors, HasSubstr("cannot be written")) << extension;
      EXPECT_TRUE(contentsOf(file) == before) << extension << kibibytes;
      EXPECT_EQ(fileNames(), names);
    }
    EXPECT_EQ(lut({"apply", cube, file, file}).status, 0) << extension;
  }
}

/// Sets some bytes of a big-endian file's header.
std::string patched(std::string contents, std::size_t place, std::size_t bytes, std::uint32_t value) {
  for (std::size_t i = 0; i < bytes; ++i) contents[place + i] = static_cast<char>(value >> 8U * (bytes - 1 - i));
  return contents;
}

TEST_F(LutCommand, PaddingInDpxIsReadAndNotWritten) {
  ImageSpec spec(33, 20, 3, TypeDesc::UINT8);
  spec.attribute("oiio:Endian", "big");
  writeImage(path("good.dpx"), spec, ramps(spec, 8));
  const std::string good = contentsOf(path("good.dpx"));
  const std::size_t row = std::size_t{33} * 3;
  const std::size_t first = good.size() - 20 * row;
  for (const std::uint32_t padding : {0U, 4U, 64U, 1000U, 0xFFFFFFFFU}) {
    const std::size_t bytes = padding == 0xFFFFFFFF ? 0 : padding;
    std::string padded = good.substr(0, first);
    for (std::size_t i = 0; i < 20; ++i) padded += good.substr(first + i * row, row) + std::string(bytes, 'x');
    padded = patched(patched(padded + std::string(bytes, 'x'), 812, 4, padding), 816, 4, padding);
    const Outcome outcome = lut({"apply", identityCube(), write("padded.dpx", padded), path("out.dpx")});
    ASSERT_EQ(outcome.status, 0) << padding << outcome.errors;
    EXPECT_TRUE(readImage(path("out.dpx")).samples == readImage(path("good.dpx")).samples) << padding;
    EXPECT_EQ(contentsOf(path("out.dpx")).size(), good.size());
    EXPECT_EQ(contentsOf(path("out.dpx")).substr(0, 4), "SDPX");
  }
}

TEST_F(LutCommand, KindsOfDpxThatWouldBeReadWronglyAreErrors) {
  ImageSpec spec(31, 4, 3, TypeDesc::UINT16);
  spec.attribute("oiio:BitsPerSample", 10);
  spec.attribute("oiio:Endian", "big");
  writeImage(path("rgb.dpx"), spec, ramps(spec, 10));
  const std::string good = contentsOf(path("rgb.dpx"));
  ASSERT_EQ(lut({"apply", identityCube(), path("rgb.dpx"), path("out.dpx")}).status, 0);
  const struct {
    std::size_t place, bytes;
    std::uint32_t value;
    std::string says;
  } cases[]{{770, 2, 2, "holds several images"},
            {780, 4, 1, "signed samples"},
            {806, 2, 1, "run-length encoded"},
            {800, 1, 102, "its image descriptor is 102"},
            {800, 1, 6, "has 1 channel"},
            {803, 1, 1, "a DPX bit depth of 1 is not supported; expected 8, 10, 12, 16 or 32"},
            {803, 1, 64, "a DPX bit depth of 64 is not supported"},
            {804, 2, 7, "packing"},
            {800, 1, 51, "10-bit DPX with alpha is not supported at this width"},
            {776, 4, 5, "it ends before its last row"},
            {776, 4, 0, "has no pixels"},
            {768, 2, 5, "lines run from top to bottom"},
            {32, 4, 0x7F000000, "it ends before its user data do"},
            {812, 4, 4, "it ends before its last row"}};
  for (const auto& each : cases) {
    const std::string file = write("odd.dpx", patched(good, each.place, each.bytes, each.value));
    const Outcome outcome = lut({"apply", identityCube(), file, path("none.dpx")});
    EXPECT_EQ(outcome.status, 1) << each.says;
    EXPECT_THAT(outcome.errors, HasSubstr(each.says));
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    EXPECT_FALSE(fs::exists(path("none.dpx")));
  }
}

TEST_F(LutCommand, ApplyChangesTheChannelsCalledRedGreenAndBlueOrThoseOfALayer) {
  const auto applied = [this](const Words& channels, const Words& options) {
    ImageSpec spec(1, 1, static_cast<int>(channels.size()), TypeDesc::FLOAT);
    spec.channelnames = channels;
    writeImage(path("in.exr"), spec, std::vector<float>(channels.size(), 0.25F));
    fs::remove(path("out.exr"));
    Words words{"apply", inverseCube(), path("in.exr"), path("out.exr")};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome outcome = lut(words);
    if (outcome.status != 0) return outcome.errors.substr(outcome.errors.find("in.exr"));
    const Image image = readImage(path("out.exr"));
    std::string changed;
    for (std::size_t i = 0; i < image.samples.size(); ++i) {
      if (image.samples[i] == 0.75F) changed += image.spec.channelnames[i] + " ";
    }
    return changed;
  };
  const Words layers{"AO", "beauty.R", "beauty.G", "beauty.B", "spec.R", "spec.G", "spec.B"};
  EXPECT_EQ(applied({"R", "G", "B", "spec.R", "spec.G", "spec.B"}, {}), "R G B ");
  EXPECT_EQ(applied({"r", "g", "b"}, {}), "r g b ");
  EXPECT_EQ(applied({"R", "G", "B", "spec.R", "spec.G", "spec.B"}, {"--layer", "spec"}), "spec.R spec.G spec.B ");
  EXPECT_EQ(applied({"a.b.R", "a.b.G", "a.b.B"}, {"--layer", "a.b"}), "a.b.R a.b.G a.b.B ");
  EXPECT_THAT(applied(layers, {}), HasSubstr("are \"beauty\", \"spec\": choose with --layer NAME"));
  EXPECT_THAT(applied({"AO", "spec.R", "spec.G", "spec.B"}, {}), HasSubstr("is \"spec\": choose with --layer NAME"));
  EXPECT_THAT(applied(layers, {"--layer", "Beauty"}), HasSubstr("no layer \"Beauty\" with channels R, G and B; its"));
  EXPECT_THAT(applied(layers, {"--layer", ""}), HasSubstr("the name of the layer is empty; its layers"));
  EXPECT_THAT(applied({"R", "G", "B"}, {"--layer", ""}), HasSubstr("it has no layer with"));
  EXPECT_THAT(applied({"N.X", "N.Y", "N.Z"}, {}), HasSubstr("its channels are \"N.X\", \"N.Y\", \"N.Z\""));
  EXPECT_THAT(applied({"R", "G", "A"}, {}), HasSubstr("has no channels R, G and B"));
}

TEST_F(LutCommand, LossyFormatsMayStoreAnotherValueForInfinity) {
  const std::string cube = writeCube("negative.cube", [](int red, int green, int blue) {
    return std::to_string(1 - red * 50000) + " " + std::to_string(1 - green * 50000) + " " +
           std::to_string(1 - blue * 50000);
  });
  for (const std::string compression : {"dwaa", "b44"}) {
    ImageSpec spec(32, 32, 3, TypeDesc::HALF);
    spec.attribute("compression", compression);
    std::vector<float> samples(std::size_t{32} * 32 * 3, 0.25F);
    std::fill_n(samples.begin(), 12, 1.0F);  // results in -99999, and half ends at -65504
    writeImage(path("in.exr"), spec, samples);
    const Outcome outcome = lut({"apply", cube, path("in.exr"), path("out.exr")});
    EXPECT_EQ(outcome.status, 0) << compression << outcome.errors;
  }
}

TEST_F(LutCommand, ContentsDecideTheFormatAndOnlyRegularFilesOfKnownFormatsAreOpened) {
  writeImage(path("image.png"), ImageSpec(2, 2, 3, TypeDesc::UINT8), std::vector<float>(12, 0.5F));
  fs::rename(path("image.png"), path("image.dpx"));
  EXPECT_EQ(lut({"apply", identityCube(), path("image.dpx"), path("out.bmp")}).status, 0);
  ASSERT_EQ(mkfifo(path("pipe.dpx").c_str(), 0600), 0);
  for (const std::string& file : {path("pipe.dpx"), std::string("/dev/zero")}) {
    EXPECT_THAT(lut({"apply", identityCube(), file, path("out.dpx")}).errors, HasSubstr("is not a regular file"));
  }
  for (const std::string& beginning :
       {std::string("SIMPLE  = T"), std::string("FOR4....CIMG"), std::string("\x01\xda\0\x01", 4), std::string()}) {
    EXPECT_THAT(lut({"apply", identityCube(), write("other.tif", beginning), path("out.dpx")}).errors,
                HasSubstr("is not an image of a supported format; supported are DPX, EXR, TIFF, PNG, JPEG"));
  }
  EXPECT_THAT(lut({"apply", identityCube(), path("image.dpx"), path("out.cin")}).errors,
              HasSubstr("Cineon files can only be read"));
}

TEST_F(LutCommand, ApplyChangesManyImagesAndReportsThoseThatFail) {
  const ImageSpec spec(20, 10, 3, TypeDesc::UINT16);
  const std::vector<float> samples(600, 0.25F);
  fs::create_directory(path("scan"));
  fs::create_directory(path("graded"));
  Words all{"apply", inverseCube()};
  for (int frame = 0; frame < 20; ++frame) {
    all.push_back(path("scan/" + std::to_string(frame) + (frame % 2 == 0 ? ".dpx" : ".png")));
    writeImage(all.back(), spec, samples);
  }
  const auto call = [&all](const Words& options) {
    Words words = all;
    words.insert(words.end(), options.begin(), options.end());
    return lut(words);
  };
  ASSERT_EQ(lut({"apply", inverseCube(), all[2], path("one.dpx")}).status, 0);
  const Outcome outcome = call({"--to", path("graded"), "--threads", "64"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(outcome.output + outcome.errors, IsEmpty());
  for (std::size_t i = 2; i < all.size(); ++i) {
    const fs::path result = fs::path(path("graded")) / fs::path(all[i]).filename();
    EXPECT_TRUE(readImage(result).samples == readImage(path("one.dpx")).samples) << result;
  }

  fs::copy_file(path("one.dpx"), path("graded/5.png"), fs::copy_options::overwrite_existing);
  write("scan/7.png", "no image");
  const Outcome some = call({"--to", path("scan"), "--threads", "3", "--", path("missing.dpx")});
  EXPECT_EQ(some.status, 1);
  EXPECT_THAT(some.errors, testing::AllOf(HasSubstr("7.png\" is not an image"), HasSubstr("missing.dpx\" cannot be"),
                                          testing::EndsWith("meridian: 2 of 21 images failed\n")));
  EXPECT_EQ(std::ranges::count(some.errors, '\n'), 3) << some.errors;
  EXPECT_EQ(contentsOf(path("scan/7.png")), "no image");
  EXPECT_TRUE(readImage(path("scan/19.png")).samples == readImage(path("one.dpx")).samples);
  EXPECT_EQ(std::distance(fs::directory_iterator(path("scan")), {}), 20);

  const std::string before = contentsOf(all[2]);
  EXPECT_EQ(call({path("graded/4.dpx"), "--to", path("graded")}).status, 2);
  // A LUT is never applied twice to a file that has two names.
  fs::create_symlink("2.dpx", path("scan/link.dpx"));
  EXPECT_THAT(call({path("scan/link.dpx"), "--to", path("scan")}).errors, HasSubstr("are the same file"));
  fs::create_symlink("../scan/4.dpx", path("graded/link.dpx"));
  EXPECT_THAT(lut({"apply", inverseCube(), path("scan/link.dpx"), all[6], "--to", path("graded")}).errors,
              HasSubstr("is also the result of"));
  EXPECT_EQ(call({"--to", path("one.dpx")}).status, 1);
  EXPECT_EQ(call({"--to", path("nowhere")}).status, 1);
  EXPECT_THAT(call({}).errors, HasSubstr("give IN... --to DIR"));
  EXPECT_EQ(lut({"apply", inverseCube(), all[2]}).status, 2);
  EXPECT_EQ(contentsOf(all[2]), before);
}

// The sanitizers of addresses and threads need more address space than any limit leaves.
#ifdef __has_feature
#define MERIDIAN_HAS_FEATURE(name) __has_feature(name)
#else
#define MERIDIAN_HAS_FEATURE(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || MERIDIAN_HAS_FEATURE(address_sanitizer) || \
    MERIDIAN_HAS_FEATURE(thread_sanitizer)
constexpr bool limitsAreUsable = false;
#else
constexpr bool limitsAreUsable = true;
#endif

TEST_F(LutCommand, WithLittleMemoryApplyFailsWithOneLine) {
  if (!limitsAreUsable) GTEST_SKIP() << "under a sanitizer";
  const ImageSpec spec(20, 10, 3, TypeDesc::UINT16);
  writeImage(path("in.dpx"), spec, std::vector<float>(600, 0.25F));
  for (const std::string kibibytes : {"100000", "400000", "450000", "600000", "800000", "1500000"}) {
    const Outcome outcome = test::run(
        {"bash", "-c", "ulimit -c 0; ulimit -v $3; exec timeout 30 \"$0\" lut apply \"$1\" \"$2\" \"$2\" --threads 256",
         MERIDIAN_COMMAND, identityCube(), path("in.dpx"), kibibytes});
    EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << kibibytes << outcome.errors;
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), outcome.status) << outcome.errors;
    if (kibibytes == "400000") {
      EXPECT_THAT(outcome.errors, HasSubstr("too little memory"));
    }
  }
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
