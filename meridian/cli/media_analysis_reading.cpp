#include "meridian/cli/media_analysis_reading.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/media_analysis_flags.h"
#include "meridian/cli/nearest_text.h"
#include "meridian/cli/sanitizer.h"

namespace meridian::inline v0_2 {
namespace {

using Code = MediaAnalysisCLIWarningCode;

/// A flag of the analysis tool, whichever of the three enumerations it belongs to.
struct KnownFlag {
  std::string text;
  MediaAnalysisCLIValue accepts;
  bool repeats = false;
};

template <typename Flag>
constexpr std::size_t firstPlace = 0;
template <>
constexpr std::size_t firstPlace<MediaAnalysisImageCLIFlags> = allCases<MediaAnalysisCLIFlag>().size();
template <>
constexpr std::size_t firstPlace<CLICustodialFlag> =
    firstPlace<MediaAnalysisImageCLIFlags> + allCases<MediaAnalysisImageCLIFlags>().size();

/// The flag's place in `knownFlags`.
template <typename Flag>
constexpr std::size_t placeOf(Flag flag) noexcept {
  return firstPlace<Flag> + static_cast<std::size_t>(flag);
}

const std::vector<KnownFlag>& knownFlags() {
  static const std::vector<KnownFlag> flags = [] {
    std::vector<KnownFlag> all;
    for (const auto& row : EnumerationTable<MediaAnalysisCLIFlag>::rows) {
      all.push_back({cliFlag(row.value), row.accepts, row.repeats});
    }
    for (const auto& row : EnumerationTable<MediaAnalysisImageCLIFlags>::rows) {
      all.push_back({cliFlag(row.value), row.accepts, row.repeats});
    }
    for (const CLICustodialFlag flag : allCases<CLICustodialFlag>()) {
      all.push_back({cliFlag(flag), MediaAnalysisCLIValue::integer});
    }
    return all;
  }();
  return flags;
}

/// The place of the flag in `knownFlags`. The sanitizer accepts any flag that contains a known one; only the whole flag
/// is known here, since a longer one has no meaning of its own.
std::optional<std::size_t> placeOfFlag(std::string_view written) {
  const std::string_view flag = trimmed(written);
  const auto found =
      std::ranges::find_if(knownFlags(), [flag](const KnownFlag& each) { return equalsIgnoringCase(each.text, flag); });
  if (found == knownFlags().end()) return std::nullopt;
  return static_cast<std::size_t>(found - knownFlags().begin());
}

/// "-0.0" counts as below 0, since it begins with "-" when it is written again.
std::optional<float> readNumber(std::string_view text) noexcept {
  const auto number = floatFromText(text);
  return number && std::isfinite(*number) && !std::signbit(*number) ? number : std::nullopt;
}

std::optional<std::int32_t> readInteger(std::string_view text) noexcept {
  const auto number = integerFromText(text);
  if (!number || *number < 0 || *number > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(*number);
}

/// Why the flag cannot have the value; absent if it can.
std::optional<Code> warningOfValue(MediaAnalysisCLIValue accepts, std::optional<std::string_view> value) noexcept {
  using enum MediaAnalysisCLIValue;
  if (accepts == none) return value ? std::optional(Code::unexpectedValue) : std::nullopt;
  if (!value) return Code::missingValue;
  if (accepts == number && !readNumber(*value)) return Code::unreadableNumber;
  if (accepts == integer && !readInteger(*value)) return Code::unreadableInteger;
  return std::nullopt;
}

/// Whether the flag's values are kept as written; those of an unknown flag are, too.
bool acceptsText(std::string_view flag) {
  const auto place = placeOfFlag(flag);
  return !place || knownFlags()[*place].accepts == MediaAnalysisCLIValue::text;
}

CLISanitizationOptions optionsForValuesOf(std::string_view flag) {
  return acceptsText(flag) ? CLISanitizationOptions() : CLISanitizationOptions::trimWhiteSpace;
}

/// Collects a vector's flags and values in the order in which they come.
class Collector {
 public:
  void addStrayWord(std::string_view word) { warn(Code::strayWord, word, std::nullopt); }

  void addUnknown(std::string_view flag, std::optional<std::string_view> value) {
    warn(Code::unknownFlag, flag, value);
  }

  void add(std::string_view flag, std::optional<std::string_view> value) {
    const auto place = placeOfFlag(flag);
    if (!place) {
      addUnknown(flag, value);
      return;
    }
    const KnownFlag& known = knownFlags()[*place];
    Given& given = given_[*place];
    given.isThere = true;
    if (const auto code = warningOfValue(known.accepts, value)) {
      warn(*code, flag, value);
      return;
    }
    if (!value) return;
    if (!known.repeats && !given.values.empty()) {
      warn(Code::replacedValue, given.flag, given.values.back());
      given.values.clear();
    }
    given.values.emplace_back(*value);
    given.flag = flag;
  }

  MediaAnalysisCLIReading reading() && {
    using Basic = MediaAnalysisCLIFlag;
    using Custodial = CLICustodialFlag;
    if (Given& number = given(Custodial::parentAppNumber);
        !number.values.empty() && given(Custodial::parentPid).values.empty()) {
      warn(Code::withoutParentPid, number.flag, number.values.back());
      number.values.clear();
    }
    MediaAnalysisCLIReading result{
        .basic = {std::move(given(Basic::pathToAnalyze).values), text(Basic::analysisId),
                  text(Basic::workDirectory).value_or(""), text(Basic::resultsFilePath).value_or(""),
                  given(Basic::deepAnalysis).isThere},
        .image = std::nullopt,
        .custodial = MediaAnalysisCLIArgumentFactory::CustodialOptions(integer(Custodial::parentPid),
                                                                       integer(Custodial::parentAppNumber)),
        .warnings = std::move(warnings_)};
    using Image = MediaAnalysisImageCLIFlags;
    if (std::ranges::any_of(allCases<Image>(), [this](Image flag) { return given(flag).isThere; })) {
      std::vector<float> locations;
      for (const std::string& each : given(Image::snapshotLocation).values) locations.push_back(*readNumber(each));
      result.image.emplace(std::move(locations), number(Image::maxImageWidth).value_or(0), number(Image::imageHeight),
                           number(Image::compressionFactor), given(Image::allowFinderImages).isThere,
                           text(Image::lutFile));
    }
    return result;
  }

 private:
  struct Given {
    bool isThere = false;
    /// The flag as written before the last of the values.
    std::string flag;
    /// The values that the flag can have.
    std::vector<std::string> values;
  };

  void warn(Code code, std::string_view place, std::optional<std::string_view> value) {
    warnings_.push_back({{.code = code, .place = std::string(place)}, std::optional<std::string>(value)});
  }

  template <typename Flag>
  Given& given(Flag flag) {
    return given_[placeOf(flag)];
  }
  template <typename Flag>
  std::optional<std::string> text(Flag flag) {
    const std::vector<std::string>& values = given(flag).values;
    return values.empty() ? std::nullopt : std::optional(values.back());
  }
  template <typename Flag>
  std::optional<float> number(Flag flag) {
    const auto value = text(flag);
    return value ? readNumber(*value) : std::nullopt;
  }
  template <typename Flag>
  std::optional<std::int32_t> integer(Flag flag) {
    const auto value = text(flag);
    return value ? readInteger(*value) : std::nullopt;
  }

  std::array<Given, placeOf(CLICustodialFlag::parentAppNumber) + 1> given_;
  std::vector<MediaAnalysisCLIWarning> warnings_;
};

std::optional<MediaAnalysisCLIWritingWarningCode> warningOfWriting(std::string_view flag, std::string_view value) {
  using enum MediaAnalysisCLIWritingWarningCode;
  const bool isReadAsFlag = value.starts_with('-');
  if (acceptsText(flag)) {
    if (isReadAsFlag) return readAsFlag;
    return value.find('\0') != std::string_view::npos ? std::optional(holdsNul) : std::nullopt;
  }
  const auto number = floatFromText(value);
  if (!number || !std::isfinite(*number)) return notFinite;
  return isReadAsFlag ? std::optional(belowZero) : std::nullopt;
}

}  // namespace

std::optional<std::string> MediaAnalysisCLIWarning::suggestion() const {
  if (code != Code::unknownFlag) return std::nullopt;
  std::vector<std::string_view> texts;
  for (const KnownFlag& each : knownFlags()) texts.push_back(each.text);
  return std::optional<std::string>(nearestText(trimmed(place), texts));
}

std::string MediaAnalysisCLIWarning::message() const {
  const auto nearest = suggestion();
  return detail::messageOf(place, text(), value ? inQuotes(*value) : "", std::error_code(),
                           nearest ? "did you mean " + *nearest + "?" : std::string(remedy()));
}

std::optional<std::vector<std::string>> MediaAnalysisCLIReading::unknownFlags() const {
  if (allFlagsAreValid()) return std::nullopt;
  TextDictionary seen;
  std::vector<std::string> flags;
  enumerateUnknownFlags([&](std::string_view flag, std::string_view /*value*/) {
    if (seen.setIfAbsent(std::string(flag), {})) flags.emplace_back(flag);
  });
  return flags;
}

bool MediaAnalysisCLIReading::allFlagsAreValid() const noexcept {
  return std::ranges::find(warnings, Code::unknownFlag, &MediaAnalysisCLIWarning::code) == warnings.end();
}

void MediaAnalysisCLIReading::enumerateUnknownFlags(
    FunctionRef<void(std::string_view flag, std::string_view value)> unknownFlagFound) const {
  for (const MediaAnalysisCLIWarning& warning : warnings) {
    if (warning.code != Code::unknownFlag) continue;
    unknownFlagFound(warning.place, warning.value ? std::string_view(*warning.value) : std::string_view());
  }
}

MediaAnalysisCLIReading readMediaAnalysisArguments(const ArgumentWords& argumentWords) {
  const std::span<const std::string_view> words = argumentWords.words();
  Collector collector;
  // The sanitizer skips these without reporting them.
  for (const std::string_view word : words) {
    if (word.starts_with('-')) break;
    collector.addStrayWord(word);
  }
  std::vector<std::string> validFlags;
  for (const KnownFlag& each : knownFlags()) validFlags.push_back(each.text);
  const CLIArgumentSanitizer sanitizer(std::move(validFlags));
  sanitizer.enumerateSanitizedCLIEntries(
      words, optionsForValuesOf,
      [&collector](std::string_view flag, std::optional<std::string_view> value) { collector.add(flag, value); },
      [&collector](std::string_view flag, std::optional<std::string_view> value) {
        collector.addUnknown(flag, value);
      });
  return std::move(collector).reading();
}

std::vector<MediaAnalysisCLIWritingWarning> warningsOfWriting(const MediaAnalysisCLIOptions& options) {
  std::vector<MediaAnalysisCLIWritingWarning> warnings;
  options.enumerateArguments([&warnings](std::string_view flag, std::optional<std::string_view> value) {
    if (!value) return;
    if (const auto code = warningOfWriting(flag, *value)) {
      warnings.push_back({.code = *code, .place = std::string(flag), .detail = std::string(*value)});
    }
  });
  if (const auto* const custodial = dynamic_cast<const MediaAnalysisCLICustodialOptions*>(&options);
      custodial != nullptr && !custodial->parentPid() && custodial->parentAppNumber()) {
    warnings.push_back({.code = MediaAnalysisCLIWritingWarningCode::withoutParentPid,
                        .place = cliFlag(CLICustodialFlag::parentAppNumber),
                        .detail = std::to_string(*custodial->parentAppNumber())});
  }
  return warnings;
}

}  // namespace meridian::inline v0_2
