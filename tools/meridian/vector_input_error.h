/// \file
/// Why an argument vector in a file or a pipe cannot be read. For example:
///
///     const VectorInputError error{{VectorInputErrorCode::unclosedQuote, "", "\""}, 3, 7};
///     error.message();  // line 3, column 7: has a quotation that is not closed: "; close it, or escape ...
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"

namespace meridian::command {

enum class VectorInputErrorCode : std::uint8_t {
  notRead,
  notAFile,
  tooLarge,
  utf16,
  noVector,
  invalidJson,
  repeatedMember,
  containsNul,
  tooDeep,
  notAVector,
  unclosedQuote,
  unquotedCharacter,
};

}  // namespace meridian::command

template <>
struct meridian::EnumerationTable<meridian::command::VectorInputErrorCode> {
  using Code = meridian::command::VectorInputErrorCode;
  static constexpr auto rows = std::to_array<ErrorRow<Code>>({
      {Code::notRead, "notRead", "cannot be read", "check the spelling, and that you may read it"},
      {Code::notAFile, "notAFile", "is not a file or a pipe", "give a file, a pipe, or - for standard input"},
      {Code::tooLarge, "tooLarge", "is larger than 64 MiB", "split it"},
      {Code::utf16, "utf16", "is UTF-16", "save it as UTF-8"},
      {Code::noVector, "noVector", "has no argument vector", "write an empty vector as []"},
      {Code::invalidJson, "invalidJson", "is not JSON", ""},
      {Code::repeatedMember, "repeatedMember", "has a JSON member twice", "remove one"},
      {Code::containsNul, "containsNul", "has a NUL in a JSON text, which no argument can carry", "remove the NUL"},
      {Code::tooDeep, "tooDeep", "is JSON nested more than 64 levels deep", "give a store or a list of words"},
      {Code::notAVector, "notAVector", "is JSON, but not an argument vector",
       "give a store, as \"meridian parse\" prints it, or a list of words"},
      {Code::unclosedQuote, "unclosedQuote", "has a quotation that is not closed", "close it, or write \\ before it"},
      {Code::unquotedCharacter, "unquotedCharacter", "has an unquoted character that a shell would interpret",
       "put it in single quotes, or write \\ before it; nothing is expanded here"},
  });
};

namespace meridian::command {

/// An error in the whole input, or at a line and column of it.
struct VectorInputError : Error<VectorInputErrorCode> {
  /// From 1; 0 for the input as a whole.
  std::size_t line = 0;
  /// In characters, from 1; 0 for a whole line.
  std::size_t column = 0;

  /// Returns the error as one line for a person: "line 3, column 7: ...".
  [[nodiscard]] std::string message() const {
    std::string position;
    if (line > 0) position = "line " + std::to_string(line);
    if (column > 0) position += ", column " + std::to_string(column);
    return position + (position.empty() ? "" : ": ") + Error::message();
  }
};

}  // namespace meridian::command
