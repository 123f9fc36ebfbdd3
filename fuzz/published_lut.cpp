// LUT files of any bytes, read as their formats publish them: nothing crashes, newlines of all kinds mean the same, and
// a LUT that was read has results for every input.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <unistd.h>

#include "fuzz/require.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/published_lut.h"

using namespace meridian;
using fuzz::require;

namespace {

/// A directory of this process alone, removed at its end.
class Directory {
 public:
  Directory() { std::filesystem::create_directories(path_); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  Directory(Directory&&) = delete;
  Directory& operator=(Directory&&) = delete;
  ~Directory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] std::filesystem::path file(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("meridian-fuzz-published-" + std::to_string(::getpid()));
};

Expected<PublishedLut, LutError> read(const std::filesystem::path& path, std::string_view text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
  return readPublishedLut(Url::fromFilePath(path.string()));
}

const std::vector<LutColor>* colorsOf(const LutStage& stage) {
  if (const auto* const curve = std::get_if<LutCurve>(&stage)) return curve->rows.get();
  if (const auto* const cube = std::get_if<LutCubeStage>(&stage)) return cube->points.get();
  return nullptr;
}

void requireSame(const PublishedLut& left, const PublishedLut& right) {
  require(left.format == right.format && left.stages.size() == right.stages.size(), "the same stages");
  for (std::size_t i = 0; i < left.stages.size(); ++i) {
    require(left.stages[i].index() == right.stages[i].index(), "the same kind of stage");
    require(*colorsOf(left.stages[i]) == *colorsOf(right.stages[i]), "the same colours");
  }
}

void checkResults(const PublishedLut& lut, std::size_t bytes) {
  for (const LutStage& stage : lut.stages) {
    require(colorsOf(stage) != nullptr && colorsOf(stage)->size() >= 2, "stages of rows");
    require(colorsOf(stage)->size() <= bytes, "no more rows than the file can hold");
  }
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double input : {0.0, 0.3, 1.0, -2.5, 1e308, -1e308, infinity, -infinity, std::nan("")}) {
    static_cast<void>(applied(lut, {input, 0.5, 1}, LutInterpolation::trilinear));
    static_cast<void>(applied(lut, {1, 0.5, input}, LutInterpolation::tetrahedral));
  }
  const auto prepared = ImageLut::forCodeValues(lut, 8, 8);
  require(prepared.has_value(), "a prepared LUT");
  for (const std::uint16_t code : {std::uint16_t{0}, std::uint16_t{100}, std::uint16_t{255}}) {
    const auto codes = appliedToCodeValues(lut, {code, 255, code}, 8, 8);
    const auto pixel = prepared->pixel(code, 255, code);
    for (std::size_t i = 0; i < 3; ++i) {
      require(codes[i] <= 255 && codes[i] + 1 >= pixel[i] && pixel[i] + 1U >= codes[i], "the code value of images");
    }
  }
  // Domains may be smaller than any number of single precision, whose smallest are inputs here too.
  std::array<float, 9> samples{0, 0.3F, 1, -2.5F, 1e-45F, -1e-45F, 3e38F, -3e38F, 2};
  const auto view = ImageView<float>::packed(ImageLayout::rgb, samples.data(), 3, 1);
  require(applyLut(lut, view, view).has_value(), "an image of floating point");
  require(describe(lut).size >= 2, "a size");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Directory directory;
  if (size == 0) return 0;
  constexpr std::string_view names[]{"look.cube", "look.3dl", "look"};
  const std::filesystem::path path = directory.file(names[data[0] % 3]);
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto lut = read(path, text);
  const auto format = publishedLutFormat(Url::fromFilePath(path.string()));
  if (lut) {
    require(format && *format == lut->format, "the format that was recognised");
    checkResults(*lut, text.size());
  } else {
    require(!lut.error().message().empty() && lut.error().place == path.string(), "an error with its file");
    require(isOfOtherFormat(lut.error()) || format.has_value(), "damage in a known format only");
  }
  if (text.find('\r') != std::string::npos) return 0;
  std::string returns;
  for (const char c : text) returns += c == '\n' ? std::string("\r\n") : std::string(1, c);
  const auto same = read(path, returns);
  require(same.has_value() == lut.has_value(), "the same with other newlines");
  if (lut) {
    requireSame(*lut, *same);
  } else {
    require(same.error().code == lut.error().code, "the same error with other newlines");
  }
  return 0;
}
