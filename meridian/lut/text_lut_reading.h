// The bytes of a look-up table written as text, cut into lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "meridian/base/function_ref.h"
#include "meridian/lut/text_lut_interpreter.h"

namespace meridian::inline v0_2::detail {

/// Hands the next bytes out: fills the memory, and says how many bytes it gave; fewer than asked for at the end.
using ByteSource = FunctionRef<std::size_t(std::span<char>)>;

/// What bounds the memory that the reading of a text takes beside its rows.
struct TextLutLimits {
  /// Bytes that are read at a time; small enough to stay in a processor's cache.
  std::size_t chunk = std::size_t{256} * 1024;
  /// The most bytes that a line may have to be a row, runs of spaces and tabs counted as two.
  std::size_t longestRow = 1'000'000;
};

/// Hands the lines of a text to the interpreter. A line ends with a line feed, a carriage return, both, or the text's
/// end; a UTF-8 byte-order mark at the beginning is passed over. `size` is what is known of the text's size in bytes,
/// else 0; it only decides how much room is made for rows beforehand, at most for twice those there are or 2^20. Beside
/// the rows it takes the memory of a chunk and of at most two of the longest rows.
void readTextLut(ByteSource source, std::uint64_t size, GenericTextLutInterpreter& interpreter,
                 const TextLutLimits& limits = {});

}  // namespace meridian::inline v0_2::detail
