#include "meridian/cli/transcode_argument_reading.h"

#include <algorithm>
#include <array>

#include "meridian/base/text.h"
#include "meridian/cli/transcode_flags.h"

namespace meridian::inline v0_2 {
namespace {

constexpr CLISanitizationOptions pathValue = CLISanitizationOptions::trimWhiteSpace;
constexpr CLISanitizationOptions plainValue =
    CLISanitizationOptions::lowercase | CLISanitizationOptions::trimWhiteSpace;

CLISanitizationOptions valueOptions(FlagValue value) noexcept {
  return value == FlagValue::path ? pathValue : plainValue;
}

// The letters that follow the "-" of a known flag. They rule out a text of dashes quickly.
constexpr auto firstLetters = [] {
  std::array<bool, 256> letters{};
  for (const std::string_view known : allKnownCommandFlags) letters[static_cast<unsigned char>(known[1])] = true;
  return letters;
}();

bool mayContainKnownFlag(std::string_view folded) noexcept {
  for (std::size_t i = 1; i < folded.size(); ++i) {
    if (folded[i - 1] == '-' && firstLetters[static_cast<unsigned char>(folded[i])]) return true;
  }
  return false;
}

bool isFlag(std::string_view word) noexcept {
  // No character turns into "-" in lower case, so the word need not be lower-cased.
  return trimmed(word).starts_with('-');
}

}  // namespace

std::optional<std::string_view> containedKnownFlag(std::string_view flag) {
  if (!flag.starts_with('-')) return std::nullopt;
  if (const FlagDescription* const exact = findFlag(flag); exact != nullptr && exact->isCase) return exact->text;

  // Known flags are ASCII, and no ASCII byte is part of a longer character, so bytes can be compared.
  const std::string folded = caseFolded(flag);
  if (!mayContainKnownFlag(folded)) return std::nullopt;
  const auto found = std::ranges::find_if(
      allKnownCommandFlags, [&folded](std::string_view known) { return folded.find(known) != std::string::npos; });
  if (found == allKnownCommandFlags.end()) return std::nullopt;
  return *found;
}

FlagTreatment treatmentOf(std::string_view flag) {
  const bool isPreset = flag.starts_with(SAVPresetFlag.rawValue());
  if (const FlagDescription* const exact = findFlag(flag); exact != nullptr && exact->isCase) {
    return {isPreset ? FlagKind::preset : FlagKind::setting, valueOptions(exact->value)};
  }
  // It contains "-in", which is known. A camera card has thousands of these.
  if (flag.starts_with(SAVInputPrefixFlag.rawValue())) return {FlagKind::setting, pathValue};

  const bool isPath = std::ranges::any_of(flagDescriptions, [flag](const FlagDescription& known) {
    return known.value == FlagValue::path && equalsIgnoringCase(flag, known.text);
  });
  const CLISanitizationOptions options = isPath ? pathValue : plainValue;
  if (!containedKnownFlag(flag)) return {FlagKind::rejected, options};
  return {isPreset ? FlagKind::preset : FlagKind::setting, options};
}

ReadArguments readArgumentVector(std::span<const std::string_view> words) {
  ReadArguments read;
  read.flags.reserve(words.size() / 2 + 1);
  for (std::size_t index = 0; index < words.size(); ++index) {
    if (!isFlag(words[index])) {
      read.strayWords.push_back(index);
      continue;
    }
    ReadFlag& flag = read.flags.emplace_back();
    flag.flag = normalizedFlag(words[index]);
    flag.index = index;
    const FlagTreatment treatment = treatmentOf(flag.flag);
    flag.kind = treatment.kind;
    if (index + 1 < words.size() && !isFlag(words[index + 1])) {
      flag.writtenValue = words[++index];
      flag.value = treatment.valueOptions.sanitize(flag.writtenValue);
    }
  }
  return read;
}

}  // namespace meridian::inline v0_2
