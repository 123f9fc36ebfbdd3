#include "meridian/engine/movie_samples.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <string_view>

namespace meridian::inline v0_2 {
namespace {

/// A box of a movie: its type, and where its content lies (ISO/IEC 14496-12, 4.2).
struct Box {
  std::array<char, 4> type{};
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  [[nodiscard]] bool is(std::string_view name) const noexcept { return std::ranges::equal(type, name); }
};

/// What decides how FFmpeg keeps the samples of a track.
struct Track {
  bool isSound = false;
  std::uint32_t timeEntries = 0;
  std::uint32_t firstLength = 0;
  std::uint64_t sameSizeSamples = 0;

  /// Returns the samples with an entry each. Sound whose samples all last one tick has an entry for each chunk.
  [[nodiscard]] std::uint64_t keptSamples() const noexcept {
    return isSound && timeEntries == 1 && firstLength == 1 ? 0 : sameSizeSamples;
  }
};

class MovieScan {
 public:
  explicit MovieScan(FileReader& file) noexcept : file_(file) {}

  [[nodiscard]] std::uint64_t total() noexcept {
    constexpr int mostOuterBoxes = 1000;
    std::uint64_t place = 0;
    for (int count = 0; count < mostOuterBoxes; ++count) {
      const auto box = boxAt(place, file_.size());
      if (!box) break;
      if (box->is("moov") || box->is("moof")) scan(*box, 0, nullptr);
      place = box->end;
    }
    return total_;
  }

 private:
  static constexpr int deepestBox = 8;

  template <std::size_t size>
  [[nodiscard]] std::optional<std::array<char, size>> bytesAt(std::uint64_t place) noexcept {
    std::array<char, size> bytes{};
    if (place > file_.size() || !file_.seek(static_cast<std::int64_t>(place)) || file_.read(bytes) < size) return {};
    return bytes;
  }

  /// Returns a big-endian number of `size` bytes from a place in the bytes.
  template <typename Bytes>
  [[nodiscard]] static std::uint64_t number(const Bytes& bytes, std::size_t place, std::size_t size = 4) noexcept {
    std::uint64_t result = 0;
    for (std::size_t each = 0; each < size; ++each) {
      result = result << 8U | static_cast<unsigned char>(bytes[place + each]);
    }
    return result;
  }

  /// Returns the box at the place; absent if there is none that ends by the limit, at the latest.
  [[nodiscard]] std::optional<Box> boxAt(std::uint64_t place, std::uint64_t limit) noexcept {
    constexpr std::uint64_t headerSize = 8;
    if (boxesLeft_ == 0 || place + headerSize > limit) return std::nullopt;
    --boxesLeft_;
    const auto header = bytesAt<headerSize>(place);
    if (!header) return std::nullopt;
    Box box{
        .type = {(*header)[4], (*header)[5], (*header)[6], (*header)[7]}, .begin = place + headerSize, .end = limit};
    std::uint64_t size = number(*header, 0);
    if (size == 1) {
      const auto longSize = bytesAt<8>(box.begin);
      if (!longSize) return std::nullopt;
      size = number(*longSize, 0, 8);
      box.begin += 8;
    }
    // 0 is to the end. A box that ends later is cut off.
    if (size != 0 && size < box.begin - place) return std::nullopt;
    if (size != 0) box.end = place + std::min(size, limit - place);
    box.begin = std::min(box.begin, box.end);
    return box;
  }

  void scan(const Box& outer, int depth, Track* track) noexcept {
    if (depth == deepestBox) return;
    for (std::uint64_t place = outer.begin;;) {
      const auto box = boxAt(place, outer.end);
      if (!box) return;
      if (box->is("trak")) {
        Track inner;
        scan(*box, depth + 1, &inner);
        add(inner.keptSamples());
      } else if (box->is("mdia") || box->is("minf") || box->is("stbl") || box->is("traf")) {
        scan(*box, depth + 1, track);
      } else if (box->is("trun")) {
        readRun(*box);
      } else if (track != nullptr) {
        readTable(*box, *track);
      }
      place = box->end;
    }
  }

  void readTable(const Box& box, Track& track) noexcept {
    // A version, flags, and two numbers; in "stts" the number of entries, then the first entry's count and length.
    if (box.is("hdlr")) {
      // QuickTime has a second one, of the data's handler.
      const auto bytes = bytesAt<12>(box.begin);
      if (bytes && std::string_view(bytes->data() + 8, 4) == "soun") track.isSound = true;
    } else if (box.is("stts")) {
      if (const auto bytes = bytesAt<16>(box.begin)) {
        track.timeEntries = static_cast<std::uint32_t>(number(*bytes, 4));
        track.firstLength = static_cast<std::uint32_t>(number(*bytes, 12));
      }
    } else if (box.is("stsz")) {
      const auto bytes = bytesAt<12>(box.begin);
      if (bytes && number(*bytes, 4) != 0) track.sameSizeSamples = number(*bytes, 8);
    }
  }

  /// A run of a fragment lists its samples if a flag says that they differ in something.
  void readRun(const Box& box) noexcept {
    const auto bytes = bytesAt<8>(box.begin);
    constexpr std::uint64_t differs = 0xf00;
    if (bytes && (number(*bytes, 1, 3) & differs) == 0) add(number(*bytes, 4));
  }

  void add(std::uint64_t samples) noexcept {
    total_ += std::min(samples, std::numeric_limits<std::uint64_t>::max() - total_);
  }

  FileReader& file_;
  int boxesLeft_ = 20'000;
  std::uint64_t total_ = 0;
};

}  // namespace

std::uint64_t claimedSamples(FileReader& file) noexcept { return MovieScan(file).total(); }

}  // namespace meridian::inline v0_2
