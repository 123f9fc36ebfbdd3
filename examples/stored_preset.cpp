// Makes a user's preset from a template, stores it, and reads it back.
#include <meridian/presets/stored_preset.h>
#include <meridian/presets/transcode_preset_protobuf_template_factory.h>

#include <iostream>

int main() {
  using meridian::TranscodePresetProtobufTemplateFactory;
  auto preset = TranscodePresetProtobufTemplateFactory::storedPreset(meridian::TranscodeCliPreset::cloud);
  preset.set_name("Dailies");
  meridian::setVideoDimension(preset, meridian::VideoDimension::sevenTwentyP);
  const std::string stored = preset.SerializeAsString();

  meridian::stored::PresetInformation read;
  if (!read.ParseFromString(stored)) return 1;
  std::cout << read.name() << ": " << meridian::videoDimension(read).description() << '\n';
  for (const std::string& element : meridian::argumentsOf(read).commandLine()) std::cout << '[' << element << "]\n";
}
