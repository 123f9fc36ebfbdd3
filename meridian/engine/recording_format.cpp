#include "meridian/engine/recording_format.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "meridian/base/ascii.h"
#include "meridian/media/media_names.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

/// Two directories, one in the other, the extension of the files in them, and how many directories lie between.
struct CardRow {
  std::string_view outer;
  std::string_view inner;
  std::string_view extension;
  std::size_t between;
  std::string_view format;
};

constexpr auto cardRows = std::to_array<CardRow>({
    {"bdmv", "stream", "mts", 0, SLVMediaRecordingFormatAVCHD},
    {"bdmv", "stream", "m2ts", 0, SLVMediaRecordingFormatAVCHD},
    {"contents", "video", "mxf", 0, SLVMediaRecordingFormatP2},
    {"contents", "audio", "mxf", 0, SLVMediaRecordingFormatP2},
    {"xdroot", "clip", "mxf", 0, SLVMediaRecordingFormatXDCAM},
    {"bpav", "clpr", "mp4", 1, SLVMediaRecordingFormatXDCAM},
});

}  // namespace

std::optional<std::string_view> recordingFormatOfPath(std::string_view path) {
  std::string lowercased(path);
  std::ranges::transform(lowercased, lowercased.begin(), detail::lowercasedAscii);
  const std::string_view extension = pathExtension(lowercased);
  if (extension == "dng") return SLVMediaRecordingFormatCinemaDNG;
  const std::vector<std::string_view> components = pathComponents(lowercased);
  for (const CardRow& row : cardRows) {
    const std::size_t depth = row.between + 3;
    if (extension != row.extension || components.size() < depth) continue;
    const auto outer = components.end() - static_cast<std::ptrdiff_t>(depth);
    if (*outer == row.outer && *(outer + 1) == row.inner) return row.format;
  }
  return std::nullopt;
}

}  // namespace meridian::inline v0_2
