#include "meridian/lut/parsed_lut_factory.h"

#include <bit>
#include <cmath>
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

/// The smallest number of rows of a 1D LUT: one for each code value of 8 bits.
constexpr std::size_t leastRows = 256;

/// The bytes that decide whether a file can be an XML document at all.
constexpr std::size_t headSize = 4096;

/// The beginning of a file, which was read to inspect it, and the rest.
class FileText {
 public:
  explicit FileText(FileReader& reader) : reader_(reader), head_(headSize) { head_.resize(reader_.read(head_)); }

  /// Returns whether the file is a well-formed XML document. Costs next to nothing unless it begins like one.
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
    // The same bytes are read again as text. If they cannot be, the reader keeps the error.
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

using Parsing = Expected<std::unique_ptr<const ParsedLutFile>, LutError>;

Unexpected<LutError> failure(LutErrorCode code, const Url& file, std::size_t rows = 0,
                             std::error_code systemError = {}) {
  return Unexpected(LutError{.code = code,
                             .place = file.path(),
                             .detail = rows == 0 ? "" : std::to_string(rows) + " rows read",
                             .systemError = systemError});
}

Parsing cubeOf(const Url& file, const GenericTextLutInterpreter& lines,
               const std::shared_ptr<const LutValueTriplets>& rows) {
  const DecimalNumber& maximum = *lines.explicitMaxValue();
  const auto cube =
      std::make_shared<const LutCube>(rows, lines.explicitMinValue()->doubleValue(), maximum.doubleValue());
  // A maximum that only becomes whole as a 32-bit float means code values, deliberately: 1022.99999 does. Its depth is
  // still that of the integer in the file. One beyond 64 bits means floating point.
  const auto largest = static_cast<float>(maximum.doubleValue());
  const bool hasCodeValues = largest > 1.0F && largest <= 0x1p63F && std::trunc(largest) == largest;
  if (!hasCodeValues) {
    return std::make_unique<ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile>(file, lines.declaredDomain(),
                                                                                       rows, cube, lines.textFacts());
  }
  return std::make_unique<ParsedLutFactory::ParsedThreeDimensionalIntegerFile>(
      file, lines.declaredDomain(), rows, cube, bitDepthOfMaximum(maximum.integerValue()), lines.textFacts());
}

Parsing oneDimensionalLutOf(const Url& file, const GenericTextLutInterpreter& lines,
                            const std::shared_ptr<const LutValueTriplets>& rows) {
  const std::size_t count = rows->size();
  if (!std::has_single_bit(count)) return failure(LutErrorCode::unusableRowCount, file, count);
  if (count < leastRows) {
    log(LogLevel::error, "MRD_PLF_PLWV-",
        "Lut file " + file.path() + " only containts " + std::to_string(count) +
            " entries.  Considered not a LUT");  // the wording that the suite's log readers know
    return failure(LutErrorCode::tooFewRows, file, count);
  }
  // A power of two is a size in itself, so the size of a LUT of code values is always known here.
  std::unique_ptr<const OneDimensionConverter> converter;
  if (lines.explicitMaxValue()->integerValue() < 2) {
    converter = std::make_unique<OneDimensionFloatingPointConverter>(rows, lines.explicitMinValue()->doubleValue(),
                                                                     lines.explicitMaxValue()->doubleValue());
  } else {
    converter = std::make_unique<OneDimensionsUnsignedIntegerConverter>(rows);
  }
  return std::make_unique<ParsedLutFactory::ParsedOneDimensionLutFile>(file, lines.declaredDomain(),
                                                                       std::move(converter), lines.textFacts());
}

Parsing lutOf(const Url& file, GenericTextLutInterpreter& lines) {
  if (lines.triplets().empty()) return failure(LutErrorCode::noRows, file);
  const auto dimensions = lines.explicitDimensions() ? lines.explicitDimensions() : lines.inferredDimensions();
  if (!dimensions) return failure(LutErrorCode::unknownDimensions, file, lines.triplets().size());
  const auto rows = std::make_shared<const LutValueTriplets>(std::move(lines.triplets()));
  return *dimensions == LutDimensions::cube ? cubeOf(file, lines, rows) : oneDimensionalLutOf(file, lines, rows);
}

}  // namespace

