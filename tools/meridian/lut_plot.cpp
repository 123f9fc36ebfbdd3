// The only file that uses cairo.
#include "tools/meridian/lut_plot.h"

#include <cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/lut/parsed_lut_factory.h"

namespace meridian::command {
namespace {

constexpr int plotWidth = 1600;
constexpr int plotHeight = 900;

constexpr LutColor background{0.105, 0.11, 0.12};
constexpr LutColor plotGround{0.07, 0.074, 0.082};
constexpr LutColor gridColor{0.19, 0.2, 0.215};
constexpr LutColor frameColor{0.36, 0.375, 0.4};
constexpr LutColor faintText{0.62, 0.64, 0.67};
constexpr LutColor strongText{0.93, 0.935, 0.945};
/// Their sum is white, so that curves that coincide are white where they are added.
constexpr std::array<LutColor, 3> curveColors{{{0.95, 0.2, 0.2}, {0.2, 0.8, 0.28}, {0.25, 0.42, 1}}};

using LookUp = std::function<LutColor(const LutColor&)>;

struct Area {
  double left = 0;
  double top = 0;
  double width = 0;
  double height = 0;

  [[nodiscard]] double right() const { return left + width; }
  [[nodiscard]] double bottom() const { return top + height; }
};

enum class Align { left, center, right };

struct TextStyle {
  double size = 15;
  LutColor color = faintText;
  Align align = Align::left;
  bool isBold = false;
};

/// The image to draw on.
class Canvas {
 public:
  Canvas()
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, plotWidth, plotHeight)),
        cairo_(cairo_create(surface_.get())) {
    fill({0, 0, plotWidth, plotHeight}, background);
  }

  void fill(const Area& area, const LutColor& color) {
    setColor(color);
    cairo_rectangle(cairo_.get(), area.left, area.top, area.width, area.height);
    cairo_fill(cairo_.get());
  }

  void frame(const Area& area) {
    setColor(frameColor);
    cairo_set_line_width(cairo_.get(), 1);
    cairo_rectangle(cairo_.get(), area.left - 0.5, area.top - 0.5, area.width + 1, area.height + 1);
    cairo_stroke(cairo_.get());
  }

  void line(double fromX, double fromY, double toX, double toY, const LutColor& color, double dash = 0) {
    setColor(color);
    cairo_set_line_width(cairo_.get(), 1);
    cairo_set_dash(cairo_.get(), &dash, dash > 0 ? 1 : 0, 0);
    cairo_move_to(cairo_.get(), fromX, fromY);
    cairo_line_to(cairo_.get(), toX, toY);
    cairo_stroke(cairo_.get());
    cairo_set_dash(cairo_.get(), nullptr, 0, 0);
  }

  struct Point {
    double x = 0;
    double y = 0;
  };

