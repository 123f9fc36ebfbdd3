#include "meridian/engine/transcode_listing.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "meridian/base/joined.h"
#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_preset.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/engine/audio_encoders.h"
#include "meridian/engine/output_container.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/engine/video_profiles.h"
#include "meridian/version.h"

namespace meridian::inline v0_2 {
namespace {

/// What a listing draws on.
struct ListingSources {
  const EncoderInventory& inventory;
  std::span<const std::string> openDevices;
};

/// Returns rows of cells in columns, indented, with two blanks between the columns.
std::string inColumns(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column + 1 < row.size(); ++column) {
      widths[column] = std::max(widths[column], row[column].size());
    }
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line = " ";
    for (std::size_t column = 0; column < row.size(); ++column) {
      line += " " + row[column];
      if (column + 1 < row.size()) line.append(widths[column] - row[column].size() + 1, ' ');
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
  }
  return text;
}

std::string valueList(const auto& values, auto textOf) {
  std::string text;
  for (const auto& value : values) text += std::string(textOf(value)) + '\n';
  return text;
}

template <typename Value>
std::string valuesOf() {
  return valueList(Value::allCases(), [](const Value& value) { return value.rawValue(); });
}

/// Returns how a flag is written: numbered, or with a value, where it is.
std::string usageOf(const FlagDescription& flag) {
  if (flag.text == SAVInputPrefixFlag.rawValue()) return std::string(flag.text) + "_GROUP_PLACE VALUE";
  if (flag.text == SAVAudioIgnoreTracksPrefixFlag.rawValue()) return std::string(flag.text) + "_TRACK";
  return std::string(flag.text) + (flag.takesValue() ? " VALUE" : "");
}

std::string usage(const ListingSources& /*sources*/) {
  std::string text =
      "Usage: meridian-transcoder -in_0_0 SOURCE -out OUTPUT [FLAG [VALUE]]...\n"
      "Transcodes the sources into one file.\n";
  for (const FlagGroup group : allCases<FlagGroup>()) {
    std::vector<std::vector<std::string>> rows;
    for (const FlagDescription& flag : flagDescriptions) {
      // The parser rejects "-wmf_burn_anchors".
      if (flag.group != group || (group == FlagGroup::command && !flag.isCase)) continue;
      rows.push_back({usageOf(flag), std::string(meaningOfFlag(flag))});
    }
    text += "\n" + std::string(description(group)) + ":\n" + inColumns(rows);
  }
  return text +
         "\nExample:\n"
         "  meridian-transcoder -in_0_0 /card/a.mov -out /out/a.mov -vcodec h264 -dims 1280x720 -vbr 5 -acodec aac\n";
}

std::string extensionTexts(std::span<const FileExtension> extensions) {
  std::vector<std::string> texts;
  std::ranges::transform(extensions, std::back_inserter(texts), [](FileExtension each) { return path(each); });
  return joined(texts, " ");
}

/// Returns the encoder that is used, or says that this FFmpeg has none.
std::string encoderText(const EncoderInventory& inventory, std::span<const std::string_view> names) {
  for (const std::string_view name : names) {
    if (!name.empty() && inventory.encoder(name) != nullptr) return std::string(name);
  }
  return std::string(names.front()) + ": not in this FFmpeg";
}

std::string codecs(const ListingSources& sources) {
  std::vector<std::vector<std::string>> video{{"VALUE", "ENCODER", "FILES", "PROFILES"}};
  for (const VideoEncoderRow& row : videoEncoderRows) {
    std::vector<std::string_view> profiles;
    for (const VideoProfileRow& profile : videoProfileRows) {
      if (profile.codec == row.codec) profiles.push_back(profile.name);
    }
    std::vector<std::string_view> encoders;
    for (const VideoEncoder& encoder : row.encoders) encoders.push_back(encoder.name);
    video.push_back({row.codec.string(), encoderText(sources.inventory, encoders),
                     extensionTexts(row.codec.permittedExtensions()), joined(profiles, " ")});
  }
  std::vector<std::vector<std::string>> audio{{"VALUE", "ENCODER"}};
  for (const auto& format : SAVTranscodeArgumentAudioFormatValue::allCases()) {
    std::vector<std::string> encoders;
    if (const AudioEncoderRow* const row = audioEncoderOf(format)) {
      encoders.push_back(encoderText(sources.inventory, {&row->encoder, 1}));
    } else {
      for (const LpcmEncoderRow& lpcm : lpcmEncoderRows) {
        encoders.push_back(encoderText(sources.inventory, {&lpcm.encoder, 1}));
      }
    }
    audio.push_back({format.string(), joined(encoders, " ")});
  }
  std::vector<std::vector<std::string>> gpus{{"VALUE", "DEVICE", "ENCODER"}};
  for (const GpuEncoderRow& row : gpuEncoderRows) {
    gpus.push_back({row.codec.string(), std::string(row.device), encoderText(sources.inventory, {&row.encoder, 1})});
  }
  return "Video (-vcodec):\n" + inColumns(video) + "\nVideo on a GPU (-gpu_encoding):\n" + inColumns(gpus) +
         "\nAudio (-acodec):\n" + inColumns(audio);
}

std::string formats(const ListingSources& /*sources*/) {
  std::vector<std::vector<std::string>> rows{{"VALUE", "CONTAINER", "FILES"}};
  for (const auto& format : SAVTranscodeArgumentFileFormatValue::allCases()) {
    rows.push_back({format.string(), std::string(description(*containerOfFormat(format))),
                    extensionTexts(format.validExtensions())});
  }
  std::vector<std::vector<std::string>> others;
  for (const OutputContainer container : allCases<OutputContainer>()) {
    const bool hasValue =
        std::ranges::any_of(SAVTranscodeArgumentFileFormatValue::allCases(),
                            [container](const auto& format) { return containerOfFormat(format) == container; });
    if (!hasValue) others.push_back({path(tableRow(container).extension), std::string(description(container))});
  }
  return "Formats (-file_format):\n" + inColumns(rows) + "\nBy the extension of -out alone:\n" + inColumns(others);
}

std::string versions(const ListingSources& sources) {
  std::string text = "Meridian " + std::string(versionText()) + "\nFFmpeg " + sources.inventory.version + '\n';
  for (const LibraryVersion& library : sources.inventory.libraries) {
    text += library.name + ' ' + library.version + '\n';
  }
  return text;
}

/// What the licence of an FFmpeg means for a program that uses it and Meridian.
struct LicenceRow {
  /// What FFmpeg's name of the licence begins with.
  std::string_view licence;
  std::string_view together;
};

constexpr auto licenceRows = std::to_array<LicenceRow>({
    // The Free Software Foundation holds the Apache License to be compatible with version 3 of the GPL alone.
    {"GPL version 2", "GPL version 3 or later; the Apache License is not compatible with version 2"},
    {"GPL version 3", "GPL version 3 or later"},
    {"LGPL", "each under its own licence"},
    {"nonfree", "may not be distributed"},
});

/// Returns the words in indented lines of at most 78 columns.
std::string wrapped(std::string_view words) {
  constexpr std::size_t widest = 78;
  std::string text;
  std::string line = " ";
  for (std::size_t begin = 0; begin < words.size();) {
    const std::size_t end = std::min(words.find(' ', begin), words.size());
    if (line.size() > 1 && line.size() + 1 + (end - begin) > widest) {
      text += line + '\n';
      line = " ";
    }
    line += ' ';
    line += words.substr(begin, end - begin);
    begin = end + 1;
  }
  return text + line + '\n';
}

std::string licences(const ListingSources& sources) {
  const EncoderInventory& inventory = sources.inventory;
  std::vector<std::string_view> parts;
  for (const std::string_view encoder : {"libx264", "libx265"}) {
    if (inventory.encoder(encoder) != nullptr) parts.push_back(encoder.substr(3));
  }
  const std::string ffmpeg = inventory.license + (parts.empty() ? "" : ", with " + joined(parts, " and "));
  const auto row = std::ranges::find_if(
      licenceRows, [&](const LicenceRow& each) { return inventory.license.starts_with(each.licence); });
  std::vector<std::vector<std::string>> rows{{"Meridian " + std::string(versionText()), "Apache License, version 2.0"},
                                             {"FFmpeg " + inventory.version, ffmpeg}};
  if (row != licenceRows.end()) rows.push_back({"together", std::string(row->together)});
  return "Licences:\n" + inColumns(rows) + "\nNeither comes with a warranty.\n\nFFmpeg was built with:\n" +
         wrapped(inventory.configuration);
}

std::string presetListing(const ListingSources& /*sources*/) {
  std::string text;
  for (const TranscodeCliPreset each : allCases<TranscodeCliPreset>()) {
    std::vector<std::vector<std::string>> rows;
    for (const TranscodeCliPair& pair : orderedArguments(each)) {
      rows.push_back({std::string(pair.flag), std::string(pair.value)});
    }
    text += std::string(preset(each)) + " (" + std::string(description(each)) + "):\n" + inColumns(rows);
  }
  return text;
}

/// A listing command and what it prints.
struct Listing {
  SAVTranscodeCliCommand command;
  std::string (*text)(const ListingSources& sources);
};

constexpr auto listings = std::to_array<Listing>({
    {SAVCliHelpFlag, usage},
    {SAVCliCodecsFlag, codecs},
    {SAVCliFormatsFlag, formats},
    {SAVCliVersionFlag, versions},
    {SAVCliAcknowledgementFlag, licences},
    {SAVCliPresetsFlag, presetListing},
    {SAVCliAspectRatioScalingsFlag,
     [](const ListingSources&) { return valuesOf<SAVTranscodeArgumentAspectRatioValue>(); }},
    {SAVCliCropAnchorsFlag,
     [](const ListingSources&) {
       return valueList(allCases<VideoCropAnchor>(), [](VideoCropAnchor anchor) { return rawValue(anchor); });
     }},
    {SAVCliColorSpacesFlag, [](const ListingSources&) { return valuesOf<SAVTranscodeArgumentColorSpaceValue>(); }},
    {SAVCliAudioChannelLayoutsFlag,
     [](const ListingSources&) { return valuesOf<SAVTranscodeArgumentAudioChannelLayoutValue>(); }},
    {SAVCliTimecodeBurnAnchorsFlag,
     [](const ListingSources&) { return valuesOf<SAVTranscodeArgumentOverlayAnchorValue>(); }},
    {SAVCliGpuPlatformsFlag,
     [](const ListingSources& sources) {
       if (sources.openDevices.empty()) return std::string("no GPU can be used here\n");
       return valueList(sources.openDevices, [](const std::string& device) { return device; });
     }},
});

static_assert(std::ranges::equal(listings, SAVTranscodeCliCommand::allCases(), {}, &Listing::command),
              "each listing command prints something");

}  // namespace

std::optional<std::string> listingOf(const TranscodeExplanation& words, const EncoderInventory& inventory,
                                     std::span<const std::string> openDevices) {
  const ListingSources sources{inventory, openDevices};
  std::optional<std::string> text;
  const auto add = [&](std::string_view flag) {
    const auto listing = std::ranges::find(listings, flag, [](const Listing& each) { return each.command.rawValue(); });
    if (listing == listings.end()) return;
    text = (text ? *text + '\n' : "") + listing->text(sources);
  };
  for (const ExplainedSetting& setting : words.settings) add(setting.flag);
  for (const RejectedEntry& entry : words.rejectedEntries) {
    if (entry.isListing()) add(entry.writtenFlag);
  }
  return text;
}

}  // namespace meridian::inline v0_2
