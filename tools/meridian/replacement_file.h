// A file that takes another's place only when it is complete.
#pragma once

#include <string>

namespace meridian::command {

/// A new file beside `path`, with the same extension and a name of its own, which goes away with this object unless it
/// took the place of `path`. Where `path` is a symbolic link, the file that it leads to is replaced.
class ReplacementFile {
 public:
  /// Throws CommandError where no file can be made there, or where something stands that is no file that may be written
  /// to.
  explicit ReplacementFile(const std::string& path);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ReplacementFile(ReplacementFile&&) = delete;
  ReplacementFile& operator=(ReplacementFile&&) = delete;
  ~ReplacementFile();

  /// Where to write.
  [[nodiscard]] const std::string& path() const noexcept { return temporary_; }

  /// Puts the new file in the place of the old one, whose permissions it takes over.
  void take();

 private:
  std::string target_;
  std::string temporary_;
};

}  // namespace meridian::command