  /// A curve whose light adds to what is there, within the area.
  void addCurve(const Area& area, const std::vector<Point>& points, const LutColor& color) {
    cairo_save(cairo_.get());
    cairo_rectangle(cairo_.get(), area.left, area.top - 2, area.width, area.height + 4);
    cairo_clip(cairo_.get());
    cairo_set_operator(cairo_.get(), CAIRO_OPERATOR_ADD);
    cairo_set_line_join(cairo_.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_width(cairo_.get(), 2.5);
    setColor(color);
    for (const Point& point : points) cairo_line_to(cairo_.get(), point.x, point.y);
    cairo_stroke(cairo_.get());
    cairo_restore(cairo_.get());
  }

  /// Writes a text with its base line at `y`.
  void text(double x, double y, const std::string& text, const TextStyle& style = {}) {
    setFont(style);
    const double width = widthOfText(text);
    const std::array<double, 3> shares{0, 0.5, 1};
    const double shift = width * shares[static_cast<std::size_t>(style.align)];
    setColor(style.color);
    cairo_move_to(cairo_.get(), x - shift, y);
    cairo_show_text(cairo_.get(), text.c_str());
  }

  /// A text that reads upwards, centred at a place.
  void upwardText(double x, double y, const std::string& text, const TextStyle& style = {}) {
    cairo_save(cairo_.get());
    cairo_translate(cairo_.get(), x, y);
    cairo_rotate(cairo_.get(), -std::acos(0.0));
    this->text(0, 0, text, {style.size, style.color, Align::center, style.isBold});
    cairo_restore(cairo_.get());
  }

  /// The text, cut at its end with a mark where it is wider than this.
  std::string fitted(std::string text, double width, const TextStyle& style) {
    setFont(style);
    if (widthOfText(text) <= width) return text;
    const std::string mark = "\xe2\x80\xa6";
    while (!text.empty() && widthOfText(text + mark) > width) {
      while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0U) == 0x80U) text.pop_back();
      if (!text.empty()) text.pop_back();
    }
    return text + mark;
  }

  /// Fills an area with a colour for each of its pixels; the places run from 0 to 1, the second one upwards.
  void paint(const Area& area, const std::function<LutColor(double x, double y)>& colorAt) {
    const auto columns = static_cast<int>(area.width);
    const auto rows = static_cast<int>(area.height);
    const Surface image(cairo_image_surface_create(CAIRO_FORMAT_RGB24, columns, rows));
    unsigned char* const samples = cairo_image_surface_get_data(image.get());
    if (samples == nullptr) return;  // the status says so when the image is written
    const int stride = cairo_image_surface_get_stride(image.get());
    for (int row = 0; row < rows; ++row) {
      auto* const line = reinterpret_cast<std::uint32_t*>(samples + static_cast<std::ptrdiff_t>(row) * stride);
      for (int column = 0; column < columns; ++column) {
        line[column] = packed(colorAt(column / (columns - 1.0), 1 - row / std::max(1.0, rows - 1.0)));
      }
    }
    cairo_surface_mark_dirty(image.get());
    cairo_set_source_surface(cairo_.get(), image.get(), area.left, area.top);
    cairo_rectangle(cairo_.get(), area.left, area.top, area.width, area.height);
    cairo_fill(cairo_.get());
  }

  void write(const std::string& path) {
    cairo_status_t status = cairo_status(cairo_.get());
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_write_to_png(surface_.get(), path.c_str());
    if (status != CAIRO_STATUS_SUCCESS) {
      throw std::runtime_error(std::string("the plot cannot be written: ") + cairo_status_to_string(status));
    }
  }

 private:
  struct Destroyed {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    void operator()(cairo_t* cairo) const noexcept { cairo_destroy(cairo); }
  };
  using Surface = std::unique_ptr<cairo_surface_t, Destroyed>;

  static std::uint32_t packed(const LutColor& color) {
    std::uint32_t result = 0;
    for (const double value : {color.red, color.green, color.blue}) {
      const double bounded = value > 0 ? std::min(value, 1.0) : 0;  // what is not a number is black
      result = result << 8U | static_cast<std::uint32_t>(std::lround(bounded * 255));
    }
    return result;
  }

  void setColor(const LutColor& color) { cairo_set_source_rgb(cairo_.get(), color.red, color.green, color.blue); }

  void setFont(const TextStyle& style) {
    cairo_select_font_face(cairo_.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           style.isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo_.get(), style.size);
  }

  double widthOfText(const std::string& text) {
    cairo_text_extents_t extents{};
    cairo_text_extents(cairo_.get(), text.c_str(), &extents);
    return extents.x_advance;
  }

  Surface surface_;
  std::unique_ptr<cairo_t, Destroyed> cairo_;
};

/// The marks of an axis: multiples of 1, 2 or 5 times a power of ten, about `wanted` of them.
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

/// What the table makes of greys, from black to white.
std::vector<LutColor> neutralColors(const LookUp& lookUp, std::size_t count) {
  std::vector<LutColor> colors;
  for (std::size_t place = 0; place < count; ++place) {
    const double grey = static_cast<double>(place) / static_cast<double>(count - 1);
    colors.push_back(lookUp({grey, grey, grey}));
  }
  return colors;
}

/// From 0 to 1, and further where the colours go.
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

