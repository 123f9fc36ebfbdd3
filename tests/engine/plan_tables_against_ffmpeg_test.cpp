// The planner's tables, held against what the ffmpeg command encodes.
#include <bit>
#include <cmath>
#include <set>
#include <sstream>

#include "meridian/engine/audio_encoders.h"
#include "meridian/engine/color_spaces.h"
#include "meridian/engine/dnxhd_rates.h"
#include "meridian/engine/output_container.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/engine/video_profiles.h"
#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

class EncodedTables : public MadeMedia {
 protected:
  /// Returns whether ffmpeg makes every output of a source of lavfi, each of one frame, from its options.
  [[nodiscard]] static bool encodes(const std::string& source, const std::vector<std::string>& outputs) {
    std::vector<std::string> command{"ffmpeg", "-v", "error", "-nostdin", "-y", "-f", "lavfi", "-i", source};
    for (const std::string& output : outputs) {
      std::istringstream options("-frames 1 -threads 1 " + output + " /dev/null");
      command.insert(command.end(), std::istream_iterator<std::string>(options), {});
    }
    const Outcome outcome = run(command);
    // Some versions of ffmpeg return 0 although they could not finish the file.
    return outcome.status == 0 && outcome.errors.find("Error writing trailer") == std::string::npos;
  }
};

TEST_F(EncodedTables, HaveTheRatesOfDnxhd) {
  std::set<int> all;
  for (const DnxhdRateRow& row : dnxhdRateRows) all.insert(row.rates().begin(), row.rates().end());
  for (const DnxhdRateRow& row : dnxhdRateRows) {
    const std::string size = std::to_string(row.width) + "x" + std::to_string(row.height);
    SCOPED_TRACE(size + (row.isInterlaced ? "i " : " ") + std::to_string(row.bitDepth));
    const auto output = [&row](int rate) {
      return "-f mxf -c:v dnxhd -b:v " + std::to_string(rate) + "M -pix_fmt " +
             (row.bitDepth == 10 ? "yuv422p10le" : "yuv422p") + (row.isInterlaced ? " -flags +ildct" : "");
    };
    std::vector<std::string> outputs;
    for (const int rate : row.rates()) {
      outputs.push_back(output(rate));
      all.erase(rate);
    }
    EXPECT_TRUE(encodes("color=s=" + size + ":r=25", outputs));
    if (!all.empty()) {
      EXPECT_FALSE(encodes("color=s=" + size + ":r=25", {output(*all.begin())})) << *all.begin();
    }
    for (const DnxhdRateRow& each : dnxhdRateRows) all.insert(each.rates().begin(), each.rates().end());
  }
}

TEST_F(EncodedTables, HaveTheFrameRatesOfMxf) {
  const auto output = [](const std::string& rate) {
    return "-f mxf -c:v dnxhd -profile:v dnxhr_lb -pix_fmt yuv422p -r " + rate;
  };
  std::vector<std::string> outputs;
  std::vector<std::string> refused{"25/2", "15", "23", "119", "240"};
  for (const int rate : tableRow(OutputContainer::mxf).frameRates) {
    outputs.push_back(output(std::to_string(rate)));
    const std::string slower = std::to_string(rate) + "000/1001";
    if (holdsFrameRate(OutputContainer::mxf, *inLowestTerms({std::int64_t{rate} * 1000, 1001}))) {
      outputs.push_back(output(slower));
    } else {
      refused.push_back(slower);
    }
  }
  EXPECT_TRUE(encodes("color=s=256x120:r=25", outputs));
  for (const std::string& rate : refused) {
    EXPECT_FALSE(encodes("color=s=256x120:r=25", {output(rate)})) << rate;
  }
}

TEST_F(EncodedTables, HaveTheGreatestRateAndSideThatFFmpegWrites) {
  const auto track = [](const std::string& rate) {
    return encodes("color=s=64x64:r=" + rate, {"-f mov -c:v mpeg4 -timecode 00:00:00:00"});
  };
  EXPECT_TRUE(track("255"));
  EXPECT_FALSE(track("256"));
  const int side = videoEncoderOf(SAVMpeg4Codec)->greatestSide;
  EXPECT_TRUE(encodes("color=s=64x" + std::to_string(side), {"-f mov -c:v mpeg4"}));
  EXPECT_FALSE(encodes("color=s=64x" + std::to_string(side + 1), {"-f mov -c:v mpeg4"}));
}

TEST_F(EncodedTables, HaveTheLevelsOfH265) {
  for (const VideoLevelRow& level : videoLevelsOf(SAVHevcCodec)) {
    // Greater images take more memory than a test should.
    if (level.greatestPixels > 1'000'000) break;
    const auto longest = static_cast<int>(std::sqrt(8.0 * static_cast<double>(level.greatestPixels)));
    const auto square = static_cast<int>(std::sqrt(level.greatestPixels)) / 2 * 2;
    for (const auto& [width, height] :
         {std::pair{longest / 2 * 2, 16}, {longest / 2 * 2 + 2, 16}, {square, square}, {square, square + 16}}) {
      const double rate = static_cast<double>(level.greatestPixelRate) / (width * height);
      for (const int each : {static_cast<int>(rate), static_cast<int>(rate) + 1}) {
        if (each > 600) continue;
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        EXPECT_EQ(encodes("color=s=" + size + ":r=" + std::to_string(each),
                          {"-f null -c:v libx265 -preset ultrafast -x265-params log-level=none:level-idc=" +
                           std::string(level.name)}),
                  level.holds(width, height, each))
            << level.name << ' ' << size << ' ' << each;
      }
    }
  }
}

TEST_F(EncodedTables, HaveTheColorsThatZscaleConverts) {
  const auto check = [](const ColorSpaceCodes& codes) {
    const std::string from = "pin=" + std::to_string(codes.primaries) + ":tin=" + std::to_string(codes.transfer) +
                             ":min=" + std::to_string(codes.matrix);
    EXPECT_EQ(encodes("color=s=64x64,format=yuv420p10", {"-f null -vf zscale=" + from + ":p=9:t=13:m=9"}),
              isConvertible(codes))
        << from;
  };
  for (const int code : {1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 22}) {
    check({code, 1, 1});
    check({1, code, 1});
    check({1, 1, code});
    check({9, 16, code});
    check({9, 18, code});
  }
}

TEST_F(EncodedTables, HaveTheChannelLayoutsOfEncoders) {
  for (const AudioEncoderRow& row : audioEncoderRows) {
    for (const std::uint64_t layout : row.layouts) {
      std::ostringstream name;
      name << row.encoder << "0x" << std::hex << layout;
      const std::string bits = name.str().substr(row.encoder.size());
      // Without a layout of its own the encoder would get the nearest that it has.
      const Outcome outcome =
          run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "anullsrc=r=48000:d=0.1:cl=" + bits, "-c:a",
               std::string(row.encoder), path(name.str() + ".mov")});
      ASSERT_EQ(outcome.status, 0) << name.str() << outcome.errors;
      EXPECT_EQ(described(name.str() + ".mov").audio.at(0).channelCount, std::popcount(layout)) << name.str();
    }
  }
}

}  // namespace
}  // namespace meridian::test
