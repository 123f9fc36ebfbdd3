#include "meridian/platform/path_text.h"

#include <algorithm>

#include "meridian/platform/url_text.h"

namespace meridian::inline v0_2 {

std::string_view withoutTrailingSeparators(std::string_view path) noexcept {
  return path.substr(0, path.find_last_not_of('/') + 1);  // npos + 1 is 0
}

std::string_view lastPathComponent(std::string_view path) noexcept {
  path = withoutTrailingSeparators(path);
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0: the whole path
}

std::string_view pathExtension(std::string_view path) noexcept {
  const std::string_view name = lastPathComponent(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

std::string_view deletingLastPathComponent(std::string_view path) noexcept {
  const std::size_t nameSize = lastPathComponent(path).size();
  const std::string_view rest = withoutTrailingSeparators(path);
  const std::string_view directory = withoutTrailingSeparators(rest.substr(0, rest.size() - nameSize));
  if (!directory.empty()) return directory;
  return path.starts_with('/') ? path.substr(0, 1) : ".";
}

std::string deletingPathExtension(std::string_view path) {
  const std::size_t extensionSize = pathExtension(path).size();
  if (extensionSize == 0) return std::string(path);
  std::string result(path);
  return result.erase(withoutTrailingSeparators(path).size() - extensionSize - 1, extensionSize + 1);
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
  component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));
  std::string result;
  result.reserve(path.size() + 1 + component.size());
  result += path;
  if (!path.empty() && !path.ends_with('/') && !component.empty()) result += '/';
  return result += component;
}

std::vector<std::string_view> pathComponents(std::string_view path) {
  std::vector<std::string_view> components;
  if (path.starts_with('/')) components.push_back(path.substr(0, 1));
  for (;;) {
    const std::size_t begin = path.find_first_not_of('/');
    if (begin == std::string_view::npos) return components;
    path.remove_prefix(begin);
    const std::size_t size = std::min(path.find('/'), path.size());
    components.push_back(path.substr(0, size));
    path.remove_prefix(size);
  }
}

std::string standardizedPath(std::string_view path) {
  const bool isAbsolute = path.starts_with('/');
  std::vector<std::string_view> kept;
  for (const std::string_view component : pathComponents(path)) {
    if (component == "/" || component == ".") continue;
    const bool removesLast = component == ".." && !kept.empty() && kept.back() != "..";
    if (removesLast) {
      kept.pop_back();
    } else if (component != ".." || !isAbsolute) {
      kept.push_back(component);
    }
  }
  std::string result(isAbsolute ? "/" : "");
  result.reserve(path.size());
  for (const std::string_view component : kept) {
    if (!result.empty() && !result.ends_with('/')) result += '/';
    result += component;
  }
  return result.empty() && !path.empty() ? "." : result;
}

std::string pathOfUrl(std::string_view pathOrUrl) {
  const auto url = splitUrl(pathOrUrl);
  return url && url->authority ? percentDecoded(url->path) : std::string(pathOrUrl);
}

}  // namespace meridian::inline v0_2
