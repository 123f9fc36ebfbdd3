#include "meridian/fs/tree_walk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "meridian/platform/open_directory.h"

namespace meridian::inline v0_2 {
namespace {

/// Directories kept open below the outermost one. In a deeper tree outer ones are closed, and reopened on the way back.
constexpr std::size_t openLevels = 32;

}  // namespace

/// Walks with an explicit stack, one level for each directory that it is in. The entries of all these directories are
/// stored one after the other in two arrays, so that an item costs no allocation.
class TreeWalk::Walker {
 public:
  Walker(std::string path, const ItemFilter& filter) : filter_(filter), path_(std::move(path)) {}

  /// The directory of an item is entered when the item after it is asked for, since the caller may change it before.
  std::optional<TreeItem> next(const TreeErrorReport& report) {
    report_ = &report;
    if (!std::exchange(hasBegun_, true)) {
      begin();
    } else if (std::exchange(entersItem_, false)) {
      enterItem();
    }
    while (!levels_.empty()) {
      if (levels_.back().nextEntry < entries_.size()) return nextItem();
      leave();
    }
    return std::nullopt;
  }

 private:
  struct Entry {
    /// Where its name begins in `names_`; a NUL byte follows the name.
    std::size_t name;
    std::uint32_t nameSize;
    ItemKind kind;
  };

  struct Level {
    /// Closed while the walk is deep below it, except for the outermost one.
    OpenDirectory directory;
    /// The identity of the directory when it was closed.
    std::optional<FileIdentity> identity;
    /// The size of its path with a trailing separator.
    std::size_t pathSize;
    std::size_t firstName;
    std::size_t firstEntry;
    /// The entry to visit next. While the walk is below this level, the entry before it is the directory that it is in.
    std::size_t nextEntry;
  };

  [[nodiscard]] std::string_view nameOf(const Entry& entry) const noexcept {
    return std::string_view(names_).substr(entry.name, entry.nameSize);
  }

  void report(TreeWalkErrorCode code, const std::error_code& systemError) const {
    (*report_)({code, path_, {}, systemError});
  }

  void begin() {
    OpenDirectory directory(path_);
    if (directory.isOpen()) {
      enter(std::move(directory));
    } else {
      report(TreeWalkErrorCode::unreadableItem, directory.error());
    }
  }

  /// Reads the directory at `path_`, and appends a separator to the path.
  void enter(OpenDirectory directory) {
    const std::size_t pathSize = path_.size() + (path_.ends_with('/') ? 0 : 1);
    levels_.push_back({std::move(directory), std::nullopt, pathSize, names_.size(), entries_.size(), entries_.size()});
    DirectoryEntries found(levels_.back().directory);
    while (const auto entry = found.next()) {
      entries_.push_back({names_.size(), static_cast<std::uint32_t>(entry->name.size()), entry->kind});
      names_.append(entry->name).push_back('\0');
    }
    if (found.error()) report(TreeWalkErrorCode::unreadableItem, found.error());
    path_.resize(pathSize, '/');
    std::sort(entries_.begin() + static_cast<std::ptrdiff_t>(levels_.back().firstEntry), entries_.end(),
              [this](const Entry& left, const Entry& right) { return nameOf(left) < nameOf(right); });
    closeFarAbove(levels_.size() - 1);
  }

  void leave() {
    names_.resize(levels_.back().firstName);
    entries_.resize(levels_.back().firstEntry);
    const OpenDirectory left = std::move(levels_.back().directory);
    levels_.pop_back();
    if (!levels_.empty() && !levels_.back().directory.isOpen() && left.isOpen()) reopenAbove(left);
  }

  /// Reopens the innermost directory from the one below it, which costs the same at any depth. If the one below was
  /// moved in the meantime, ".." leads elsewhere; `reopened` then goes by the path.
  void reopenAbove(const OpenDirectory& below) {
    Level& level = levels_.back();
    OpenDirectory above(below, "..");
    if (above.isOpen() && level.identity && above.identity() == level.identity) level.directory = std::move(above);
  }

