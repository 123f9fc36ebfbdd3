// How the command writes: one JSON document, or tables for people.
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/cli/transcode_cli_arguments.h"
#include "tools/meridian/command.h"

namespace meridian::command {

/// Keeps members in the order in which they are added.
using Json = nlohmann::ordered_json;

/// Says on standard error that so many words, or whatever one of them is called, are not valid UTF-8, which JSON cannot
/// carry, and what helps. Says nothing of none.
void warnOfInvalid(std::size_t count, std::string_view noun, std::string_view instead);

/// Says on standard error that words are not valid UTF-8, which JSON cannot carry, where that is so, and what shows the
/// bytes instead.
void warnOfInvalidText(std::span<const std::string_view> words,
                       std::string_view instead =
                           "Flags that differ in these alone look the same; \"meridian render "
                           "--null\" gives the bytes as they are");

/// Says on standard error that the path is not valid UTF-8, where that is so.
void warnOfInvalidPath(std::string_view path);

/// Says on standard error which flags the store rejected; whether there were any.
bool reportRejected(const TranscodeCliArguments& store);

/// Writes the document and a line end to standard output. Bytes that are not valid UTF-8 become U+FFFD.
void printJson(const Json& document);

/// Writes an argument vector in the form that the options ask for: a JSON list ("json"), an element up to each NUL
/// ("null"), or an element a line.
void printVector(const std::vector<std::string>& vector, const Arguments& arguments);

/// Whether standard output is a terminal that shows colours and the user did not say NO_COLOR.
[[nodiscard]] bool showsColour();

enum class Style { plain, heading, name, faint, good, warning, bad };

/// The text in a colour, where standard output shows colours.
[[nodiscard]] std::string styled(Style style, std::string_view text);

/// A text of a table. Text from outside is made safe for a terminal.
struct Cell {
  std::string text;
  Style style = Style::plain;
};

/// Writes the rows with their columns aligned, indented by two blanks. A text too long for its column pushes the rest
/// of its row to the right rather than making the column wide for all.
void printTable(const std::vector<std::vector<Cell>>& rows);

}  // namespace meridian::command
