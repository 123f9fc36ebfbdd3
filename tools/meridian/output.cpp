#include "tools/meridian/output.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/serialization/transcode_cli_arguments_json.h"
#include "tools/meridian/shell_words.h"
#include "tools/meridian/terminal.h"

namespace meridian::command {
namespace {

std::string_view sequenceOf(Style style) {
  switch (style) {
    case Style::plain:
      return "";
    case Style::heading:
      return "\x1b[1m";
    case Style::name:
      return "\x1b[36m";
    case Style::faint:
      return "\x1b[2m";
    case Style::good:
      return "\x1b[32m";
    case Style::warning:
      return "\x1b[33m";
    case Style::bad:
      return "\x1b[31m";
  }
  return "";
}

/// Returns where the word ends that begins at a place. Blanks within quotation marks do not end it.
std::size_t endOfWord(std::string_view line, std::size_t place) {
  bool isQuoted = false;
  for (; place < line.size() && (isQuoted || line[place] != ' '); ++place) isQuoted = isQuoted != (line[place] == '"');
  return place;
}

/// Returns where the words end that stay together from a place on: numbers with what they count, as "25 fps" and
/// "1920 x 1080".
std::size_t endOfPiece(std::string_view line, std::size_t place) {
  for (;;) {
    const std::size_t end = endOfWord(line, place);
    const std::string_view word = line.substr(place, end - place);
    const bool isNumber = !word.empty() && word.find_first_not_of(".0123456789") == std::string_view::npos;
    if (end == line.size() || !(isNumber || word == "x")) return end;
    place = end + 1;
  }
}

/// Returns where the last column begins that does so within `width`; absent if the line has no columns.
std::optional<std::size_t> lastColumn(std::string_view line, std::size_t width) {
  std::optional<std::size_t> column;
  const std::size_t first = std::min(line.find_first_not_of(' '), line.size());
  for (std::size_t place = endOfWord(line, first); place < line.size();) {
    const std::size_t next = std::min(line.find_first_not_of(' ', place), line.size());
    if (next > width) break;
    if (next - place > 1) column = next;
    place = endOfWord(line, next);
  }
  return column;
}

/// Returns the line broken at blanks into lines of at most `width` columns, where words allow it. They continue below
/// the last column, if two thirds of the width are enough for the others.
std::string brokenLine(std::string_view line, std::size_t width) {
  const std::size_t first = std::min(line.find_first_not_of(' '), line.size());
  const auto lastBegin = lastColumn(line, width * 2 / 3 + 2);
  const bool hasColumns = lastBegin.has_value();
  const std::size_t begin = lastBegin.value_or(first);
  const std::string indentation(hasColumns ? begin : first + 2, ' ');
  std::string text(line.substr(0, begin));
  std::size_t column = begin;
  for (std::size_t place = begin; place < line.size();) {
    const std::size_t end = endOfPiece(line, place);
    const std::string_view word = line.substr(place, end - place);
    if (place > begin && column + 1 + displayWidth(word) > width) {
      text += '\n' + indentation;
      column = indentation.size();
    } else if (place > begin) {
      text += ' ';
      ++column;
    }
    text += word;
    column += displayWidth(word);
    place = end + 1;
  }
  return text;
}

}  // namespace

bool showsColour() {
  static const bool shows = std::getenv("NO_COLOR") == nullptr && standardOutputShowsColour();
  return shows;
}

void warnOfInvalid(std::size_t count, std::string_view noun, std::string_view instead, std::string_view program) {
  if (count == 0) return;
  std::cerr << program << ": warning: " << count << ' ' << noun << (count == 1 ? " is" : "s are")
            << " not valid UTF-8, which JSON cannot carry; U+FFFD replaces each such byte. " << instead << ".\n";
}

void warnOfInvalidText(std::span<const std::string_view> words, std::string_view instead) {
  const auto count = std::ranges::count_if(words, [](std::string_view word) { return !isValidUtf8(word); });
  warnOfInvalid(static_cast<std::size_t>(count), "word", instead);
}

void warnOfInvalidPath(std::string_view path) {
  if (isValidUtf8(path)) return;
  std::cerr << "meridian: warning: " << inQuotes(path)
            << " is not valid UTF-8, which JSON cannot carry; U+FFFD replaces each such byte\n";
}

void printJson(const Json& document, JsonForm form) {
  const int indentation = form == JsonForm::indented ? 2 : -1;
  std::cout << document.dump(indentation, ' ', false, Json::error_handler_t::replace) << '\n';
}

Json storeAsJson(const TranscodeCliArguments& store) {
  const auto valid = [](const std::string& text) {
    if (isValidUtf8(text)) return text;
    return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
  };
  const auto validTexts = [&valid](const TextDictionary& dictionary) {
    TextDictionary copy;
    for (const auto& [flag, value] : dictionary) copy.set(valid(flag), valid(value));
    return copy;
  };
  TranscodeCliArguments::Stored stored{validTexts(store.flagValueLookup()), std::nullopt, store.stored().orderedFlags};
  if (const auto& rejected = store.stored().invalidKeyValueLookup) stored.invalidKeyValueLookup = validTexts(*rejected);
  if (stored.orderedFlags) std::ranges::transform(*stored.orderedFlags, stored.orderedFlags->begin(), valid);
  return TranscodeCliArguments::fromStored(std::move(stored));
}

void printVector(const std::vector<std::string>& vector, const Arguments& arguments, JsonForm form) {
  if (arguments.has("json")) {
    warnOfInvalidText(std::vector<std::string_view>(vector.begin(), vector.end()), "--null writes the bytes unchanged");
    printJson(vector, form);
    return;
  }
  if (arguments.has("shell")) {
    std::cout << shellLine(vector) << '\n';
    return;
  }
  const char end = arguments.has("null") ? '\0' : '\n';
  for (const std::string& element : vector) std::cout << element << end;
}

std::string styled(Style style, std::string_view text) {
  if (style == Style::plain || text.empty() || !showsColour()) return std::string(text);
  return std::string(sequenceOf(style)) + std::string(text) + "\x1b[0m";
}

std::string shortened(const std::string& text, std::size_t width) {
  constexpr std::string_view gap = "...";
  if (displayWidth(text) <= width) return text;
  if (width <= gap.size()) return std::string(gap.substr(0, width));
  const std::size_t kept = width - gap.size();
  // Cut between characters, not within one.
  const auto isInside = [&text](std::size_t place) {
    return (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U;
  };
  std::size_t head = text.size();
  while (head > 0 && (isInside(head - 1) || displayWidth(text.substr(0, head)) > (kept + 1) / 2)) --head;
  while (head > 0 && head < text.size() && isInside(head)) --head;
  std::size_t tail = head;
  while (tail < text.size() && (isInside(tail) || displayWidth(text.substr(tail)) > kept / 2)) ++tail;
  return text.substr(0, head) + std::string(gap) + text.substr(tail);
}

void printSections(std::string_view text) {
  const std::size_t width = standardOutputWidth().value_or(text.size());
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const bool isHeading = !line.starts_with(' ') && text.starts_with(' ');
    const std::string shown = displayWidth(line) <= width ? std::string(line) : brokenLine(line, width);
    std::cout << styled(isHeading ? Style::heading : Style::plain, shown) << '\n';
  }
}

void printTable(const std::vector<std::vector<Cell>>& rows) {
  constexpr std::size_t widest = 60;
  std::vector<std::size_t> widths;
  std::vector<std::vector<std::string>> texts;
  for (const std::vector<Cell>& row : rows) {
    std::vector<std::string>& line = texts.emplace_back();
    if (widths.size() < row.size()) widths.resize(row.size(), 0);
    for (std::size_t column = 0; column < row.size(); ++column) {
      line.push_back(printable(row[column].text));
      const std::size_t width = displayWidth(line.back());
      if (width <= widest) widths[column] = std::max(widths[column], width);
    }
  }
  for (std::size_t row = 0; row < rows.size(); ++row) {
    std::string line;
    std::size_t pending = 2;  // spaces before the next text; written late, so that no line ends in spaces
    for (std::size_t column = 0; column < rows[row].size(); ++column) {
      const std::string& text = texts[row][column];
      const std::size_t width = displayWidth(text);
      if (!text.empty()) {
        line.append(pending, ' ');
        line += styled(rows[row][column].style, text);
        pending = 0;
      }
      pending += 2 + widths[column] - std::min(width, widths[column]);
    }
    std::cout << line << '\n';
  }
}

}  // namespace meridian::command
