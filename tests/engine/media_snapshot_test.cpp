// Stills of real clips, whose frames carry their numbers.
#include "meridian/engine/media_snapshot.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Bit n of the frame's number is the brightness of block n, each 16 x 16 pixels.
constexpr std::string_view numbered = "geq=lum='if(mod(floor(N/pow(2,floor(X/16))),2),235,16)':cb=128:cr=128";

class MediaSnapshotTest : public MadeMedia {
 protected:
  /// Makes a clip of 100 numbered frames of 128 x 16 pixels, 25 a second.
  void makeNumbered(const std::string& name, const std::string& options, const std::string& filter = {}) {
    std::vector<std::string> command{
        "ffmpeg",
        "-v",
        "error",
        "-nostdin",
        "-y",
        "-f",
        "lavfi",
        "-i",
        "color=black:size=128x16:rate=25:duration=4,format=yuv420p," + std::string(numbered),
        "-f",
        "lavfi",
        "-i",
        "sine=duration=8"};
    command.insert(command.end(), {"-vf", "null" + filter, "-map", "0:v"});
    std::istringstream words(options);
    command.insert(command.end(), std::istream_iterator<std::string>(words), {});
    command.insert(command.end(), {"file:" + path(name)});
    const Outcome outcome = run(command);
    ASSERT_EQ(outcome.status, 0) << name << ": " << outcome.errors;
  }

  /// Returns the image as pixels of RGB, scaled to this size.
  [[nodiscard]] std::string pixels(const std::string& jpeg, const std::string& size) const {
    directory().write("snapshot.jpg", jpeg);
    const Outcome outcome = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("snapshot.jpg"), "-vf",
                                 "scale=" + size + ":flags=area", "-pix_fmt", "rgb24", "-f", "rawvideo", "-"});
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
  }

  /// Returns the numbers of the frames at the locations, "-" for one without an image.
  [[nodiscard]] std::string numbersIn(const std::string& name, const std::vector<double>& locations = {
                                                                   0, 0.1, 0.3, 0.5, 0.7, 0.99, 1, 0.29, 0}) const {
    auto snapshots = MediaSnapshots::open(described(name));
    if (!snapshots) return snapshots.error().message();
    std::size_t count = 0;
    std::vector<bool> isThere;
    for (const double location : locations) {
      const auto image = snapshots->at(location);
      isThere.push_back(image.has_value());
      if (image) directory().write("s" + std::to_string(count++) + ".jpg", image->jpeg);
    }
    const std::string blocks = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("s%d.jpg"), "-vf",
                                    "scale=8:1:flags=area", "-pix_fmt", "gray", "-f", "rawvideo", "-"})
                                   .output;
    std::string numbers;
    std::size_t image = 0;
    for (const bool isImage : isThere) {
      if (!isImage) {
        numbers += "- ";
        continue;
      }
      int number = 0;
      for (std::size_t bit = 0; bit < 8; ++bit) {
        if (static_cast<std::uint8_t>(blocks.at(8 * image + bit)) > 127) number |= 1 << bit;
      }
      numbers += std::to_string(number) + ' ';
      ++image;
    }
    return numbers;
  }
};

