#include "meridian/presets/transcode_preset_protobuf_template_factory.h"

#include "meridian/presets/stored_preset.h"

namespace meridian::inline v0_2 {

std::string TranscodePresetProtobufTemplateFactory::templateName(TranscodeCliPreset preset) {
  return std::string(templateNamePrefix) + std::string(meridian::preset(preset));
}

std::optional<TranscodeCliPreset> TranscodePresetProtobufTemplateFactory::presetOfTemplateName(
    std::string_view name) noexcept {
  if (!name.starts_with(templateNamePrefix)) return std::nullopt;
  return fromRawValue<TranscodeCliPreset>(name.substr(templateNamePrefix.size()));
}

stored::PresetInformation TranscodePresetProtobufTemplateFactory::storedPreset(TranscodeCliPreset preset) {
  return meridian::storedPreset(templateName(preset),
                                TranscodeCliArguments::fromArgumentLookup(presetArguments(preset)));
}

std::vector<stored::PresetInformation> TranscodePresetProtobufTemplateFactory::allTemplates() {
  std::vector<stored::PresetInformation> templates;
  for (const TranscodeCliPreset each : allCases<TranscodeCliPreset>()) templates.push_back(storedPreset(each));
  return templates;
}

}  // namespace meridian::inline v0_2
