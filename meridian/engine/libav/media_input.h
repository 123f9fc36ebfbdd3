/// \file
/// Opens a file for FFmpeg to read, and nothing but that file.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/color_spaces.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/libav/handles.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/media_error.h"
#include "meridian/engine/mxf_index.h"
#include "meridian/platform/file_reader.h"

namespace meridian::inline v0_2::libav {

/// The most pixels of a frame that is decoded: 16384 by 8192.
inline constexpr std::int64_t mostPixels = 134'217'728;

/// A media file whose streams are known. FFmpeg reads through a `FileReader` and can open nothing else: neither another
/// file nor a connection.
class MediaInput {
 public:
  /// Opens the file at the path, recognises its format by its content, and finds out about its streams. The limits hold
  /// from this call to the end of the object. `name` has the extension that supports a guess of the format, where the
  /// path has none; empty for the path itself.
  [[nodiscard]] static Expected<std::unique_ptr<MediaInput>, MediaError> open(const std::string& path,
                                                                              const DescriptionLimits& limits,
                                                                              const std::string& name = {});

  MediaInput(const MediaInput&) = delete;
  MediaInput& operator=(const MediaInput&) = delete;
  MediaInput(MediaInput&&) = delete;
  MediaInput& operator=(MediaInput&&) = delete;
  ~MediaInput() = default;

  [[nodiscard]] AVFormatContext& context() noexcept { return *input_; }
  [[nodiscard]] const FileReader& file() const noexcept { return file_; }

  [[nodiscard]] std::uint64_t bytesLeft() const noexcept { return bytesLeft_; }
  /// Replaces the time limit.
  void setDeadline(std::chrono::steady_clock::time_point deadline) noexcept { deadline_ = deadline; }
  /// Ends what FFmpeg does with the file when a stop is requested, as a limit does.
  void setStop(std::stop_token stop) noexcept { stop_ = std::move(stop); }

  /// Returns the colour tags of a stream as the container states them: all unspecified for one that shows up late.
  [[nodiscard]] ColorSpaceCodes colorsOfContainer(std::size_t stream) const noexcept {
    return stream < colors_.size() ? colors_[stream] : ColorSpaceCodes{};
  }

  /// Reads bytes of the file itself at a place; false if they are not all there or a limit is reached.
  [[nodiscard]] bool readAt(std::uint64_t place, std::span<char> memory) noexcept;

 private:
  MediaInput(const std::string& path, const DescriptionLimits& limits, const std::string& name);

  static int read(void* self, std::uint8_t* memory, int size) noexcept;
  static std::int64_t seek(void* self, std::int64_t offset, int origin) noexcept;
  static int isInterrupted(void* self) noexcept;

  [[nodiscard]] bool isBeyondLimits() noexcept;
  [[nodiscard]] bool isWithinBytes(std::size_t count) noexcept;
  [[nodiscard]] MediaError failure(int status, MediaErrorCode otherwise, std::string_view detail = {}) const;
  /// Returns why FFmpeg failed: a file that it cannot read need not be damaged.
  [[nodiscard]] MediaError readerFailure(int status, const LogCollector& log) const;
  [[nodiscard]] std::optional<MediaError> openFormat();
  [[nodiscard]] std::optional<MediaError> checkMovieIndex();
  [[nodiscard]] std::string_view unreadMaker() noexcept;
  [[nodiscard]] const AVInputFormat* recognizedFormat();

  std::string path_;
  std::string name_;
  FileReader file_;
  std::int64_t place_ = 0;
  std::uint64_t bytesLeft_;
  std::uint64_t mostEntries_;
  MxfIndexCounter mxfIndex_;
  std::chrono::steady_clock::time_point deadline_;
  std::stop_token stop_;
  const char* limitReached_ = nullptr;
  IoContextPointer io_;
  InputPointer input_;
  std::vector<ColorSpaceCodes> colors_;
};

}  // namespace meridian::inline v0_2::libav
