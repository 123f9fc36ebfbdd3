/// \file
/// The bit rates of DNxHD, each of which belongs to a size, a depth and a scan. For example:
///
///     dnxhdRatesOf(1920, 1080, 10, false)->rates      // 175, 185, 365, 440
///     defaultDnxhdRate(*dnxhdRatesOf(1920, 1080, 8, false), 25.0)  // 120
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace meridian::inline v0_2 {

/// The bit rates of a size, a depth and a scan, in megabits a second.
struct DnxhdRateRow {
  int width;
  int height;
  int bitDepth;
  bool isInterlaced;
  /// Zeros at the end.
  std::array<int, 14> listed;
  /// The rates at up to 24, 25, 30, 50 and 60 frames per second that are chosen without "-vbr".
  std::array<int, 5> usual;

  [[nodiscard]] constexpr std::span<const int> rates() const noexcept {
    const auto end = std::ranges::find(listed, 0);
    return std::span(listed).first(static_cast<std::size_t>(end - listed.begin()));
  }
};

/// Lists what FFmpeg's encoder accepts, which ties no bit rate to a frame rate. The usual rates are those of SMPTE ST
/// 2019-1's names: standard quality for 8 bits, the nearest to high quality for 10.
inline constexpr auto dnxhdRateRows = std::to_array<DnxhdRateRow>({
    {1920,
     1080,
     8,
     false,
     {36, 45, 75, 90, 115, 120, 145, 175, 185, 220, 240, 290, 365, 440},
     {115, 120, 145, 240, 290}},
    {1920, 1080, 10, false, {175, 185, 365, 440}, {175, 185, 185, 365, 440}},
    {1920, 1080, 8, true, {120, 145, 185, 220}, {120, 120, 145, 145, 145}},
    {1920, 1080, 10, true, {185, 220}, {185, 185, 220, 220, 220}},
    {1280, 720, 8, false, {60, 75, 90, 110, 120, 145, 180, 220}, {60, 60, 75, 120, 145}},
    {1280, 720, 10, false, {90, 180, 220}, {90, 90, 90, 180, 220}},
});

/// Returns the bit rates of a size in pixels, a depth and a scan; null if DNxHD does not have them.
[[nodiscard]] constexpr const DnxhdRateRow* dnxhdRatesOf(int width, int height, int bitDepth,
                                                         bool isInterlaced) noexcept {
  for (const DnxhdRateRow& row : dnxhdRateRows) {
    if (row.width == width && row.height == height && row.bitDepth == bitDepth && row.isInterlaced == isInterlaced) {
      return &row;
    }
  }
  return nullptr;
}

/// Returns the bit rate in megabits a second that is chosen without "-vbr", for frames per second of the output.
[[nodiscard]] constexpr int defaultDnxhdRate(const DnxhdRateRow& row, double framesPerSecond) noexcept {
  constexpr std::array limits{24.5, 25.5, 30.5, 50.5};
  const auto place = std::ranges::find_if(limits, [=](double limit) { return framesPerSecond < limit; });
  return row.usual[static_cast<std::size_t>(place - limits.begin())];
}

}  // namespace meridian::inline v0_2
