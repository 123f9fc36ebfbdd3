// meridian filter: which items of directory trees a copying application would copy, and which rule decides.
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/joined.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/fs/item_filter.h"
#include "meridian/fs/tree_walk.h"
#include "meridian/platform/file_queries.h"
#include "tools/meridian/command.h"
#include "tools/meridian/extension_list.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

std::vector<std::string> valuesOf(const Arguments& arguments, std::string_view name) {
  const auto found = arguments.given.find(name);
  return found == arguments.given.end() ? std::vector<std::string>() : found->second;
}

ItemFilterSettings readSettings(const Arguments& arguments) {
  const bool onlyListed = arguments.has("only-ext");
  if (onlyListed && arguments.has("ignore-ext")) {
    throw UsageError("--ignore-ext and --only-ext cannot be combined: give either what to ignore or what to copy");
  }
  ItemFilterSettings settings{
      .extensionFilterList = readExtensionList(arguments, onlyListed ? "only-ext" : "ignore-ext"),
      .filteringOption =
          onlyListed ? ItemFilteringOption::onlyListedExtensions : ItemFilteringOption::ignoreListedExtensions,
      .ignoreHiddenItems = arguments.has("ignore-hidden"),
      .forcePathComponents = valuesOf(arguments, "force")};
  if (arguments.has("default-forced")) {
    settings.forcePathComponents.insert(settings.forcePathComponents.end(), defaultForceIgnorePathComponents.begin(),
                                        defaultForceIgnorePathComponents.end());
  }
  return settings;
}

/// Throws UsageError for a second extension after a space, which counts as a PATH: "--only-ext mov mxf /card".
void checkPaths(const Arguments& arguments) {
  for (const std::string option : {"only-ext", "ignore-ext"}) {
    if (!arguments.has(option)) continue;
    for (const std::string& path : arguments.given.at("path")) {
      if (path.find('/') != std::string::npos || nameIsTaken(path)) continue;
      const auto listed = readExtensionList(arguments, option);
      throw UsageError(inQuotes(path) + " does not exist; to list several extensions, write --" + option + " " +
                       printable(joined(listed, ",")) + "," + printable(path));
    }
  }
}

constexpr std::size_t longestRule = [] {
  std::size_t longest = 0;
  for (const ItemFilterRule rule : allCases<ItemFilterRule>()) longest = std::max(longest, rawValue(rule).size());
  return longest;
}();

/// Writes the paths of copied items, relative to the directory in which the walk begins, as soon as they are known.
class PathPrinter {
 public:
  explicit PathPrinter(const Arguments& arguments)
      : root_(arguments.given.at("path").front()), end_(arguments.has("null") ? '\0' : '\n') {
    if (arguments.has("json")) throw UsageError("--json and --paths cannot be used together");
    if (arguments.given.at("path").size() > 1) {
      throw UsageError("--paths needs a single PATH, because the paths that it prints are relative to it");
    }
    if (!nameIsTaken(root_)) throw CommandError(root_, "does not exist");
    if (!pathIsDirectory(root_)) throw CommandError(root_, "is not a directory, which --paths needs");
  }

  /// Returns false for a path with a newline that cannot be told from two paths.
  [[nodiscard]] bool print(std::string_view path, const ItemDecision& decision) const {
    if (decision.isIgnored) return true;
    path.remove_prefix(root_.size());
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    if (end_ == '\n' && path.find('\n') != std::string_view::npos) {
      std::cerr << "meridian: " << inQuotes(path) << ": contains a newline; use --null\n";
      return false;
    }
    // rsync skips lines that begin with "#" or ";", even with --from0, and tar reads "-" as an option without --null.
    if (path.find_first_of("#;-") == 0) std::cout << "./";
    std::cout << path << end_;
    return true;
  }

 private:
  std::string root_;
  char end_;
};

/// Writes each decision as soon as it is made, in the form that the options ask for.
class DecisionPrinter {
 public:
  explicit DecisionPrinter(const Arguments& arguments) : form_(formOf(arguments)) {
    if (form_ == Form::json) std::cout << '[';
  }

  void print(std::string_view path, const ItemDecision& decision) {
    const std::string_view verdict = decision.isIgnored ? "ignore" : "copy";
    const std::string_view rule = rawValue(decision.rule);
    ++(decision.isIgnored ? ignored_ : copied_);
    if (form_ == Form::terminated) {
      std::cout << verdict << '\t' << rule << '\t' << path << '\0';
    } else if (form_ == Form::json) {
      if (!isValidUtf8(path)) ++invalid_;
      const Json item{{"path", path}, {"ignored", decision.isIgnored}, {"rule", rule}};
      std::cout << (copied_ + ignored_ == 1 ? "\n  " : ",\n  ")
                << item.dump(-1, ' ', false, Json::error_handler_t::replace);
    } else {
      std::cout << styled(decision.isIgnored ? Style::warning : Style::good, verdict)
                << std::string(8 - verdict.size(), ' ') << styled(Style::faint, rule)
                << std::string(longestRule + 2 - rule.size(), ' ') << printable(path) << '\n';
    }
  }

