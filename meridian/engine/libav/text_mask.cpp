#include "meridian/engine/libav/text_mask.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "meridian/base/ascii.h"
#include "meridian/base/text.h"
#include "meridian/engine/libav/filter_graph.h"
#include "meridian/engine/libav/log_collector.h"

namespace meridian::inline v0_2::libav {
namespace {

int borderOf(double size) noexcept { return std::max(static_cast<int>(std::lround(size / 5)), 1); }

constexpr const char* usualFont = "monospace";

/// Returns the characters beyond ASCII in their order, each once; the first of very many.
std::vector<std::string> rareCharactersOf(std::string_view text) {
  constexpr std::size_t most = 256;
  constexpr char32_t lastOfAscii = 0x7F;
  std::vector<std::string> characters;
  while (!text.empty() && characters.size() < most) {
    const TextUnit unit = firstUnit(text);
    const std::string_view character = text.substr(0, unit.length);
    const bool isRare = unit.isCharacter && unit.value > lastOfAscii;
    if (isRare && std::ranges::find(characters, character) == characters.end()) characters.emplace_back(character);
    text.remove_prefix(unit.length);
  }
  return characters;
}

/// Returns fontconfig's pattern of a font that has the characters, if there is one: "monospace:charset=65e5 672c".
std::string fontFor(const std::vector<std::string>& characters) {
  std::string codes;
  for (const std::string& each : characters) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "%lx", static_cast<unsigned long>(firstUnit(each).value));
    codes += (codes.empty() ? "" : " ") + std::string(code.data());
  }
  return codes.empty() ? usualFont : std::string(usualFont) + "\\:charset=" + codes;
}

/// Writes a text so that none of its characters is syntax: FFmpeg takes a backslash away for the list of filters, and
/// another one for the list of options. What is not UTF-8 becomes U+FFFD, which shows that something was there.
std::string escaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const TextUnit unit = firstUnit(text);
    const char first = text.front();
    const bool isAscii = unit.isCharacter && unit.length == 1;
    if (isAscii && !detail::isLetter(first) && !detail::isDigit(first)) result += "\\\\\\";
    result += unit.isCharacter ? text.substr(0, unit.length) : "\uFFFD";
    text.remove_prefix(unit.length);
  }
  return result;
}

/// Draws the text into the middle of a canvas that has a font's height of room on each side.
Expected<TextMask, std::string> drawn(const std::string& text, double size, int width, int height,
                                      const std::string& font = usualFont) {
  const int room = static_cast<int>(std::ceil(size));
  const FilterInput canvas{width + 2 * room, height + 2 * room, AV_PIX_FMT_GRAY8};
  // The filter joins letters, and orders them from right to left, when it is made and never later.
  const std::string description =
      "drawtext=text=" + escaped(text) + ":expansion=none:font='" + font +
      "':fontcolor=white:fix_bounds=0:fontsize=" + std::to_string(std::max(std::lround(size), 1L)) +
      ":x=" + std::to_string(room) + ":y=" + std::to_string(room);
  auto graph = FrameFilter::open(description, canvas, 1);
  if (!graph) return Unexpected(std::move(graph).error());
  const LogCollector log;
  const auto failure = [&log] {
    return Unexpected(log.firstError().empty() ? std::string("the text cannot be drawn") : log.firstError());
  };
  FramePointer frame(av_frame_alloc());
  if (!frame) return failure();
  frame->format = canvas.format;
  frame->width = canvas.width;
  frame->height = canvas.height;
  frame->pts = 0;
  frame->color_range = AVCOL_RANGE_JPEG;
  if (av_frame_get_buffer(frame.get(), 0) < 0) return failure();
  for (int y = 0; y < canvas.height; ++y) {
    std::memset(frame->data[0] + static_cast<std::ptrdiff_t>(frame->linesize[0]) * y, 0,
                static_cast<std::size_t>(canvas.width));
  }
  if (!(*graph)->send(std::move(frame))) return failure();
  frame = (*graph)->receive();
  if (!frame) return failure();
  TextMask mask{canvas.width, canvas.height, {}};
  for (int y = 0; y < canvas.height; ++y) {
    const std::uint8_t* const row = frame->data[0] + static_cast<std::ptrdiff_t>(frame->linesize[0]) * y;
    mask.coverage.insert(mask.coverage.end(), row, row + canvas.width);
  }
  return mask;
}

/// The columns and lines that are covered; empty where the end is not after the begin.
struct Extent {
  int left;
  int right = 0;
  int top;
  int bottom = 0;

