#include "tools/meridian/vector_input.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/serialization/transcode_cli_arguments_json.h"
#include "tools/meridian/output.h"
#include "tools/meridian/shell_words.h"
#include "tools/meridian/strict_json.h"

namespace meridian::command {
namespace {

using InputCode = VectorInputErrorCode;
using ReadVectors = std::vector<ReadVector>;

constexpr std::string_view blanks = " \t\r\n";

/// Returns the line without the blanks and the newline around it.
std::string_view withoutBlanks(std::string_view line) {
  const std::size_t begin = line.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return line.substr(begin, line.find_last_not_of(blanks) - begin + 1);
}

bool isSkipped(std::string_view line) { return line.empty() || line.starts_with('#'); }

bool beginsAsJson(std::string_view line) { return line.starts_with('{') || line.starts_with('['); }

/// Calls the function with each line that is not skipped, and its number, until it returns false.
template <typename Function>
void forEachLine(std::string_view text, Function&& function) {
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view line = withoutBlanks(text.substr(0, end));
    if (!isSkipped(line) && !function(line, number)) return;
    text.remove_prefix(end);
  }
}

ReadVector vectorOfJson(std::string_view text, std::size_t line) {
  auto document = parseStrictJson(text, line);
  if (!document) return Unexpected(document.error());
  const auto notAVector = [line](std::string detail) {
    return Unexpected(VectorInputError{{InputCode::notAVector, "", std::move(detail)}, line});
  };
  GivenVector vector;
  vector.line = line;
  if (document->is_object()) {
    try {
      vector.store = document->get<TranscodeCliArguments>();
    } catch (const DecodingError& error) {
      return notAVector(error.what());
    }
    vector.words = wordsWithRejected(*vector.store);
    return vector;
  }
  if (!document->is_array()) return notAVector(std::string("it is a ") + document->type_name());
  for (Json& word : *document) {
    if (!word.is_string()) {
      return notAVector("word " + std::to_string(vector.words.size() + 1) + " is not a text but " + word.type_name());
    }
    vector.words.push_back(std::move(word.get_ref<std::string&>()));
  }
  return vector;
}

/// Returns true if the text is JSON with a document on each line, rather than one document on several.
bool isJsonLines(std::string_view text) {
  std::size_t lines = 0;
  bool isAnyDocument = false;
  forEachLine(text, [&](std::string_view line, std::size_t) {
    ++lines;
    isAnyDocument = isAnyDocument || (beginsAsJson(line) && Json::accept(line));
    return lines < 2 || !isAnyDocument;
  });
  return lines > 1 && isAnyDocument;
}

ReadVectors vectorsOfJson(std::string_view text) {
  ReadVectors vectors;
  std::string_view document;
  std::size_t first = 1;
  forEachLine(text, [&](std::string_view line, std::size_t number) {
    document = text.substr(static_cast<std::size_t>(line.data() - text.data()));
    first = number;
    return false;
  });
  // A line of a document that spans several may be a document itself.
  if (!Json::accept(document) && isJsonLines(text)) {
    forEachLine(text, [&vectors](std::string_view line, std::size_t number) {
      vectors.emplace_back(vectorOfJson(line, number));
      return true;
    });
    return vectors;
  }
  vectors.emplace_back(vectorOfJson(document, first));
  return vectors;
}

ReadVectors vectorsOfShellText(std::string_view text) {
  ReadVectors vectors;
  for (ShellReader reader(text); !reader.atEnd();) {
    auto line = reader.read();
    if (!line) {
      vectors.emplace_back(Unexpected(line.error()));
      continue;
    }
    GivenVector vector;
    vector.line = line->line;
    vector.words = std::move(line->words);
    if (line->quotedNewline) {
      std::cerr << "meridian: warning: line " << line->quotedNewline->line << ", column " << line->quotedNewline->column
                << ": this quotation goes on in the next line\n";
    }
    vectors.emplace_back(std::move(vector));
  }
  return vectors;
}

/// Whether the text begins with a newline that ends a vector, rather than with one that a value begins with.
bool beginsWithEndOfVector(std::string_view text) {
  return text.starts_with('\n') && (text.size() == 1 || text[1] == '-');
}

ReadVectors vectorsOfTerminatedWords(std::string_view text) {
  ReadVectors vectors;
  std::size_t line = 1;
  while (!text.empty()) {
    GivenVector vector;
    vector.line = line;
    while (!text.empty() && (vector.words.empty() || !beginsWithEndOfVector(text))) {
      const std::string_view word = text.substr(0, text.find('\0'));
      vector.words.emplace_back(word);
      line += static_cast<std::size_t>(std::ranges::count(word, '\n'));
      text.remove_prefix(std::min(word.size() + 1, text.size()));
    }
    if (!text.empty()) {
      text.remove_prefix(1);
      ++line;
    }
    vectors.emplace_back(std::move(vector));
  }
  return vectors;
}

constexpr std::size_t largestInput = std::size_t{64} << 20U;

/// Reads to the end; fails for more than the largest input, so that an endless pipe ends too.
Expected<std::string, VectorInputError> contentsOfStream(std::istream& stream, const std::string& name) {
  std::string contents;
  std::vector<char> buffer(std::size_t{1} << 16U);
  errno = 0;
  while (stream.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) || stream.gcount() > 0) {
    contents.append(buffer.data(), static_cast<std::size_t>(stream.gcount()));
    if (contents.size() > largestInput) return Unexpected(VectorInputError{{InputCode::tooLarge, name}});
  }
  if (stream.bad()) {
    const std::error_code error(errno != 0 ? errno : EIO, std::generic_category());
    return Unexpected(VectorInputError{{InputCode::notRead, name, "", error}});
  }
  return contents;
}

}  // namespace

