#include "meridian/engine/movie_index.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace meridian::inline v0_2 {
namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

std::uint64_t saturatedSum(std::uint64_t left, std::uint64_t right) noexcept {
  return left + std::min(right, unlimited - left);
}

std::uint64_t saturatedProduct(std::uint64_t left, std::uint64_t right) noexcept {
  return right != 0 && left > unlimited / right ? unlimited : left * right;
}

/// A box of a movie: its type, and where its content lies (ISO/IEC 14496-12, 4.2).
struct Box {
  std::array<char, 4> type{};
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  [[nodiscard]] std::string_view name() const noexcept { return {type.data(), type.size()}; }
  [[nodiscard]] std::uint64_t size() const noexcept { return end - begin; }
};

/// The boxes that FFmpeg looks into, at any depth. "stsd", "meta", "free" and "hoov" are treated apart.
constexpr auto containers =
    std::to_array<std::string_view>({"dinf", "edts", "ilst", "mdia", "minf", "moof", "moov", "mvex", "schi", "sinf",
                                     "stbl", "traf", "trak", "tref", "udta", "wave"});

/// The boxes that make entries. None belongs into the description of a sample.
constexpr auto tables =
    std::to_array<std::string_view>({"cmov", "co64", "ctts", "elst", "hdlr", "keys", "moof", "moov", "saiz", "sbgp",
                                     "senc", "stbl", "stco", "stsc", "stsd", "stsz", "stts", "stz2", "trak", "trun"});

/// FFmpeg's own limit.
constexpr int deepestBox = 10;

/// What a track states about its samples.
struct Track {
  bool isSound = false;
  bool isOther = false;
  bool hasTicksOfOne = false;
  std::uint64_t samples = 0;
  std::uint64_t chunks = 0;
  std::uint64_t edits = 0;
  std::optional<Box> sampleSizes;
  std::optional<Box> times;
  std::optional<Box> runs;
  std::optional<Box> chunkPlaces;
};

class MovieScan {
 public:
  MovieScan(std::uint64_t size, const ReadsAt& readAt) noexcept : size_(size), readAt_(readAt) {}

  [[nodiscard]] Expected<MovieIndexEntries, MediaError> total() {
    scan({.begin = 0, .end = size_}, 0, nullptr);
    if (error_) return Unexpected(*std::move(error_));
    // A place for each stream in each fragment.
    add(saturatedProduct(fragments_, tracks_));
    return MovieIndexEntries{entries_, saturatedSum(entries_, repeats_)};
  }

 private:
  /// Ends the scan: no further box is read.
  void fail(MediaErrorCode code, std::string detail = {}) {
    if (!error_) error_ = MediaError{code, {}, std::move(detail)};
  }

  [[nodiscard]] bool isRead(std::uint64_t place, std::span<char> memory) {
    if (!error_ && !readAt_(place, memory)) fail(MediaErrorCode::notRead);
    return !error_;
  }

  template <std::size_t size>
  [[nodiscard]] std::array<char, size> bytesAt(std::uint64_t place) {
    std::array<char, size> bytes{};
    (void)isRead(place, bytes);
    return bytes;
  }

  /// Returns a big-endian number.
  [[nodiscard]] static std::uint64_t number(std::span<const char> bytes) noexcept {
    std::uint64_t result = 0;
    for (const char each : bytes) result = result << 8U | static_cast<unsigned char>(each);
    return result;
  }

  /// Returns the number of four bytes at a place in the content of a box; 0 if the file ends before it.
  [[nodiscard]] std::uint64_t numberIn(const Box& box, std::uint64_t place) {
    return box.begin + place + 4 <= size_ ? number(bytesAt<4>(box.begin + place)) : 0;
  }

  /// Returns the box at the place, cut off where the outer one ends; absent if there is none.
  [[nodiscard]] std::optional<Box> boxAt(std::uint64_t place, std::uint64_t limit) {
    constexpr std::uint64_t headerSize = 8;
    if (limit - place < headerSize) return std::nullopt;
    const auto header = bytesAt<headerSize>(place);
    Box box{.begin = place + headerSize, .end = limit};
    std::copy_n(header.begin() + 4, 4, box.type.begin());
    std::uint64_t size = number(std::span(header).first<4>());
    if (size == 1 && limit - box.begin >= 8) {
      size = number(bytesAt<8>(box.begin));
      box.begin += 8;
    }
    if (size == 0) return box;  // to the end
    if (size < box.begin - place) return std::nullopt;
    box.end = place + std::min(size, limit - place);
    return box;
  }

  void scan(const Box& outer, int depth, Track* track) {
    if (depth > deepestBox) {
      fail(MediaErrorCode::damaged, "its boxes are too deeply nested");
      return;
    }
    for (std::uint64_t place = outer.begin; !error_ && place <= outer.end;) {
      const auto box = boxAt(place, outer.end);
      if (!box) return;
      look(*box, depth, track);
      place = box->end;
    }
  }

