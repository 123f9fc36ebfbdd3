#include "meridian/engine/mxf_index.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace meridian::inline v0_2 {
namespace {

/// The key of an index table segment (SMPTE ST 377-1).
constexpr std::array<char, 16> segmentKey{0x06, 0x0e, 0x2b, 0x34, 0x02, 0x53, 0x01, 0x01,
                                          0x0d, 0x01, 0x02, 0x01, 0x01, 0x10, 0x01, 0x00};

/// Reads big-endian numbers one after the other.
class NumberReader {
 public:
  NumberReader(std::uint64_t place, const ReadsAt& readAt) noexcept : place_(place), readAt_(readAt) {}

  [[nodiscard]] std::uint64_t place() const noexcept { return place_; }
  void goTo(std::uint64_t place) noexcept { place_ = place; }

  /// Returns a number of at most 8 bytes; absent if they cannot be read.
  [[nodiscard]] std::optional<std::uint64_t> next(std::size_t size) {
    std::array<char, 8> bytes{};
    const std::span<char> used = std::span(bytes).first(size);
    if (!readAt_(place_, used)) return std::nullopt;
    place_ += size;
    std::uint64_t result = 0;
    for (const char each : used) result = result << 8U | static_cast<unsigned char>(each);
    return result;
  }

 private:
  std::uint64_t place_;
  const ReadsAt& readAt_;
};

/// Returns the edit units that the segment after a key claims. Without entries of its own FFmpeg makes none either.
std::uint64_t unitsOfSegment(std::uint64_t place, const ReadsAt& readAt) {
  constexpr std::uint64_t duration = 0x3f0d;
  constexpr std::uint64_t entries = 0x3f0a;
  NumberReader reader(place, readAt);
  const auto first = reader.next(1);
  if (!first) return 0;
  std::uint64_t length = *first;
  if (length >= 0x80) {
    if (length - 0x80 > 8) return 0;
    const auto longLength = reader.next(length - 0x80);
    if (!longLength) return 0;
    length = *longLength;
  }
  const std::uint64_t end = reader.place() + std::min(length, std::numeric_limits<std::uint64_t>::max() / 2);
  std::uint64_t units = 0;
  bool hasEntries = false;
  while (reader.place() + 4 < end) {
    const auto tag = reader.next(2);
    const auto size = reader.next(2);
    if (!tag || !size) break;
    std::uint64_t after = reader.place() + *size;
    if (*tag == duration && *size > 0) {
      units = std::max(units, reader.next(8).value_or(0));
    } else if (*tag == entries && *size > 0) {
      const std::uint64_t count = reader.next(4).value_or(0);
      const std::uint64_t entrySize = reader.next(4).value_or(0);
      hasEntries = hasEntries || count > 0;
      // The array may be longer than two bytes can say.
      after = std::max(after, reader.place() + count * entrySize);
    }
    reader.goTo(std::max(after, reader.place()));
  }
  return hasEntries ? units : 0;
}

}  // namespace

void MxfIndexCounter::look(std::uint64_t place, std::span<const char> bytes, const ReadsAt& readAt) noexcept {
  if (place != next_) tailSize_ = 0;
  next_ = place + bytes.size();
  const auto count = [&](std::uint64_t afterKey) {
    const std::uint64_t units = unitsOfSegment(afterKey, readAt);
    entries_ += std::min(units, std::numeric_limits<std::uint64_t>::max() - entries_);
  };
  // A key that begins in the read before.
  std::array<char, 2 * (keySize - 1)> seam{};
  const std::size_t begun = std::min(bytes.size(), keySize - 1);
  std::copy_n(tail_.begin(), tailSize_, seam.begin());
  std::copy_n(bytes.begin(), begun, seam.begin() + static_cast<std::ptrdiff_t>(tailSize_));
  const std::span<const char> joined = std::span(seam).first(tailSize_ + begun);
  const auto across = std::ranges::search(joined, segmentKey);
  if (!across.empty()) {
    count(place - tailSize_ + static_cast<std::size_t>(across.end() - joined.begin()));
  }
  for (auto rest = bytes; rest.size() >= keySize;) {
    const auto found = std::ranges::search(rest, segmentKey);
    if (found.empty()) break;
    rest = {found.end(), rest.end()};
    count(next_ - rest.size());
  }
  tailSize_ = std::min(joined.size() < bytes.size() ? bytes.size() : joined.size(), keySize - 1);
  const std::span<const char> kept = bytes.size() >= keySize - 1 ? bytes.last(tailSize_) : joined.last(tailSize_);
  std::ranges::copy(kept, tail_.begin());
}

}  // namespace meridian::inline v0_2
