// The three schemes by which output names get a number, as free names and claimed files share them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2::detail {

/// A single path: "/out/clip.mov", "/out/clip 2.mov".
class PathScheme {
 public:
  static constexpr char mark = ' ';

  explicit PathScheme(const Url& path);

  /// The path with this text behind the whole name; without one the path as it is.
  [[nodiscard]] std::vector<std::string> paths(std::string_view suffix) const;

 private:
  const std::string& path_;
  std::string_view directory_;
  std::string_view base_;
  std::string extensionPart_;
};

/// A name in several directories: "clip.mov", "clip 2.mov".
class NameScheme {
 public:
  static constexpr char mark = ' ';

  NameScheme(std::string_view baseName, std::span<const Url> directories, std::optional<std::string_view> extension)
      : baseName_(baseName), directories_(directories), extension_(extension) {}

  [[nodiscard]] std::string name(std::string_view suffix) const;
  [[nodiscard]] std::vector<std::string> paths(std::string_view suffix) const;

 private:
  std::string_view baseName_;
  std::span<const Url> directories_;
  std::optional<std::string_view> extension_;
};

/// Files that belong together, in one directory or several: "clip.mov" and "clip.xml", "clip-2.mov" and "clip-2.xml".
class SetScheme {
 public:
  static constexpr char mark = '-';

  SetScheme(std::span<const Url> directories, std::string_view fileName, std::span<const std::string> extensions);

  /// Each extension once, in the order given.
  [[nodiscard]] std::span<const std::string> extensions() const noexcept { return extensions_; }
  [[nodiscard]] std::string name(std::string_view suffix, std::string_view extension) const;

  /// The paths of one directory after the other, each time one for every extension.
  [[nodiscard]] std::vector<std::string> paths(std::string_view suffix) const;

 private:
  std::span<const Url> directories_;
  std::string_view fileName_;
  std::vector<std::string> extensions_;
};

/// The text for the number before this one; the first is 2. Stops the process where none is left.
[[nodiscard]] std::string nextSuffix(char mark, std::int64_t& number);

/// The first suffix (none, then the scheme's mark with 2, 3 and so on) whose paths are not taken.
template <typename Scheme>
[[nodiscard]] std::string freeSuffix(const Scheme& scheme,
                                     FunctionRef<bool(std::span<const std::string> paths)> areTaken) {
  std::string suffix;
  std::int64_t number = 1;
  while (areTaken(scheme.paths(suffix))) suffix = nextSuffix(Scheme::mark, number);
  return suffix;
}

}  // namespace meridian::inline v0_2::detail
