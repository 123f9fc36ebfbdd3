#include "meridian/cli/transcode_cli_arguments.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_argument_reading.h"
#include "meridian/cli/transcode_preset.h"

namespace meridian::inline v0_2 {
namespace {

/// Adds the presets' settings to the valid entries, where these do not have them, and unknown names to the rejected
/// ones.
TranscodeCliArguments::Stored storedOf(TextDictionary valid, TextDictionary rejected,
                                       std::span<const std::string> presetNames) {
  for (const std::string& name : presetNames) {
    if (const auto preset = fromRawValue<TranscodeCliPreset>(name)) {
      for (const auto& [flag, value] : orderedArguments(*preset)) {
        valid.setIfAbsent(std::string(flag), std::string(value));
      }
    } else {
      rejected.set(SAVPresetFlag.rawValue(), name);
    }
  }
  TranscodeCliArguments::Stored stored;
  stored.flagValueLookup = std::move(valid);
  if (!rejected.empty()) stored.invalidKeyValueLookup = std::move(rejected);
  return stored;
}

/// The numbers in the flag of an input file.
struct InputNumbers {
  std::int64_t group;
  std::int64_t place;
};

std::optional<InputNumbers> inputNumbers(std::string_view flag) noexcept {
  const std::string_view prefix = SAVInputPrefixFlag.rawValue();
  if (!flag.starts_with(prefix) || !flag.substr(prefix.size()).starts_with('_')) return std::nullopt;
  const std::string_view numbers = flag.substr(prefix.size() + 1);
  const std::size_t separator = numbers.find('_');
  if (separator == std::string_view::npos) return std::nullopt;
  const auto group = integerFromText(numbers.substr(0, separator));
  const auto place = integerFromText(numbers.substr(separator + 1));
  if (!group || !place || numbers.find('+') != std::string_view::npos || numbers[separator + 1] == '-') {
    return std::nullopt;
  }
  return InputNumbers{*group, *place};
}

std::string inputFlag(std::int64_t group, std::size_t place) {
  return SAVInputPrefixFlag.string() + "_" + std::to_string(group) + "_" + std::to_string(place);
}

struct InputFile {
  InputNumbers numbers;
  std::string_view path;
  /// Its place among the input files of the store, which orders two with the same numbers.
  std::size_t rank;

