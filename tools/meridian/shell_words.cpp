#include "tools/meridian/shell_words.h"

#include <utility>

namespace meridian::command {
namespace {

/// Characters by which a shell expands, runs or redirects, wherever they are.
constexpr std::string_view activeCharacters = "$`*?[{;|&<>()";
/// Characters that a shell interprets at the beginning of a word: a comment and a home directory.
constexpr std::string_view activeFirstCharacters = "#~";
/// In double quotes a backslash escapes these and a newline; before any other character it is itself.
constexpr std::string_view escapedInDoubleQuotes = "$`\"\\";

constexpr bool isOneOf(std::string_view characters, char c) noexcept {
  return characters.find(c) != std::string_view::npos;
}

VectorInputError errorAt(VectorInputErrorCode code, ShellLine::Position position, char c) {
  return {{code, "", std::string(1, c)}, position.line, position.column};
}

}  // namespace

bool ShellReader::atNewline() const noexcept {
  const std::string_view rest = text_.substr(place_);
  return rest.starts_with('\n') || rest.starts_with("\r\n") || rest == "\r";
}

void ShellReader::advance() noexcept {
  const char c = text_[place_++];
  if (c == '\n') {
    ++position_.line;
    position_.column = 1;
  } else if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) {  // the bytes after a character's first do not count
    ++position_.column;
  }
}

void ShellReader::skipRestOfLine() noexcept {
  while (!atEnd()) {
    const bool ends = text_[place_] == '\n';
    advance();
    if (ends) return;
  }
}

void ShellReader::skipEmptyLines() noexcept {
  while (!atEnd()) {
    if (text_[place_] == '#') {
      skipRestOfLine();
    } else if (text_[place_] == ' ' || text_[place_] == '\t' || atNewline()) {
      advance();
    } else {
      return;
    }
  }
}

/// Reads from an opening quotation mark to its closing one. Returns false, with `error_`, if there is none.
bool ShellReader::readQuotation(ShellLine& line, std::string& word) {
  const ShellLine::Position begin = position_;
  const char mark = text_[place_];
  advance();
  while (!atEnd()) {
    const char c = text_[place_];
    if (c == mark) {
      advance();
      return true;
    }
    if (c == '\n') {
      if (!newlinesMayBeQuoted_) break;
      if (!line.quotedNewline) line.quotedNewline = begin;
    }
    if (mark == '"' && isOneOf("$`", c)) {
      error_ = errorAt(VectorInputErrorCode::unquotedCharacter, position_, c);
      return false;
    }
    if (mark == '"' && c == '\\' && place_ + 1 < text_.size()) {
      const char next = text_[place_ + 1];
      if (next == '\n' || isOneOf(escapedInDoubleQuotes, next)) {
        advance();
        if (next != '\n') word += next;
        advance();
        continue;
      }
    }
    word += c;
    advance();
  }
  error_ = errorAt(VectorInputErrorCode::unclosedQuote, line.quotedNewline.value_or(begin), mark);
  return false;
}

/// Reads up to the end of a word or of the line. `isWord` becomes true if there is a word, which may be empty: ''.
ShellReader::Step ShellReader::readWord(ShellLine& line, std::string& word, bool& isWord) {
  while (!atEnd()) {
    const char c = text_[place_];
    if (atNewline()) {
      skipRestOfLine();
      return Step::lineEnds;
    }
    if (c == ' ' || c == '\t') {
      advance();
      return Step::wordEnds;
    }
    if (c == '\\') {
      advance();
      if (atNewline()) {  // the line goes on
        skipRestOfLine();
        continue;
      }
      word += atEnd() ? '\\' : text_[place_];
      isWord = true;
      if (!atEnd()) advance();
      continue;
    }
    if (isOneOf(activeCharacters, c) || (!isWord && isOneOf(activeFirstCharacters, c))) {
      error_ = errorAt(VectorInputErrorCode::unquotedCharacter, position_, c);
      return Step::fails;
    }
    isWord = true;
    if (c == '\'' || c == '"') {
      if (!readQuotation(line, word)) return Step::fails;
      continue;
    }
    word += c;
    advance();
  }
  return Step::lineEnds;
}

Expected<ShellLine, VectorInputError> ShellReader::read() {
  const std::size_t begin = place_;
  const ShellLine::Position beginPosition = position_;
  ShellLine line;
  line.line = position_.line;
  while (true) {
    std::string word;
    bool isWord = false;
    const Step step = readWord(line, word, isWord);
    if (step == Step::fails) {
      if (line.quotedNewline && atEnd()) {
        newlinesMayBeQuoted_ = false;
        place_ = begin;
        position_ = beginPosition;
      }
      while (!atEnd() && position_.line <= error_.line) skipRestOfLine();
      skipEmptyLines();
      return Unexpected(error_);
    }
    if (isWord) line.words.push_back(std::move(word));
    if (step == Step::lineEnds) {
      skipEmptyLines();
      return line;
    }
  }
}

std::string shellQuoted(std::string_view word) {
  constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./:,+=@%";
  if (!word.empty() && word.find_first_not_of(plain) == std::string_view::npos) return std::string(word);
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string shellLine(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + shellQuoted(word);
  return line;
}

}  // namespace meridian::command
