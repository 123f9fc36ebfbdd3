// Argument vectors of any bytes: the store against the plain reader, its rendering read back, its encoded form, its
// explanation, and its properties as text.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "fuzz/words.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/serialization/transcode_cli_arguments_json.h"
#include "tests/cli/reference_reading.h"

using namespace meridian;
using fuzz::require;

namespace {

void checkRendering(const TranscodeCliArguments& arguments, bool keepOrder) {
  const std::vector<std::string> rendered = arguments.commandLine();
  require(rendered.size() == 2 * arguments.flagValueLookup().size(), "two elements for each flag");
  TranscodeCliArguments::Stored expected = arguments.stored();
  expected.invalidKeyValueLookup.reset();
  const TranscodeCliArguments again(rendered, keepOrder);
  require(again.stored() == expected, "a rendered vector reads back as the same store");
  require(again.commandLine() == rendered, "a vector read back renders as itself");
}

void checkEncodedForm(const TranscodeCliArguments& arguments, bool isUtf8) {
  try {
    const nlohmann::ordered_json json = arguments;
    require(reference::storeOf(json.get<TranscodeCliArguments>()) == reference::storeOf(arguments),
            "the encoded form decodes to the same store");
    const auto parsed = nlohmann::json::parse(json.dump()).get<TranscodeCliArguments>();
    require(parsed.stored() == arguments.stored(), "the encoded form survives as text");
  } catch (const EncodingError&) {
    require(!isUtf8, "only texts that are not UTF-8 cannot be encoded");
  }
}

void checkExplanation(const std::vector<std::string>& words, const TranscodeCliArguments& arguments, bool keepOrder) {
  const TranscodeExplanation explanation = explain(words, keepOrder);
  require(explanation.arguments.stored() == arguments.stored(), "the explanation is that of the store");
  require(explanation.settings.size() == arguments.flagValueLookup().size(), "every setting is explained");

  // Counts every flag of the vector once, and no setting of a preset.
  std::size_t flags = 0;
  for (const ExplainedSetting& setting : explanation.settings) {
    if (setting.source != SettingSource::preset) flags += setting.earlierValues.size() + 1;
  }
  for (const ExplainedPreset& preset : explanation.presets) flags += preset.earlierNames.size() + 1;
  for (const RejectedEntry& entry : explanation.rejectedEntries) flags += entry.earlierValues.size() + 1;
  const reference::Words read = reference::readWords(words);
  require(flags == read.flags.size(), "every flag is accounted for");
  require(explanation.droppedWords.size() == read.strayPlaces.size(), "every stray word is accounted for");
}

/// Sets each property to the input, and then to its own text: that has to change nothing.
void checkProperties(const TranscodeCliArguments& arguments, std::string_view input) {
  for (const TranscodeProperty& property : transcodeProperties) {
    TranscodeCliArguments edited = arguments;
    if (!setPropertyText(edited, property, input)) {
      require(edited.stored() == arguments.stored(), "a property that cannot be set changes nothing");
      continue;
    }
    const auto text = propertyText(edited, property);
    // copyAudio stays true without a codec; an empty text removes the property.
    if (!text || text->empty() || property.name == "copyAudio") continue;
    const TranscodeCliArguments::Stored once = edited.stored();
    require(setPropertyText(edited, property, *text).has_value(), "a property accepts its own text");
    require(edited.stored() == once, "setting a property to its own text changes nothing");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // `data` may be null for an empty input.
  const std::string_view input = size == 0 ? "" : std::string_view(reinterpret_cast<const char*>(data), size);
  const std::vector<std::string> words = fuzz::wordsOf(input);
  for (const bool keepOrder : {false, true}) {
    const TranscodeCliArguments arguments(words, keepOrder);
    require(reference::storeOf(arguments) == reference::parsed(words, keepOrder), "read as by the plain reader");
    checkRendering(arguments, keepOrder);
    checkEncodedForm(arguments, isValidUtf8(input));
    checkExplanation(words, arguments, keepOrder);

    checkProperties(arguments, input);

    TranscodeCliArguments edited = arguments;
    edited.setInputFiles(words);
    require(edited.inputFiles().value_or(std::vector<std::string>()) == words, "inputs read back as they were set");
  }
  return 0;
}