std::unique_ptr<const ParsedLutFile> ParsedLutFactory::parsed(const Url& lutFilePath) {
  auto file = parsing(lutFilePath);
  return file ? *std::move(file) : nullptr;
}

Expected<std::unique_ptr<const ParsedLutFile>, LutError> ParsedLutFactory::parsing(
    const Url& lutFilePath, const std::optional<FileExtensionSet>& permittedExtensions, bool acceptsUnknownExtensions) {
  // An XML document is an error whatever its extension, and an unsupported extension even if there is no such file.
  FileReader reader(lutFilePath.path());
  std::optional<FileText> text;
  if (reader.isOpen()) text.emplace(reader);
  if (text && text->isXmlDocument()) return failure(LutErrorCode::xmlDocument, lutFilePath);

  if (permittedExtensions &&
      !isPermitted(pathExtension(lutFilePath.path()), *permittedExtensions, acceptsUnknownExtensions)) {
    log(LogLevel::info, "MRD_PLF_PLWV-", "Lut file " + lutFilePath.path() + " is not a supported format");
    return failure(LutErrorCode::unsupportedExtension, lutFilePath);
  }
  if (!text) {
    log(LogLevel::error, "MRD_CLUT_PTFB-", "Failed to open lut file " + lutFilePath.path());
    if (!reader.otherKind().empty()) {
      return Unexpected(LutError{.code = LutErrorCode::notRegularFile,
                                 .place = lutFilePath.path(),
                                 .detail = std::string(reader.otherKind())});
    }
    return failure(LutErrorCode::notOpened, lutFilePath, 0, reader.error());
  }

  GenericTextLutInterpreter lines;
  detail::readTextLut([&text](std::span<char> memory) { return text->read(memory); }, reader.size(), lines);
  if (reader.error()) return failure(LutErrorCode::notRead, lutFilePath, lines.triplets().size(), reader.error());
  return lutOf(lutFilePath, lines);
}

ParsedLutFactory::ParsedOneDimensionLutFile::ParsedOneDimensionLutFile(
    Url file, const LutDeclaredDomain& declaredDomain, std::unique_ptr<const OneDimensionConverter> inputConverter,
    const LutTextFacts& textFacts)
    : file_(std::move(file)),
      declaredDomain_(declaredDomain),
      textFacts_(textFacts),
      inputConverter_(std::move(inputConverter)) {}

ParsedLutFactory::ParsedThreeDimensionalIntegerFile::ParsedThreeDimensionalIntegerFile(
    Url file, const LutDeclaredDomain& declaredDomain, std::shared_ptr<const LutValueTriplets> orderedValues,
    std::shared_ptr<const LutCube> cube, std::int64_t bitDepth, const LutTextFacts& textFacts)
    : file_(std::move(file)),
      declaredDomain_(declaredDomain),
      textFacts_(textFacts),
      orderedValues_(std::move(orderedValues)),
      inputConverter_(std::move(cube), bitDepth) {}

ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile::ParsedThreeDimensionalFloatingPointFile(
    Url file, const LutDeclaredDomain& declaredDomain, std::shared_ptr<const LutValueTriplets> orderedValues,
    std::shared_ptr<const LutCube> cube, const LutTextFacts& textFacts)
    : file_(std::move(file)),
      declaredDomain_(declaredDomain),
      textFacts_(textFacts),
      orderedValues_(std::move(orderedValues)),
      inputConverter_(std::move(cube)) {}

ParsedLutFactory::ParsedOneDimensionLutFile::~ParsedOneDimensionLutFile() = default;
ParsedLutFactory::ParsedThreeDimensionalIntegerFile::~ParsedThreeDimensionalIntegerFile() = default;
ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile::~ParsedThreeDimensionalFloatingPointFile() = default;

}  // namespace meridian::inline v0_2
