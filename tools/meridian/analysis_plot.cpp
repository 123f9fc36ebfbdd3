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
#include "tools/meridian/media_words.h"
#include "tools/meridian/plot_canvas.h"

namespace meridian::command {
namespace {

constexpr LutColor waveColor{0.27, 0.36, 0.47};
constexpr LutColor momentaryColor{0.55, 0.42, 0.16};
constexpr LutColor shortTermColor{1, 0.76, 0.26};
constexpr LutColor lumaColor{0.62, 0.65, 0.7};
constexpr LutColor warningColor{0.95, 0.35, 0.3};

/// Where the parts of the page are that do not depend on the clip.
constexpr double pageLeft = 40;
constexpr double pageRight = 1560;
constexpr double timeLeft = 120;
constexpr double columnLeft = 1300;
constexpr double columnWidth = 260;
constexpr double filmTop = 108;
constexpr double soundTop = 240;
constexpr double soundBottom = 580;
constexpr double eventsTop = 626;
constexpr double eventHeight = 34;
/// The line above a diagram that says what it shows.
constexpr double headingHeight = 24;

/// Where the others are. A clip without images has no filmstrip and no column; one without sound has a sheet of images
/// in place of its waveforms.
struct PageLayout {
  explicit PageLayout(const DeepAnalysis& deep) {
    constexpr double withColumn = 1120;
    constexpr double withoutColumn = 1340;
    constexpr double rowHeight = filmHeight + 28;
    const bool hasSound = !deep.audio.empty();
    if (deep.video) film = {pageLeft, filmTop, pageRight - pageLeft, rowHeight};
    if (deep.video && !hasSound) film = {pageLeft, filmTop, columnLeft - 40 - pageLeft, soundBottom - filmTop};
    const double top = deep.video ? soundTop : filmTop;
    const double width = deep.video ? withColumn : withoutColumn;
    sound = {timeLeft, top, width, hasSound ? soundBottom - top : 0};
    events = {timeLeft, eventsTop, width, 0};
    filmRows = static_cast<std::size_t>(film.height / rowHeight);
    column = {columnLeft, (hasSound ? soundTop : filmTop) + headingHeight, columnWidth, 190};
  }

