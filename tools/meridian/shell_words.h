/// \file
/// Splits the lines of a shell text into words, and quotes words for a shell. For example:
///
///     ShellReader reader("# jobs\n-out '/out/A 1.mov' -overwrite\n");
///     while (!reader.atEnd()) use(reader.read());  // line 2: "-out", "/out/A 1.mov", "-overwrite"
///
/// The words are split by the quoting rules of POSIX's shell alone: '...', "...", a backslash before a character, and a
/// backslash before a newline, which continues the line. Nothing is expanded and nothing is run: characters by which a
/// shell would do so are errors unless they are quoted.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/expected.h"
#include "tools/meridian/vector_input_error.h"

namespace meridian::command {

/// The words of a line, or of several if a quotation or a backslash continues it.
struct ShellLine {
  /// A place in the text, from 1; the column is in characters.
  struct Position {
    std::size_t line = 1;
    std::size_t column = 1;
  };

  /// The number of its first line.
  std::size_t line = 0;
  std::vector<std::string> words;
  /// Where the first quotation begins that contains a newline; absent if none does.
  std::optional<Position> quotedNewline;
};

/// Reads a text line by line. Blank lines and lines whose first word begins with an unquoted "#" are skipped. A line
/// may end with CRLF. Bytes that are not valid UTF-8 are kept. O(n).
class ShellReader {
 public:
  /// The text must outlive the reader.
  explicit ShellReader(std::string_view text) noexcept : text_(text) { skipEmptyLines(); }

  [[nodiscard]] bool atEnd() const noexcept { return place_ >= text_.size(); }

  /// Reads the next line; must not be called at the end. After an error reading continues on the line after it. If a
  /// quotation that contains newlines is not closed, the line after its first is next, and no later one may contain a
  /// newline.
  [[nodiscard]] Expected<ShellLine, VectorInputError> read();

 private:
  enum class Step { wordEnds, lineEnds, fails };

  void skipEmptyLines() noexcept;
  [[nodiscard]] bool atNewline() const noexcept;
  void advance() noexcept;
  void skipRestOfLine() noexcept;
  [[nodiscard]] Step readWord(ShellLine& line, std::string& word, bool& isWord);
  [[nodiscard]] bool readQuotation(ShellLine& line, std::string& word);

  std::string_view text_;
  std::size_t place_ = 0;
  ShellLine::Position position_;
  /// False once a quotation was not closed by the end of the text.
  bool newlinesMayBeQuoted_ = true;
  VectorInputError error_;
};

/// Returns the word so quoted that a POSIX shell, and ShellReader, read it back unchanged; the word itself if it needs
/// no quotes.
[[nodiscard]] std::string shellQuoted(std::string_view word);

/// Returns the words quoted where necessary, separated by spaces.
[[nodiscard]] std::string shellLine(const std::vector<std::string>& words);

}  // namespace meridian::command
