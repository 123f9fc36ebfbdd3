// An image to draw on with cairo: areas, lines, curves and text.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "meridian/lut/lut_values.h"

namespace meridian::command {

inline constexpr LutColor faintText{0.62, 0.64, 0.67};
inline constexpr LutColor strongText{0.93, 0.935, 0.945};
/// Behind curves, and the lines of their scales.
inline constexpr LutColor plotGround{0.07, 0.074, 0.082};
inline constexpr LutColor gridColor{0.19, 0.2, 0.215};

/// A rectangle in pixels.
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

/// An image of 1600 x 900 pixels with a dark background.
class Canvas {
 public:
  struct Point {
    double x = 0;
    double y = 0;
  };

  Canvas();

  void fill(const Area& area, const LutColor& color);
  void frame(const Area& area);
  void line(double fromX, double fromY, double toX, double toY, const LutColor& color, double dash = 0);

  /// Draws a curve whose light is added to what is there, clipped to the area.
  void addCurve(const Area& area, const std::vector<Point>& points, const LutColor& color);

  /// Writes a text with its base line at `y`.
  void text(double x, double y, const std::string& text, const TextStyle& style = {});

  /// Writes a text that runs upwards, centred at a place.
  void upwardText(double x, double y, const std::string& text, const TextStyle& style = {});

  /// Returns the text, cut with an ellipsis if it is wider than `width`.
  [[nodiscard]] std::string fitted(std::string text, double width, const TextStyle& style);

  /// Fills an area with a colour for each of its pixels. The places run from 0 to 1, the second one upwards.
  void paint(const Area& area, const std::function<LutColor(double x, double y)>& colorAt);

  /// Writes the image as PNG. Throws std::runtime_error if that fails.
  void write(const std::string& path);

 private:
  struct Destroyer {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    void operator()(cairo_t* cairo) const noexcept { cairo_destroy(cairo); }
  };
  using Surface = std::unique_ptr<cairo_surface_t, Destroyer>;

  [[nodiscard]] static std::uint32_t packed(const LutColor& color);
  void setColor(const LutColor& color);
  void setFont(const TextStyle& style);
  [[nodiscard]] double widthOfText(const std::string& text);

  Surface surface_;
  std::unique_ptr<cairo_t, Destroyer> cairo_;
};

}  // namespace meridian::command
