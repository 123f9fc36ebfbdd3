#include "tools/meridian/lut_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string_view>
#include <vector>

#include "meridian/base/numbers.h"
#include "tools/meridian/plot_canvas.h"

namespace meridian::command {
namespace {

/// Their sum is white, so that curves that coincide are white where they are added.
constexpr std::array<LutColor, 3> curveColors{{{0.95, 0.2, 0.2}, {0.2, 0.8, 0.28}, {0.25, 0.42, 1}}};

/// Applies a LUT to a colour.
using Apply = std::function<LutColor(const LutColor&)>;

/// The ticks of an axis: multiples of 1, 2 or 5 times a power of ten, about `wanted` of them.
struct Ticks {
  double step = 1;
  std::vector<double> places;

  Ticks(double low, double high, int wanted) {
    const double rough = (high - low) / wanted;
    const double power = std::pow(10, std::floor(std::log10(rough)));
    const double mantissa = rough / power;
    for (const double nice : {1, 2, 5, 10}) {
      step = power * nice;
      if (mantissa <= nice) break;
    }
    const double slack = step * 1e-9;
    for (double count = std::ceil((low - slack) / step); count * step <= high + slack; ++count) {
      places.push_back(count == 0 ? 0 : count * step);  // never -0
    }
  }

  [[nodiscard]] std::string label(double place) const {
    if (step < 1e-4 || step >= 1e6) return shortestDecimalText(place);
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
    return fixedDecimalText(place, decimals);
  }
};

struct Range {
  double low = 0;
  double high = 1;
};

/// Returns the results for greys, from black to white.
std::vector<LutColor> neutralColors(const Apply& apply, std::size_t count) {
  std::vector<LutColor> colors;
  for (std::size_t place = 0; place < count; ++place) {
    const double grey = static_cast<double>(place) / static_cast<double>(count - 1);
    colors.push_back(apply({grey, grey, grey}));
  }
  return colors;
}

/// Returns the range from 0 to 1, extended to that of the colours.
Range rangeOf(const std::vector<LutColor>& colors) {
  Range range;
  for (const LutColor& color : colors) {
    for (const double value : {color.red, color.green, color.blue}) {
      if (!std::isfinite(value)) continue;
      range.low = std::min(range.low, value);
      range.high = std::max(range.high, value);
    }
  }
  return range;
}

void drawGrid(Canvas& canvas, const Area& area, const Range& range) {
  canvas.fill(area, plotGround);
  for (const double place : Ticks(0, 1, 10).places) {
    const double x = area.left + place * area.width;
    canvas.line(x, area.top, x, area.bottom(), gridColor);
    canvas.text(x, area.bottom() + 22, fixedDecimalText(place, 1), {.align = Align::center});
  }
  const Ticks ticks(range.low, range.high, 10);
  for (const double place : ticks.places) {
    const double y = area.bottom() - (place - range.low) / (range.high - range.low) * area.height;
    canvas.line(area.left, y, area.right(), y, gridColor);
    canvas.text(area.left - 10, y + 5, ticks.label(place), {.align = Align::right});
  }
}

void drawLegend(Canvas& canvas, const Area& area) {
  const std::array<std::string, 3> names{"red", "green", "blue"};
  double x = area.left;
  const double y = area.top - 16;
  for (std::size_t channel = 0; channel < names.size(); ++channel) {
    canvas.fill({x, y - 7, 22, 3}, curveColors[channel]);
    canvas.text(x + 30, y, names[channel]);
    x += 92;
  }
  canvas.fill({x, y - 7, 22, 3}, {1, 1, 1});
  canvas.text(x + 30, y, "all three");
  canvas.line(x + 125, y - 5, x + 150, y - 5, faintText, 4);
  canvas.text(x + 158, y, "unchanged");
}

void drawCurves(Canvas& canvas, const Area& area, const Apply& apply) {
  const std::vector<LutColor> colors = neutralColors(apply, static_cast<std::size_t>(area.width) * 2 + 1);
  const Range range = rangeOf(colors);
  const auto yOf = [&](double value) {
    return area.bottom() - (value - range.low) / (range.high - range.low) * area.height;
  };
  drawGrid(canvas, area, range);
  drawLegend(canvas, area);
  canvas.line(area.left, yOf(0), area.right(), yOf(1), faintText, 4);
  const std::array<double LutColor::*, 3> channels{&LutColor::red, &LutColor::green, &LutColor::blue};
  for (std::size_t channel = 0; channel < channels.size(); ++channel) {
    std::vector<Canvas::Point> points;
    for (std::size_t place = 0; place < colors.size(); ++place) {
      const double value = colors[place].*channels[channel];
      if (std::isfinite(value)) points.push_back({area.left + static_cast<double>(place) / 2, yOf(value)});
    }
    canvas.addCurve(area, points, curveColors[channel]);
  }
  canvas.frame(area);
  canvas.text(area.left + area.width / 2, area.bottom() + 48, "input grey", {.align = Align::center});
  canvas.upwardText(area.left - 62, area.top + area.height / 2, "output");
}

/// Returns the colour at a place on the hue circle, from 0 to 1; not fully saturated.
LutColor hue(double place) {
  const auto channel = [place](double center) {
    const double distance = std::abs(place - center);
    return 0.15 + 0.7 * std::clamp(2 - 6 * std::min(distance, 1 - distance), 0.0, 1.0);
  };
  return {channel(0), channel(1.0 / 3), channel(2.0 / 3)};
}

/// Draws a ramp of colours, and below it the results for them.
void drawRamp(Canvas& canvas, const Area& area, const std::string& name, const Apply& apply,
              const std::function<LutColor(double)>& ramp) {
  const double half = area.height / 2;
  canvas.paint({area.left, area.top, area.width, half}, [&ramp](double x, double) { return ramp(x); });
  canvas.paint({area.left, area.top + half, area.width, half}, [&](double x, double) { return apply(ramp(x)); });
  canvas.frame(area);
  canvas.text(area.left, area.top - 9, name + " before, and after");
}

void drawRamps(Canvas& canvas, const Area& greys, const Area& hues, const Apply& apply) {
  drawRamp(canvas, greys, "greys", apply, [](double x) { return LutColor{x, x, x}; });
  drawRamp(canvas, hues, "hues", apply, hue);
}

/// Draws slices through the cube at five values of blue, with red to the right and green upwards.
void drawSlices(Canvas& canvas, const Area& area, const Apply& apply) {
  constexpr double gap = 26;
  constexpr double labelHeight = 34;
  const double side = std::floor((area.width - 2 * gap) / 3);
  for (int place = 0; place < 6; ++place) {
    const int column = place % 3;
    const int row = place / 3;
    const Area slice{area.left + column * (side + gap), area.top + row * (side + labelHeight + 14), side, side};
    if (place == 5) {
      canvas.text(slice.left, slice.top + 20, "slices of the cube", {.color = strongText});
      canvas.text(slice.left, slice.top + 50, "red to the right");
      canvas.text(slice.left, slice.top + 74, "green upwards");
      canvas.text(slice.left, slice.top + 98, "blue as labelled");
      break;
    }
    const double blue = place / 4.0;
    canvas.paint(slice, [&apply, blue](double red, double green) { return apply({red, green, blue}); });
    canvas.frame(slice);
    canvas.text(slice.left + side / 2, slice.bottom() + 22, "blue " + fixedDecimalText(blue, 2),
                {.align = Align::center});
  }
}

}  // namespace

void plotLut(const ImageLut& lut, const LutPlotLabels& labels, const std::string& path) {
  const Apply apply = [&lut](const LutColor& color) { return lut.pixel(color); };
  Canvas canvas;
  const TextStyle titleStyle{.size = 26, .color = strongText, .isBold = true};
  canvas.text(40, 54, canvas.fitted(labels.title, 1520, titleStyle), titleStyle);
  const TextStyle subtitleStyle{.size = 16};
  canvas.text(40, 84, canvas.fitted(labels.subtitle, 1520, subtitleStyle), subtitleStyle);
  if (labels.mixesChannels) {
    drawCurves(canvas, {120, 146, 690, 680}, apply);
    drawSlices(canvas, {880, 146, 680, 500}, apply);
    drawRamps(canvas, {880, 684, 680, 50}, {880, 776, 680, 50}, apply);
  } else {
    drawCurves(canvas, {120, 146, 1440, 540}, apply);
    drawRamps(canvas, {120, 790, 690, 60}, {870, 790, 690, 60}, apply);
  }
  canvas.write(path);
}

}  // namespace meridian::command
