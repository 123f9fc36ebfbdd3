// URLs, paths and names of any bytes: properties that hold for all of them.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/require.h"
#include "meridian/fs/name_rules.h"
#include "meridian/platform/url.h"

using namespace meridian;
using fuzz::require;

namespace {

void checkUrl(const Url& url) {
  require(Url::fromText(url.text()) == url, "a URL round-trips through its text");
  const Url standardized = url.standardized();
  require(standardized.standardized() == standardized, "standardizing twice changes nothing");
  const std::string name(url.lastPathComponent());
  const Url directory = url.deletingLastPathComponent();
  if (!name.empty()) {
    require(directory.appendingPathComponent(name).standardized() == standardized,
            "a directory and a name make the path");
  }
  for (const Url& derived : {standardized, directory, url.deletingPathExtension(), url.appendingPathComponent(name)}) {
    require(derived.scheme() == url.scheme(), "the scheme is kept");
    require(Url::fromText(derived.text()) == derived, "a URL derived from another round-trips through its text");
  }
}

void checkNames(const std::string& text) {
  const CharacterSet own(std::string_view(text).substr(0, text.size() / 2));
  for (const CharacterSet& set : {validLtfsCharacters, disallowedMacOSCharacters, own}) {
    const std::string removed = removingDisallowedCharacters(text, set);
    const std::string kept = removingAllExcept(text, set);
    require(removed.size() + kept.size() == text.size(), "each character is either in the set or not");
    require(removingAllExcept(kept, set) == kept, "filtering twice changes nothing");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  checkUrl(Url::fromFilePath(text));
  if (const auto url = Url::fromText(text)) {
    require(text.starts_with(url->scheme()), "the scheme is as written");
    const bool hasAuthority = text.substr(url->scheme().size()).starts_with("://");
    require(pathOfUrl(text) == (hasAuthority ? url->path() : text), "both ways give the same path");
    checkUrl(*url);
  }
  checkNames(text);
  return 0;
}
