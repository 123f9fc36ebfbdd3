// The bytes of a look-up table written as text, cut into lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "meridian/base/function_ref.h"
#include "meridian/lut/text_lut_interpreter.h"

namespace meridian::detail {

/// Hands the next bytes out: fills the memory, and says how many bytes it gave; fewer than asked for at the end.
using ByteSource = FunctionRef<std::size_t(std::span<char>)>;

/// The most bytes that a line may have to be a row, runs of white space counted as two.
inline constexpr std::size_t longestRow = 1'000'000;

/// Hands the lines of a text to the interpreter. A line ends with a line feed, a carriage return, both, or the text's
/// end; a UTF-8 byte-order mark at the beginning is passed over. `size` is what is known of the text's size in bytes,
/// else 0; it only decides how much room is made beforehand. Memory is bounded by the rows and twice `longestRow`.
void readTextLut(ByteSource source, std::uint64_t size, GenericTextLutInterpreter& interpreter);

}  // namespace meridian::detail
