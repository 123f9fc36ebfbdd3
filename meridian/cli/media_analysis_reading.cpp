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

using Remark = MediaAnalysisCLIRemarkKind;

/// A flag of the analysis tool, whichever of the three enumerations it belongs to.
struct KnownFlag {
  std::string text;
  MediaAnalysisCLIValue takes;
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
      all.push_back({cliFlag(row.value), row.takes, row.repeats});
    }
    for (const auto& row : EnumerationTable<MediaAnalysisImageCLIFlags>::rows) {
      all.push_back({cliFlag(row.value), row.takes, row.repeats});
    }
    for (const CLICustodialFlag flag : allCases<CLICustodialFlag>()) {
      all.push_back({cliFlag(flag), MediaAnalysisCLIValue::integer});
    }
    return all;
  }();
  return flags;
}

/// The place of the flag in `knownFlags`. The sanitizer lets pass whatever contains a known flag; only the whole flag
/// is taken here, since there is nothing that a longer one could mean.
std::optional<std::size_t> placeOfFlag(std::string_view written) {
  const std::string_view flag = trimmed(written);
  const auto found =
      std::ranges::find_if(knownFlags(), [flag](const KnownFlag& each) { return equalsIgnoringCase(each.text, flag); });
  if (found == knownFlags().end()) return std::nullopt;
  return static_cast<std::size_t>(found - knownFlags().begin());
}

/// "-0.0" counts as below 0: it could not be written again.
std::optional<float> readNumber(std::string_view text) noexcept {
  const auto number = floatFromText(text);
  return number && std::isfinite(*number) && !std::signbit(*number) ? number : std::nullopt;
}

