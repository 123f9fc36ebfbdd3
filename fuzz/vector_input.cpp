// Words quoted as for a shell, and JSON documents from outside.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "fuzz/require.h"
#include "tools/meridian/shell_words.h"
#include "tools/meridian/strict_json.h"

using namespace meridian;
using namespace meridian::command;
using fuzz::require;

namespace {

void checkShellText(std::string_view text) {
  std::size_t lastLine = 0;
  for (ShellReader reader(text); !reader.atEnd();) {
    const auto line = reader.read();
    const std::size_t number = line ? line->line : line.error().line;
    require(number > lastLine, "each line is read once, in order");
    lastLine = number;
    if (!line) continue;
    if (line->words.empty()) continue;
    const std::string quoted = shellLine(line->words);
    ShellReader reread(quoted);
    require(!reread.atEnd(), "quoted words are a line");
    const auto words = reread.read();
    require(words && words->words == line->words && reread.atEnd(), "quoted words read back unchanged");
  }
}

void checkJson(std::string_view text) {
  const auto document = parseStrictJson(text);
  if (!document) {
    require(!document.error().message().empty(), "an error says why");
    return;
  }
  require(Json::accept(text), "what is read is JSON");
  require(parseStrictJson(document->dump()).has_value(), "a document that was read is read again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  checkShellText(text);
  checkJson(text);
  return 0;
}
