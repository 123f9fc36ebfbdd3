/// \file
/// Draws text as a mask, in a monospaced font. For example:
///
///     auto digits = GlyphSheet::open(21.6);
///     const TextMask label = digits->textOf("01:00:00;02");
#pragma once

#include <string>
#include <string_view>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/overlay.h"

namespace meridian::inline v0_2::libav {

/// Returns any text, with newlines, in a font that has its characters if there is one, and a border of a fifth of the
/// font's height around it. `size` is the height of the font in pixels, `widest` the most columns that are looked at.
/// The error is what FFmpeg said.
[[nodiscard]] Expected<TextMask, std::string> maskOfText(const std::string& text, double size, int widest);

/// Returns the characters of a text for which the font has no glyph, so that a box stands for each.
[[nodiscard]] std::string missingCharacters(const std::string& text);

/// The characters of timecode, drawn once, so that they do not move from image to image.
class GlyphSheet {
 public:
  static constexpr std::string_view characters = "0123456789:;";

  /// Draws the sheet; the error is what FFmpeg said.
  [[nodiscard]] static Expected<GlyphSheet, std::string> open(double size);

  /// Return the width of a character and of the border, in pixels.
  [[nodiscard]] int advance() const noexcept { return advance_; }
  [[nodiscard]] int border() const noexcept { return border_; }

  /// Returns a label with a border as above. Other characters are blank.
  [[nodiscard]] TextMask textOf(std::string_view label) const;

 private:
  TextMask sheet_;
  int advance_ = 0;
  int border_ = 0;
};

}  // namespace meridian::inline v0_2::libav
