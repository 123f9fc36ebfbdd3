// Addresses of files and of what lies elsewhere.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/export.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {

/// An address: a scheme, a path of any bytes, and for what is no plain file what else its text says. The operations on
/// the path follow the rules of path_text.h, ask the file system nothing, and leave everything beside the path as it
/// is.
class Url {
 public:
  /// The address of a file, its path as it is given: relative ones stay relative, separators at the end and percent
  /// signs stay.
  [[nodiscard]] static Url fromFilePath(std::string path) { return {std::move(path), nullptr}; }

  /// Reads a text by RFC 3986: "https://host/a%20b.mov?x=1". Absent where it is no URL: no scheme, characters that none
  /// may show (blanks, bytes beyond ASCII), a "%" without two hexadecimal digits. "file:" with no host, or "localhost",
  /// and nothing behind its path is the address of a file. An encoded "/" in a path becomes a separator.
  [[nodiscard]] MERIDIAN_API static std::optional<Url> fromText(std::string_view text);

  /// The address as `fromText` reads it back to an equal one. A relative file path gives "file:clip.mov".
  [[nodiscard]] MERIDIAN_API std::string text() const;

  /// As it is written, capitals included; "file" for the address of a file. A view into this address. Schemes are
  /// compared as they are written: "FILE:///a" is no address of a file.
  [[nodiscard]] std::string_view scheme() const noexcept {
    return surroundings_ == nullptr ? "file" : std::string_view(surroundings_->beforePath).substr(0, schemeSize());
  }

  /// Whether it is the address of a file.
  [[nodiscard]] bool isFile() const noexcept { return surroundings_ == nullptr; }

  /// The path, percent-decoded.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Views into this address.
  [[nodiscard]] std::string_view lastPathComponent() const noexcept { return meridian::lastPathComponent(path_); }
  [[nodiscard]] std::string_view pathExtension() const noexcept { return meridian::pathExtension(path_); }
  [[nodiscard]] std::vector<std::string_view> pathComponents() const { return meridian::pathComponents(path_); }

  [[nodiscard]] Url deletingPathExtension() const { return withPath(meridian::deletingPathExtension(path_)); }
  [[nodiscard]] Url standardized() const { return withPath(standardizedPath(path_)); }

  /// As on its path; but where the address has a host, an empty path counts as its root "/".
  [[nodiscard]] Url deletingLastPathComponent() const {
    return withPath(std::string(meridian::deletingLastPathComponent(rootedPath())));
  }
  [[nodiscard]] Url appendingPathComponent(std::string_view component) const {
    return withPath(meridian::appendingPathComponent(rootedPath(), component));
  }

  /// Whether all parts are the same, byte for byte.
  friend bool operator==(const Url& left, const Url& right) noexcept {
    const Surroundings* const a = left.surroundings_.get();
    const Surroundings* const b = right.surroundings_.get();
    return left.path_ == right.path_ && (a == b || (a != nullptr && b != nullptr && *a == *b));
  }

 private:
  /// What stands before and behind the path in the text of an address that is no plain file's.
  struct Surroundings {
    std::string beforePath;
    std::string behindPath;

    bool operator==(const Surroundings&) const = default;
  };

  Url(std::string path, std::shared_ptr<const Surroundings> surroundings)
      : path_(std::move(path)), surroundings_(std::move(surroundings)) {}

  [[nodiscard]] Url withPath(std::string path) const { return {std::move(path), surroundings_}; }
  [[nodiscard]] std::size_t schemeSize() const noexcept { return surroundings_->beforePath.find(':'); }
  [[nodiscard]] bool hasAuthority() const noexcept {
    return surroundings_ != nullptr && surroundings_->beforePath.size() > schemeSize() + 1;
  }
  [[nodiscard]] std::string_view rootedPath() const noexcept {
    return hasAuthority() && path_.empty() ? std::string_view("/") : path_;
  }

  std::string path_;
  /// Null for the address of a file, so that one is as cheap as its path.
  std::shared_ptr<const Surroundings> surroundings_;
};

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::Url> {
  [[nodiscard]] std::size_t operator()(const meridian::Url& url) const noexcept {
    return std::hash<std::string>{}(url.path());
  }
};
