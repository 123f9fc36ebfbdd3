#include "meridian/fs/claimed_files.h"

#include <algorithm>
#include <utility>

#include "meridian/fs/name_schemes.h"
#include "meridian/platform/exclusive_file.h"
#include "meridian/platform/file_queries.h"
#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {
namespace {

/// Makes the files of one claim.
class FileMaker {
 public:
  /// Whether one of the paths is taken; where none is, their files are made. After a refusal none counts as taken,
  /// since no other number would help.
  bool areTaken(std::span<const std::string> paths) {
    // Names that were taken long ago are passed over without making and removing files.
    if (std::ranges::any_of(paths, nameIsTaken)) return true;
    // One order for all processes: of two that want the same files one gets them all, and not each the other's last.
    std::vector<std::string> ordered(paths.begin(), paths.end());
    std::ranges::sort(ordered);
    made_.reserve(ordered.size());
    for (std::string& path : ordered) {
      const auto identity = createExclusiveFile(path);
      if (!identity) {
        if (identity.error() != std::errc::file_exists) {
          refuse(reasonOf(identity.error()), path, identity.error());
        } else if (isMade(path)) {
          refuse(ClaimRefusalReason::sameFile, path, {});
        }
        removeMade();
        return !refusal_;
      }
      made_.push_back({std::move(path), *identity});
    }
    return false;
  }

  [[nodiscard]] const std::optional<ClaimRefusal>& refusal() const noexcept { return refusal_; }

 private:
  struct MadeFile {
    std::string path;
    FileIdentity identity;
  };

  static ClaimRefusalReason reasonOf(const std::error_code& error) {
    return error == std::errc::filename_too_long ? ClaimRefusalReason::nameTooLong : ClaimRefusalReason::notMade;
  }

  /// Whether a file of this claim has the path as another of its names.
  [[nodiscard]] bool isMade(const std::string& path) const {
    const auto identity = fileIdentity(path);
    return identity && std::ranges::find(made_, *identity, &MadeFile::identity) != made_.end();
  }

  void refuse(ClaimRefusalReason reason, const std::string& path, const std::error_code& error) {
    refusal_ = ClaimRefusal{reason, Url::fromFilePath(path), error, {}};
  }

  void removeMade() {
    for (const MadeFile& file : made_) {
      const std::error_code error = removeEmptyFile(file.path, file.identity);
      if (!error) continue;
      if (!refusal_) refuse(ClaimRefusalReason::notRemoved, file.path, error);
      refusal_->leftBehind.push_back(Url::fromFilePath(file.path));
    }
    made_.clear();
  }

  std::vector<MadeFile> made_;
  std::optional<ClaimRefusal> refusal_;
};

/// The claim of the first paths of the scheme that can be had.
template <typename Scheme>
FileClaim claimOf(const Scheme& scheme) {
  FileMaker maker;
  const std::string suffix =
      detail::freeSuffix(scheme, [&maker](std::span<const std::string> paths) { return maker.areTaken(paths); });
  FileClaim claim{{}, maker.refusal()};
  if (claim.refusal) return claim;
  for (std::string& path : scheme.paths(suffix)) claim.files.push_back({Url::fromFilePath(std::move(path)), {}});
  return claim;
}

FileClaim refusalOfName(std::string_view name) {
  return {{}, ClaimRefusal{ClaimRefusalReason::unusableName, Url::fromFilePath(std::string(name)), {}, {}}};
}

/// Whether a file can have the name.
bool isFileName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

/// The refusal of the first directory that is no file address; absent where all are.
std::optional<FileClaim> refusalOfDirectories(std::span<const Url> directories) {
  const auto unusable = std::ranges::find_if_not(directories, &Url::isFile);
  if (unusable == directories.end()) return std::nullopt;
  return FileClaim{{}, ClaimRefusal{ClaimRefusalReason::noFileAddress, *unusable, {}, {}}};
}

/// The directories without those that lead to the folder of another before them, where a file would be in its own way.
std::vector<Url> distinctFolders(std::span<const Url> directories) {
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

std::string ClaimRefusal::message() const {
  std::string text(description(reason));
  if (systemError) text += ": " + systemError.message();
  if (!leftBehind.empty()) text += " (empty files left behind: " + std::to_string(leftBehind.size()) + ")";
  return text;
}

FileClaim claimFile(const Url& path) {
  if (auto refusal = refusalOfDirectories({&path, 1})) return *std::move(refusal);
  if (!isFileName(path.lastPathComponent()) || path.path().ends_with('/') || detail::holdsNul(path.path()))
    return refusalOfName(path.path());
  return claimOf(detail::PathScheme(path));
}

FileClaim claimFileAmongstDirectories(std::string_view baseName, std::span<const Url> directories,
                                      std::optional<std::string_view> pathExtension) {
  if (auto refusal = refusalOfDirectories(directories)) return *std::move(refusal);
  const std::vector<Url> folders = distinctFolders(directories);
  const detail::NameScheme scheme(baseName, folders, pathExtension);
  if (baseName.empty()) return refusalOfName(baseName);
  if (const std::string name = scheme.name({}); !isFileName(name)) return refusalOfName(name);
  return claimOf(scheme);
}

FileClaim claimConsistentFiles(std::span<const Url> directories, std::string_view fileName,
                               std::span<const std::string> extensions) {
  if (auto refusal = refusalOfDirectories(directories)) return *std::move(refusal);
  const std::vector<Url> folders = distinctFolders(directories);
  const detail::SetScheme scheme(folders, fileName, extensions);
  if (fileName.empty()) return refusalOfName(fileName);
  for (const std::string& extension : extensions) {
    if (const std::string name = scheme.name({}, extension); !isFileName(name)) return refusalOfName(name);
  }
  FileClaim claim = claimOf(scheme);
  for (std::size_t place = 0; place < claim.files.size(); ++place) {
    claim.files[place].extension = scheme.extensions()[place % scheme.extensions().size()];
  }
  return claim;
}

}  // namespace meridian::inline v0_2