  /// Returns the next item of the innermost directory, and notes whether it is to be entered.
  TreeItem nextItem() {
    const Entry entry = entries_[levels_.back().nextEntry++];
    path_.resize(levels_.back().pathSize);
    path_ += nameOf(entry);
    const std::string_view name = std::string_view(path_).substr(levels_.back().pathSize);
    const auto isDirectory = [this, &entry] {
      return entry.kind == ItemKind::directory || (entry.kind == ItemKind::symbolicLink && leadsToDirectory(entry));
    };
    const ItemDecision decision = filter_.decision(name, isDirectory);
    entersItem_ = entry.kind == ItemKind::directory && !decision.isIgnored;
    return {path_, name, entry.kind, decision};
  }

  /// Enters the directory that was returned last.
  void enterItem() {
    const Entry entry = entries_[levels_.back().nextEntry - 1];
    const OpenDirectory& parent = reopened(levels_.size() - 1);
    if (!parent.isOpen()) {
      report(TreeWalkErrorCode::unreadableItem, parent.error());
    } else if (OpenDirectory directory = openedWithin(levels_.size() - 1, entry); directory.isOpen()) {
      enter(std::move(directory));
    } else {
      report(TreeWalkErrorCode::unreadableItem, directory.error());
    }
  }

  bool leadsToDirectory(const Entry& link) {
    const auto result = reopened(levels_.size() - 1).leadsToDirectory(names_.data() + link.name);
    if (!result) report(TreeWalkErrorCode::unresolvedLink, result.error());
    return result.value_or(false);
  }

  /// Returns the level's directory. If the way back did not lead there, reopens it by name from the next outer one that
  /// is open; the result is not open if that fails.
  const OpenDirectory& reopened(std::size_t level) {
    std::size_t outer = level;
    while (!levels_[outer].directory.isOpen()) --outer;
    for (; outer < level; ++outer) {
      const Entry& inner = entries_[levels_[outer].nextEntry - 1];
      levels_[outer + 1].directory = openedWithin(outer, inner);
      if (!levels_[outer + 1].directory.isOpen()) return levels_[outer + 1].directory;
      closeFarAbove(outer + 1);
    }
    return levels_[level].directory;
  }

  /// Opens the directory of an entry of the level, which is open. If the process may not open more, first closes all
  /// levels except this one and the outermost one.
  OpenDirectory openedWithin(std::size_t level, const Entry& entry) {
    const OpenDirectory& parent = levels_[level].directory;
    OpenDirectory directory(parent, names_.data() + entry.name);
    const std::error_code& error = directory.error();
    const bool needsDescriptors = !directory.isOpen() && (error == std::errc::too_many_files_open ||
                                                          error == std::errc::too_many_files_open_in_system);
    if (!needsDescriptors) return directory;
    for (std::size_t other = 1; other < levels_.size(); ++other) {
      if (other != level) close(levels_[other]);
    }
    return {parent, names_.data() + entry.name};
  }

  /// Closes the directory that is one too many once this level's is open, except for the outermost one.
  void closeFarAbove(std::size_t level) noexcept {
    if (level > openLevels) close(levels_[level - openLevels]);
  }

  static void close(Level& level) noexcept {
    if (!level.directory.isOpen()) return;
    level.identity = level.directory.identity();
    level.directory.close();
  }

  const ItemFilter& filter_;
  /// Of the call in progress.
  const TreeErrorReport* report_ = nullptr;
  bool hasBegun_ = false;
  bool entersItem_ = false;
  /// The path of the item at hand.
  std::string path_;
  std::string names_;
  std::vector<Entry> entries_;
  std::vector<Level> levels_;
};

TreeWalk::TreeWalk(const Url& directory, ItemFilter filter)
    : filter_(std::make_unique<const ItemFilter>(std::move(filter))),
      walker_(std::make_unique<Walker>(directory.path(), *filter_)) {}

TreeWalk::TreeWalk(TreeWalk&&) noexcept = default;
TreeWalk& TreeWalk::operator=(TreeWalk&&) noexcept = default;
TreeWalk::~TreeWalk() = default;

std::optional<TreeItem> TreeWalk::next(TreeErrorReport report) { return walker_->next(report); }

void walkTree(const Url& directory, const ItemFilter& filter, TreeVisitor visit, TreeErrorReport report) {
  TreeWalk::Walker walker(directory.path(), filter);
  bool stop = false;
  while (const auto item = walker.next(report)) {
    visit(*item, stop);
    if (stop) return;
  }
}

}  // namespace meridian::inline v0_2
