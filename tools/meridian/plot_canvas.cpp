#include "tools/meridian/plot_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace meridian::command {
namespace {

constexpr int plotWidth = 1600;
constexpr int plotHeight = 900;

constexpr LutColor background{0.105, 0.11, 0.12};
constexpr LutColor frameColor{0.36, 0.375, 0.4};

}  // namespace

Canvas::Canvas()
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, plotWidth, plotHeight)),
      cairo_(cairo_create(surface_.get())) {
  fill({0, 0, plotWidth, plotHeight}, background);
}

void Canvas::fill(const Area& area, const LutColor& color) {
  setColor(color);
  cairo_rectangle(cairo_.get(), area.left, area.top, area.width, area.height);
  cairo_fill(cairo_.get());
}

void Canvas::frame(const Area& area) {
  setColor(frameColor);
  cairo_set_line_width(cairo_.get(), 1);
  cairo_rectangle(cairo_.get(), area.left - 0.5, area.top - 0.5, area.width + 1, area.height + 1);
  cairo_stroke(cairo_.get());
}

void Canvas::line(double fromX, double fromY, double toX, double toY, const LutColor& color, double dash) {
  setColor(color);
  cairo_set_line_width(cairo_.get(), 1);
  cairo_set_dash(cairo_.get(), &dash, dash > 0 ? 1 : 0, 0);
  cairo_move_to(cairo_.get(), fromX, fromY);
  cairo_line_to(cairo_.get(), toX, toY);
  cairo_stroke(cairo_.get());
  cairo_set_dash(cairo_.get(), nullptr, 0, 0);
}

void Canvas::addCurve(const Area& area, const std::vector<Point>& points, const LutColor& color) {
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

void Canvas::text(double x, double y, const std::string& text, const TextStyle& style) {
  setFont(style);
  const double width = widthOfText(text);
  const std::array<double, 3> shares{0, 0.5, 1};
  const double shift = width * shares[static_cast<std::size_t>(style.align)];
  setColor(style.color);
  cairo_move_to(cairo_.get(), x - shift, y);
  cairo_show_text(cairo_.get(), text.c_str());
}

void Canvas::upwardText(double x, double y, const std::string& text, const TextStyle& style) {
  cairo_save(cairo_.get());
  cairo_translate(cairo_.get(), x, y);
  cairo_rotate(cairo_.get(), -std::acos(0.0));
  this->text(0, 0, text, {style.size, style.color, Align::center, style.isBold});
  cairo_restore(cairo_.get());
}

std::string Canvas::fitted(std::string text, double width, const TextStyle& style) {
  setFont(style);
  if (widthOfText(text) <= width) return text;
  const std::string mark = "\xe2\x80\xa6";
  while (!text.empty() && widthOfText(text + mark) > width) {
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0U) == 0x80U) text.pop_back();
    if (!text.empty()) text.pop_back();
  }
  return text + mark;
}

void Canvas::paint(const Area& area, const std::function<LutColor(double x, double y)>& colorAt) {
  const auto columns = static_cast<int>(area.width);
  const auto rows = static_cast<int>(area.height);
  const Surface image(cairo_image_surface_create(CAIRO_FORMAT_RGB24, columns, rows));
  unsigned char* const samples = cairo_image_surface_get_data(image.get());
  if (samples == nullptr) return;  // reported by the status when the image is written
  const int stride = cairo_image_surface_get_stride(image.get());
  for (int row = 0; row < rows; ++row) {
    auto* const line = reinterpret_cast<std::uint32_t*>(samples + static_cast<std::ptrdiff_t>(row) * stride);
    for (int column = 0; column < columns; ++column) {
      line[column] = packed(colorAt(column / std::max(1.0, columns - 1.0), 1 - row / std::max(1.0, rows - 1.0)));
    }
  }
  cairo_surface_mark_dirty(image.get());
  cairo_set_source_surface(cairo_.get(), image.get(), area.left, area.top);
  cairo_rectangle(cairo_.get(), area.left, area.top, area.width, area.height);
  cairo_fill(cairo_.get());
}

void Canvas::write(const std::string& path) {
  cairo_status_t status = cairo_status(cairo_.get());
  if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_write_to_png(surface_.get(), path.c_str());
  if (status != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(std::string("the plot cannot be written: ") + cairo_status_to_string(status));
  }
}

std::uint32_t Canvas::packed(const LutColor& color) {
  std::uint32_t result = 0;
  for (const double value : {color.red, color.green, color.blue}) {
    const double bounded = value > 0 ? std::min(value, 1.0) : 0;  // NaN is black
    result = result << 8U | static_cast<std::uint32_t>(std::lround(bounded * 255));
  }
  return result;
}

void Canvas::setColor(const LutColor& color) { cairo_set_source_rgb(cairo_.get(), color.red, color.green, color.blue); }

void Canvas::setFont(const TextStyle& style) {
  cairo_select_font_face(cairo_.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                         style.isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cairo_.get(), style.size);
}

double Canvas::widthOfText(const std::string& text) {
  cairo_text_extents_t extents{};
  cairo_text_extents(cairo_.get(), text.c_str(), &extents);
  return extents.x_advance;
}

}  // namespace meridian::command