  explicit Extent(const TextMask& mask) : left(mask.width), top(mask.height) {
    for (int y = 0; y < mask.height; ++y) {
      for (int x = 0; x < mask.width; ++x) {
        if (mask.coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(mask.width) +
                          static_cast<std::size_t>(x)] == 0)
          continue;
        left = std::min(left, x);
        right = std::max(right, x + 1);
        top = std::min(top, y);
        bottom = std::max(bottom, y + 1);
      }
    }
  }
};

/// Returns a part of a mask with a border around it.
TextMask cut(const TextMask& mask, const Extent& extent, int border) {
  TextMask part{extent.right - extent.left + 2 * border, extent.bottom - extent.top + 2 * border, {}};
  part.coverage.assign(static_cast<std::size_t>(part.width) * static_cast<std::size_t>(part.height), 0);
  for (int y = extent.top; y < extent.bottom; ++y) {
    const auto from = mask.coverage.begin() + static_cast<std::ptrdiff_t>(y) * mask.width;
    std::copy(from + extent.left, from + extent.right,
              part.coverage.begin() + static_cast<std::ptrdiff_t>(y - extent.top + border) * part.width + border);
  }
  return part;
}

}  // namespace

Expected<TextMask, std::string> maskOfText(const std::string& text, double size, int widest) {
  const auto lines = 1 + std::ranges::count(text, '\n');
  constexpr double lineHeight = 1.5;
  auto mask = drawn(text, size, widest, static_cast<int>(std::ceil(size * lineHeight * static_cast<double>(lines))),
                    fontFor(rareCharactersOf(text)));
  if (!mask) return mask;
  const Extent extent(*mask);
  // A text of blanks covers nothing.
  if (extent.right <= extent.left) return TextMask();
  return cut(*mask, extent, borderOf(size));
}

std::string missingCharacters(const std::string& text) {
  const std::vector<std::string> characters = rareCharactersOf(text);
  if (characters.empty()) return {};
  const std::string font = fontFor(characters);
  constexpr double size = 16;
  constexpr int room = 32;
  // A private character that no font has shows what stands for those that are missing.
  const auto missing = drawn("\U0010FFFD", size, room, room, font);
  std::string found;
  for (const std::string& each : characters) {
    const auto mask = drawn(each, size, room, room, font);
    if (mask && missing && mask->coverage == missing->coverage) found += each;
  }
  return found;
}

Expected<GlyphSheet, std::string> GlyphSheet::open(double size) {
  GlyphSheet sheet;
  sheet.border_ = borderOf(size);
  const auto room = static_cast<int>(std::ceil(size));
  const auto rightOf = [&](const std::string& text) -> Expected<int, std::string> {
    const auto mask = drawn(text, size, room * 4, room * 2);
    if (!mask) return Unexpected(mask.error());
    return Extent(*mask).right;
  };
  const auto one = rightOf("0");
  const auto two = rightOf("00");
  if (!one) return Unexpected(one.error());
  if (!two) return Unexpected(two.error());
  sheet.advance_ = *two - *one;
  if (sheet.advance_ <= 0) return Unexpected(std::string("the font has no digits"));
  const int width = sheet.advance_ * static_cast<int>(characters.size());
  const auto mask = drawn(std::string(characters), size, width, room * 2);
  if (!mask) return Unexpected(mask.error());
  Extent extent(*mask);
  // Each character has the width of the font, from where the text begins.
  extent.left = room;
  extent.right = room + width;
  sheet.sheet_ = cut(*mask, extent, 0);
  return sheet;
}

TextMask GlyphSheet::textOf(std::string_view label) const {
  TextMask text{static_cast<int>(label.size()) * advance_ + 2 * border_, sheet_.height + 2 * border_, {}};
  text.coverage.assign(static_cast<std::size_t>(text.width) * static_cast<std::size_t>(text.height), 0);
  for (std::size_t place = 0; place < label.size(); ++place) {
    const std::size_t glyph = characters.find(label[place]);
    if (glyph == std::string_view::npos) continue;
    for (int y = 0; y < sheet_.height; ++y) {
      const auto from = sheet_.coverage.begin() + static_cast<std::ptrdiff_t>(y) * sheet_.width +
                        static_cast<std::ptrdiff_t>(glyph) * advance_;
      std::copy(from, from + advance_,
                text.coverage.begin() + static_cast<std::ptrdiff_t>(y + border_) * text.width + border_ +
                    static_cast<std::ptrdiff_t>(place) * advance_);
    }
  }
  return text;
}

}  // namespace meridian::inline v0_2::libav
