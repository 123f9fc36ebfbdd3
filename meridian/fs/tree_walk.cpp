#include "meridian/fs/tree_walk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "meridian/platform/open_directory.h"

namespace meridian::inline v0_2 {
namespace {

/// Folders kept open below the outermost one. In a deeper tree the outer ones are closed, and opened again on the way
/// back.
constexpr std::size_t openLevels = 32;

/// Walks by a stack of its own, one level for each folder that it is in. The entries of all these folders lie one
/// behind the other in two arrays, so that an item costs no allocation.
class TreeWalk {
 public:
  TreeWalk(std::string path, const ItemFilter& filter, const TreeVisitor& visit, const UnreadReport& report)
      : filter_(filter), visit_(visit), report_(report), path_(std::move(path)) {}

  void run() {
    OpenDirectory folder(path_);
    if (!folder.isOpen()) {
      report_({path_, folder.error()});
      return;
    }
    enter(std::move(folder));
    bool stop = false;
    while (!levels_.empty() && !stop) {
      if (levels_.back().nextEntry == entries_.size()) {
        leave();
      } else {
        stop = visitNext();
      }
    }
  }

 private:
  struct Entry {
    /// Where its name begins in `names_`; a NUL byte stands behind it.
    std::size_t name;
    std::uint32_t nameSize;
    ItemKind kind;
  };

  struct Level {
    /// Closed while the walk is deep below it, but for the outermost one.
    OpenDirectory folder;
    /// Which folder it was when it was closed.
    std::optional<FileIdentity> identity;
    /// Up to and with the separator behind the folder.
    std::size_t pathSize;
    std::size_t firstName;
    std::size_t firstEntry;
    /// The entry to visit next. While the walk is below this level, the one before it is the folder that it is in.
    std::size_t nextEntry;
  };

  [[nodiscard]] std::string_view nameOf(const Entry& entry) const noexcept {
    return std::string_view(names_).substr(entry.name, entry.nameSize);
  }

  /// Reads the folder at `path_`, and puts a separator behind it.
  void enter(OpenDirectory folder) {
    const std::size_t pathSize = path_.size() + (path_.ends_with('/') ? 0 : 1);
    levels_.push_back({std::move(folder), std::nullopt, pathSize, names_.size(), entries_.size(), entries_.size()});
    DirectoryEntries found(levels_.back().folder);
    while (const auto entry = found.next()) {
      entries_.push_back({names_.size(), static_cast<std::uint32_t>(entry->name.size()), entry->kind});
      names_.append(entry->name).push_back('\0');
    }
    if (found.error()) report_({path_, found.error()});
    path_.resize(pathSize, '/');
    std::sort(entries_.begin() + static_cast<std::ptrdiff_t>(levels_.back().firstEntry), entries_.end(),
              [this](const Entry& left, const Entry& right) { return nameOf(left) < nameOf(right); });
    closeFarAbove(levels_.size() - 1);
  }

  void leave() {
    names_.resize(levels_.back().firstName);
    entries_.resize(levels_.back().firstEntry);
    const OpenDirectory left = std::move(levels_.back().folder);
    levels_.pop_back();
    if (!levels_.empty() && !levels_.back().folder.isOpen() && left.isOpen()) reopenAbove(left);
  }

  /// Opens the innermost folder from the one below it. One step back costs the same however deep it is. A folder that
  /// was moved meanwhile leads back to another place; then the path counts.
  void reopenAbove(const OpenDirectory& below) {
    Level& level = levels_.back();
    OpenDirectory above(below, "..");
    if (above.isOpen() && level.identity && above.identity() == level.identity) level.folder = std::move(above);
  }

  /// Gives the next item of the innermost folder, and enters it; whether to stop.
  bool visitNext() {
    const Entry entry = entries_[levels_.back().nextEntry++];
    path_.resize(levels_.back().pathSize);
    path_ += nameOf(entry);
    const std::string_view name = std::string_view(path_).substr(levels_.back().pathSize);
    const auto isDirectory = [this, &entry] {
      return entry.kind == ItemKind::directory || (entry.kind == ItemKind::symbolicLink && leadsToDirectory(entry));
    };
    const ItemDecision decision = filter_.decision(name, isDirectory);
    bool stop = false;
    visit_({path_, name, entry.kind, decision}, stop);
    if (stop || entry.kind != ItemKind::directory || decision.isIgnored) return stop;

    const OpenDirectory& parent = reopened(levels_.size() - 1);
    if (!parent.isOpen()) {
      report_({path_, parent.error()});
    } else if (OpenDirectory folder = openedWithin(levels_.size() - 1, entry); folder.isOpen()) {
      enter(std::move(folder));
    } else {
      report_({path_, folder.error()});
    }
    return false;
  }

  bool leadsToDirectory(const Entry& link) {
    const auto result = reopened(levels_.size() - 1).leadsToDirectory(names_.data() + link.name);
    if (!result) report_({path_, result.error()});
    return result.value_or(false);
  }

  /// The level's folder, opened again where the way back did not lead there, from the next outer one that is open. Not
  /// open where that was not possible.
  const OpenDirectory& reopened(std::size_t level) {
    std::size_t outer = level;
    while (!levels_[outer].folder.isOpen()) --outer;
    for (; outer < level; ++outer) {
      const Entry& inner = entries_[levels_[outer].nextEntry - 1];
      levels_[outer + 1].folder = openedWithin(outer, inner);
      if (!levels_[outer + 1].folder.isOpen()) return levels_[outer + 1].folder;
      closeFarAbove(outer + 1);
    }
    return levels_[level].folder;
  }

  /// The folder of an entry of the level, which is open. Where the process may open no more, all but this level and the
  /// outermost one are closed for it.
  OpenDirectory openedWithin(std::size_t level, const Entry& entry) {
    const OpenDirectory& parent = levels_[level].folder;
    OpenDirectory folder(parent, names_.data() + entry.name);
    const bool needsDescriptors = !folder.isOpen() && (folder.error() == std::errc::too_many_files_open ||
                                                       folder.error() == std::errc::too_many_files_open_in_system);
    if (!needsDescriptors) return folder;
    for (std::size_t other = 1; other < levels_.size(); ++other) {
      if (other != level) close(levels_[other]);
    }
    return {parent, names_.data() + entry.name};
  }

  /// Closes the folder that is one too many when this level's is open, unless it is the outermost one.
  void closeFarAbove(std::size_t level) noexcept {
    if (level > openLevels) close(levels_[level - openLevels]);
  }

  static void close(Level& level) noexcept {
    if (!level.folder.isOpen()) return;
    level.identity = level.folder.identity();
    level.folder.close();
  }

  const ItemFilter& filter_;
  const TreeVisitor& visit_;
  const UnreadReport& report_;
  /// The path of the item at hand.
  std::string path_;
  std::string names_;
  std::vector<Entry> entries_;
  std::vector<Level> levels_;
};

}  // namespace

void walkTree(const Url& folder, const ItemFilter& filter, TreeVisitor visit, UnreadReport report) {
  TreeWalk(folder.path(), filter, visit, report).run();
}

}  // namespace meridian::inline v0_2