TEST_F(MediaSnapshotTest, ShowsTheRightFrame) {
  constexpr std::string_view constant = "0 10 30 50 70 99 99 29 0 ";
  struct Clip {
    std::string name;
    std::string options;
    std::string_view numbers = constant;
    std::string filter = {};
  };
  const std::vector<Clip> clips{
      {"long.mov", "-c:v libx264 -g 250 -bf 3"},
      {"short.mp4", "-c:v libx264 -g 12 -bf 3"},
      {"open.mp4", "-c:v libx264 -g 12 -bf 3 -x264-params open-gop=1"},
      {"open.ts", "-c:v libx264 -g 12 -bf 3 -x264-params open-gop=1"},
      {"long.mkv", "-c:v libx264 -g 250 -bf 3"},
      {"refresh.mkv", "-c:v libx264 -g 30 -x264-params intra-refresh=1"},
      {"clip.avi", "-c:v libx264 -g 30 -bf 3"},
      {"bare.h264", "-c:v libx264 -g 30 -bf 3"},
      {"hevc.mp4", "-c:v libx265 -x265-params log-level=none:keyint=12"},
      {"ten.mp4", "-c:v libx264 -g 30 -bf 3 -pix_fmt yuv422p10le"},
      {"mpeg2.ts", "-c:v mpeg2video -g 12 -bf 2 -q:v 2"},
      // Its images state half of their rate.
      {"half.ts", "-c:v libx264 -g 12 -bf 3 -bsf:v h264_metadata=tick_rate=25"},
      {"mpeg2.mxf", "-c:v mpeg2video -g 12 -bf 2 -q:v 2"},
      {"prores.mov", "-c:v prores_ks"},
      {"dnx.mxf", "-c:v dnxhd -profile:v dnxhr_sq", constant, ",scale=512:128:flags=neighbor"},
      {"animated.gif", ""},
      // The sound is twice as long, so that the images end in the middle of the file.
      {"sound.mov", "-c:v libx264 -g 30 -c:a aac -map 1:a"},
      {"sound.mkv", "-c:v libx264 -g 30 -c:a aac -map 1:a"},
      {"untimed.mpg", "-c:v mpeg2video -q:v 2 -bf 2 -g 12"},
      // From frame 50 on, each but the last is shown twice as long.
      {"variable.mkv", "-c:v libx264 -g 30 -bf 3 -vsync vfr", "0 14 44 62 77 98 99 43 0 ",
       ",setpts='if(lt(N,50),N,2*N-50)/25/TB'"},
  };
  for (const Clip& clip : clips) {
    ASSERT_NO_FATAL_FAILURE(makeNumbered(clip.name, clip.options, clip.filter));
    EXPECT_EQ(numbersIn(clip.name), clip.numbers) << clip.name;
  }
}

TEST_F(MediaSnapshotTest, ShowsTheRightImageOfAFolderAndOfAStill) {
  std::filesystem::create_directory(path("folder"));
  ASSERT_NO_FATAL_FAILURE(makeNumbered("folder/n%03d.png", "-frames:v 10"));
  EXPECT_EQ(numbersIn("folder"), "0 1 3 5 7 9 9 2 0 ");
  EXPECT_EQ(numbersIn("folder/n008.png"), "7 7 7 7 7 7 7 7 7 ");
  ASSERT_NO_FATAL_FAILURE(makeNumbered("n.tiff", "-frames:v 1 -update 1", ",select='eq(n,5)'"));
  EXPECT_EQ(numbersIn("n.tiff", {0}), "5 ");
}

TEST_F(MediaSnapshotTest, SaysWhichFrameItShows) {
  ASSERT_NO_FATAL_FAILURE(
      makeNumbered("clip.mov", "-c:v libx264 -r 30000/1001 -timecode 00:00:58;28", ",settb=1/25,setpts=N"));
  auto snapshots = MediaSnapshots::open(described("clip.mov"));
  ASSERT_TRUE(snapshots);
  const MediaSnapshot last = snapshots->at(1).value();
  ASSERT_EQ(described("clip.mov").video.at(0).frameCount, last.frame.value() + 1);
  EXPECT_NEAR(last.seconds.value(), static_cast<double>(*last.frame) * 1.001 / 30, 1e-6);
  EXPECT_EQ(last.timecode, described("clip.mov").timecode->end);
  EXPECT_EQ(snapshots->at(0)->timecode->timecodeString(), "00:00:58;28");
}

