/// \file
/// Read a directory through an open handle, which keeps naming it when its path changes. For example:
///
///     const OpenDirectory directory("/Volumes/CARD01");
///     DirectoryEntries entries(directory);
///     while (const auto entry = entries.next()) print(entry->name);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/base/expected.h"
#include "meridian/platform/file_identity.h"
#include "meridian/platform/item_kind.h"

namespace meridian::inline v0_2 {

/// Holds a directory open, like a stream: closed after an error, which `error` returns.
class OpenDirectory {
 public:
  /// Opens the directory at a path. Follows links.
  explicit OpenDirectory(const std::string& path);
  /// Opens a directory inside another one by its name. Does not follow links: one is an error.
  OpenDirectory(const OpenDirectory& parent, const char* name);

  OpenDirectory(const OpenDirectory&) = delete;
  OpenDirectory& operator=(const OpenDirectory&) = delete;
  OpenDirectory(OpenDirectory&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)), error_(other.error_) {}
  OpenDirectory& operator=(OpenDirectory&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(error_, other.error_);
    return *this;
  }
  ~OpenDirectory() { close(); }

  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }
  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }
  void close() noexcept;

  /// Returns the directory's identity; absent if the system cannot say.
  [[nodiscard]] std::optional<FileIdentity> identity() const noexcept;

  /// Returns whether the item inside the directory is a directory or a link to one; false for a dangling or circular
  /// link. An error if the system cannot say, or if this directory could not be opened.
  [[nodiscard]] Expected<bool, std::error_code> leadsToDirectory(const char* name) const noexcept;

 private:
  friend class DirectoryEntries;

  int descriptor_ = -1;
  std::error_code error_;
};

struct DirectoryEntry {
  /// Followed by a NUL; valid until the next entry is read.
  std::string_view name;
  ItemKind kind = ItemKind::file;
};

/// Reads the entries of a directory in the file system's order, except "." and "..". Where the file system does not
/// store the kind with the name, each item is queried: one that is gone is skipped, one that cannot be read is `other`.
class DirectoryEntries {
 public:
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the system fills the records.
  explicit DirectoryEntries(const OpenDirectory& directory) noexcept : descriptor_(directory.descriptor_) {}

  /// Returns the next entry; absent at the end and after an error.
  [[nodiscard]] std::optional<DirectoryEntry> next() noexcept;

  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }

 private:
  int descriptor_;
  std::size_t place_ = 0;
  std::size_t end_ = 0;
  std::error_code error_;
  alignas(std::uint64_t) std::array<char, 32768> records_;
};

}  // namespace meridian::inline v0_2
