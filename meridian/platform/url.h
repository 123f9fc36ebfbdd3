// Addresses of files.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

namespace meridian {

/// The address of a file, made from its path: any bytes, as they are.
class Url {
 public:
  [[nodiscard]] static Url fromFilePath(std::string path) { return Url(std::move(path)); }

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  friend bool operator==(const Url&, const Url&) = default;

 private:
  explicit Url(std::string path) : path_(std::move(path)) {}

  std::string path_;
};

}  // namespace meridian

template <>
struct std::hash<meridian::Url> {
  [[nodiscard]] std::size_t operator()(const meridian::Url& url) const noexcept {
    return std::hash<std::string>{}(url.path());
  }
};