TEST_F(MediaSnapshotTest, HasTheShapeOfTheVideoAsItIsShown) {
  // The quarter at the upper left is bright.
  const std::string corner = ",scale=64:32,setsar=1,geq=lum='if(lt(X,32)*lt(Y,16),235,16)':cb=128:cr=128";
  const std::string options = "-c:v mpeg4 -q:v 2 -frames:v 5 ";
  ASSERT_NO_FATAL_FAILURE(makeNumbered("plain.mov", options, corner));
  ASSERT_NO_FATAL_FAILURE(makeNumbered("wide.mov", options, corner + ",setsar=3/2"));
  // The matrix by which players turn: a b, c d, in 16.16 fixed point.
  const auto turn = [this](const std::string& from, const std::string& to, std::array<int, 4> matrix, int one = 1) {
    std::string clip = content(from);
    const std::size_t place = clip.find("tkhd") + 44;
    for (const std::size_t each : {0U, 1U, 2U, 3U}) {
      putBigEndian(clip, place + 4 * each + 4 * (each / 2),
                   static_cast<std::uint32_t>(matrix.at(each) * (0x10000 / one)));
    }
    directory().write(to, clip);
  };
  turn("wide.mov", "r90.mov", {0, 1, -1, 0});
  turn("wide.mov", "r180.mov", {-1, 0, 0, -1});
  turn("wide.mov", "r270.mov", {0, -1, 1, 0});
  turn("plain.mov", "mirrored.mov", {-1, 0, 0, 1});
  turn("wide.mov", "r179.mov", {-0x10000, 0x478, -0x478, -0x10000}, 0x10000);
  turn("wide.mov", "r359.mov", {0x10000, -0x478, 0x478, 0x10000}, 0x10000);
  turn("wide.mov", "r89.mov", {0x478, 0x10000, -0x10000, 0x478}, 0x10000);
  // A JPEG whose EXIF says that it is to be turned clockwise.
  ASSERT_NO_FATAL_FAILURE(makeNumbered("upright.jpg", "-frames:v 1 -q:v 2", corner));
  std::string exif = content("upright.jpg");
  exif.insert(2, std::string("\xff\xe1\0\x22"
                             "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0",
                             36));
  directory().write("exif.jpg", exif);
  struct Shape {
    std::string name;
    SnapshotOptions options;
    int width, height;
    std::string_view brightQuarters;
  };
  for (const Shape& shape : std::initializer_list<Shape>{
           {"plain.mov", {}, 64, 32, "1000"},
           {"plain.mov", {.maxWidth = 1000, .height = 500}, 64, 32, "1000"},
           {"plain.mov", {.maxWidth = 31.6}, 32, 16, "1000"},
           {"plain.mov", {.maxWidth = 60, .height = 8}, 16, 8, "1000"},
           {"plain.mov", {.maxWidth = 20, .height = 16}, 20, 10, "1000"},
           {"plain.mov", {.maxWidth = 0.01}, 1, 1, {}},
           {"wide.mov", {.maxWidth = 48}, 48, 16, "1000"},
           {"r90.mov", {.maxWidth = 16}, 16, 48, "0100"},
           {"r180.mov", {.maxWidth = 48}, 48, 16, "0001"},
           {"r270.mov", {.height = 48}, 16, 48, "0010"},
           {"mirrored.mov", {}, 64, 32, "0100"},
           {"r89.mov", {.maxWidth = 16}, 16, 48, "0100"},
           {"r179.mov", {.maxWidth = 48}, 48, 16, "0001"},
           {"r359.mov", {.maxWidth = 48}, 48, 16, "1000"},
           {"exif.jpg", {}, 32, 64, "0100"},
       }) {
    SCOPED_TRACE(shape.name + " " + std::to_string(shape.width));
    auto snapshots = MediaSnapshots::open(described(shape.name), shape.options);
    ASSERT_TRUE(snapshots);
    const auto image = snapshots->at(0);
    ASSERT_TRUE(image) << image.error().message();
    EXPECT_EQ(image->width, shape.width);
    EXPECT_EQ(image->height, shape.height);
    directory().write("shape.jpg", image->jpeg);
    EXPECT_EQ(described("shape.jpg").video.at(0).width, shape.width);
    EXPECT_EQ(described("shape.jpg").video.at(0).height, shape.height);
    EXPECT_EQ(described("shape.jpg").video.at(0).pixelAspectRatio, (MediaRational{1, 1}));
    if (shape.brightQuarters.empty()) continue;
    std::string bright;
    const std::string quarters = pixels(image->jpeg, "2:2");
    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
      bright += static_cast<std::uint8_t>(quarters.at(3 * quarter)) > 127 ? '1' : '0';
    }
    EXPECT_EQ(bright, shape.brightQuarters);
  }
}

