#include "meridian/presets/stored_preset.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "meridian/base/text.h"
#include "meridian/cli/transcode_preset.h"
#include "meridian/presets/transcode_preset_protobuf_template_factory.h"
#include "meridian/presets/volume_folder.h"
#include "tests/cli/random_words.h"
#include "tests/cli/reference_reading.h"

namespace meridian {
namespace {

using Factory = TranscodePresetProtobufTemplateFactory;
using Words = std::vector<std::string>;
using stored::PresetInformation;

/// Returns the preset as it is read back from a file.
PresetInformation reread(const PresetInformation& preset) {
  PresetInformation again;
  EXPECT_TRUE(again.ParseFromString(preset.SerializeAsString()));
  return again;
}

TEST(StoredPreset, TemplatesHoldTheSettingsOfTheBuiltInPresets) {
  const auto templates = Factory::allTemplates();
  ASSERT_EQ(templates.size(), allCases<TranscodeCliPreset>().size());
  for (const TranscodeCliPreset each : allCases<TranscodeCliPreset>()) {
    const PresetInformation stored = reread(templates[static_cast<std::size_t>(each)]);
    EXPECT_EQ(stored.name(), "SLV_TranscodePreset_Template-" + std::string(preset(each)));
    EXPECT_EQ(Factory::presetOfTemplateName(stored.name()), each);
    // The order is the same too.
    const TranscodeCliArguments parsed({"-preset", preset(each)});
    const TranscodeCliArguments read = argumentsOf(stored);
    EXPECT_EQ(read.commandLine(), orderedArgumentsAsList(each));
    EXPECT_EQ(read.commandLine(), parsed.commandLine());
    EXPECT_EQ(read.flagValueLookup(), presetArguments(each));
    EXPECT_EQ(storedPreset(stored.name(), parsed).SerializeAsString(), stored.SerializeAsString());
  }
  EXPECT_EQ(Factory::presetOfTemplateName("solvane_cloud"), std::nullopt);

  const PresetInformation cloud = templates.front();
  EXPECT_EQ(videoDimension(cloud), VideoDimension::fiveFortyP);
  EXPECT_EQ(codecType(cloud), ConversionCodecType::h264);
  EXPECT_EQ(frameRate(cloud), FrameRate::match);
  EXPECT_EQ(cloud.transcode_options().video().bit_rate(), 3.0);
  EXPECT_EQ(cloud.transcode_options().audio().sample_rate(), 48000);
}

/// Returns the settings of the store that a preset holds, by a plain rule of its own.
reference::Store settingsOf(const TranscodeCliArguments& arguments) {
  TranscodeCliArguments::Stored kept = arguments.stored();
  kept.orderedFlags.reset();
  const auto isOfOneJob = [](const TextDictionary::Entry& entry) {
    const Words flags{"-out", "-overwrite", "-progress_file", "-progress_prefix", "-work_dir"};
    const FlagDescription* const known = findFlag(entry.key);
    return entry.key.starts_with("-in") || std::ranges::find(flags, entry.key) != flags.end() ||
           (known != nullptr && known->group == FlagGroup::command);
  };
  kept.flagValueLookup.eraseIf(isOfOneJob);
  // A value that a command line would read as a flag is rejected when the preset is read.
  const TextDictionary valid = kept.flagValueLookup;
  for (const auto& [flag, value] : valid) {
    if (!trimmed(value).starts_with('-')) continue;
    kept.flagValueLookup.erase(flag);
    if (!kept.invalidKeyValueLookup) kept.invalidKeyValueLookup.emplace();
    kept.invalidKeyValueLookup->set(flag, value);
  }
  if (kept.invalidKeyValueLookup) {
    kept.invalidKeyValueLookup->eraseIf(isOfOneJob);
    if (kept.invalidKeyValueLookup->empty()) kept.invalidKeyValueLookup.reset();
  }
  return reference::storeOf(TranscodeCliArguments::fromStored(std::move(kept)));
}

TEST(StoredPreset, KeepsEverySettingOfRandomStores) {
  RandomWords random(11);
  const Words values{"3",           "3.0",  "0",   "0.5",  "-0",
                     "23.976",      "1e3",  "nan", "0x10", "1920x1080",
                     "1920X1080.0", "0x0",  "7",   "+7",   "9223372036854775808",
                     "h264",        "H264", "",    "\xff", "sRGB",
                     "stereo"};
  for (int round = 0; round < 4000; ++round) {
    TranscodeCliArguments arguments(random.vector());
    for (int edit = 0; edit < 4; ++edit) {
      arguments.setArgumentFlagValue(random.oneOf(flagDescriptions).text, random.oneOf(values));
    }
    arguments.setArgumentFlagValue("-preset", std::nullopt);
    arguments.setArgumentFlagValue("-presets", std::nullopt);
    const PresetInformation stored = reread(storedPreset("any \xff name", arguments));
    ASSERT_EQ(stored.name(), "any \xff name");
    auto expected = settingsOf(arguments);
    auto read = reference::storeOf(argumentsOf(stored));
    std::ranges::sort(expected.valid);
    std::ranges::sort(read.valid);
    std::ranges::sort(expected.invalid);
    std::ranges::sort(read.invalid);
    ASSERT_EQ(read, expected) << stored.DebugString();
    // Storing the same settings again changes nothing.
    PresetInformation updated = stored;
    updateStoredPreset(updated, argumentsOf(stored));
    ASSERT_EQ(reference::storeOf(argumentsOf(updated)), reference::storeOf(argumentsOf(stored)));
  }
}

TEST(StoredPreset, AnUpdateKeepsUnknownFieldsAndRelativeSizesAndRates) {
  PresetInformation preset;
  preset.set_name("Dailies");
  auto& options = *preset.mutable_transcode_options();
  preset.GetReflection()->MutableUnknownFields(&preset)->AddLengthDelimited(1000, "later");
  options.GetReflection()->MutableUnknownFields(&options)->AddVarint(1001, 7);
  auto& video = *options.mutable_video();
  video.GetReflection()->MutableUnknownFields(&video)->AddFixed64(1002, 8);
  video.set_codec_type(static_cast<stored::CodecType>(77));
  auto& track = *options.add_other_settings();
  track.set_flag("-tc_track");
  track.GetReflection()->MutableUnknownFields(&track)->AddVarint(1003, 9);
  setVideoDimension(preset, VideoDimension::half);
  setFrameRate(preset, FrameRate::halfstep);
  PresetInformation updated = reread(preset);

  const TranscodeCliArguments arguments = argumentsOf(updated);
  EXPECT_EQ(arguments.commandLine(), (Words{"-tc_track", ""}));
  EXPECT_EQ(codecType(updated), std::nullopt);
  updateStoredPreset(updated, arguments);
  EXPECT_EQ(reread(updated).SerializeAsString(), preset.SerializeAsString());

  updateStoredPreset(updated, TranscodeCliArguments({"-dims", "1280x720", "-vr", "25", "-vcodec", "h265"}));
  EXPECT_EQ(videoDimension(updated), VideoDimension::sevenTwentyP);
  EXPECT_EQ(frameRate(updated), FrameRate::fps25);
  EXPECT_EQ(codecType(updated), ConversionCodecType::h265);
  EXPECT_EQ(reread(updated).GetReflection()->GetUnknownFields(updated).field(0).length_delimited(), "later");
}

TEST(StoredPreset, FieldsOverrideTheTextsBesideThem) {
  PresetInformation preset = storedPreset("", TranscodeCliArguments({"-vbr", "3.0", "-dims", "1280X720", "-vr", "x"}));
  EXPECT_EQ(argumentsOf(preset).commandLine(), (Words{"-dims", "1280x720", "-vbr", "3.0", "-vr", "x"}));
  auto& video = *preset.mutable_transcode_options()->mutable_video();
  video.set_bit_rate(8.5);
  video.set_frame_rate(24);
  setVideoDimension(preset, VideoDimension::match);
  EXPECT_EQ(argumentsOf(preset).commandLine(), (Words{"-vr", "24.0", "-vbr", "8.5"}));
  video.clear_bit_rate();
  EXPECT_EQ(argumentsOf(preset).commandLine(), (Words{"-vr", "24.0"}));

  // So does a field whose text did not parse, or that a command line cannot express.
  preset = storedPreset("", TranscodeCliArguments({"-dims", "1920x", "-vr", "0.5", "-vcodec", "hevc"}));
  EXPECT_EQ(argumentsOf(preset).commandLine(), (Words{"-dims", "1920x", "-vr", "0.5", "-vcodec", "hevc"}));
  preset.mutable_transcode_options()->mutable_video()->set_frame_rate(0.5);
  setVideoDimension(preset, VideoDimension::half);
  setCodecType(preset, ConversionCodecType::h265);
  setCodecType(preset, std::nullopt);
  EXPECT_EQ(argumentsOf(preset).commandLine(), Words{});
  auto& named = *preset.mutable_transcode_options()->add_other_settings();
  named.set_flag("-preset");
  named.set_value("solvane_cloud");
  EXPECT_FALSE(argumentsOf(preset).hasArgumentFlag("-dims"));
  updateStoredPreset(preset, argumentsOf(preset));
  EXPECT_EQ(videoDimension(preset), VideoDimension::half);
  EXPECT_EQ(frameRate(preset), FrameRate::halfstep);
}

TEST(StoredPreset, AnUpdateThatChangesNothingKeepsEveryNumber) {
  PresetInformation preset;
  for (const Size& size : {Size{1920.1, 1080}, Size{1e300, 2}, Size{16777217, 1e-50}}) {
    setVideoDimension(preset, VideoDimension::custom(size.width, size.height));
    const std::string before = preset.SerializeAsString();
    updateStoredPreset(preset, argumentsOf(preset));
    EXPECT_EQ(preset.SerializeAsString(), before) << size.width;
  }
}

TEST(StoredPreset, ChecksForeignSettingsLikeACommandLine) {
  PresetInformation preset;
  const auto add = [&](std::string flag, std::string value) {
    auto& setting = *preset.mutable_transcode_options()->add_other_settings();
    setting.set_flag(std::move(flag));
    setting.set_value(std::move(value));
  };
  add("-foo", "1");
  // Flags of one job, in forms that differ from the normal one.
  for (const std::string flag :
       {"-out", "-OUT", " -out ", "-in_0_0", "\n-In_0_1", "-Work_Dir", "-overwrite\u2003", "-H"}) {
    add(flag, "/etc/passwd");
  }
  add("-TC_Track", "Yes");
  add("-preset", "solvane_4444xq");
  add("-vprofile", "Main 10");
  add(" -VBR", "99");
  add("-wmt_text", " -overwrite");
  auto& video = *preset.mutable_transcode_options()->mutable_video();
  video.set_profile("Main 10");
  video.set_bit_rate(3);
  video.set_lut_file("-out");
  const TranscodeCliArguments arguments = argumentsOf(preset);
  EXPECT_EQ(arguments.unknownFlags(), (Words{"-foo", "-clut", "-wmt_text"}));
  EXPECT_EQ(arguments.commandLine(), (Words{"-vbr", "3.0", "-vprofile", "Main 10", "-tc_track", "Yes", "-file_format",
                                            "qt", "-vcodec", "prores4444xq", "-acodec", "lpcm"}));
}

TEST(StoredPreset, TreatsFlagsThatDifferOnlyInFormAsOneSetting) {
  TranscodeCliArguments arguments({"-vbr", "3"});
  arguments.setArgumentFlagValue("-VBR", "4");
  arguments.setArgumentFlagValue("-OUT", "/out");
  arguments.setArgumentFlagValue("-TC_Rate", "25");
  TranscodeCliArguments::Stored stored = arguments.stored();
  stored.invalidKeyValueLookup = TextDictionary{{"-web", ""}, {"-vbr", "5"}, {"-foo", "1"}};
  const auto read = argumentsOf(storedPreset("", TranscodeCliArguments::fromStored(stored)));
  EXPECT_EQ(read.commandLine(), (Words{"-vbr", "3", "-web", "", "-tc_rate", "25"}));
  EXPECT_EQ(read.unknownFlags(), Words{"-foo"});
}

TEST(StoredPreset, ReportsSizesThatAreNotAChoiceAndMatchesTheSource) {
  PresetInformation preset;
  for (const VideoDimension& each : VideoDimension::allCases()) {
    setVideoDimension(preset, each);
    EXPECT_EQ(videoDimension(reread(preset)), each);
  }
  for (const VideoDimension& each : {VideoDimension::scaled(0.3), VideoDimension::custom(1, 2.5)}) {
    setVideoDimension(preset, each);
    EXPECT_EQ(videoDimension(reread(preset)), each);
  }
  auto& video = *preset.mutable_transcode_options()->mutable_video();
  const auto outputOf = [&](stored::SizingKind sizing, double width, double height) {
    video.set_sizing_kind(sizing);
    video.set_width(width);
    video.set_height(height);
    testing::internal::CaptureStdout();
    EXPECT_EQ(videoDimension(preset), VideoDimension::match);
    return testing::internal::GetCapturedStdout();
  };
  EXPECT_EQ(outputOf(stored::SIZING_KIND_PIXELS, 1920, 0),
            "Proto failed to parse VideoDimension from Proto. Will reset to match orignal! (pWidth:1920.0 - pHeight: "
            "0.0\n");
  EXPECT_THAT(outputOf(stored::SIZING_KIND_SCALE, 0.5, std::nan("")), ::testing::HasSubstr("pHeight: nan"));
  EXPECT_NE(outputOf(static_cast<stored::SizingKind>(9), 1920, 1080), "");
  EXPECT_NE(outputOf(stored::SIZING_KIND_MATCH_SOURCE, 1920, 1080), "");
  EXPECT_EQ(outputOf(stored::SIZING_KIND_MATCH_SOURCE, 0, 0), "");
}

TEST(StoredPreset, FindsPathsBelowAStoredFolder) {
  stored::VolumeFolder folder;
  folder.set_path("/vol/\xff");
  const Url clip = Url::fromFilePath("/vol/\xff/A/1.mov");
  EXPECT_EQ(subPath(clip, folder, true), Url::fromFilePath("A"));
  EXPECT_EQ(subPathString(clip, folder, true), "A");
}

}  // namespace
}  // namespace meridian
