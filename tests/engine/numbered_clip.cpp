#include "tests/engine/numbered_clip.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <numeric>
#include <sstream>

#include "tests/support/process.h"

namespace meridian::test {
namespace {

constexpr int columns = 16;

Outcome ffmpeg(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{"ffmpeg", "-v", "error", "-nostdin", "-y"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run(command);
}

double secondsOf(const NumberedClip& clip) {
  std::istringstream rate(clip.rate);
  double numerator = 25;
  double denominator = 1;
  char slash = 0;
  rate >> numerator;
  if (rate >> slash >> denominator; denominator <= 0) denominator = 1;
  return clip.frames * denominator / numerator;
}

}  // namespace

void makeClip(const std::string& path, const NumberedClip& clip) {
  const std::string number = "(N+" + std::to_string(clip.first) + ")";
  const double sound = clip.soundSeconds > 0 ? clip.soundSeconds : secondsOf(clip);
  std::string images = "color=black:s=256x144:r=" + clip.rate + ",format=yuv420p,geq=lum='if(mod(floor(" + number +
                       "/pow(2,floor(X/16))),2),200,40)':cb=128:cr=128";
  // By a filter, since ffmpeg leaves out sound where it counts the images of its output.
  images += ",trim=end_frame=" + std::to_string(clip.frames);
  if (!clip.filter.empty()) images += "," + clip.filter;
  std::vector<std::string> arguments{"-f",   "lavfi",
                                     "-i",   images,
                                     "-f",   "lavfi",
                                     "-t",   std::to_string(sound),
                                     "-i",   "sine=frequency=440:sample_rate=48000",
                                     "-map", "0:v",
                                     "-map", "1:a"};
  std::istringstream options(clip.options);
  arguments.insert(arguments.end(), std::istream_iterator<std::string>(options), {});
  arguments.push_back("file:" + path);
  const Outcome outcome = ffmpeg(arguments);
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
}

std::vector<int> numbersIn(const std::string& path) {
  const Outcome outcome = ffmpeg({"-i", "file:" + path, "-map", "0:v:0", "-vsync", "passthrough", "-vf",
                                  "scale=16:1:flags=area,format=gray", "-f", "rawvideo", "-"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  std::vector<int> numbers;
  for (std::size_t place = 0; place + columns <= outcome.output.size(); place += columns) {
    int number = 0;
    for (std::size_t column = 0; column < columns; ++column) {
      if (static_cast<unsigned char>(outcome.output[place + column]) > 120) number |= 1 << column;
    }
    numbers.push_back(number);
  }
  return numbers;
}

std::vector<int> numbersFrom(int first, int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), first);
  return numbers;
}

std::vector<std::string> packetHashes(const std::string& path, const std::string& stream) {
  const Outcome outcome = ffmpeg({"-i", "file:" + path, "-map", "0:" + stream, "-c", "copy", "-f", "framemd5", "-"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  std::vector<std::string> hashes;
  std::istringstream lines(outcome.output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with('#')) continue;
    // The sixth column; others follow for what is beside the packet.
    std::istringstream columnsOfLine(line);
    std::string column;
    for (int place = 0; place < 6 && std::getline(columnsOfLine, column, ','); ++place) {
    }
    hashes.push_back(column);
  }
  return hashes;
}

std::string probed(const std::string& path, const std::string& stream, const std::string& entry) {
  const std::string section = stream == "format" ? "format=" : "stream=";
  std::vector<std::string> command{"ffprobe",       "-v",           "error", "-of", "default=nw=1:nk=1",
                                   "-show_entries", section + entry};
  if (stream != "format") command.insert(command.end(), {"-select_streams", stream});
  command.push_back("file:" + path);
  const Outcome outcome = run(command);
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  return outcome.output.substr(0, outcome.output.find('\n'));
}

std::vector<float> samplesIn(const std::string& path) {
  const Outcome outcome =
      ffmpeg({"-i", "file:" + path, "-map", "0:a:0", "-ac", "1", "-ar", "48000", "-f", "f32le", "-"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  std::vector<float> samples(outcome.output.size() / sizeof(float));
  std::memcpy(samples.data(), outcome.output.data(), samples.size() * sizeof(float));
  return samples;
}

}  // namespace meridian::test
