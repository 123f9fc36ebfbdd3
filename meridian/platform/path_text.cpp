#include "meridian/platform/path_text.h"

namespace meridian {

std::string_view lastPathComponent(std::string_view path) noexcept {
  const std::size_t last = path.find_last_not_of('/');
  if (last == std::string_view::npos) return {};
  path = path.substr(0, last + 1);
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0: the whole path
}

std::string_view pathExtension(std::string_view path) noexcept {
  const std::string_view name = lastPathComponent(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

}  // namespace meridian
