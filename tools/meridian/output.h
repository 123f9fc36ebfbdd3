/// \file
/// Writes the command's results: one JSON document, or tables for people. For example:
///
///     printTable({{{"-vcodec", Style::name}, {"h264"}}, {{"-out", Style::name}, {"/out/a.mov"}}});
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/meridian/command.h"

namespace meridian::command {

/// Keeps members in the order in which they are added.
using Json = nlohmann::ordered_json;

/// Warns on standard error that `count` items, each of which is called `noun`, are not valid UTF-8, which JSON cannot
/// carry; `instead` is a sentence without its full stop that says what helps. The program begins the line. Does nothing
/// if `count` is 0.
void warnOfInvalid(std::size_t count, std::string_view noun, std::string_view instead,
                   std::string_view program = "meridian");

/// Warns on standard error of words that are not valid UTF-8. `instead` is as in `warnOfInvalid`.
void warnOfInvalidText(std::span<const std::string_view> words,
                       std::string_view instead =
                           "Flags that differ in these bytes alone become one; \"meridian render "
                           "--null\" writes the bytes unchanged");

/// Warns on standard error if the path is not valid UTF-8.
void warnOfInvalidPath(std::string_view path);

/// Whether a document is spread over several lines, or is on one as in JSON Lines.
enum class JsonForm : std::uint8_t { indented, oneLine };

/// Encodes the store; U+FFFD replaces bytes that are not valid UTF-8, of which `warnOfInvalidText` warns.
[[nodiscard]] Json storeAsJson(const TranscodeCliArguments& store);

/// Writes the document and a newline to standard output. Bytes that are not valid UTF-8 become U+FFFD.
void printJson(const Json& document, JsonForm form = JsonForm::indented);

/// Writes an argument vector as a JSON list with the option "json", with a NUL after each element with "null", as one
/// line quoted for a shell with "shell", and otherwise an element a line.
void printVector(const std::vector<std::string>& vector, const Arguments& arguments,
                 JsonForm form = JsonForm::indented);

/// Returns true if standard output is a terminal that shows colours and NO_COLOR is not set.
[[nodiscard]] bool showsColour();

enum class Style { plain, heading, name, faint, good, warning, bad };

/// Returns the text in the style's colour if standard output shows colours, and otherwise unchanged.
[[nodiscard]] std::string styled(Style style, std::string_view text);

/// Returns the text in this many columns, without its middle if it is longer: "a long n...1.mov".
[[nodiscard]] std::string shortened(const std::string& text, std::size_t width);

/// One text of a table. Any text is allowed: `printTable` makes it safe for a terminal.
struct Cell {
  std::string text;
  Style style = Style::plain;
};

/// Writes sections of indented lines, each of which ends with a newline; the text must be safe for a terminal. On a
/// terminal a line above an indented one is styled as a heading, and a line that is too wide continues below its last
/// column, which two blanks precede. Texts in quotation marks and numbers with their units stay in one piece.
void printSections(std::string_view text);

/// Writes the rows with their columns aligned, indented by two spaces. A text of more than 60 columns does not widen
/// its column; it moves the rest of its own row to the right.
void printTable(const std::vector<std::vector<Cell>>& rows);

}  // namespace meridian::command