TEST_F(MediaSnapshotTest, ConvertsColorsByMatrixAndRangeAndThenByTheLut) {
  // Red runs fastest. The channels are changed unlike each other: 0.75 r + 0.25, 0.5 g + 0.25, 0.5 b.
  directory().write(
      "look.cube",
      "LUT_3D_SIZE 2\n.25 .25 0\n1 .25 0\n.25 .75 0\n1 .75 0\n.25 .25 .5\n1 .25 .5\n.25 .75 .5\n1 .75 .5\n");
  const auto lut = SnapshotLut::read(Url::fromFilePath(path("look.cube")));
  ASSERT_TRUE(lut);
  struct Coding {
    std::string size, format, tags;
    double kr, kb;
    bool isFullRange = false;
  };
  constexpr double kr601 = 0.299, kb601 = 0.114, kr709 = 0.2126, kb709 = 0.0722, kr2020 = 0.2627, kb2020 = 0.0593;
  for (const Coding& coding : std::initializer_list<Coding>{
           {"64:36", "yuv420p", "", kr601, kb601},
           {"16:720", "yuv422p10le", "", kr709, kb709},
           {"64:36", "yuv444p12le", "-colorspace bt709", kr709, kb709},
           {"16:720", "yuv420p", "-colorspace smpte170m", kr601, kb601},
           {"64:36", "yuv444p16le", "-colorspace bt2020nc -color_range pc", kr2020, kb2020, true},
           {"64:36", "yuv420p", "-color_range pc", kr601, kb601, true},
       }) {
    SCOPED_TRACE(coding.size + " " + coding.format + " " + coding.tags);
    const bool isFull = coding.isFullRange;
    const std::string name = "flat" + coding.size.substr(0, 2) + coding.format + coding.tags.substr(0, 13) + ".mkv";
    const int bits = coding.format.ends_with("le") ? std::stoi(coding.format.substr(7, 2)) : 8;
    const std::string step = std::to_string(1 << (bits - 8));
    ASSERT_NO_FATAL_FAILURE(makeNumbered(name, "-c:v ffv1 -frames:v 1 " + coding.tags,
                                         ",scale=" + coding.size + ",format=" + coding.format + ",lutyuv=y=120*" +
                                             step + ":u=100*" + step + ":v=160*" + step));
    const double y = isFull ? 120 / 255.0 : (120 - 16) / 219.0;
    const double cb = (100 - 128) / (isFull ? 255.0 : 224.0);
    const double cr = (160 - 128) / (isFull ? 255.0 : 224.0);
    const double red = y + 2 * (1 - coding.kr) * cr;
    const double blue = y + 2 * (1 - coding.kb) * cb;
    const double green = (y - coding.kr * red - coding.kb * blue) / (1 - coding.kr - coding.kb);
    const auto expectColor = [&](const SnapshotLut* with, double r, double g, double b) {
      auto snapshots = MediaSnapshots::open(described(name), {.compressionFactor = 1, .lut = with});
      ASSERT_TRUE(snapshots);
      const auto image = snapshots->at(0);
      ASSERT_TRUE(image) << image.error().message();
      directory().write("flat.jpg", image->jpeg);
      const std::string planes =
          run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("flat.jpg"), "-f", "rawvideo", "-"}).output;
      const auto pixelCount = static_cast<std::size_t>(image->width * image->height);
      ASSERT_EQ(planes.size(), pixelCount * 3 / 2);
      const auto sample = [&](std::size_t place) {
        return static_cast<double>(static_cast<std::uint8_t>(planes.at(place)));
      };
      const double shownCb = sample(pixelCount) - 128;
      const double shownCr = sample(pixelCount * 5 / 4) - 128;
      EXPECT_NEAR(sample(0) + 1.402 * shownCr, 255 * r, 2.5);
      EXPECT_NEAR(sample(0) - 0.344136 * shownCb - 0.714136 * shownCr, 255 * g, 2.5);
      EXPECT_NEAR(sample(0) + 1.772 * shownCb, 255 * b, 2.5);
    };
    expectColor(nullptr, red, green, blue);
    expectColor(&*lut, 0.75 * red + 0.25, 0.5 * green + 0.25, 0.5 * blue);
  }
}

TEST_F(MediaSnapshotTest, ShowsNoOtherFrameInPlaceOfADamagedOne) {
  struct Damage {
    std::string name, options;
    std::vector<std::size_t> damaged;
    std::vector<double> locations;
    std::string_view numbers;
  };
  for (const Damage& each : std::initializer_list<Damage>{
           {"mjpeg.mov", "-c:v mjpeg -q:v 2", {0, 50, 99}, {0, 0.49, 0.5, 0.51, 0.98, 0.99, 1}, "- 49 - 51 98 - - "},
           {"prores.mov", "-c:v prores_ks", {0, 50, 99}, {0, 0.49, 0.5, 0.51, 0.98, 0.99, 1}, "- 49 - 51 98 - - "},
           {"png.mov", "-c:v png", {0, 50, 99}, {0, 0.49, 0.5, 0.51, 0.98, 0.99, 1}, "- 49 - 51 98 - - "},
           // The key frame at 40, and all that refer to it.
           {"h264.mp4",
            "-c:v libx264 -g 20 -bf 0 -sc_threshold 0",
            {40},
            {0.39, 0.4, 0.45, 0.59, 0.6, 1},
            "39 - - - 60 99 "},
           {"mpeg2.mov",
            "-c:v mpeg2video -g 20 -bf 0 -sc_threshold 1000000000",
            {40},
            {0.39, 0.4, 0.45, 0.59, 0.6, 1},
            "39 - - - 60 99 "},
       }) {
    ASSERT_NO_FATAL_FAILURE(makeNumbered(each.name, each.options));
    std::string clip = content(each.name);
    std::istringstream packets(run({"ffprobe", "-v", "error", "-select_streams", "v", "-show_entries",
                                    "packet=size,pos", "-of", "csv=p=0", path(each.name)})
                                   .output);
    std::size_t size = 0;
    std::size_t place = 0;
    char comma = 0;
    for (std::size_t frame = 0; packets >> size >> comma >> place; ++frame) {
      if (std::ranges::find(each.damaged, frame) != each.damaged.end())
        std::fill_n(clip.begin() + static_cast<std::ptrdiff_t>(place), size, '\0');
      packets.ignore(9, '\n');
    }
    directory().write(each.name, clip);
    EXPECT_EQ(numbersIn(each.name, each.locations), each.numbers) << each.name;
  }
}

