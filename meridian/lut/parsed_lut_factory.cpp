#include "meridian/lut/parsed_lut_factory.h"

#include <bit>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "meridian/lut/bit_depth.h"
#include "meridian/lut/text_lut_reading.h"
#include "meridian/platform/file_reader.h"
#include "meridian/platform/path_text.h"
#include "meridian/platform/xml_check.h"
#include "meridian/suite/logger.h"

namespace meridian::inline v0_2 {
namespace {

/// The rows that a one-dimensional table has at least: one for each code value of 8 bits.
constexpr std::size_t leastRows = 256;

/// Bytes that decide whether a file can be an XML document at all.
constexpr std::size_t headSize = 4096;

/// The beginning of a file, which was read to look at it, and what follows.
class FileText {
 public:
  explicit FileText(FileReader& reader) : reader_(reader), head_(headSize) { head_.resize(reader_.read(head_)); }

  /// Whether the file is a well-formed XML document. Costs next to nothing unless it begins like one.
  [[nodiscard]] bool isXmlDocument() {
    if (!mayBeginXml(head_)) return false;
    XmlCheck check;
    bool isWellFormed = check.feed(head_);
    std::vector<char> piece(std::size_t{64} * 1024);
    while (isWellFormed) {
      const std::size_t count = reader_.read(piece);
      isWellFormed = check.feed(std::span(piece).first(count));
      if (count < piece.size()) break;
    }
    isWellFormed = isWellFormed && !reader_.error() && check.finish();
    // What was read here is read once more as text. From a pipe it is gone, which the reader's error says.
    if (!isWellFormed && reader_.rewind()) head_.clear();
    return isWellFormed;
  }

  std::size_t read(std::span<char> memory) {
    const std::size_t fromHead = std::min(memory.size(), head_.size() - given_);
    std::copy_n(head_.begin() + static_cast<std::ptrdiff_t>(given_), fromHead, memory.begin());
    given_ += fromHead;
    return fromHead + reader_.read(memory.subspan(fromHead));
  }