  /// Writes what follows the last decision.
  void finish() const {
    if (form_ == Form::json) std::cout << (copied_ + ignored_ == 0 ? "]\n" : "\n]\n");
    if (form_ == Form::lines) {
      std::cout << styled(Style::heading,
                          std::to_string(copied_) + " to copy, " + std::to_string(ignored_) + " ignored")
                << '\n';
    }
    warnOfInvalid(invalid_, "path", "--null gives the bytes as they are");
  }

 private:
  enum class Form { lines, json, terminated };

  static Form formOf(const Arguments& arguments) {
    if (arguments.has("json")) return Form::json;
    return arguments.has("null") ? Form::terminated : Form::lines;
  }

  Form form_;
  std::size_t copied_ = 0;
  std::size_t ignored_ = 0;
  std::size_t invalid_ = 0;
};

Status printDecisions(const ItemFilter& filter, const Arguments& arguments) {
  DecisionPrinter printer(arguments);
  Status status = done;
  const auto report = [&status](const TreeWalkError& error) {
    std::cerr << "meridian: " << error.message() << '\n';
    status = failed;
  };
  for (const std::string& path : arguments.given.at("path")) {
    const Url url = Url::fromFilePath(path);
    const bool isThere = nameIsTaken(path);
    if (const auto error = lookupError(path)) {
      report({isThere ? TreeWalkErrorCode::unresolvedLink : TreeWalkErrorCode::unreadableItem, path, {}, error});
      if (!isThere) continue;
    }
    if (isThere && !pathIsDirectory(path)) {  // there is no tree to walk
      printer.print(path, filter.decision(url));
      continue;
    }
    walkTree(
        url, filter, [&printer](const TreeItem& item, bool& /*stop*/) { printer.print(item.path, item.decision); },
        report);
  }
  printer.finish();
  return status;
}

Status printPaths(const ItemFilter& filter, const Arguments& arguments) {
  const PathPrinter printer(arguments);
  Status status = done;
  walkTree(
      Url::fromFilePath(arguments.given.at("path").front()), filter,
      [&](const TreeItem& item, bool& /*stop*/) {
        if (!printer.print(item.path, item.decision)) status = failed;
      },
      [&status](const TreeWalkError& error) {
        std::cerr << "meridian: " << error.message() << '\n';
        status = failed;
      });
  return status;
}

Status filterItems(const Arguments& arguments) {
  const ItemFilter filter(readSettings(arguments));
  checkPaths(arguments);
  return arguments.has("paths") ? printPaths(filter, arguments) : printDecisions(filter, arguments);
}

}  // namespace

Subcommand filterCommand() {
  using enum Option::Kind;
  return {
      .name = "filter",
      .description = "Show which items of directory trees would be copied, and which rule decides",
      .details =
          "Decides on all items below a PATH that is a directory, or on a PATH that is a single item.\n"
          "The first rule that applies decides: a \"forced component\" or a \"hidden\" item is ignored; a "
          "\"directory\"\n"
          "is copied; with \"no extensions\" given everything is copied; otherwise the \"extension\" decides. Names "
          "are\n"
          "compared without regard to case, extensions with the end of the name. Ignored directories are not\n"
          "entered. Links are not entered either; they count as what they lead to.\n"
          "Unreadable items are reported on standard error, and the exit status is then 1.\n"
          "With --paths, only the paths of what is copied are printed, relative to PATH and each directory before its\n"
          "items, as these need them:\n"
          "  meridian filter --paths --null ... /card | rsync -a --from0 --files-from=- /card /backup\n"
          "  meridian filter --paths --null ... /card | tar -c -f card.tar -C /card --null --no-recursion -T -\n"
          "A path that begins with #, ; or - is printed with ./ before it, so that these tools accept it. Without "
          "--null,\n"
          "tar reads a backslash in a name as the beginning of an escape.",
      .example =
          "meridian filter --default-forced --ignore-hidden /card\n"
          "meridian filter --only-ext mov,mxf --json /card",
      .options =
          {{.kind = value,
            .name = "ignore-ext",
            .help = "Ignore files with these extensions, separated by commas: xml,bin; may be given several times",
            .valueName = "E",
            .severalTimes = true},
           {.kind = value,
            .name = "only-ext",
            .help = "Copy only files with these extensions, separated by commas: mov,mxf; may be given several times",
            .valueName = "E",
            .severalTimes = true},
           {flag, "ignore-hidden", "Ignore hidden items: those with a leading dot"},
           {.kind = value,
            .name = "force",
            .help = "Ignore items of this name; may be given several times",
            .valueName = "NAME",
            .severalTimes = true},
           {flag, "default-forced",
            "Ignore items that systems leave on volumes: " + joined(defaultForceIgnorePathComponents, ", ")},
           {flag, "json", "Print a JSON list with an object for each item: path, ignored, rule"},
           {flag, "paths", "Print only the paths of what is copied, relative to PATH, one per line"},
           {flag, "null",
            "With --paths, end each path with a NUL. Otherwise end each item with a NUL, and separate \"copy\" "
            "or \"ignore\", the rule and the path with tabs; paths are "
            "printed unchanged"},
           {.kind = positional,
            .name = "path",
            .help = "A directory or a single item",
            .valueName = "PATH",
            .repeated = true,
            .path = true}},
      .exclusive = {"json", "null"},
      .action = filterItems,
  };
}

}  // namespace meridian::command
