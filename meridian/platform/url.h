/// \file
/// URLs of files and other resources. For example:
///
///     const Url clip = Url::fromFilePath("/card/clip.mov");
///     clip.deletingPathExtension().path();        // "/card/clip"
///     Url::fromText("https://host/a%20b.mov")->path();  // "/a b.mov"
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

/// Holds a scheme, a path of any bytes, and, unless it is a file URL, the text before and after the path. Operations on
/// the path follow path_text.h, do not ask the file system, and keep everything except the path.
class Url {
 public:
  /// Makes a file URL with the path as given: relative paths stay relative, trailing separators and percent signs stay.
  [[nodiscard]] static Url fromFilePath(std::string path) { return {std::move(path), nullptr}; }

  /// Parses a URL (RFC 3986): "https://host/a%20b.mov?x=1". Absent if it has no scheme, an invalid character (a blank,
  /// a byte beyond ASCII) or a "%" without two hexadecimal digits. "file:" without a host or with "localhost", and
  /// without a query or fragment, gives a file URL. An encoded "/" in a path becomes a separator.
  [[nodiscard]] MERIDIAN_API static std::optional<Url> fromText(std::string_view text);

  /// Returns the text that `fromText` parses to an equal URL. A relative file path gives "file:clip.mov".
  [[nodiscard]] MERIDIAN_API std::string text() const;

  /// Returns the scheme as written, capitals included, as a view into this URL; "file" for a file URL. Schemes are
  /// case-sensitive here: "FILE:///a" is not a file URL.
  [[nodiscard]] std::string_view scheme() const noexcept {
    return affixes_ == nullptr ? "file" : std::string_view(affixes_->beforePath).substr(0, schemeSize());
  }

  /// Returns true for a file URL.
  [[nodiscard]] bool isFile() const noexcept { return affixes_ == nullptr; }

  /// Returns the path, percent-decoded.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Return the last component of the path, its extension without a dot, and all components, as views into this URL;
  /// empty if there are none.
  [[nodiscard]] std::string_view lastPathComponent() const noexcept { return meridian::lastPathComponent(path_); }
  [[nodiscard]] std::string_view pathExtension() const noexcept { return meridian::pathExtension(path_); }
  [[nodiscard]] std::vector<std::string_view> pathComponents() const { return meridian::pathComponents(path_); }

  /// Returns the URL without the extension of its path.
  [[nodiscard]] Url deletingPathExtension() const { return withPath(meridian::deletingPathExtension(path_)); }
  /// Returns the URL with its path standardized, as by `standardizedPath`.
  [[nodiscard]] Url standardized() const { return withPath(standardizedPath(path_)); }

  /// Return the URL without its last component, and with one more. In a URL with a host, an empty path counts as the
  /// root "/".
  [[nodiscard]] Url deletingLastPathComponent() const {
    return withPath(std::string(meridian::deletingLastPathComponent(rootedPath())));
  }
  [[nodiscard]] Url appendingPathComponent(std::string_view component) const {
    return withPath(meridian::appendingPathComponent(rootedPath(), component));
  }

  /// Compares all parts byte for byte.
  friend bool operator==(const Url& left, const Url& right) noexcept {
    const Affixes* const a = left.affixes_.get();
    const Affixes* const b = right.affixes_.get();
    return left.path_ == right.path_ && (a == b || (a != nullptr && b != nullptr && *a == *b));
  }

 private:
  /// The text before and after the path of a URL that is not a file URL.
  struct Affixes {
    std::string beforePath;
    std::string afterPath;

    bool operator==(const Affixes&) const = default;
  };

  Url(std::string path, std::shared_ptr<const Affixes> affixes)
      : path_(std::move(path)), affixes_(std::move(affixes)) {}

  [[nodiscard]] Url withPath(std::string path) const { return {std::move(path), affixes_}; }
  [[nodiscard]] std::size_t schemeSize() const noexcept { return affixes_->beforePath.find(':'); }
  [[nodiscard]] bool hasAuthority() const noexcept {
    return affixes_ != nullptr && affixes_->beforePath.size() > schemeSize() + 1;
  }
  [[nodiscard]] std::string_view rootedPath() const noexcept {
    return hasAuthority() && path_.empty() ? std::string_view("/") : path_;
  }

  std::string path_;
  /// Null for a file URL, which then costs no more than its path.
  std::shared_ptr<const Affixes> affixes_;
};

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::Url> {
  [[nodiscard]] std::size_t operator()(const meridian::Url& url) const noexcept {
    return std::hash<std::string>{}(url.path());
  }
};