TEST_F(MediaSnapshotTest, ShowsAFrameWhoseMessagesAreDamaged) {
  ASSERT_NO_FATAL_FAILURE(makeNumbered("clip.h264", "-c:v libx264 -g 10 -bf 0 -x264-params slices=1:aud=1"));
  // A buffering period that is cut off, after each access unit delimiter.
  using namespace std::string_view_literals;
  constexpr std::string_view delimiter = "\0\0\0\1\x09"sv;
  std::string clip = content("clip.h264");
  for (std::size_t place = 0; (place = clip.find(delimiter, place)) != std::string::npos; place += 16) {
    clip.insert(place + delimiter.size() + 1, "\0\0\0\1\x06\0\2\5\x80\x80"sv);
  }
  directory().write("clip.h264", clip);
  ASSERT_EQ(run({"ffmpeg", "-v", "error", "-r", "25", "-i", path("clip.h264"), "-c", "copy", path("clip.mp4")}).status,
            0);
  EXPECT_EQ(numbersIn("clip.mp4", {0, 0.45, 1}), "0 45 99 ");
}

TEST_F(MediaSnapshotTest, ShowsNoOtherFrameOfAFileThatIsCutShort) {
  struct Cut {
    std::string name, options, numbers, filter;
  };
  for (const auto& [name, options, numbers, filter] : std::initializer_list<Cut>{
           {"cut.mkv", "-c:v libx264 -g 10", "10 - - ", {}},
           {"cut.webm", "-c:v libvpx -g 10 -deadline realtime", "10 - - ", {}},
           {"cut.flv", "-c:v libx264 -g 10", "10 - - ", {}},
           {"intra.mxf", "-c:v dnxhd -profile:v dnxhr_sq", "10 - - ", ",scale=512:128:flags=neighbor"},
           // Without the index at their ends nothing says when their frames are shown.
           {"cut.mxf", "-c:v mpeg2video -g 12 -bf 2 -q:v 2", "- - - ", {}},
           {"cut.avi", "-c:v mjpeg -q:v 2", "- - - ", {}}}) {
    ASSERT_NO_FATAL_FAILURE(makeNumbered(name, options, filter));
    const std::string clip = content(name);
    directory().write(name, clip.substr(0, clip.size() / 2));
    EXPECT_EQ(numbersIn(name, {0.1, 0.99, 1}), numbers) << name;
  }
}

TEST_F(MediaSnapshotTest, TakesAReadErrorForWhatItIs) {
  ASSERT_NO_FATAL_FAILURE(makeNumbered("clip.mov", "-c:v prores_ks", ",scale=1024:256:flags=neighbor"));
  auto snapshots = MediaSnapshots::open(described("clip.mov"));
  ASSERT_TRUE(snapshots);
  // From now on the file's descriptor cannot be read from.
  const int unreadable = open(path("clip.mov").c_str(), O_WRONLY);
  bool isReplaced = false;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code none;
    const int descriptor = std::stoi(entry.path().filename());
    if (descriptor == unreadable || std::filesystem::read_symlink(entry, none) != path("clip.mov")) continue;
    isReplaced = dup2(unreadable, descriptor) == descriptor;
  }
  close(unreadable);
  ASSERT_TRUE(isReplaced);
  for (const double location : {0.5, 1.0}) {
    const auto image = snapshots->at(location);
    ASSERT_FALSE(image);
    EXPECT_EQ(image.error().code, MediaSnapshotErrorCode::notRead) << image.error().message();
    EXPECT_EQ(image.error().systemError, std::errc::bad_file_descriptor);
  }
}

