#include "meridian/cli/transcode_preset.h"

#include "meridian/base/no_destructor.h"

namespace meridian::inline v0_2 {
namespace {

constexpr auto cloudPairs = std::to_array<TranscodeCliPair>({
    {SAVFileFormatFlag.rawValue(), SAVQuickTimeFileFormat.rawValue()},
    {SAVVideoFormatFlag.rawValue(), SAVAvcH264Codec.rawValue()},
    {SAVVideoDimensionsFlag.rawValue(), "960x540"},
    {SAVVideoAspectScalingFlag.rawValue(), SAVStretchAspect.rawValue()},
    {SAVVideoBitRateFlag.rawValue(), "3"},
    {SAVPrepareForWebFlag.rawValue(), ""},
    {SAVAudioFormatFlag.rawValue(), SAVAacAudioFormatValue.rawValue()},
    {SAVAudioSampleRateFlag.rawValue(), "48000"},
});

constexpr auto proRes4444XQPairs = std::to_array<TranscodeCliPair>({
    {SAVFileFormatFlag.rawValue(), SAVQuickTimeFileFormat.rawValue()},
    {SAVVideoFormatFlag.rawValue(), SAVProRes4444XQ.rawValue()},
    {SAVAudioFormatFlag.rawValue(), SAVLpcmAudioFormatValue.rawValue()},
});

constexpr std::array<std::span<const TranscodeCliPair>, allCases<TranscodeCliPreset>().size()> pairsOfPresets{
    cloudPairs, proRes4444XQPairs};

}  // namespace

std::span<const TranscodeCliPair> orderedArguments(TranscodeCliPreset preset) noexcept {
  return pairsOfPresets[static_cast<std::size_t>(preset)];
}

const TextDictionary& presetArguments(TranscodeCliPreset preset) {
  using Dictionaries = std::array<TextDictionary, pairsOfPresets.size()>;
  static const NoDestructor<Dictionaries> dictionaries([] {
    Dictionaries result;
    for (const TranscodeCliPreset each : allCases<TranscodeCliPreset>()) {
      TextDictionary& dictionary = result[static_cast<std::size_t>(each)];
      for (const auto& [flag, value] : orderedArguments(each)) dictionary.set(flag, value);
    }
    return result;
  }());
  return (*dictionaries)[static_cast<std::size_t>(preset)];
}

std::vector<std::string> orderedArgumentsAsList(TranscodeCliPreset preset) {
  std::vector<std::string> elements;
  for (const auto& [flag, value] : orderedArguments(preset)) {
    elements.emplace_back(flag);
    elements.emplace_back(value);
  }
  return elements;
}

}  // namespace meridian::inline v0_2