  void look(const Box& box, int depth, Track* track) {
    const std::string_view name = box.name();
    if (name == "cmov") {
      fail(MediaErrorCode::unknownFormat, "its header is compressed");
      return;
    }
    if (name == "moov" && depth > 0) {
      fail(MediaErrorCode::damaged, "a header lies within another box");
      return;
    }
    if (name == "trak") {
      ++tracks_;
      Track inner;
      scan(box, depth + 1, &inner);
      add(inner);
    } else if (name == "meta") {
      scanMeta(box, depth, track);
    } else if (name == "free" || name == "hoov") {
      // FFmpeg takes one that begins as a header does for the header.
      if (box.size() >= 8 && (nameAt(box.begin + 4) == "mvhd" || nameAt(box.begin + 4) == "cmov")) {
        scan(box, depth + 1, track);
      }
    } else if (std::ranges::find(containers, name) != containers.end()) {
      if (name == "moof") ++fragments_;
      scan(box, depth + 1, track);
    } else {
      readTable(box, track);
    }
  }

  [[nodiscard]] std::string nameAt(std::uint64_t place) {
    const auto bytes = bytesAt<4>(place);
    return {bytes.begin(), bytes.end()};
  }

  /// Boxes begin at the first handler, which is looked for in steps of four bytes.
  void scanMeta(const Box& box, int depth, Track* track) {
    for (std::uint64_t place = box.begin; !error_ && place + 8 <= box.end; place += 4) {
      if (nameAt(place + 4) == "hdlr") {
        scan({.type = box.type, .begin = place, .end = box.end}, depth + 1, track);
        return;
      }
    }
  }

  void readTable(const Box& box, Track* track) {
    // Most tables begin with a version, flags and the number of entries.
    const std::string_view name = box.name();
    if (name == "trun") {
      add(numberIn(box, 4));
    } else if (name == "ctts") {
      // FFmpeg unrolls the runs of this table and of the next for some codecs.
      add(sumOfRuns(box, 8));
    } else if (name == "sbgp") {
      constexpr std::uint64_t typePlace = 4;
      const bool isSync = box.begin + typePlace + 4 <= size_ && nameAt(box.begin + typePlace) == "sync";
      // One more number in version 1.
      if (isSync) add(sumOfRuns(box, numberIn(box, 0) >> 24U == 1 ? 16 : 12));
    } else if (name == "keys") {
      addKeys(box);
    } else if (name == "senc") {
      addEncryption(numberIn(box, 4));
    } else if (name == "saiz") {
      const bool hasType = (numberIn(box, 0) & 1U) != 0;
      addEncryption(numberIn(box, hasType ? 13 : 5));
    } else if (name == "sidx") {
      // Two longer numbers in version 1.
      const bool isLong = numberIn(box, 0) >> 24U != 0;
      fragments_ += numberIn(box, isLong ? 28 : 20) & 0xffffU;
    } else if (track != nullptr) {
      readTrackTable(box, *track);
    }
  }

  void readTrackTable(const Box& box, Track& track) {
    const std::string_view name = box.name();
    if (name == "hdlr") {
      // QuickTime has a second one, of the data's handler.
      const std::string kind = box.begin + 12 <= size_ ? nameAt(box.begin + 8) : std::string();
      if (kind == "soun") track.isSound = true;
      if (kind == "vide" || kind == "subp" || kind == "clcp") track.isOther = true;
    } else if (name == "stts") {
      keep(track.times, box);
      track.hasTicksOfOne = numberIn(box, 4) == 1 && numberIn(box, 12) == 1;
    } else if (name == "stsz" || name == "stz2") {
      keep(track.sampleSizes, box);
      track.samples = numberIn(box, 8);
    } else if (name == "stsc") {
      keep(track.runs, box);
    } else if (name == "stco" || name == "co64") {
      keep(track.chunkPlaces, box);
      track.chunks = numberIn(box, 4);
    } else if (name == "elst") {
      // FFmpeg goes by the size of the box. Entries are longer in version 1.
      const std::uint64_t entrySize = numberIn(box, 0) >> 24U == 1 ? 20 : 12;
      track.edits = saturatedSum(track.edits, box.size() / entrySize);
    } else if (name == "stsd") {
      checkSampleDescription(box);
    }
  }

  /// Calls the action with each row of a table whose number of rows is the last of its header, as long as the file
  /// has any.
  template <std::size_t rowSize>
  void forEachRow(const Box& box, std::uint64_t headerSize, auto action) {
    constexpr std::uint64_t rowsAtOnce = 4096;
    const std::uint64_t begin = box.begin + headerSize;
    const std::uint64_t rows = std::min(numberIn(box, headerSize - 4), (size_ - std::min(size_, begin)) / rowSize);
    std::vector<char> bytes;
    for (std::uint64_t row = 0; row < rows; ++row) {
      const std::size_t place = row % rowsAtOnce * rowSize;
      if (place == 0) {
        bytes.resize(std::min(rowsAtOnce, rows - row) * rowSize);
        if (!isRead(begin + row * rowSize, bytes)) return;
      }
      action(std::span<const char>(bytes).subspan(place, rowSize));
    }
  }