std::optional<std::int32_t> readInteger(std::string_view text) noexcept {
  const auto number = integerFromText(text);
  if (!number || *number < 0 || *number > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(*number);
}

/// Why a flag cannot take the value; absent where it can.
std::optional<Remark> faultOfValue(MediaAnalysisCLIValue takes, std::optional<std::string_view> value) noexcept {
  using enum MediaAnalysisCLIValue;
  if (takes == none) return value ? std::optional(Remark::unexpectedValue) : std::nullopt;
  if (!value) return Remark::missingValue;
  if (takes == number && !readNumber(*value)) return Remark::unreadableNumber;
  if (takes == integer && !readInteger(*value)) return Remark::unreadableInteger;
  return std::nullopt;
}

/// Whether the flag's values stay as they stand: those of an unknown flag do too.
bool takesText(std::string_view flag) {
  const auto place = placeOfFlag(flag);
  return !place || knownFlags()[*place].takes == MediaAnalysisCLIValue::text;
}

CLISanitizationOptions optionsForValuesOf(std::string_view flag) {
  return takesText(flag) ? CLISanitizationOptions() : CLISanitizationOptions::trimWhiteSpace;
}

/// Takes a vector's flags and values as they come.
class Collector {
 public:
  void takeStrayWord(std::string_view word) { remark(Remark::strayWord, {}, word); }

  void takeUnknown(std::string_view flag, std::optional<std::string_view> value) {
    remark(Remark::unknownFlag, flag, value);
  }

  void take(std::string_view flag, std::optional<std::string_view> value) {
    const auto place = placeOfFlag(flag);
    if (!place) {
      takeUnknown(flag, value);
      return;
    }
    const KnownFlag& known = knownFlags()[*place];
    Given& given = given_[*place];
    given.isThere = true;
    if (const auto fault = faultOfValue(known.takes, value)) {
      remark(*fault, flag, value);
      return;
    }
    if (!value) return;
    if (!known.repeats && !given.values.empty()) {
      remark(Remark::replacedValue, given.flag, given.values.back());
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
      remark(Remark::withoutParentPid, number.flag, number.values.back());
      number.values.clear();
    }
    MediaAnalysisCLIReading result{
        .basic = {std::move(given(Basic::pathToAnalyze).values), text(Basic::analysisId),
                  text(Basic::workDirectory).value_or(""), text(Basic::resultsFilePath).value_or(""),
                  given(Basic::deepAnalysis).isThere},
        .image = std::nullopt,
        .custodial = MediaAnalysisCLIArgumentFactory::CustodialOptions(integer(Custodial::parentPid),
                                                                       integer(Custodial::parentAppNumber)),
        .remarks = std::move(remarks_)};
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
    /// As it is written before the last of the values.
    std::string flag;
    /// Those that the flag can take.
    std::vector<std::string> values;
  };

  void remark(Remark kind, std::string_view flag, std::optional<std::string_view> value) {
    remarks_.push_back({kind, std::string(flag), value ? std::optional(std::string(*value)) : std::nullopt});
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
  std::vector<MediaAnalysisCLIRemark> remarks_;
};

std::optional<MediaAnalysisCLILossReason> lossOf(std::string_view flag, std::string_view value) {
  using enum MediaAnalysisCLILossReason;
  const bool isText = takesText(flag);
  if (!isText) {
    const auto number = floatFromText(value);
    if (!number || !std::isfinite(*number)) return notFinite;
    return value.starts_with('-') ? std::optional(belowZero) : std::nullopt;
  }
  if (value.starts_with('-')) return readAsFlag;
  return value.find('\0') != std::string_view::npos ? std::optional(holdsNul) : std::nullopt;
}

}  // namespace

std::optional<std::string> MediaAnalysisCLIRemark::suggestion() const {
  if (kind != Remark::unknownFlag) return std::nullopt;
  std::vector<std::string_view> texts;
  for (const KnownFlag& each : knownFlags()) texts.push_back(each.text);
  const auto nearest = nearestText(trimmed(flag), texts);
  if (!nearest) return std::nullopt;
  return std::string(*nearest);
}

std::string MediaAnalysisCLIRemark::message() const {
  std::string text = printable(flag);
  if (value) text += (text.empty() ? "" : " ") + inQuotes(*value);
  text += ": " + std::string(description(kind));
  if (const auto nearest = suggestion()) text += "; did you mean " + *nearest + "?";
  return text;
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
  return std::ranges::find(remarks, Remark::unknownFlag, &MediaAnalysisCLIRemark::kind) == remarks.end();
}

void MediaAnalysisCLIReading::enumerateUnknownFlags(
    FunctionRef<void(std::string_view flag, std::string_view value)> unknownFlagFound) const {
  for (const MediaAnalysisCLIRemark& remark : remarks) {
    if (remark.kind != Remark::unknownFlag) continue;
    unknownFlagFound(remark.flag, remark.value ? std::string_view(*remark.value) : std::string_view());
  }
}

MediaAnalysisCLIReading readMediaAnalysisArguments(std::span<const std::string_view> words) {
  Collector collector;
  // The sanitizer passes over these in silence.
  for (const std::string_view word : words) {
    if (word.starts_with('-')) break;
    collector.takeStrayWord(word);
  }
  std::vector<std::string> validFlags;
  for (const KnownFlag& each : knownFlags()) validFlags.push_back(each.text);
  const CLIArgumentSanitizer sanitizer(std::move(validFlags));
  sanitizer.enumerateSanitizedCLIEntries(
      words, optionsForValuesOf,
      [&collector](std::string_view flag, std::optional<std::string_view> value) { collector.take(flag, value); },
      [&collector](std::string_view flag, std::optional<std::string_view> value) {
        collector.takeUnknown(flag, value);
      });
  return std::move(collector).reading();
}

std::string MediaAnalysisCLILoss::message() const {
  return flag + " cannot be " + inQuotes(value) + ": " + std::string(description(reason));
}

std::vector<MediaAnalysisCLILoss> lossesInReading(const MediaAnalysisCLIOptions& options) {
  std::vector<MediaAnalysisCLILoss> losses;
  options.enumerateArguments([&losses](std::string_view flag, std::optional<std::string_view> value) {
    if (!value) return;
    if (const auto reason = lossOf(flag, *value)) {
      losses.push_back({*reason, std::string(flag), std::string(*value)});
    }
  });
  if (const auto* const custodial = dynamic_cast<const MediaAnalysisCLICustodialOptions*>(&options);
      custodial != nullptr && !custodial->parentPid() && custodial->parentAppNumber()) {
    losses.push_back({MediaAnalysisCLILossReason::withoutParentPid, cliFlag(CLICustodialFlag::parentAppNumber),
                      std::to_string(*custodial->parentAppNumber())});
  }
  return losses;
}

}  // namespace meridian::inline v0_2
