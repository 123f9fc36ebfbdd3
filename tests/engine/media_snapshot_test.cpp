// Stills of real clips, whose frames carry their numbers.
#include "meridian/engine/media_snapshot.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
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

  /// Returns the numbers of the frames at 0, 0.1 ... 1 and again at 0.29 and 0, or the first error.
  [[nodiscard]] std::string numbersIn(const std::string& name) const {
    auto snapshots = MediaSnapshots::open(described(name));
    if (!snapshots) return snapshots.error().message();
    std::size_t count = 0;
    for (const double location : {0.0, 0.1, 0.3, 0.5, 0.7, 0.99, 1.0, 0.29, 0.0}) {
      const auto image = snapshots->at(location);
      if (!image) return image.error().message();
      directory().write("s" + std::to_string(count++) + ".jpg", image->jpeg);
    }
    const std::string blocks = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("s%d.jpg"), "-vf",
                                    "scale=8:1:flags=area", "-pix_fmt", "gray", "-f", "rawvideo", "-"})
                                   .output;
    std::string numbers;
    for (std::size_t image = 0; image < count; ++image) {
      int number = 0;
      for (std::size_t bit = 0; bit < 8; ++bit) {
        if (static_cast<std::uint8_t>(blocks.at(8 * image + bit)) > 127) number |= 1 << bit;
      }
      numbers += std::to_string(number) + ' ';
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
      {"mpeg2.mxf", "-c:v mpeg2video -g 12 -bf 2 -q:v 2"},
      {"prores.mov", "-c:v prores_ks"},
      {"dnx.mxf", "-c:v dnxhd -profile:v dnxhr_sq", constant, ",scale=512:128:flags=neighbor"},
      {"animated.gif", ""},
      // The sound is twice as long, so that the images end in the middle of the file.
      {"sound.mov", "-c:v libx264 -g 30 -c:a aac -map 1:a"},
      {"sound.mkv", "-c:v libx264 -g 30 -c:a aac -map 1:a", "0 20 60 99 99 99 99 58 0 "},
      // From frame 50 on, each but the last is shown twice as long.
      {"variable.mkv", "-c:v libx264 -g 30 -bf 3 -vsync vfr", "0 14 44 62 77 98 99 43 0 ",
       ",setpts='if(lt(N,50),N,2*N-50)/25/TB'"},
  };
  for (const Clip& clip : clips) {
    ASSERT_NO_FATAL_FAILURE(makeNumbered(clip.name, clip.options, clip.filter));
    EXPECT_EQ(numbersIn(clip.name), clip.numbers) << clip.name;
  }
}

}  // namespace
}  // namespace meridian::test
