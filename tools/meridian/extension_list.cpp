#include "tools/meridian/extension_list.h"

#include <algorithm>

#include "meridian/base/printable.h"

namespace meridian::command {
namespace {

std::string readExtension(std::string_view option, std::string_view value, std::string_view extension) {
  const auto reject = [&](const std::string& why) {
    throw CommandError("--" + std::string(option) + " " + why + ": " + inQuotes(value));
  };
  if (extension.empty() && !value.empty()) reject("has an empty extension; remove the extra comma");
  if (extension.starts_with('.')) extension.remove_prefix(1);
  if (extension.find('/') != std::string_view::npos) reject("must not contain a separator");
  return std::string(extension);
}

}  // namespace

std::vector<std::string> readExtensionList(const Arguments& arguments, std::string_view option) {
  std::vector<std::string> extensions;
  const auto given = arguments.given.find(option);
  if (given == arguments.given.end()) return extensions;
  for (const std::string& value : given->second) {
    for (std::size_t begin = 0; begin <= value.size();) {
      const std::size_t end = std::min(value.find(',', begin), value.size());
      std::string extension = readExtension(option, value, std::string_view(value).substr(begin, end - begin));
      if (std::ranges::find(extensions, extension) == extensions.end()) extensions.push_back(std::move(extension));
      begin = end + 1;
    }
  }
  return extensions;
}

}  // namespace meridian::command
