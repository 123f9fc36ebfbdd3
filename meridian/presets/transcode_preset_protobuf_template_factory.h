/// \file
/// The built-in presets as stored presets. For example:
///
///     using Factory = TranscodePresetProtobufTemplateFactory;
///     Factory::storedPreset(TranscodeCliPreset::cloud).name()  // "SLV_TranscodePreset_Template-solvane_cloud"
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/cli/transcode_preset.h"
#include "meridian/export.h"
#include "meridian/presets/stored_preset.pb.h"

namespace meridian::inline v0_2 {

/// Makes stored presets of the built-in ones, as templates for users' own presets.
class MERIDIAN_API TranscodePresetProtobufTemplateFactory {
 public:
  TranscodePresetProtobufTemplateFactory() = delete;

  static constexpr std::string_view templateNamePrefix = "SLV_TranscodePreset_Template-";

  /// Returns the prefix followed by the preset's text after "-preset".
  [[nodiscard]] static std::string templateName(TranscodeCliPreset preset);

  /// Returns the preset whose template has exactly this name; absent if there is none.
  [[nodiscard]] static std::optional<TranscodeCliPreset> presetOfTemplateName(std::string_view name) noexcept;

  /// Returns a stored preset with the template's name and the preset's settings.
  [[nodiscard]] static stored::PresetInformation storedPreset(TranscodeCliPreset preset);

  /// Returns the templates of all built-in presets in declaration order.
  [[nodiscard]] static std::vector<stored::PresetInformation> allTemplates();
};

}  // namespace meridian::inline v0_2
