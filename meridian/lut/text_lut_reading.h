/// \file
/// The bytes of a LUT written as text, split into lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "meridian/base/function_ref.h"
#include "meridian/lut/text_lut_interpreter.h"

namespace meridian::inline v0_2::detail {

/// Fills the memory with the next bytes and returns how many there were: fewer than asked for at the end.
using ByteSource = FunctionRef<std::size_t(std::span<char>)>;

/// Bounds of the memory that reading a text needs besides its rows.
struct TextLutLimits {
  /// The bytes that are read at a time; few enough to stay in a processor's cache.
  std::size_t chunk = std::size_t{256} * 1024;
  /// The maximum length of a row in bytes, runs of spaces and tabs counted as two.
  std::size_t longestRow = 1'000'000;
};

/// Passes the lines of a text to the interpreter. A line ends with a line feed, a carriage return, both, or the text's
/// end; a UTF-8 byte-order mark at the beginning is skipped. `size` is the text's size in bytes, or 0 if unknown; it
/// only decides how much room is reserved for rows: at most for twice those read so far or 2^20. Besides the rows it
/// needs the memory of a chunk and of at most two of the longest rows.
void readTextLut(ByteSource source, std::uint64_t size, GenericTextLutInterpreter& interpreter,
                 const TextLutLimits& limits = {});

}  // namespace meridian::inline v0_2::detail
