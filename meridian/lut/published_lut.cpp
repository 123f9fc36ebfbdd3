// Finds out which published format a LUT file is in, and calls the reader of that format.
#include "meridian/lut/published_lut.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/text.h"
#include "meridian/lut/published_lut_reading.h"
#include "meridian/platform/file_reader.h"
#include "meridian/platform/path_text.h"
#include "meridian/platform/xml_check.h"

namespace meridian::inline v0_2 {
namespace {

using detail::beginsLikeNumber;
using detail::TextLines;

/// Recognises the format of a file from its lines, one after the other.
class FormatFinder {
 public:
  explicit FormatFinder(std::string_view extension) : extension_(extension) {}

  std::optional<LutFormat> find(TextLines& lines) {
    while (const auto line = lines.next()) {
      if (line->empty()) continue;
      if (const auto format = bySignature(*line)) return format;
      isFirst_ = false;
      if (line->starts_with('#')) continue;
      if (line->starts_with('<')) return byRootElement(*line, lines);
      if (beginsLikeNumber(*line) && !isKeyword(*line, "3DMESH")) {
        if (const auto decided = byNumbers(*line)) return *decided;
      } else if (const auto format = byKeyword(*line)) {
        return format;
      }
    }
    return std::nullopt;
  }

 private:
  static bool isKeyword(std::string_view line, std::string_view keyword) {
    return equalsIgnoringCase(detail::firstWord(line), keyword);
  }

  bool hasExtension(std::string_view extension) const { return equalsIgnoringCase(extension_, extension); }

  /// Formats whose first line names them, in a comment or not.
  std::optional<LutFormat> bySignature(std::string_view line) const {
    if (!isFirst_) return std::nullopt;
    if (line.starts_with("CSPLUT")) return LutFormat::cinespace;
    if (line.starts_with("SPILUT")) return LutFormat::spi3d;
    if (line.starts_with("LUT:")) return LutFormat::discreet;
    if (line.starts_with("#Inventor")) return LutFormat::nukeField;
    if (line.starts_with("# Truelight Cube")) return LutFormat::truelight;
    return std::nullopt;
  }

  /// XML: both formats have the same root element, and only one of them this attribute.
  static std::optional<LutFormat> byRootElement(std::string_view line, TextLines& lines) {
    bool isInRoot = false;
    for (std::optional<std::string_view> each = line; each; each = lines.next()) {
      const std::size_t root = each->find("<ProcessList");
      if (!isInRoot && root == std::string_view::npos) continue;
      const std::string_view text = isInRoot ? *each : each->substr(root);
      isInRoot = true;
      const std::size_t end = text.find('>');
      if (text.substr(0, end).find("compCLFversion") != std::string_view::npos) return LutFormat::clf;
      if (end != std::string_view::npos) break;
    }
    return isInRoot ? std::optional(LutFormat::ctf) : std::nullopt;
  }

  std::optional<LutFormat> byKeyword(std::string_view line) {
    const auto is = [line](std::string_view keyword) { return isKeyword(line, keyword); };
    if (is("LUT_1D_SIZE")) return LutFormat::cube;
    if (is("LUT_3D_SIZE")) return hasExtension("itx") ? LutFormat::itx : LutFormat::cube;
    if (is("3DMESH") || is("Mesh")) return LutFormat::threeDl;
    if (is("channel")) return LutFormat::pandora;
    if (hasVersion_ && is("From")) return LutFormat::spi1d;
    if (hasVersion_ && is("Format")) return LutFormat::houdini;
    hasVersion_ = hasVersion_ || is("Version");
    return std::nullopt;
  }

  /// Decides by a line of numbers. Returns nothing if the next line is needed for that; otherwise the format, or an
  /// empty inner optional for a file in no format.
  std::optional<std::optional<LutFormat>> byNumbers(std::string_view line) {
    if (hasExtension("spimtx")) return LutFormat::spimtx;
    std::size_t count = 0;
    for (std::string_view word = detail::firstWord(line); !word.empty(); word = detail::firstWord(line)) {
      ++count;
      const bool isInteger = word.find_first_not_of("+-0123456789") == std::string_view::npos;
      if (!isInteger) return std::optional<LutFormat>();
    }
    if (count == 3 && (hasShaper_ || hasExtension("3dl"))) return LutFormat::threeDl;
    if (count <= 3 || hasShaper_) return std::optional<LutFormat>();
    hasShaper_ = true;
    return std::nullopt;
  }

  std::string_view extension_;
  bool isFirst_ = true;
  bool hasVersion_ = false;
  /// Whether the first line of numbers had more than three, as that before the rows of a .3dl file has.
  bool hasShaper_ = false;
};

Expected<LutFormat, LutError> formatOf(FileReader& reader, const std::string& path) {
  TextLines lines(reader, path);
  if (!reader.isOpen()) {
    const bool isOther = !reader.otherKind().empty();
    return lines.error(isOther ? LutErrorCode::notRegularFile : LutErrorCode::notOpened,
                       std::string(reader.otherKind()));
  }
  const auto format = FormatFinder(pathExtension(path)).find(lines);
  if (reader.error()) return lines.error(LutErrorCode::notRead);
  if (!format) return lines.error(LutErrorCode::noPublishedFormat);
  return *format;
}

/// Returns the error of a format that is left to other readers. A CLF or CTF file that refers to another file is not:
/// the other may be anything, a device for example, and a relative path depends on the working directory.
Unexpected<LutError> errorOfOtherFormat(LutFormat format, FileReader& reader, const TextLines& lines) {
  if (format == LutFormat::clf || format == LutFormat::ctf) {
    XmlElementSearch search("reference", "path");
    std::vector<char> piece(std::size_t{64} * 1024);
    while (const std::size_t count = reader.read(piece)) {
      if (!search.feed({piece.data(), count})) break;
    }
    if (search.found()) return lines.error(LutErrorCode::refersToOtherFile, *search.found());
    if (search.isOutOfMemory()) return lines.error(LutErrorCode::notReadByLibrary, "its XML needs too much memory");
  }
  return lines.error(LutErrorCode::otherPublishedFormat, std::string(description(format)));
}

}  // namespace

Expected<LutFormat, LutError> publishedLutFormat(const Url& file) {
  FileReader reader(file.path());
  return formatOf(reader, file.path());
}

Expected<PublishedLut, LutError> readPublishedLut(const Url& file) {
  const std::string& path = file.path();
  FileReader reader(path);
  const auto format = formatOf(reader, path);
  if (!format) return Unexpected(format.error());
  TextLines lines(reader, path);
  if (!reader.rewind()) return lines.error(LutErrorCode::notRead);
  Expected<PublishedLut, LutError> lut = [&]() -> Expected<PublishedLut, LutError> {
    switch (*format) {
      case LutFormat::cube:
        return detail::readPublishedCube(lines);
      case LutFormat::threeDl:
        return detail::readPublished3dl(lines);
      default:
        return errorOfOtherFormat(*format, reader, lines);
    }
  }();
  if (reader.error()) return lines.error(LutErrorCode::notRead);
  if (lut) warnOfResults(*lut);
  return lut;
}

}  // namespace meridian::inline v0_2