Expected<std::vector<ReadVector>, VectorInputError> vectorsOfText(std::string_view text) {
  if (text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff"))
    return Unexpected(VectorInputError{{InputCode::utf16}});
  ReadVectors vectors;
  if (text.find('\0') != std::string_view::npos) return vectorsOfTerminatedWords(text);
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
  bool isJson = false;
  forEachLine(text, [&isJson](std::string_view line, std::size_t) {
    isJson = beginsAsJson(line);
    return false;
  });
  vectors = isJson ? vectorsOfJson(text) : vectorsOfShellText(text);
  if (vectors.empty()) return Unexpected(VectorInputError{{InputCode::noVector}});
  return vectors;
}

Expected<std::string, VectorInputError> contentsOfInput(const std::string& path) {
  namespace fs = std::filesystem;
  if (path == "-") return contentsOfStream(std::cin, "standard input");
  std::error_code error;
  const fs::file_type type = fs::status(path, error).type();
  if (error || type == fs::file_type::not_found) {
    if (!error) error = std::make_error_code(std::errc::no_such_file_or_directory);
    return Unexpected(VectorInputError{{InputCode::notRead, path, "", error}});
  }
  // A pipe is allowed for a shell's <(...); a device may never end.
  if (type != fs::file_type::regular && type != fs::file_type::fifo) {
    return Unexpected(VectorInputError{{InputCode::notAFile, path}});
  }
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    return Unexpected(
        VectorInputError{{InputCode::notRead, path, "", std::error_code(errno, std::generic_category())}});
  }
  return contentsOfStream(stream, path);
}

Status forEachVector(const Arguments& arguments, const std::function<Status(const GivenVector&)>& work) {
  const auto path = arguments.value("from");
  if (!path) {
    GivenVector vector;
    vector.words.assign(arguments.words.begin(), arguments.words.end());
    return work(vector);
  }
  const std::string contents = valueOf(contentsOfInput(*path));
  auto vectors = vectorsOfText(contents);
  if (!vectors) {
    vectors.error().place = *path == "-" ? "standard input" : *path;
    throw CommandError(vectors.error());
  }
  if (vectors->size() > 1 && arguments.has("null")) {
    throw CommandError("several vectors would run together with --null; use --json or --shell");
  }
  Status status = done;
  const auto report = [&status](std::string_view message) {
    std::cerr << "meridian: " << message << '\n';
    status = failed;
  };
  for (ReadVector& vector : *vectors) {
    if (!vector) {
      report(vector.error().message());
      continue;
    }
    vector->inBatch = vectors->size() > 1;
    try {
      if (work(*vector) != done) status = failed;
    } catch (const CommandError& error) {
      report(vector->place() + error.what());
    }
  }
  return status;
}

void printGivenVector(const std::vector<std::string>& vector, const GivenVector& given, const Arguments& arguments) {
  if (given.inBatch && !arguments.has("json")) {
    std::cout << shellLine(vector) << '\n';
    return;
  }
  printVector(vector, arguments, given.isFromFile() ? JsonForm::oneLine : JsonForm::indented);
}

Option fromOption() {
  return {.kind = Option::Kind::value,
          .name = "from",
          .help = "Read the argument vector, or one on each line, from this file or pipe, or from standard input (-)",
          .valueName = "FILE",
          .path = true};
}

const std::string_view fromDetails =
    "The FILE of --from may hold, recognised by its content:\n"
    "  a JSON store, as \"meridian parse\" prints it\n"
    "  a JSON list of words: [\"-vr\", \"25\"]\n"
    "  words that end with a NUL, as \"meridian render --null\" prints them\n"
    "  words quoted as for a shell: -out '/out/A 1.mov' -overwrite\n"
    "Several stand one on each line; words with NULs have a newline after the last NUL of each vector. Lines that are\n"
    "blank or begin with # are skipped. A store is worked on as it is; explain shows what a reader of its rendered "
    "words gets.\n"
    "Messages then begin with the number of the line, all lines are worked on, and the exit status is 1 if one fails.\n"
    "Shell words are split by the shell's quotes (' \" \\) alone: nothing is expanded or run, and an unquoted\n"
    "$ ` * ? [ { ; | & < > ( ) is an error, as are # and ~ at the beginning of a word.";

}  // namespace meridian::command
