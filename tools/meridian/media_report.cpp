#include "tools/meridian/media_report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/media_words.h"
#include "tools/meridian/output.h"
#include "tools/meridian/terminal.h"

namespace meridian::command {
namespace {

/// Appends a part to a list of parts; nothing if it is empty.
void append(std::string& text, std::string_view part, std::string_view separator = ", ") {
  if (part.empty()) return;
  if (!text.empty()) text += separator;
  text += part;
}

std::string counted(std::size_t count, std::string_view noun) {
  return std::to_string(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}

/// Returns a number with one digit after the point, or none if that is 0: "12.5", "48".
std::string shortNumber(double number) {
  std::array<char, 32> text{};
  const bool isWhole = std::abs(number - std::round(number)) < 0.05;
  std::snprintf(text.data(), text.size(), isWhole ? "%.0f" : "%.1f", number);
  return text.data();
}

std::string sizeText(std::uint64_t bytes) {
  constexpr std::array units{"bytes", "kB", "MB", "GB", "TB"};
  auto number = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; number >= 999.5 && unit + 1 < units.size(); ++unit) number /= 1000;
  return shortNumber(number) + ' ' + units[unit];
}

/// Returns a time as "0:10.0" or "1:02:03.5".
std::string timeText(double seconds) {
  if (!(seconds < 1e9)) return {};
  if (seconds < 0) return "-" + timeText(-seconds);
  const auto tenths = static_cast<std::int64_t>(std::llround(seconds * 10));
  const std::int64_t minutes = tenths / 600;
  std::array<char, 48> text{};
  if (minutes < 60) {
    std::snprintf(text.data(), text.size(), "%d:%02d.%d", static_cast<int>(minutes), static_cast<int>(tenths / 10 % 60),
                  static_cast<int>(tenths % 10));
  } else {
    std::snprintf(text.data(), text.size(), "%lld:%02d:%02d.%d", static_cast<long long>(minutes / 60),
                  static_cast<int>(minutes % 60), static_cast<int>(tenths / 10 % 60), static_cast<int>(tenths % 10));
  }
  return text.data();
}

std::string durationText(const std::optional<MediaRational>& duration) {
  return duration ? timeText(duration->rawValue()) : std::string();
}

std::string pixelSizeText(const VideoStreamDescription& video) {
  return std::to_string(video.width) + "x" + std::to_string(video.height);
}

std::string rateText(const VideoStreamDescription& video) {
  std::string text = video.frameRate ? video.frameRate->formattedString() : std::string();
  if (video.isVariable) append(text, "variable", " ");
  return text;
}

std::string audioText(const MediaDescription& media) {
  return media.audio.empty() ? std::string() : counted(media.audio.size(), "track");
}

std::string makerText(const MediaDescription& media) {
  std::string text = media.maker;
  // Some models begin with the maker's name.
  append(text,
         media.model.starts_with(media.maker) ? std::string_view(media.model).substr(media.maker.size())
                                              : std::string_view(media.model),
         media.model.starts_with(media.maker) ? "" : " ");
  return text;
}

/// Returns what a stream shows of colour: "10-bit 4:2:2, bt709 limited".
std::string samplesText(const VideoStreamDescription& video) {
  std::string text;
  if (video.bitDepth) text += std::to_string(*video.bitDepth) + "-bit";
  if (video.chroma) append(text, description(*video.chroma), " ");
  if (video.hasAlpha) append(text, "with alpha", " ");
  std::string colors;
  if (video.matrix.number != ColorCode().number) colors = video.matrix.name;
  if (video.range != ColorRange::unknown) append(colors, std::string(rawValue(video.range)) + " range", " ");
  append(text, colors);
  return text;
}

std::string videoText(const VideoStreamDescription& video) {
  std::string text = codecText(video);
  append(text, pixelSizeText(video));
  if (video.displayWidth != video.width || video.displayHeight != video.height) {
    text += " (shown as " + std::to_string(video.displayWidth) + "x" + std::to_string(video.displayHeight) + ")";
  }
  append(text, rateText(video));
  if (isInterlaced(video.fieldOrder)) append(text, "interlaced");
  append(text, samplesText(video));
  return text;
}

std::string soundText(const AudioStreamDescription& audio) {
  std::string text = writtenName(audio.codecName);
  append(text, shortNumber(audio.sampleRate / 1000.0) + " kHz");
  if (audio.bitsPerChannel) append(text, std::to_string(*audio.bitsPerChannel) + "-bit");
  append(text, audio.layoutName.empty() ? counted(static_cast<std::size_t>(audio.channelCount), "channel")
                                        : audio.layoutName);
  append(text, audio.language);
  return text;
}

/// Returns stretches as "0:02.0 to 0:04.5, 1:10.0 to 1:12.0", the first few of them.
std::string intervalsText(const std::vector<MediaInterval>& intervals) {
  constexpr std::size_t most = 4;
  std::string text;
  for (std::size_t each = 0; each < std::min(intervals.size(), most); ++each) {
    append(text, timeText(intervals[each].start) + " to " + timeText(intervals[each].end));
  }
  if (intervals.size() > most) text += ", and " + std::to_string(intervals.size() - most) + " more";
  return text;
}

std::string changesText(const std::vector<SceneChange>& changes) {
  constexpr std::size_t most = 8;
  std::string text;
  for (std::size_t each = 0; each < std::min(changes.size(), most); ++each)
    append(text, timeText(changes[each].seconds));
  if (changes.size() > most) text += ", and " + std::to_string(changes.size() - most) + " more";
  return text;
}

std::string lumaText(const LumaStatistics& luma) {
  std::string text = std::to_string(luma.minimum) + " to " + std::to_string(luma.maximum) + " of " +
                     std::to_string(luma.bitDepth) + " bits, mean " + shortNumber(luma.average);
  const auto portion = [](double part) {
    return part < 1e-4 ? "under 0.01 %" : fixedDecimalText(part * 100, 2) + " %";
  };
  if (luma.belowBlack > 0) append(text, portion(luma.belowBlack) + " below black");
  if (luma.aboveWhite > 0) append(text, portion(luma.aboveWhite) + " above white");
  return text;
}

std::string fieldsText(const std::optional<FieldCounts>& fields) {
  if (!fields) return {};
  const FieldOrder seen = fields->seen();
  return (seen == FieldOrder::unknown ? "undecided" : std::string(description(seen))) + ", by " +
         std::to_string(fields->progressive) + " progressive, " + std::to_string(fields->topFirst) + " top first, " +
         std::to_string(fields->bottomFirst) + " bottom first";
}

std::string loudnessText(const std::optional<Loudness>& loudness) {
  if (!loudness) return {};
  if (!loudness->integrated) return "nothing above -70 LUFS for 0.4 s";
  std::string text =
      fixedDecimalText(*loudness->integrated, 1) + " LUFS, range " + fixedDecimalText(loudness->range, 1) + " LU";
  if (loudness->truePeak) append(text, "true peak " + fixedDecimalText(*loudness->truePeak, 1) + " dBTP");
  return text;
}

/// What was found by decoding all of a medium.
template <typename Line>
void addDeepLines(const DeepAnalysis& deep, const Line& line) {
  if (deep.video) {
    const DeepVideoAnalysis& video = *deep.video;
    std::string counted = std::to_string(video.frameCount) + (video.frameCount == 1 ? " frame, " : " frames, ");
    counted += timeText(video.seconds) + (video.isVariable ? ", variable rate" : ", constant rate");
    if (deep.assumedRate) counted += ", times at " + deep.assumedRate->formattedString();
    line("Counted", counted);
    line("Black", intervalsText(video.black));
    line("Frozen", intervalsText(video.frozen));
    line("Scenes", changesText(video.sceneChanges));
    line("Fields", fieldsText(video.fields));
    line("Luma", lumaText(video.luma));
    line("MD5", video.md5 + " of the images");
  }
  for (const DeepAudioAnalysis& audio : deep.audio) {
    const std::string number = deep.audio.size() > 1 ? ' ' + std::to_string(audio.track + 1) : std::string();
    line("Loudness" + number, loudnessText(audio.loudness));
    line("Silent" + number, intervalsText(audio.silent));
    line("MD5" + number, audio.md5 + " of the sound");
  }
  for (const OtherVideoAnalysis& other : deep.otherVideo) {
    line("MD5", other.md5 + " of " + counted(static_cast<std::size_t>(other.frameCount), "image") + " of stream " +
                    std::to_string(other.stream));
  }
  if (deep.faultCount > 0) {
    std::string text = counted(static_cast<std::size_t>(deep.faultCount), "place");
    constexpr std::size_t most = 8;
    for (std::size_t each = 0; each < std::min(deep.faults.size(), most); ++each) {
      text += (each == 0 ? ": " : ", ") + timeText(deep.faults[each].seconds);
    }
    if (static_cast<std::size_t>(deep.faultCount) > most) text += " and later";
    line("Damaged", text);
  }
}

/// One medium as a section.
void printSection(const MediaAnalysisItem& item) {
  const MediaDescription& media = *item.description;
  const VideoStreamDescription* const video = media.mainVideo();
  std::string text = printable(media.path) + '\n';
  const auto line = [&text](std::string_view name, const std::string& value) {
    if (value.empty()) return;
    constexpr std::size_t width = 11;
    text +=
        "  " + std::string(name) + std::string(width - std::min(name.size(), width - 1), ' ') + printable(value) + '\n';
  };
  line("Container", containerText(media) + ", " + sizeText(media.size));
  if (video != nullptr) line("Video", videoText(*video));
  if (media.timecode) {
    std::string timecode = media.timecode->start.timecodeString();
    if (media.timecode->end) timecode += " to " + media.timecode->end->timecodeString();
    line("Timecode", timecode + ", " + std::string(description(media.timecode->source)));
  }
  std::string duration = durationText(media.duration);
  if (video != nullptr && video->frameCount) {
    append(duration, counted(static_cast<std::size_t>(*video->frameCount), "frame"));
  }
  line("Duration", duration);
  for (const AudioStreamDescription& audio : media.audio) {
    line("Audio" + (media.audio.size() > 1 ? ' ' + std::to_string(audio.track + 1) : std::string()), soundText(audio));
  }
  line("Maker", makerText(media));
  line("Reel", media.reelName);
  line("Created", media.creationDate);
  for (const MediaAnalysisImage& image : item.images) line("Image", image.path);
  if (item.deep) addDeepLines(*item.deep, line);
  printSections(text);
}

/// A column of the table of several media.
struct MediaColumn {
  std::string_view heading;
  /// The columns with the highest numbers are left out first; 0 is never left out.
  int dispensability;
  std::string (*text)(const MediaAnalysisItem& item);
};

template <std::string (*textOf)(const VideoStreamDescription&)>
std::string ofVideo(const MediaAnalysisItem& item) {
  const VideoStreamDescription* const video = item.description->mainVideo();
  return video == nullptr ? std::string() : textOf(*video);
}

constexpr auto mediaColumns = std::to_array<MediaColumn>({
    {"CONTAINER", 6, [](const MediaAnalysisItem& item) { return containerText(*item.description); }},
    {"VIDEO", 1, ofVideo<codecText>},
    {"SIZE", 2, ofVideo<pixelSizeText>},
    {"RATE", 3, ofVideo<rateText>},
    {"START", 4,
     [](const MediaAnalysisItem& item) {
       const auto& timecode = item.description->timecode;
       return timecode ? timecode->start.timecodeString() : std::string();
     }},
    {"END", 5,
     [](const MediaAnalysisItem& item) {
       const auto& timecode = item.description->timecode;
       return timecode && timecode->end ? timecode->end->timecodeString() : std::string();
     }},
    {"DURATION", 0, [](const MediaAnalysisItem& item) { return durationText(item.description->duration); }},
    {"AUDIO", 7, [](const MediaAnalysisItem& item) { return audioText(*item.description); }},
    {"MAKER", 8, [](const MediaAnalysisItem& item) { return makerText(*item.description); }},
});

/// A column with its texts, which are printable.
struct FilledColumn {
  std::string_view heading;
  int dispensability = 0;
  std::vector<std::string> texts;
  std::size_t width = 0;
};

FilledColumn filled(std::string_view heading, int dispensability, std::vector<std::string> texts) {
  FilledColumn column{heading, dispensability, std::move(texts), heading.size()};
  for (std::string& text : column.texts) {
    text = printable(text);
    column.width = std::max(column.width, displayWidth(text));
  }
  return column;
}

std::size_t widthOf(std::span<const FilledColumn> columns) {
  std::size_t width = 0;
  for (const FilledColumn& column : columns) width += 2 + column.width;
  return width;
}

void printRows(std::span<const MediaAnalysisItem* const> items) {
  constexpr std::size_t shortestName = 12;
  std::vector<std::string> names;
  for (const MediaAnalysisItem* const item : items) names.emplace_back(lastPathComponent(item->path));
  const std::vector<std::string> plain = names;
  for (std::size_t item = 0; item < items.size(); ++item) {
    if (std::ranges::count(plain, plain[item]) > 1) names[item] = items[item]->path;
  }
  std::vector<FilledColumn> columns{filled("FILE", 0, std::move(names))};
  for (const MediaColumn& column : mediaColumns) {
    std::vector<std::string> texts;
    for (const MediaAnalysisItem* const item : items) texts.push_back(column.text(*item));
    // What no item has needs no column.
    if (std::ranges::all_of(texts, &std::string::empty)) continue;
    columns.push_back(filled(column.heading, column.dispensability, std::move(texts)));
  }

  std::string leftOut;
  if (const auto width = standardOutputWidth()) {
    const FilledColumn& name = columns.front();
    const auto excess = [&] { return widthOf(columns) > *width ? widthOf(columns) - *width : 0; };
    while (excess() > 0 && (name.width < shortestName || excess() > name.width - shortestName)) {
      const auto least = std::ranges::max_element(columns, {}, &FilledColumn::dispensability);
      if (least->dispensability == 0) break;
      append(leftOut, least->heading);
      columns.erase(least);
    }
    if (columns.front().width > shortestName) {
      columns.front().width = std::max(columns.front().width - excess(), shortestName);
      for (std::string& text : columns.front().texts) text = shortened(text, columns.front().width);
    }
  }

  std::vector<std::vector<Cell>> rows(1 + items.size());
  for (const FilledColumn& column : columns) {
    rows[0].push_back({std::string(column.heading), Style::heading});
    for (std::size_t row = 0; row < items.size(); ++row) {
      rows[1 + row].push_back({column.texts[row], &column == &columns.front() ? Style::name : Style::plain});
    }
  }
  printTable(rows);
  if (!leftOut.empty()) {
    std::cout << styled(Style::faint, "left out for want of width: " + leftOut + "; --json has everything") << '\n';
  }
}

}  // namespace

void printMediaReport(const MediaAnalysis& analysis) {
  std::vector<const MediaAnalysisItem*> described;
  for (const MediaAnalysisItem& item : analysis.items) {
    if (item.description) described.push_back(&item);
  }
  if (described.empty()) return;
  // What decoding finds has no room in a table.
  const bool isDeep =
      std::ranges::any_of(described, [](const MediaAnalysisItem* item) { return item->deep.has_value(); });
  if (analysis.items.size() == 1 || isDeep) {
    for (const MediaAnalysisItem* const item : described) printSection(*item);
  } else {
    printRows(described);
  }
}

}  // namespace meridian::command