  static constexpr double filmHeight = plotOptions.filmstripHeight;
  Area film;
  std::size_t filmRows = 0;
  Area sound;
  Area events;
  /// The histogram; the facts are below it.
  Area column;
};

/// Returns how many digits after the point tell times apart that lie this far from each other.
int decimalsFor(double distance) {
  if (distance >= 1) return 0;
  return distance >= 0.1 ? 1 : 2;
}

/// Writes a time as "0:07" or "1:02:07", with digits after the point.
std::string clock(double seconds, int decimals) {
  const double scale = std::pow(10, decimals);
  const auto parts = static_cast<std::int64_t>(std::llround(std::clamp(seconds, 0.0, 1e9) * scale));
  const auto whole = parts / static_cast<std::int64_t>(scale);
  const auto two = [](std::int64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  std::string text =
      whole >= 3600 ? std::to_string(whole / 3600) + ":" + two(whole / 60 % 60) : std::to_string(whole / 60);
  text += ":" + two(whole % 60);
  if (decimals == 0) return text;
  const std::string rest = std::to_string(parts % static_cast<std::int64_t>(scale));
  return text + "." + std::string(static_cast<std::size_t>(decimals) - rest.size(), '0') + rest;
}

/// Places times along the page.
class TimeAxis {
 public:
  TimeAxis(const Area& area, double seconds)
      : left_(area.left), width_(area.width), seconds_(std::max(seconds, 1e-3)) {}

  [[nodiscard]] double xOf(double seconds) const { return left_ + std::clamp(seconds / seconds_, 0.0, 1.0) * width_; }
  [[nodiscard]] double seconds() const noexcept { return seconds_; }

  /// Returns the distance of the labels: about ten of them, at times that people count in.
  [[nodiscard]] double step() const {
    constexpr std::array steps{0.01, 0.02, 0.05,  0.1,   0.2,   0.5,   1.0,    2.0,    5.0,    10.0,   15.0,
                               30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0, 7200.0, 14400.0};
    constexpr double wanted = 10;
    for (const double each : steps) {
      if (seconds_ / each <= wanted) return each;
    }
    return std::ceil(seconds_ / wanted / steps.back()) * steps.back();
  }

 private:
  double left_;
  double width_;
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
  std::string text = containerText(media);
  if (const VideoStreamDescription* const video = media.mainVideo()) {
    text += ", " + codecText(*video) + ", " + std::to_string(video->width) + " x " + std::to_string(video->height);
    if (video->frameRate) text += ", " + video->frameRate->formattedString();
  }
  if (item.deep->video) {
    const std::int64_t frames = item.deep->video->frameCount;
    text += ", " + std::to_string(frames) + (frames == 1 ? " frame" : " frames");
  }
  const double seconds = secondsOf(*item.deep);
  text += ", " + clock(seconds, decimalsFor(seconds / 20));
  if (media.timecode) text += ", from " + media.timecode->start.timecodeString();
  return text;
}

void drawImage(Canvas& canvas, const Area& area, const FilmstripImage& image) {
  canvas.paint(area, [&image](double across, double up) {
    const auto column = static_cast<std::size_t>(std::lround(across * (image.width - 1)));
    const auto row = static_cast<std::size_t>(std::lround((1 - up) * (image.height - 1)));
    const std::size_t first = 3 * (row * static_cast<std::size_t>(image.width) + column);
    const auto at = [&](std::size_t channel) { return image.samples[first + channel] / 255.0; };
    return LutColor{at(0), at(1), at(2)};
  });
}

/// Draws as many of the images as there is room for, at equal distances in time.
void drawFilmstrip(Canvas& canvas, const PageLayout& page, const DeepVideoAnalysis& video) {
  const std::vector<FilmstripImage>& images = video.filmstrip;
  if (images.empty()) return;
  constexpr double gap = 8;
  // Upright images leave room for more.
  const double widest = std::ranges::max(images, {}, &FilmstripImage::width).width + gap;
  const auto perRow = std::max<std::size_t>(static_cast<std::size_t>((page.film.width + gap) / widest), 1);
  const std::size_t count = std::min(images.size(), perRow * page.filmRows);
  const std::size_t columns = std::min(count, perRow);
  const double cell = page.film.width / static_cast<double>(columns);
  const double rowHeight = page.film.height / static_cast<double>(page.filmRows);
  const int decimals = decimalsFor(video.seconds / static_cast<double>(count));
  for (std::size_t each = 0; each < count; ++each) {
    const FilmstripImage& image = images[(2 * each + 1) * images.size() / (2 * count)];
    const double middle = page.film.left + (static_cast<double>(each % columns) + 0.5) * cell;
    const std::size_t row = each / columns;
    const double bottom = page.film.top + static_cast<double>(row) * rowHeight + PageLayout::filmHeight;
    drawImage(canvas,
              {std::floor(middle - image.width / 2.0), bottom - image.height, static_cast<double>(image.width),
               static_cast<double>(image.height)},
              image);
    canvas.text(middle, bottom + 18, clock(image.seconds, decimals), {.size = 12, .align = Align::center});
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

/// Labels the levels of the waveform, which is drawn from full scale at the top to full scale at the bottom.
void drawLevels(Canvas& canvas, const Area& area) {
  const auto label = [&](double level, const std::string& text) {
    const double y = area.top + area.height / 2 * (1 - level);
    canvas.text(area.right() + 8, std::clamp(y + 4, area.top + 9, area.bottom()), text, {.size = 11});
  };
  label(1, "0 dBFS");
  label(0, "-\u221e");
  constexpr double tall = 150;
  if (area.height < tall) return;
  label(0.5, "-6");
  label(-0.5, "-6");
  label(-1, "0");
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
  drawLevels(canvas, area);
  std::string text = "audio track " + std::to_string(audio.track + 1);
  if (audio.loudness) {
    text += ":  " + levelText(audio.loudness->integrated, "LUFS") + ",  range " +
            levelText(audio.loudness->range, "LU") + ",  true peak " + levelText(audio.loudness->truePeak, "dBTP");
  }
  canvas.text(area.left, area.top - 8, text, {.size = 14, .color = strongText});
}

void drawLegend(Canvas& canvas) {
  double x = timeLeft;
  for (const auto& [name, color] : {std::pair("waveform", waveColor), std::pair("momentary loudness", momentaryColor),
                                    std::pair("short-term loudness", shortTermColor)}) {
    canvas.fill({x, soundBottom + 11, 14, 10}, color);
    canvas.text(x + 20, soundBottom + 21, name, {.size = 13});
    x += 180;
  }
}

void drawSound(Canvas& canvas, const PageLayout& page, const DeepAnalysis& deep, const TimeAxis& axis) {
  if (deep.audio.empty()) return;
  constexpr std::size_t mostTracks = 4;
  const std::size_t count = std::min(deep.audio.size(), mostTracks);
  const Area& all = page.sound;
  const double height = all.height / static_cast<double>(count);
  for (std::size_t track = 0; track < count; ++track) {
    const double top = all.top + static_cast<double>(track) * height + headingHeight;
    drawTrack(canvas, {all.left, top, all.width, height - headingHeight}, deep.audio[track], axis);
  }
  canvas.upwardText(all.left - 62, all.top + all.height / 2, "LUFS");
  drawLegend(canvas);
  if (const std::size_t more = deep.audio.size() - count; more > 0) {
    canvas.text(all.right(), all.bottom() + 21,
                "and " + std::to_string(more) + (more == 1 ? " more audio track" : " more audio tracks"),
                {.size = 13, .align = Align::right});
  }
}

/// A row of the time line.
struct EventRow {
  std::string name;
  LutColor color;
  /// Those of one thing, or of each of several tracks, which share the height of the row.
  std::vector<std::vector<MediaInterval>> stretches{};
  std::vector<double> moments{};
  std::int64_t count = 0;
};

std::vector<EventRow> eventRows(const DeepAnalysis& deep) {
  std::vector<EventRow> rows;
  if (deep.video) {
    rows.push_back({"black", {0.45, 0.47, 0.52}, {deep.video->black}});
    rows.push_back({"frozen", {0.35, 0.65, 0.9}, {deep.video->frozen}});
  }
  EventRow silent{"silent", {0.55, 0.45, 0.85}};
  for (const DeepAudioAnalysis& audio : deep.audio) silent.stretches.push_back(audio.silent);
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
    std::size_t count = row.moments.size();
    for (const auto& lane : row.stretches) count += lane.size();
    row.count = std::max(row.count, static_cast<std::int64_t>(count));
  }
  return rows;
}

/// Draws the marks of a row whose top is at a place.
void drawMarks(Canvas& canvas, const EventRow& row, double top, const TimeAxis& axis) {
  const double lane = (eventHeight - 16) / static_cast<double>(std::max<std::size_t>(row.stretches.size(), 1));
  double laneTop = top + 8;
  for (const auto& stretches : row.stretches) {
    for (const MediaInterval& each : stretches) {
      const double left = axis.xOf(each.start);
      canvas.fill({left, laneTop, std::max(axis.xOf(each.end) - left, 2.0), std::max(lane - 1, 1.0)}, row.color);
    }
    laneTop += lane;
  }
  for (const double each : row.moments) canvas.fill({axis.xOf(each) - 1, top + 5, 2, eventHeight - 10}, row.color);
}

void drawEvents(Canvas& canvas, const PageLayout& page, const DeepAnalysis& deep, const TimeAxis& axis) {
  const std::vector<EventRow> rows = eventRows(deep);
  Area area = page.events;
  area.height = eventHeight * static_cast<double>(rows.size());
  canvas.fill(area, plotGround);
  for (int label = 0; label * axis.step() <= axis.seconds(); ++label) {
    const double time = label * axis.step();
    const double x = std::round(axis.xOf(time)) + 0.5;
    canvas.line(x, area.top, x, area.bottom(), gridColor);
    canvas.text(x, area.bottom() + 22, clock(time, decimalsFor(axis.step())), {.size = 13, .align = Align::center});
  }
  double top = area.top;
  for (const EventRow& row : rows) {
    const bool isQuiet = row.count == 0;
    canvas.text(area.left - 12, top + 22, row.name,
                {.size = 14, .color = isQuiet ? faintText : strongText, .align = Align::right});
    canvas.text(area.right() + 12, top + 22, isQuiet ? "none" : std::to_string(row.count),
                {.size = 13, .color = isQuiet ? faintText : row.color});
    drawMarks(canvas, row, top, axis);
    top += eventHeight;
  }
  canvas.frame(area);
}

void drawHistogram(Canvas& canvas, const PageLayout& page, const LumaStatistics& luma) {
  const Area& area = page.column;
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
  canvas.text(area.left, area.top - 8, "luma", {.size = 14, .color = strongText});
}

std::string percentText(double portion) {
  return (portion > 0 && portion < 1e-4 ? "under 0.01" : fixedDecimalText(portion * 100, 2)) + " %";
}

void drawFacts(Canvas& canvas, const PageLayout& page, const DeepAnalysis& deep) {
  double y = page.column.bottom() + 30;
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
  if (deep.audio.empty()) line("no sound");
  if (deep.faultCount == 0) {
    line("no damage");
  } else {
    line(std::to_string(deep.faultCount) + (deep.faultCount == 1 ? " damaged place" : " damaged places"), warningColor);
  }
}

}  // namespace

void plotAnalysis(const MediaAnalysisItem& item, const std::string& path) {
  const DeepAnalysis& deep = *item.deep;
  const PageLayout page(deep);
  const TimeAxis axis(page.events, secondsOf(deep));
  Canvas canvas;
  const TextStyle titleStyle{.size = 26, .color = strongText, .isBold = true};
  canvas.text(40, 54, canvas.fitted(printable(lastPathComponent(item.path)), 1520, titleStyle), titleStyle);
  const TextStyle subtitleStyle{.size = 16};
  canvas.text(40, 84, canvas.fitted(printable(subtitleOf(item)), 1520, subtitleStyle), subtitleStyle);
  drawSound(canvas, page, deep, axis);
  if (deep.video) {
    drawFilmstrip(canvas, page, *deep.video);
    drawHistogram(canvas, page, deep.video->luma);
    drawFacts(canvas, page, deep);
  }
  drawEvents(canvas, page, deep, axis);
  canvas.write(path);
}

}  // namespace meridian::command
