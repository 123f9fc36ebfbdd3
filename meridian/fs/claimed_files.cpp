#include "meridian/fs/claimed_files.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/fs/name_rules.h"
#include "meridian/fs/name_schemes.h"
#include "meridian/platform/exclusive_file.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {
namespace {

using Claim = Expected<std::vector<ClaimedFile>, ClaimError>;

ClaimError errorOf(ClaimErrorCode code, std::string_view place, const std::error_code& systemError = {}) {
  return {{code, std::string(place), {}, systemError}, {}};
}

/// Creates the files of one claim.
class FileCreator {
 public:
  FileCreator() = default;
  FileCreator(const FileCreator&) = delete;
  FileCreator& operator=(const FileCreator&) = delete;
  /// Removes what was created, unless it is kept.
  ~FileCreator() {
    for (const CreatedFile& file : created_) {
      [[maybe_unused]] const std::error_code notRemoved = removeEmptyFile(file.path, file.identity);
    }
  }

  /// Returns true if one of the paths is in use; otherwise creates their files. Returns false after an error, too: no
  /// other number would help.
  bool areTaken(std::span<const std::string> paths) {
    // Skips names that have long been in use without creating and removing files.
    if (std::ranges::any_of(paths, nameIsTaken)) return true;
    // All processes create files in the same order: of two that want the same files one gets all of them.
    std::vector<std::string> ordered(paths.begin(), paths.end());
    std::ranges::sort(ordered);
    created_.reserve(ordered.size());
    for (std::string& path : ordered) {
      const auto identity = createExclusiveFile(path);
      if (!identity) {
        if (identity.error() == std::errc::filename_too_long) {
          error_ = errorOf(ClaimErrorCode::nameTooLong, path, identity.error());
        } else if (identity.error() != std::errc::file_exists) {
          error_ = errorOf(ClaimErrorCode::notCreated, path, identity.error());
        } else if (isCreated(path)) {
          error_ = errorOf(ClaimErrorCode::sameFile, path);
        }
        removeCreated();
        return !error_;
      }
      created_.push_back({std::move(path), *identity});
    }
    return false;
  }

  [[nodiscard]] const std::optional<ClaimError>& error() const noexcept { return error_; }

  void keep() noexcept { created_.clear(); }

 private:
  struct CreatedFile {
    std::string path;
    FileIdentity identity;
  };

  /// Returns true if a file of this claim also has this path.
  [[nodiscard]] bool isCreated(const std::string& path) const {
    const auto identity = fileIdentity(path);
    return identity && std::ranges::find(created_, *identity, &CreatedFile::identity) != created_.end();
  }

  void removeCreated() {
    for (const CreatedFile& file : created_) {
      const std::error_code error = removeEmptyFile(file.path, file.identity);
      if (!error) continue;
      if (!error_) error_ = errorOf(ClaimErrorCode::notRemoved, file.path, error);
      error_->leftBehind.push_back(Url::fromFilePath(file.path));
    }
    created_.clear();
  }

  std::vector<CreatedFile> created_;
  std::optional<ClaimError> error_;
};

/// Creates the files at the first paths of the scheme that are unused. The extensions are those of the paths in turn;
/// there may be none.
template <typename Scheme>
Claim claimOf(const Scheme& scheme, std::span<const std::string> extensions = {}) {
  FileCreator creator;
  const std::string suffix =
      detail::unusedSuffix(scheme, [&creator](std::span<const std::string> paths) { return creator.areTaken(paths); });
  if (creator.error()) return Unexpected(*creator.error());
  std::vector<ClaimedFile> files;
  for (std::string& path : scheme.paths(suffix)) {
    const std::size_t place = files.size();
    files.push_back({Url::fromFilePath(std::move(path)),
                     extensions.empty() ? std::string() : extensions[place % extensions.size()]});
  }
  creator.keep();
  return files;
}

Claim unusableName(std::string_view name) { return Unexpected(errorOf(ClaimErrorCode::unusableName, name)); }

Expected<void, ClaimError> checkFileUrls(std::span<const Url> urls) {
  const auto other = std::ranges::find_if_not(urls, &Url::isFile);
  if (other == urls.end()) return {};
  return Unexpected(errorOf(ClaimErrorCode::notAFileUrl, other->text()));
}

/// Returns the directories without those that are the same as an earlier one, where a file would collide with itself.
std::vector<Url> distinctDirectories(std::span<const Url> directories) {
  std::vector<Url> distinct;
  std::vector<FileIdentity> identities;
  for (const Url& directory : directories) {
    const auto identity = targetIdentity(directory.path());
    if (identity && std::ranges::find(identities, *identity) != identities.end()) continue;
    if (identity) identities.push_back(*identity);
    distinct.push_back(directory);
  }
  return distinct;
}

}  // namespace

std::string ClaimError::message() const {
  std::string text = Error::message();
  if (leftBehind.empty()) return text;
  text += "; left behind, empty:";
  for (const Url& url : leftBehind) text += " " + inQuotes(url.path());
  return text;
}

Claim claimFile(const Url& path) {
  if (const auto checked = checkFileUrls({&path, 1}); !checked) return Unexpected(checked.error());
  if (!pathNamesFile(path.path())) return unusableName(path.path());
  return claimOf(detail::PathScheme(path));
}

Claim claimFileAmongstDirectories(std::string_view baseName, std::span<const Url> directories,
                                  std::optional<std::string_view> pathExtension) {
  if (const auto checked = checkFileUrls(directories); !checked) return Unexpected(checked.error());
  const std::vector<Url> distinct = distinctDirectories(directories);
  const detail::NameScheme scheme(baseName, distinct, pathExtension);
  if (baseName.empty()) return unusableName(baseName);
  if (const std::string name = scheme.name({}); !isFileName(name)) return unusableName(name);
  return claimOf(scheme);
}

Claim claimConsistentFiles(std::span<const Url> directories, std::string_view fileName,
                           std::span<const std::string> extensions) {
  if (const auto checked = checkFileUrls(directories); !checked) return Unexpected(checked.error());
  const std::vector<Url> distinct = distinctDirectories(directories);
  const detail::SetScheme scheme(distinct, fileName, extensions);
  if (fileName.empty()) return unusableName(fileName);
  for (const std::string& extension : extensions) {
    if (const std::string name = scheme.name({}, extension); !isFileName(name)) return unusableName(name);
  }
  return claimOf(scheme, scheme.extensions());
}

}  // namespace meridian::inline v0_2
