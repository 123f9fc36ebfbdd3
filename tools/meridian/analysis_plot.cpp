#include "tools/meridian/analysis_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/plot_canvas.h"

namespace meridian::command {
namespace {

constexpr LutColor waveColor{0.27, 0.36, 0.47};
constexpr LutColor momentaryColor{0.55, 0.42, 0.16};
constexpr LutColor shortTermColor{1, 0.76, 0.26};
constexpr LutColor lumaColor{0.62, 0.65, 0.7};
constexpr LutColor warningColor{0.95, 0.35, 0.3};

/// Where the parts of the page are.
constexpr Area timeArea{120, 0, 1120, 0};
constexpr double columnLeft = 1300;
constexpr double columnWidth = 260;
constexpr double filmTop = 108;
constexpr double soundTop = 240;
constexpr double soundBottom = 580;
constexpr double eventsTop = 626;
constexpr double eventHeight = 34;

/// Writes a time as "0:07" or "1:02:07"; with tenths where the clip is short.
std::string clock(double seconds, bool hasTenths) {
  const auto tenths = static_cast<std::int64_t>(std::llround(seconds * 10));
  const std::int64_t whole = tenths / 10;
  const auto two = [](std::int64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  std::string text =
      whole >= 3600 ? std::to_string(whole / 3600) + ":" + two(whole / 60 % 60) : std::to_string(whole / 60);
  text += ":" + two(whole % 60);
  return hasTenths ? text + "." + std::to_string(tenths % 10) : text;
}

/// Places times along the page.
class TimeAxis {
 public:
  explicit TimeAxis(double seconds) : seconds_(std::max(seconds, 1e-3)) {}

  [[nodiscard]] double xOf(double seconds) const {
    return timeArea.left + std::clamp(seconds / seconds_, 0.0, 1.0) * timeArea.width;
  }
  [[nodiscard]] double seconds() const noexcept { return seconds_; }
  [[nodiscard]] bool hasTenths() const noexcept { return seconds_ < 20; }

  /// Returns the distance of the labels: about ten of them, at times that people count in.
  [[nodiscard]] double step() const {
    constexpr std::array steps{0.1,  0.2,   0.5,   1.0,   2.0,   5.0,    10.0,   15.0,   30.0,
                               60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0, 7200.0, 14400.0};
    constexpr double wanted = 10;
    for (const double each : steps) {
      if (seconds_ / each <= wanted) return each;
    }
    return std::ceil(seconds_ / wanted / steps.back()) * steps.back();
  }

 private:
  double seconds_;
};

double secondsOf(const DeepAnalysis& deep) {
  double seconds = deep.video ? deep.video->seconds : 0;
  for (const DeepAudioAnalysis& audio : deep.audio) seconds = std::max(seconds, audio.start + audio.seconds);
  for (const DecodeFault& fault : deep.faults) seconds = std::max(seconds, fault.seconds);
  return seconds;
}

std::string subtitleOf(const MediaAnalysisItem& item) {
  const MediaDescription& media = *item.description;
  std::string text(media.container.value_or(std::string_view(media.formatName).substr(0, media.formatName.find(','))));
  if (const VideoStreamDescription* const video = media.mainVideo()) {
    text += ", " + (video->codec ? std::string(*video->codec) : video->codecName) + ", " +
            std::to_string(video->width) + " x " + std::to_string(video->height);
    if (video->frameRate) text += ", " + video->frameRate->formattedString();
  }
  if (item.deep->video) text += ", " + std::to_string(item.deep->video->frameCount) + " frames";
  text += ", " + clock(secondsOf(*item.deep), true);
  if (media.timecode) text += ", from " + media.timecode->start.timecodeString();
  return text;
}

void drawFilmstrip(Canvas& canvas, const DeepVideoAnalysis& video) {
  if (video.filmstrip.empty()) return;
  constexpr double left = 40;
  constexpr double width = 1520;
  const double cell = width / static_cast<double>(video.filmstrip.size());
  double x = left;
  for (const FilmstripImage& image : video.filmstrip) {
    const Area area{std::floor(x + (cell - image.width) / 2), filmTop, static_cast<double>(image.width),
                    static_cast<double>(image.height)};
    canvas.paint(area, [&image](double across, double up) {
      const auto column = static_cast<std::size_t>(std::lround(across * (image.width - 1)));
      const auto row = static_cast<std::size_t>(std::lround((1 - up) * (image.height - 1)));
      const std::size_t first = 3 * (row * static_cast<std::size_t>(image.width) + column);
      const auto at = [&](std::size_t channel) { return image.samples[first + channel] / 255.0; };
      return LutColor{at(0), at(1), at(2)};
    });
    canvas.text(x + cell / 2, area.bottom() + 18, clock(image.seconds, true), {.size = 12, .align = Align::center});
    x += cell;
  }
}

/// The scale of loudness, in LUFS.
constexpr double loudest = 0;
constexpr double softest = -60;

double yOfLoudness(const Area& area, double loudness) {
  return area.top + area.height * (loudest - std::clamp(loudness, softest, loudest)) / (loudest - softest);
}

void drawWaveform(Canvas& canvas, const Area& area, const DeepAudioAnalysis& audio, const TimeAxis& axis) {
  if (audio.waveform.empty()) return;
  const double middle = area.top + area.height / 2;
  // Each column of pixels shows all parts that are within it.
  const double partsPerColumn = axis.seconds() / audio.secondsPerPart / area.width;
  for (int column = 0; column < static_cast<int>(area.width); ++column) {
    const double place = column * partsPerColumn - audio.start / audio.secondsPerPart;
    if (place < 0) continue;
    const auto first = static_cast<std::size_t>(place);
    if (first >= audio.waveform.size()) break;
    const auto last =
        std::min(std::max(static_cast<std::size_t>(place + partsPerColumn), first + 1), audio.waveform.size());
    float least = 0;
    float greatest = 0;
    for (std::size_t part = first; part < last; ++part) {
      least = std::min(least, audio.waveform[part].least);
      greatest = std::max(greatest, audio.waveform[part].greatest);
    }
    const double top = middle - std::min<double>(greatest, 1) * area.height / 2;
    const double bottom = middle - std::max<double>(least, -1) * area.height / 2;
    canvas.fill({area.left + column, top, 1, std::max(bottom - top, 1.0)}, waveColor);
  }
}

void drawLoudness(Canvas& canvas, const Area& area, const DeepAudioAnalysis& audio, const TimeAxis& axis,
                  double LoudnessPoint::* loudness, const LutColor& color) {
  std::vector<Canvas::Point> points;
  // At most two points for each column of pixels, the loudest of those that share one.
  double column = -1;
  for (const LoudnessPoint& each : audio.loudnessCurve) {
    const Canvas::Point point{axis.xOf(each.seconds), yOfLoudness(area, each.*loudness)};
    const double half = std::floor(point.x * 2);
    if (half == column) {
      points.back().y = std::min(points.back().y, point.y);
    } else {
      points.push_back(point);
      column = half;
    }
  }
  canvas.addCurve(area, points, color);
}

/// Writes a level with its unit; "-" for none.
std::string levelText(const std::optional<double>& level, std::string_view unit) {
  return level ? fixedDecimalText(*level, 1) + " " + std::string(unit) : "-";
}

void drawTrack(Canvas& canvas, const Area& area, const DeepAudioAnalysis& audio, const TimeAxis& axis) {
  canvas.fill(area, plotGround);
  constexpr double tallest = 200;
  const int step = area.height > tallest ? 10 : 20;
  for (int below = step; loudest - below > softest; below += step) {
    const double loudness = loudest - below;
    const double y = std::round(yOfLoudness(area, loudness)) + 0.5;
    canvas.line(area.left, y, area.right(), y, gridColor);
    canvas.text(area.left - 10, y + 4, fixedDecimalText(loudness, 0), {.size = 12, .align = Align::right});
  }
  drawWaveform(canvas, area, audio, axis);
  drawLoudness(canvas, area, audio, axis, &LoudnessPoint::momentary, momentaryColor);
  drawLoudness(canvas, area, audio, axis, &LoudnessPoint::shortTerm, shortTermColor);
  canvas.frame(area);
  std::string text = "audio track " + std::to_string(audio.track + 1);
  if (audio.loudness) {
    text += ":  " + levelText(audio.loudness->integrated, "LUFS") + ",  range " +
            levelText(audio.loudness->range, "LU") + ",  true peak " + levelText(audio.loudness->truePeak, "dBTP");
  }
  canvas.text(area.left + 10, area.top + 19, text, {.size = 14, .color = strongText});
}

void drawSound(Canvas& canvas, const DeepAnalysis& deep, const TimeAxis& axis) {
  if (deep.audio.empty()) {
    const Area area{timeArea.left, soundTop, timeArea.width, soundBottom - soundTop};
    canvas.fill(area, plotGround);
    canvas.frame(area);
    canvas.text(area.left + area.width / 2, area.top + area.height / 2, "no sound", {.align = Align::center});
    return;
  }
  constexpr std::size_t mostTracks = 4;
  constexpr double gap = 10;
  const std::size_t count = std::min(deep.audio.size(), mostTracks);
  const double height = (soundBottom - soundTop - gap * static_cast<double>(count - 1)) / static_cast<double>(count);
  for (std::size_t track = 0; track < count; ++track) {
    drawTrack(canvas, {timeArea.left, soundTop + static_cast<double>(track) * (height + gap), timeArea.width, height},
              deep.audio[track], axis);
  }
  canvas.upwardText(timeArea.left - 62, (soundTop + soundBottom) / 2, "LUFS");
  if (deep.audio.size() > count) {
    canvas.text(timeArea.right(), soundBottom + 20,
                "and " + std::to_string(deep.audio.size() - count) + " more audio tracks",
                {.size = 13, .align = Align::right});
  }
}

/// A row of the time line.
struct EventRow {
  std::string name;
  LutColor color;
  std::vector<MediaInterval> stretches{};
  std::vector<double> moments{};
  std::int64_t count = 0;
};

std::vector<EventRow> eventRows(const DeepAnalysis& deep) {
  std::vector<EventRow> rows;
  if (deep.video) {
    rows.push_back({"black", {0.45, 0.47, 0.52}, deep.video->black});
    rows.push_back({"frozen", {0.35, 0.65, 0.9}, deep.video->frozen});
  }
  EventRow silent{"silent", {0.55, 0.45, 0.85}};
  for (const DeepAudioAnalysis& audio : deep.audio) {
    silent.stretches.insert(silent.stretches.end(), audio.silent.begin(), audio.silent.end());
  }
  if (!deep.audio.empty()) rows.push_back(std::move(silent));
  if (deep.video) {
    EventRow scenes{"scenes", {0.4, 0.8, 0.45}};
    for (const SceneChange& each : deep.video->sceneChanges) scenes.moments.push_back(each.seconds);
    rows.push_back(std::move(scenes));
  }
  EventRow damage{"damage", warningColor};
  for (const DecodeFault& each : deep.faults) damage.moments.push_back(each.seconds);
  damage.count = deep.faultCount;
  rows.push_back(std::move(damage));
  for (EventRow& row : rows) {
    row.count = std::max(row.count, static_cast<std::int64_t>(row.stretches.size() + row.moments.size()));
  }
  return rows;
}

void drawEvents(Canvas& canvas, const DeepAnalysis& deep, const TimeAxis& axis) {
  const std::vector<EventRow> rows = eventRows(deep);
  const Area area{timeArea.left, eventsTop, timeArea.width, eventHeight * static_cast<double>(rows.size())};
  canvas.fill(area, plotGround);
  for (int label = 0; label * axis.step() <= axis.seconds(); ++label) {
    const double time = label * axis.step();
    const double x = std::round(axis.xOf(time)) + 0.5;
    canvas.line(x, area.top, x, area.bottom(), gridColor);
    canvas.text(x, area.bottom() + 22, clock(time, axis.hasTenths()), {.size = 13, .align = Align::center});
  }
  double top = area.top;
  for (const EventRow& row : rows) {
    const bool isQuiet = row.count == 0;
    canvas.text(area.left - 12, top + 22, row.name,
                {.size = 14, .color = isQuiet ? faintText : strongText, .align = Align::right});
    canvas.text(area.right() + 12, top + 22, isQuiet ? "none" : std::to_string(row.count),
                {.size = 13, .color = isQuiet ? faintText : row.color});
    for (const MediaInterval& each : row.stretches) {
      const double left = axis.xOf(each.start);
      canvas.fill({left, top + 8, std::max(axis.xOf(each.end) - left, 2.0), eventHeight - 16}, row.color);
    }
    for (const double each : row.moments) canvas.fill({axis.xOf(each) - 1, top + 5, 2, eventHeight - 10}, row.color);
    top += eventHeight;
  }
  canvas.frame(area);
}

void drawHistogram(Canvas& canvas, const LumaStatistics& luma) {
  const Area area{columnLeft, soundTop, columnWidth, 190};
  canvas.fill(area, plotGround);
  const std::uint64_t most = *std::ranges::max_element(luma.histogram);
  const auto bins = static_cast<double>(luma.histogram.size());
  // The root shows the few samples beside the many.
  for (std::size_t bin = 0; bin < luma.histogram.size() && most > 0; ++bin) {
    const double height =
        std::sqrt(static_cast<double>(luma.histogram[bin]) / static_cast<double>(most)) * (area.height - 6);
    const double left = area.left + static_cast<double>(bin) / bins * area.width;
    canvas.fill({left, area.bottom() - height, area.width / bins + 0.5, height}, lumaColor);
  }
  if (luma.range == ColorRange::limited) {
    for (const double value : {16.0, 235.0}) {
      const double x = std::round(area.left + value / bins * area.width) + 0.5;
      canvas.line(x, area.top, x, area.bottom(), warningColor, 4);
    }
  }
  canvas.frame(area);
  canvas.text(area.left, area.top - 9, "luma", {.color = strongText});
}

std::string percentText(double portion) {
  return (portion > 0 && portion < 1e-4 ? "under 0.01" : fixedDecimalText(portion * 100, 2)) + " %";
}

void drawFacts(Canvas& canvas, const DeepAnalysis& deep) {
  double y = soundTop + 220;
  const auto line = [&](const std::string& text, const LutColor& color = faintText) {
    canvas.text(columnLeft, y, canvas.fitted(text, columnWidth, {.size = 14}), {.size = 14, .color = color});
    y += 23;
  };
  if (deep.video) {
    const LumaStatistics& luma = deep.video->luma;
    line(std::to_string(luma.minimum) + " to " + std::to_string(luma.maximum) + " of " + std::to_string(luma.bitDepth) +
         " bits, mean " + fixedDecimalText(luma.average, 0));
    if (luma.range == ColorRange::limited) {
      line("below black " + percentText(luma.belowBlack));
      line("above white " + percentText(luma.aboveWhite));
    }
    if (deep.video->fields) {
      const FieldOrder seen = deep.video->fields->seen();
      const std::string_view words = description(seen);
      line("fields seen: " + (seen == FieldOrder::unknown ? "undecided" : std::string(words)));
    }
    line(deep.video->isVariable ? "variable rate" : "constant rate");
  }
  if (deep.assumedRate) line("times at " + deep.assumedRate->formattedString());
  line(deep.faultCount == 0 ? "no damage" : std::to_string(deep.faultCount) + " damaged places",
       deep.faultCount == 0 ? faintText : warningColor);
}

void drawLegend(Canvas& canvas) {
  double x = timeArea.left;
  for (const auto& [name, color] : {std::pair("waveform", waveColor), std::pair("momentary loudness", momentaryColor),
                                    std::pair("short-term loudness", shortTermColor)}) {
    canvas.fill({x, soundBottom + 11, 14, 10}, color);
    canvas.text(x + 20, soundBottom + 21, name, {.size = 13});
    x += 180;
  }
}

}  // namespace

void plotAnalysis(const MediaAnalysisItem& item, const std::string& path) {
  const DeepAnalysis& deep = *item.deep;
  const TimeAxis axis(secondsOf(deep));
  Canvas canvas;
  const TextStyle titleStyle{.size = 26, .color = strongText, .isBold = true};
  canvas.text(40, 54, canvas.fitted(printable(lastPathComponent(item.path)), 1520, titleStyle), titleStyle);
  const TextStyle subtitleStyle{.size = 16};
  canvas.text(40, 84, canvas.fitted(printable(subtitleOf(item)), 1520, subtitleStyle), subtitleStyle);
  if (deep.video) drawFilmstrip(canvas, *deep.video);
  drawSound(canvas, deep, axis);
  if (!deep.audio.empty()) drawLegend(canvas);
  if (deep.video) drawHistogram(canvas, deep.video->luma);
  drawFacts(canvas, deep);
  drawEvents(canvas, deep, axis);
  canvas.write(path);
}

}  // namespace meridian::command