  /// Returns the sum of the lengths of all runs. A run is its length and one more number.
  [[nodiscard]] std::uint64_t sumOfRuns(const Box& box, std::uint64_t headerSize) {
    std::uint64_t sum = 0;
    forEachRow<8>(box, headerSize,
                  [&sum](std::span<const char> row) { sum = saturatedSum(sum, number(row.first(4))); });
    return sum;
  }

  /// FFmpeg makes room for as many keys, and for as long ones, as the box claims.
  void addKeys(const Box& box) {
    constexpr std::uint64_t headerSize = 8;
    if (box.size() < headerSize) return;
    const std::uint64_t keys = numberIn(box, 4);
    std::uint64_t place = headerSize;
    for (std::uint64_t key = 0; key < keys && !error_; ++key) {
      const std::uint64_t size = box.size() - place >= headerSize ? numberIn(box, place) : 0;
      if (size < headerSize || size > box.size() - place) {
        fail(MediaErrorCode::damaged, "its keys are longer than their box");
        return;
      }
      place += size;
    }
    add(keys);
  }

  void keep(std::optional<Box>& table, const Box& box) {
    if (table) fail(MediaErrorCode::damaged, "a track has two tables " + std::string(box.name()));
    table = box;
  }

  /// FFmpeg looks for boxes after each description, up to the end that the description itself states.
  void checkSampleDescription(const Box& box) {
    constexpr std::uint64_t largest = std::uint64_t{1} << 20U;
    if (box.size() > largest) {
      fail(MediaErrorCode::damaged, "its sample description is too long");
      return;
    }
    std::string content(box.size(), '\0');
    if (!isRead(box.begin, content)) return;
    for (std::size_t place = 8; place + 4 <= content.size();) {
      const std::uint64_t size = number(std::span(content).subspan(place, 4));
      if (size < 8) break;
      if (size > content.size() - place) {
        fail(MediaErrorCode::damaged, "a sample description is longer than its box");
        return;
      }
      place += size;
    }
    for (const std::string_view table : tables) {
      if (content.find(table) != std::string::npos) {
        fail(MediaErrorCode::damaged, "a sample description has a table " + std::string(table));
      }
    }
  }

  void add(const Track& track) {
    // Sound whose samples all last one tick has entries for parts of chunks, all other tracks for each sample.
    const bool hasParts = track.isSound && !track.isOther && track.hasTicksOfOne;
    const std::uint64_t entries = hasParts ? partsOfChunks(track) : track.samples;
    add(entries);
    if (track.edits > 1) repeats_ = saturatedSum(repeats_, saturatedProduct(entries, track.edits - 1));
  }

  /// Returns the parts of at most 1024 samples that FFmpeg divides the chunks into.
  [[nodiscard]] std::uint64_t partsOfChunks(const Track& track) {
    if (!track.runs) return 0;
    constexpr std::uint64_t samplesOfPart = 1024;
    std::uint64_t parts = 0;
    std::uint64_t partsOfLast = 0;
    std::uint64_t first = 1;
    forEachRow<12>(*track.runs, 8, [&](std::span<const char> row) {
      const std::uint64_t next = number(row.first(4));
      const std::uint64_t chunks = next < first ? track.chunks : next - first;
      parts = saturatedSum(parts, saturatedProduct(chunks, partsOfLast));
      first = next;
      partsOfLast = (number(row.subspan(4, 4)) + samplesOfPart - 1) / samplesOfPart;
    });
    const std::uint64_t chunksLeft = track.chunks + 1 - std::min(track.chunks + 1, first);
    return saturatedSum(parts, saturatedProduct(chunksLeft, partsOfLast));
  }

  void add(std::uint64_t entries) noexcept { entries_ = saturatedSum(entries_, entries); }

  /// What FFmpeg keeps of an encrypted sample is as large as about eight entries.
  void addEncryption(std::uint64_t samples) noexcept { add(saturatedProduct(samples, 8)); }

  std::uint64_t size_;
  const ReadsAt& readAt_;
  std::uint64_t entries_ = 0;
  std::uint64_t repeats_ = 0;
  std::uint64_t tracks_ = 0;
  std::uint64_t fragments_ = 0;
  std::optional<MediaError> error_;
};

}  // namespace

Expected<MovieIndexEntries, MediaError> movieIndexEntries(std::uint64_t size, const ReadsAt& readAt) {
  return MovieScan(size, readAt).total();
}

}  // namespace meridian::inline v0_2
