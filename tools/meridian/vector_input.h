/// \file
/// Reads the argument vectors that a subcommand is to work on: the words after "--", or those in the file of --from.
/// For example:
///
///     return forEachVector(arguments, [&](const GivenVector& given) { return explainVector(given); });
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "tools/meridian/command.h"
#include "tools/meridian/vector_input_error.h"

namespace meridian::command {

/// An argument vector to work on.
struct GivenVector {
  /// The line of the input on which it begins, from 1; 0 for the words after "--".
  std::size_t line = 0;
  /// True if the input has other vectors too.
  bool inBatch = false;
  std::vector<std::string> words;
  /// The store that the input holds in place of words; `words` are then its entries, the rejected ones last.
  std::optional<TranscodeCliArguments> store = {};

  [[nodiscard]] bool isFromFile() const noexcept { return line > 0; }
  /// Returns views of the words.
  [[nodiscard]] std::vector<std::string_view> wordViews() const { return {words.begin(), words.end()}; }
  /// Returns what begins each message about the vector: "line 3: ", or nothing for the words after "--".
  [[nodiscard]] std::string place() const { return isFromFile() ? "line " + std::to_string(line) + ": " : ""; }
};

using ReadVector = Expected<GivenVector, VectorInputError>;

/// Reads all vectors of a text. The content decides the form:
///
/// - In a text with a NUL each word ends with a NUL; the last one may lack it. A newline between such a NUL and a word
///   that begins with "-", or the end, ends a vector.
/// - A text whose first line that is neither blank nor a comment begins with "{" or "[" is JSON: one store or list of
///   words, or one on each line.
/// - Any other text is shell words, a vector on each line: see shell_words.h.
///
/// Lines that are blank or begin with "#" are skipped in the last two forms, and a UTF-8 byte order mark is too. A line
/// that cannot be read gives an error in its place. Fails for a text that is UTF-16 or has no vector.
[[nodiscard]] Expected<std::vector<ReadVector>, VectorInputError> vectorsOfText(std::string_view text);

/// Returns the contents of a file or a pipe, or of standard input for "-", up to 64 MiB. Fails for a directory, a
/// device or a socket.
[[nodiscard]] Expected<std::string, VectorInputError> contentsOfInput(const std::string& path);

/// Calls the function with each vector. What cannot be read is reported on standard error, and so is a CommandError
/// that the function throws for one of several vectors; the others are still worked on. Returns `failed` if a vector
/// was not read or the function failed for one. Throws CommandError if the input as a whole cannot be read, and for
/// several vectors with the option "null", which would run together.
[[nodiscard]] Status forEachVector(const Arguments& arguments, const std::function<Status(const GivenVector&)>& work);

/// Writes a vector made from a given one: as the options "json", "null" and "shell" ask for it, otherwise an element a
/// line, or a line quoted for a shell if there are several.
void printGivenVector(const std::vector<std::string>& vector, const GivenVector& given, const Arguments& arguments);

/// The option --from of a subcommand that takes words.
[[nodiscard]] Option fromOption();

/// What the help of such a subcommand says about the forms of FILE.
extern const std::string_view fromDetails;

}  // namespace meridian::command
