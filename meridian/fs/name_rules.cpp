#include "meridian/fs/name_rules.h"

#include "meridian/base/text.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {

bool pathNamesFile(std::string_view path) noexcept {
  return isFileName(lastPathComponent(path)) && !path.ends_with('/') && path.find('\0') == std::string_view::npos;
}

std::string removingDisallowedCharacters(std::string_view text, CharacterSet disallowedCharactersSet) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::string_view character = text.substr(0, firstUnit(text).length);
    if (!disallowedCharactersSet.contains(character)) result += character;
    text.remove_prefix(character.size());
  }
  return result;
}

std::string removingAllExcept(std::string_view text, CharacterSet allowedCharactersSet) {
  return removingDisallowedCharacters(text, allowedCharactersSet.inverted());
}

std::string removingInvalidLtfsCharacters(std::string_view text) {
  return removingDisallowedCharacters(text, invalidLtfsCharacters);
}

std::string removingDisallowedMacOSFilesystemCharacters(std::string_view text) {
  return removingDisallowedCharacters(text, disallowedMacOSCharacters);
}

}  // namespace meridian::inline v0_2