TEST_F(MediaSnapshotTest, CountsOnlyTheTimeOfItsWork) {
  ASSERT_NO_FATAL_FAILURE(makeNumbered("clip.mov", "-c:v mjpeg"));
  auto snapshots = MediaSnapshots::open(described("clip.mov"), {.limits = {.time = std::chrono::seconds(1)}});
  ASSERT_TRUE(snapshots);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_TRUE(snapshots->at(0.5));
}

TEST_F(MediaSnapshotTest, SaysWhyThereIsNoImage) {
  using enum MediaSnapshotErrorCode;
  ASSERT_NO_FATAL_FAILURE(makeNumbered("clip.mov", "-c:v libx264 -g 25 -movflags faststart"));
  ASSERT_NO_FATAL_FAILURE(make({{"sound.wav", "-map 1:a"}}));
  const std::string clip = content("clip.mov");
  const std::size_t data = clip.find("mdat");
  directory().write("half.mov", clip.substr(0, data + (clip.size() - data) / 2));

  EXPECT_EQ(MediaSnapshots::open(described("sound.wav")).error().code, noVideo);
  auto half = MediaSnapshots::open(described("half.mov"));
  ASSERT_TRUE(half);
  EXPECT_TRUE(half->at(0.1));
  // The last frame that is there is not the last frame.
  EXPECT_EQ(half->at(1).error().code, noFrame);
  EXPECT_EQ(half->at(0.9).error().code, noFrame);
  EXPECT_TRUE(half->at(0));

  auto snapshots = MediaSnapshots::open(described("clip.mov"));
  ASSERT_TRUE(snapshots);
  for (const double location : {-0.1, 1.01, std::nan("")}) {
    EXPECT_EQ(snapshots->at(location).error().code, locationOutOfRange) << location;
  }
  std::stop_source stop;
  stop.request_stop();
  EXPECT_EQ(snapshots->at(0.5, stop.get_token()).error().code, stopped);
  EXPECT_TRUE(snapshots->at(0.5));
  auto slow = MediaSnapshots::open(described("clip.mov"), {.limits = {.bytes = 1000}});
  EXPECT_EQ(slow.error().code, limitReached);
  for (const char* const matrix : {"ycgco", "ictcp"}) {
    const std::string name = std::string(matrix) + ".mkv";
    ASSERT_NO_FATAL_FAILURE(makeNumbered(name, std::string("-c:v ffv1 -frames:v 1 -colorspace ") + matrix));
    const auto image = MediaSnapshots::open(described(name))->at(0);
    ASSERT_FALSE(image);
    EXPECT_EQ(image.error().code, notEncoded);
    EXPECT_THAT(image.error().message(), HasSubstr(std::string("its matrix ") + matrix + " is not supported"));
  }
  ASSERT_NO_FATAL_FAILURE(makeNumbered("large.png", "-frames:v 1"));
  std::string large = content("large.png");
  for (const std::size_t side : {16U, 20U}) putBigEndian(large, side, 20'000);
  putBigEndian(large, 29, 0x6c12d16eU);  // The checksum of the header.
  directory().write("large.png", large);
  EXPECT_EQ(MediaSnapshots::open(described("large.png"))->at(0).error().code, limitReached);
  MediaDescription unknown = described("clip.mov");
  unknown.video.at(0).isDecodable = false;
  EXPECT_EQ(MediaSnapshots::open(unknown).error().code, notDecodable);
  const MediaDescription gone = described("clip.mov");
  std::filesystem::remove(path("clip.mov"));
  EXPECT_EQ(MediaSnapshots::open(gone).error().code, notRead);
}

TEST_F(MediaSnapshotTest, CompressesByTheFactor) {
  ASSERT_NO_FATAL_FAILURE(make({{"clip.mov", "-map 0:v -c:v mpeg4 -q:v 2"}}));
  std::vector<std::size_t> sizes;
  for (const double factor : {0.0, 0.4, 0.8, 1.0}) {
    sizes.push_back(MediaSnapshots::open(described("clip.mov"), {.compressionFactor = factor})->at(0)->jpeg.size());
  }
  EXPECT_THAT(sizes, testing::WhenSorted(testing::ElementsAreArray(sizes)));
  EXPECT_LT(2 * sizes.front(), sizes.back());
  EXPECT_THAT(MediaSnapshots::open(described("clip.mov"))->at(0)->jpeg, Not(HasSubstr("Lavc")));
}

}  // namespace
}  // namespace meridian::test