 private:
  FileReader& reader_;
  std::vector<char> head_;
  std::size_t given_ = 0;
};

bool isPermitted(std::string_view extension, const FileExtensionSet& permitted, bool acceptsUnknown) {
  const auto known = fileExtensionIgnoringCase(extension);
  return known ? permitted.contains(*known) : acceptsUnknown;
}

LutParsing refused(LutRefusalReason reason, std::size_t rows = 0, std::error_code systemError = {}) {
  return {.file = nullptr, .refusal = LutRefusal{reason, rows, systemError}};
}

LutParsing cubeOf(const Url& file, const GenericTextLutInterpreter& lines,
                  const std::shared_ptr<const LutValueTriplets>& rows) {
  const DecimalNumber& maximum = *lines.explicitMaxValue();
  const auto cube =
      std::make_shared<const LutCube>(rows, lines.explicitMinValue()->doubleValue(), maximum.doubleValue());
  // The float is held against the integer that the file's own text gives, so that a maximum which is whole only by
  // rounding, or larger than 64 bits, means floating point.
  const auto largest = static_cast<float>(maximum.doubleValue());
  const bool hasCodeValues = largest > 1.0F && largest == static_cast<float>(maximum.integerValue());
  if (!hasCodeValues) {
    return {.file = std::make_unique<ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile>(
                file, lines.declaredDomain(), rows, cube),
            .refusal = {}};
  }
  return {.file = std::make_unique<ParsedLutFactory::ParsedThreeDimensionalIntegerFile>(
              file, lines.declaredDomain(), rows, cube, bitDepthOfMaximum(maximum.integerValue())),
          .refusal = {}};
}

LutParsing oneDimensionalTableOf(const Url& file, const GenericTextLutInterpreter& lines,
                                 const std::shared_ptr<const LutValueTriplets>& rows) {
  const std::size_t count = rows->size();
  if (!std::has_single_bit(count)) return refused(LutRefusalReason::unusableRowCount, count);
  if (count < leastRows) {
    log(LogLevel::error, "MRD_PLF_PLWV-",
        "Lut file " + file.path() + " only containts " + std::to_string(count) +
            " entries.  Considered not a LUT");  // the wording that the suite's log readers know
    return refused(LutRefusalReason::tooFewRows, count);
  }
  // A power of two is a size in itself, so the size of a table of code values is always known here.
  std::unique_ptr<const OneDimensionConverter> converter;
  if (lines.explicitMaxValue()->integerValue() < 2) {
    converter = std::make_unique<OneDimensionFloatingPointConverter>(rows, lines.explicitMinValue()->doubleValue(),
                                                                     lines.explicitMaxValue()->doubleValue());
  } else {
    converter = std::make_unique<OneDimensionsUnsignedIntegerConverter>(rows);
  }
  return {.file = std::make_unique<ParsedLutFactory::ParsedOneDimensionLutFile>(file, lines.declaredDomain(),
                                                                                std::move(converter)),
          .refusal = {}};
}

LutParsing tableOf(const Url& file, GenericTextLutInterpreter& lines) {
  if (lines.triplets().empty()) return refused(LutRefusalReason::noRows);
  const auto dimensions = lines.explicitDimensions() ? lines.explicitDimensions() : lines.inferredDimensions();
  if (!dimensions) return refused(LutRefusalReason::unknownDimensions, lines.triplets().size());
  const auto rows = std::make_shared<const LutValueTriplets>(std::move(lines.triplets()));
  return *dimensions == LutDimensions::cube ? cubeOf(file, lines, rows) : oneDimensionalTableOf(file, lines, rows);
}

}  // namespace

std::unique_ptr<const ParsedLutFile> ParsedLutFactory::parsed(const Url& lutFilePath) {
  return parsing(lutFilePath).file;
}

LutParsing ParsedLutFactory::parsing(const Url& lutFilePath, const std::optional<FileExtensionSet>& permittedExtensions,
                                     bool acceptsUnknownExtensions) {
  // A document is refused before its extension is looked at, and the extension before a file that is not there.
  FileReader reader(lutFilePath.path());
  std::optional<FileText> text;
  if (reader.isOpen()) text.emplace(reader);
  if (text && text->isXmlDocument()) return refused(LutRefusalReason::xmlDocument);

  if (permittedExtensions &&
      !isPermitted(pathExtension(lutFilePath.path()), *permittedExtensions, acceptsUnknownExtensions)) {
    log(LogLevel::info, "MRD_PLF_PLWV-", "Lut file " + lutFilePath.path() + " is not a supported format");
    return refused(LutRefusalReason::unsupportedExtension);
  }
  if (!text) {
    log(LogLevel::error, "MRD_CLUT_PTFB-", "Failed to open lut file " + lutFilePath.path());
    return refused(LutRefusalReason::notOpened, 0, reader.error());
  }

  GenericTextLutInterpreter lines;
  detail::readTextLut([&text](std::span<char> memory) { return text->read(memory); }, reader.size(), lines);
  if (reader.error()) return refused(LutRefusalReason::notRead, lines.triplets().size(), reader.error());
  return tableOf(lutFilePath, lines);
}

ParsedLutFactory::ParsedOneDimensionLutFile::ParsedOneDimensionLutFile(
    Url file, const LutDeclaredDomain& declaredDomain, std::unique_ptr<const OneDimensionConverter> inputConverter)
    : file_(std::move(file)), declaredDomain_(declaredDomain), inputConverter_(std::move(inputConverter)) {}

ParsedLutFactory::ParsedThreeDimensionalIntegerFile::ParsedThreeDimensionalIntegerFile(
    Url file, const LutDeclaredDomain& declaredDomain, std::shared_ptr<const LutValueTriplets> orderedValues,
    std::shared_ptr<const LutCube> cube, std::int64_t bitDepth)
    : file_(std::move(file)),
      declaredDomain_(declaredDomain),
      orderedValues_(std::move(orderedValues)),
      inputConverter_(std::move(cube), bitDepth) {}

ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile::ParsedThreeDimensionalFloatingPointFile(
    Url file, const LutDeclaredDomain& declaredDomain, std::shared_ptr<const LutValueTriplets> orderedValues,
    std::shared_ptr<const LutCube> cube)
    : file_(std::move(file)),
      declaredDomain_(declaredDomain),
      orderedValues_(std::move(orderedValues)),
      inputConverter_(std::move(cube)) {}

ParsedLutFactory::ParsedOneDimensionLutFile::~ParsedOneDimensionLutFile() = default;
ParsedLutFactory::ParsedThreeDimensionalIntegerFile::~ParsedThreeDimensionalIntegerFile() = default;
ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile::~ParsedThreeDimensionalFloatingPointFile() = default;

}  // namespace meridian::inline v0_2