void drawCurves(Canvas& canvas, const Area& area, const LookUp& lookUp) {
  const std::vector<LutColor> colors = neutralColors(lookUp, static_cast<std::size_t>(area.width) * 2 + 1);
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

/// A colour at a place on the circle of hues, saturated but not to the brim.
LutColor hue(double place) {
  const auto channel = [place](double center) {
    const double distance = std::abs(place - center);
    return 0.15 + 0.7 * std::clamp(2 - 6 * std::min(distance, 1 - distance), 0.0, 1.0);
  };
  return {channel(0), channel(1.0 / 3), channel(2.0 / 3)};
}

/// A ramp of colours, and below it what the table makes of them.
void drawRamp(Canvas& canvas, const Area& area, const std::string& name, const LookUp& lookUp,
              const std::function<LutColor(double)>& ramp) {
  const double half = area.height / 2;
  canvas.paint({area.left, area.top, area.width, half}, [&ramp](double x, double) { return ramp(x); });
  canvas.paint({area.left, area.top + half, area.width, half}, [&](double x, double) { return lookUp(ramp(x)); });
  canvas.frame(area);
  canvas.text(area.left, area.top - 9, name + " before, and after");
}

void drawRamps(Canvas& canvas, const Area& greys, const Area& hues, const LookUp& lookUp) {
  drawRamp(canvas, greys, "greys", lookUp, [](double x) { return LutColor{x, x, x}; });
  drawRamp(canvas, hues, "hues", lookUp, hue);
}

/// Slices through the cube at five values of blue, red to the right and green upwards.
void drawSlices(Canvas& canvas, const Area& area, const LookUp& lookUp) {
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
      canvas.text(slice.left, slice.top + 98, "blue as written");
      break;
    }
    const double blue = place / 4.0;
    canvas.paint(slice, [&lookUp, blue](double red, double green) { return lookUp({red, green, blue}); });
    canvas.frame(slice);
    canvas.text(slice.left + side / 2, slice.bottom() + 22, "blue " + fixedDecimalText(blue, 2),
                {.align = Align::center});
  }
}

std::string kindText(const ParsedLutFile& lut) {
  const LutRGBSampleConverter& converter = lut.inputConverter();
  std::string text(description(lut.dimensions()));
  if (const auto* const cube = dynamic_cast<const ThreeDimensionalLutConverter*>(&converter)) {
    text += ", " + std::to_string(cube->interpolator().cube()->faceSize()) + " points per axis";
  } else {
    text += " table, " + std::to_string(lut.orderedValues().size()) + " rows";
  }
  if (const auto* const integers = dynamic_cast<const UnsignedIntegerLutFile*>(&lut)) {
    text += ", " + std::to_string(integers->bitDepth()) + "-bit code values";
  } else if (const auto* const table = dynamic_cast<const OneDimensionsUnsignedIntegerConverter*>(&converter)) {
    text += ", " + std::to_string(table->valueBitDepth()) + "-bit code values";
  } else {
    text += ", floating point";
  }
  return text + " from " + shortestDecimalText(converter.lowValue()) + " to " +
         shortestDecimalText(converter.highValue());
}

std::string optionsText(const ParsedLutFile& lut, const ImageLutOptions& options) {
  std::string text = options.domain == LutInputDomain::declared ? "declared domain" : "domain of the data";
  if (lut.dimensions() != LutDimensions::cube) return text;
  text += options.axisOrder == LutAxisOrder::redFastest ? ", red fastest" : ", blue fastest";
  return text + ", " + std::string(rawValue(options.interpolation));
}

}  // namespace

void plotLut(const ParsedLutFile& lut, const ImageLutOptions& options, const std::string& title,
             const std::string& path) {
  const ImageLut prepared = ImageLut::forFloats(lut, options);
  const LookUp lookUp = [&prepared](const LutColor& color) { return prepared.pixel(color); };
  Canvas canvas;
  const TextStyle titleStyle{.size = 26, .color = strongText, .isBold = true};
  canvas.text(40, 54, canvas.fitted(title, 1520, titleStyle), titleStyle);
  canvas.text(40, 84, kindText(lut) + "; " + optionsText(lut, options), {.size = 16});
  if (lut.dimensions() == LutDimensions::cube) {
    drawCurves(canvas, {120, 146, 690, 680}, lookUp);
    drawSlices(canvas, {880, 146, 680, 500}, lookUp);
    drawRamps(canvas, {880, 684, 680, 50}, {880, 776, 680, 50}, lookUp);
  } else {
    drawCurves(canvas, {120, 146, 1440, 540}, lookUp);
    drawRamps(canvas, {120, 790, 690, 60}, {870, 790, 690, 60}, lookUp);
  }
  canvas.write(path);
}

}  // namespace meridian::command