  [[nodiscard]] auto order() const noexcept { return std::tuple(numbers.group, numbers.place, rank); }
};

/// Returns the input files of a lookup in ascending order of group and place.
std::vector<InputFile> sortedInputFiles(const TextDictionary& lookup) {
  std::vector<InputFile> files;
  for (const auto& [flag, value] : lookup) {
    if (const auto numbers = inputNumbers(flag)) files.push_back({*numbers, value, files.size()});
  }
  // They are nearly always in order already, and checking that is linear.
  if (!std::ranges::is_sorted(files, {}, &InputFile::order)) std::ranges::sort(files, {}, &InputFile::order);
  return files;
}

}  // namespace

const TextDictionary& TranscodeCliArguments::solvaneCloudPresetArguments() {
  return presetArguments(TranscodeCliPreset::cloud);
}

const TextDictionary& TranscodeCliArguments::solvaneProRes4444XQPresetArguments() {
  return presetArguments(TranscodeCliPreset::proRes4444XQ);
}

TranscodeCliArguments::TranscodeCliArguments(const ArgumentWords& cliArgs, bool maintainOriginalOrdering)
    : TranscodeCliArguments(fromReading(readArgumentVector(cliArgs.words()).flags, maintainOriginalOrdering)) {}

TranscodeCliArguments TranscodeCliArguments::fromReading(std::vector<ReadFlag> flags, bool maintainOriginalOrdering) {
  TextDictionary valid;
  TextDictionary rejected;
  TextDictionary presets;  // by flag, so that the last of repeated flags wins here too
  valid.reserve(flags.size());
  for (ReadFlag& read : flags) {
    TextDictionary* entries = &rejected;
    if (read.kind == FlagKind::setting) entries = &valid;
    if (read.kind == FlagKind::preset) entries = &presets;
    entries->set(std::move(read.flag), std::move(read.value));
  }
  std::vector<std::string> presetNames;
  for (const auto& [flag, name] : presets) presetNames.push_back(name);
  TranscodeCliArguments arguments = fromStored(storedOf(std::move(valid), std::move(rejected), presetNames));

  const TextDictionary& lookup = arguments.flagValueLookup();
  if (maintainOriginalOrdering && !lookup.empty()) {
    // The lookup has its flags in the order in which they first appeared, and those of presets after them.
    arguments.stored_.orderedFlags.emplace().reserve(lookup.size());
    for (const auto& [flag, value] : lookup) arguments.stored_.orderedFlags->push_back(flag);
  }
  return arguments;
}

TranscodeCliArguments::TranscodeCliArguments(std::initializer_list<std::string_view> cliArgs,
                                             bool maintainOriginalOrdering)
    : TranscodeCliArguments(ArgumentWords(cliArgs), maintainOriginalOrdering) {}

TranscodeCliArguments::TranscodeCliArguments(int argc, const char* const* argv, bool maintainOriginalOrdering)
    : TranscodeCliArguments(ArgumentWords(argc, argv), maintainOriginalOrdering) {}

TranscodeCliArguments TranscodeCliArguments::fromArgumentLookup(const TextDictionary& argumentLookup) {
  TextDictionary valid;
  TextDictionary rejected;
  std::vector<std::string> presetNames;
  for (const auto& [givenFlag, givenValue] : argumentLookup) {
    std::string flag = normalizedFlag(givenFlag);
    const FlagTreatment treatment = treatmentOf(flag);
    if (treatment.kind == FlagKind::rejected) {
      rejected.set(givenFlag, givenValue);
      continue;
    }
    std::string value = treatment.valueOptions.sanitize(givenValue);
    if (treatment.kind == FlagKind::preset) {
      presetNames.push_back(std::move(value));
    } else {
      valid.set(std::move(flag), std::move(value));
    }
  }
  return fromStored(storedOf(std::move(valid), std::move(rejected), presetNames));
}

TranscodeCliArguments TranscodeCliArguments::fromStored(Stored stored) {
  TranscodeCliArguments arguments;
  arguments.stored_ = std::move(stored);
  return arguments;
}

bool TranscodeCliArguments::hasArgumentFlag(std::string_view flag) const noexcept {
  return flagValueLookup().contains(trimmed(flag));
}

std::optional<std::string_view> TranscodeCliArguments::argumentFlagValue(std::string_view flag) const noexcept {
  const std::string* const value = flagValueLookup().find(trimmed(flag));
  if (value == nullptr) return std::nullopt;
  return *value;
}

void TranscodeCliArguments::setArgumentFlagValue(std::string_view flag, std::optional<std::string_view> value) {
  if (value) {
    stored_.flagValueLookup.set(trimmed(flag), *value);
  } else {
    stored_.flagValueLookup.erase(trimmed(flag));
  }
}

std::optional<std::vector<std::string>> TranscodeCliArguments::unknownFlags() const {
  std::vector<std::string> flags;
  enumerateUnknownFlags([&flags](std::string_view flag, std::string_view) { flags.emplace_back(flag); });
  if (flags.empty()) return std::nullopt;
  return flags;
}

bool TranscodeCliArguments::allFlagsAreValid() const noexcept {
  return !stored_.invalidKeyValueLookup || stored_.invalidKeyValueLookup->empty();
}

void TranscodeCliArguments::enumerateUnknownFlags(
    FunctionRef<void(std::string_view flag, std::string_view value)> unknownFlagFound) const {
  if (!stored_.invalidKeyValueLookup) return;
  for (const auto& [flag, value] : *stored_.invalidKeyValueLookup) unknownFlagFound(flag, value);
}

std::vector<std::string> TranscodeCliArguments::commandLineArguments() const {
  if (!stored_.orderedFlags) return CliArgumentStore::commandLineArguments();

  const TextDictionary& lookup = flagValueLookup();
  std::vector<std::string> elements;
  elements.reserve(2 * lookup.size());
  std::vector<bool> rendered(lookup.slotCount(), false);
  const auto render = [&](std::size_t slot) {
    if (rendered[slot]) return;
    rendered[slot] = true;
    elements.push_back(lookup.entryAt(slot).key);
    elements.push_back(lookup.entryAt(slot).value);
  };
  // The kept order and that of the lookup nearly always agree, and then no flag has to be looked up.
  auto expected = lookup.begin();
  for (const std::string& flag : *stored_.orderedFlags) {
    if (expected != lookup.end() && expected->key == flag) {
      render((expected++).slot());
    } else if (const auto slot = lookup.slotOf(flag)) {
      render(*slot);
    }
  }
  for (auto entry = lookup.begin(); entry != lookup.end(); ++entry) render(entry.slot());
  return elements;
}

void TranscodeCliArguments::enumerateInputFileGroups(
    FunctionRef<void(std::span<const std::string_view> paths, std::int64_t group)> didFindGroup) const {
  const std::vector<InputFile> files = sortedInputFiles(flagValueLookup());
  std::vector<std::string_view> paths;
  for (auto first = files.begin(); first != files.end();) {
    const std::int64_t group = first->numbers.group;
    const auto end =
        std::find_if(first, files.end(), [group](const InputFile& file) { return file.numbers.group != group; });
    paths.clear();
    std::transform(first, end, std::back_inserter(paths), [](const InputFile& file) { return file.path; });
    didFindGroup(paths, group);
    first = end;
  }
}

bool TranscodeCliArguments::isInputFileFlag(std::string_view flag) noexcept { return inputNumbers(flag).has_value(); }

std::optional<TranscodeCliArguments::InputFileGroups> TranscodeCliArguments::inputFileGroups() const {
  InputFileGroups groups;
  enumerateInputFileGroups([&groups](std::span<const std::string_view> paths, std::int64_t group) {
    groups[group].assign(paths.begin(), paths.end());
  });
  if (groups.empty()) return std::nullopt;
  return groups;
}

void TranscodeCliArguments::setInputFileGroups(const std::optional<InputFileGroups>& groups) {
  // In a copy, so that nothing is lost if memory runs out.
  TextDictionary lookup = stored_.flagValueLookup;
  lookup.eraseIf(
      [](const TextDictionary::Entry& entry) { return entry.key.starts_with(SAVInputPrefixFlag.rawValue()); });
  for (const auto& [group, paths] : groups.value_or(InputFileGroups())) {
    for (std::size_t place = 0; place < paths.size(); ++place) lookup.set(inputFlag(group, place), paths[place]);
  }
  stored_.flagValueLookup = std::move(lookup);
}

std::optional<std::vector<std::string>> TranscodeCliArguments::inputFiles() const {
  std::vector<std::string> paths;
  for (const InputFile& file : sortedInputFiles(flagValueLookup())) paths.emplace_back(file.path);
  if (paths.empty()) return std::nullopt;
  return paths;
}

void TranscodeCliArguments::setInputFiles(const std::optional<std::vector<std::string>>& paths) {
  if (paths) {
    setInputFileGroups(InputFileGroups{{0, *paths}});
  } else {
    setInputFileGroups(std::nullopt);
  }
}

std::optional<std::string_view> TranscodeCliArguments::firstInputFile() const {
  std::optional<InputFile> first;
  for (const auto& [flag, value] : flagValueLookup()) {
    const auto numbers = inputNumbers(flag);
    if (!numbers) continue;
    const InputFile file{*numbers, value, 0};
    if (!first || file.order() < first->order()) first = file;
  }
  if (!first) return std::nullopt;
  return first->path;
}

}  // namespace meridian::inline v0_2
