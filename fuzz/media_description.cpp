// Media files of any bytes: describing one ends within its limits and gives consistent values.
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "meridian/engine/describe_media.h"
#include "meridian/media/frame_number.h"

using namespace meridian;
using fuzz::require;

namespace {

/// A file in memory with a path.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("media", MFD_CLOEXEC)) { require(descriptor_ >= 0, "a file in memory"); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(descriptor_); }

  void write(std::string_view content) const {
    require(ftruncate(descriptor_, 0) == 0 &&
                pwrite(descriptor_, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()),
            "the file is written");
  }
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

/// How files of some formats begin, since FFmpeg's readers are not instrumented and the fuzzer would not find it out.
constexpr auto beginnings = std::to_array<std::string_view>({
    std::string_view("\0\0\0\x14"
                     "ftypqt  \0\0\0\0qt  ",
                     20),
    std::string_view("\x06\x0e\x2b\x34\x02\x05\x01\x01\x0d\x01\x02\x01\x01\x02\x04\x00", 16),
    std::string_view("RIFF\xff\xff\0\0"
                     "AVI LIST",
                     16),
    std::string_view("RIFF\xff\xff\0\0WAVEfmt ", 16),
    std::string_view("\x1a\x45\xdf\xa3\x93\x42\x82\x88matroska", 16),
    std::string_view("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16),
    std::string_view("SDPX\0\0\x08\0V1.0", 12),
    std::string_view(),
});

/// Returns the most memory that the process had so far, in KiB.
long mostMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

void checkRatio(const std::optional<MediaRational>& ratio) {
  if (ratio) require(ratio->numerator >= 0 && ratio->denominator > 0, "a rate or a length of time is not below 0");
}

void check(const MediaDescription& description, std::size_t size) {
  require(description.size == size, "the size is the file's");
  require(!description.video.empty() || !description.audio.empty(), "media has video or audio");
  checkRatio(description.duration);
  for (const VideoStreamDescription& video : description.video) {
    require(video.width >= 0 && video.height >= 0, "a size is not negative");
    require(video.rotation >= 0 && video.rotation < 360, "a rotation is less than a turn");
    require(video.pixelAspectRatio.numerator > 0, "an aspect ratio is positive");
    require(video.frameRate.has_value() == video.exactFrameRate.has_value(), "a rate is exact");
    checkRatio(video.exactFrameRate);
    checkRatio(video.averageFrameRate);
    checkRatio(video.duration);
    if (video.frameCount) require(*video.frameCount >= 0, "a count is not negative");
  }
  int track = 0;
  for (const AudioStreamDescription& audio : description.audio) {
    require(audio.track == track++, "tracks are counted");
    require(audio.channels.empty() || audio.channels.size() == static_cast<std::size_t>(audio.channelCount),
            "all channels have a place or none");
  }
  if (!description.timecode) return;
  const auto first = frameNumber(description.timecode->start, description.timecode->rate);
  require(first.has_value(), "the first label exists");
  if (description.timecode->end) {
    require(frameNumber(*description.timecode->end, description.timecode->rate).has_value(), "the last label exists");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const MemoryFile file;
  std::string content(reinterpret_cast<const char*>(data), size);
  if (size > 0) content.replace(0, 1, beginnings[data[0] % beginnings.size()]);
  file.write(content);
  const DescriptionLimits limits{
      .bytes = std::uint64_t{16} << 20U, .time = std::chrono::seconds(5), .indexEntries = 100'000};
  const long memoryBefore = mostMemory();
  const auto begin = std::chrono::steady_clock::now();
  const auto description = describeMedia(Url::fromFilePath(file.path()), limits);
  // What one decoder does between two reads is not counted.
  require(std::chrono::steady_clock::now() - begin < std::chrono::seconds(20), "describing ends");
  // A decoded image of the most pixels is about as large.
  require(mostMemory() - memoryBefore < 1L << 20U, "describing needs less than 1 GiB");
  if (description) {
    check(*description, content.size());
  } else {
    require(!description.error().message().empty(), "an error says what is wrong");
  }
  return 0;
}
