// A folder held open: its entries, and what lies in it, whatever its path is called meanwhile.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/platform/file_identity.h"
#include "meridian/platform/item_kind.h"

namespace meridian::inline v0_2 {

/// An open folder, or why it could not be opened.
class OpenFolder {
 public:
  /// The folder at a path; links are followed.
  explicit OpenFolder(const std::string& path);
  /// A folder within another one, by its name. A link is refused, wherever it leads.
  OpenFolder(const OpenFolder& parent, const char* name);

  OpenFolder(const OpenFolder&) = delete;
  OpenFolder& operator=(const OpenFolder&) = delete;
  OpenFolder(OpenFolder&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)), error_(other.error_) {}
  OpenFolder& operator=(OpenFolder&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(error_, other.error_);
    return *this;
  }
  ~OpenFolder() { close(); }

  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }
  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }
  void close() noexcept;

  /// Which folder it is; absent where the system does not say.
  [[nodiscard]] std::optional<FileIdentity> identity() const noexcept;

  /// Whether an item in the folder is a directory, or a link that leads to one. Where the system cannot say it is none,
  /// and the fault tells why; a link that leads nowhere or in a circle has none.
  [[nodiscard]] bool leadsToDirectory(const char* name, std::error_code& fault) const noexcept;

 private:
  friend class FolderEntries;

  int descriptor_ = -1;
  std::error_code error_;
};

struct FolderEntry {
  /// Valid until the next entry is read.
  std::string_view name;
  ItemKind kind = ItemKind::file;
};

/// Reads the entries of a folder but for "." and "..", in the order in which the file system has them. Where it does
/// not tell the kind with the name, each item is asked: one that is gone is left out, one that cannot be read is
/// `other`.
class FolderEntries {
 public:
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the system fills the records.
  explicit FolderEntries(const OpenFolder& folder) noexcept : descriptor_(folder.descriptor_) {}

  /// The next entry; absent at the end, and after an error.
  [[nodiscard]] std::optional<FolderEntry> next() noexcept;

  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }

 private:
  int descriptor_;
  std::size_t place_ = 0;
  std::size_t end_ = 0;
  std::error_code error_;
  alignas(std::uint64_t) std::array<char, 32768> records_;
};

}  // namespace meridian::inline v0_2
