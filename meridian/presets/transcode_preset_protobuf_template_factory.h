// The built-in presets as stored presets.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/cli/transcode_preset.h"
#include "meridian/export.h"
#include "meridian/presets/stored_preset.pb.h"

namespace meridian::inline v0_2 {

/// Makes the stored preset of each built-in preset: the templates from which an application makes its users' own.
class MERIDIAN_API TranscodePresetProtobufTemplateFactory {
 public:
  TranscodePresetProtobufTemplateFactory() = delete;

  static constexpr std::string_view templateNamePrefix = "SLV_TranscodePreset_Template-";

  /// The prefix and the text after "-preset": "SLV_TranscodePreset_Template-solvane_cloud".
  [[nodiscard]] static std::string templateName(TranscodeCliPreset preset);

  /// The preset whose template has exactly this name; absent when there is none.
  [[nodiscard]] static std::optional<TranscodeCliPreset> presetOfTemplateName(std::string_view name) noexcept;

  /// A stored preset with the template's name and the preset's settings.
  [[nodiscard]] static stored::PresetInformation storedPreset(TranscodeCliPreset preset);

  /// The templates of all built-in presets, in the presets' order.
  [[nodiscard]] static std::vector<stored::PresetInformation> allTemplates();
};

}  // namespace meridian::inline v0_2
