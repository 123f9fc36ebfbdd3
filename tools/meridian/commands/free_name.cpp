// meridian free-name: unused names for output files, and the files themselves.
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/fs/claimed_files.h"
#include "meridian/fs/free_names.h"
#include "meridian/fs/name_rules.h"
#include "meridian/platform/file_queries.h"
#include "tools/meridian/command.h"
#include "tools/meridian/extension_list.h"
#include "tools/meridian/interruption.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

using Files = std::vector<ClaimedFile>;

/// Returns the files, which do not exist. Throws CommandError if the system cannot tell whether one exists.
Files unusedFiles(Files files) {
  for (const ClaimedFile& file : files) {
    if (const auto error = lookupError(file.url.path())) {
      throw CommandError(file.url.path(), "cannot tell whether the name is unused: " + error.message());
    }
  }
  return files;
}

std::string readBase(const Arguments& arguments) {
  std::string base = arguments.value("base").value_or("");
  if (base.find('/') != std::string::npos) throw CommandError("--base must not contain a separator: " + inQuotes(base));
  if (base.empty()) throw UsageError("--among and --set need a name: --base B");
  if (!isFileName(base)) throw CommandError("--base must name a file, not a directory: " + inQuotes(base));
  return base;
}

std::vector<Url> readDirectories(const Arguments& arguments, std::string_view option) {
  std::vector<Url> directories;
  for (const std::string& path : arguments.given.find(option)->second) {
    if (path.empty())
      throw CommandError("--" + std::string(option) + " has an empty path; write . for the current directory");
    directories.push_back(Url::fromFilePath(path));
  }
  return directories;
}

Files filesOfPath(const Arguments& arguments) {
  if (arguments.has("base") || arguments.has("ext")) throw UsageError("--base and --ext need --among or --set");
  const Url path = Url::fromFilePath(*arguments.value("path"));
  if (!pathNamesFile(path.path())) throw CommandError(inQuotes(path.path()) + " does not name a file");
  if (arguments.has("create")) return valueOf(claimFile(path));
  return unusedFiles({{filePathAdjustedForCollision(path, nameIsTaken), {}}});
}

Files filesAmongDirectories(const Arguments& arguments) {
  const std::string base = readBase(arguments);
  const std::vector<std::string> extensions = readExtensionList(arguments, "ext");
  if (extensions.size() > 1) throw UsageError("--among accepts one extension; for several use --set");
  const std::vector<Url> directories = readDirectories(arguments, "among");
  std::optional<std::string_view> extension;
  if (!extensions.empty()) extension = extensions.front();
  if (arguments.has("create")) return valueOf(claimFileAmongstDirectories(base, directories, extension));
  const std::string name = lastPathComponentAdjustedForCollision(base, directories, extension, nameIsTaken);
  Files files;
  for (const Url& directory : directories) files.push_back({directory.appendingPathComponent(name), {}});
  return unusedFiles(std::move(files));
}

Files filesOfSet(const Arguments& arguments) {
  const std::string base = readBase(arguments);
  const std::vector<std::string> extensions = readExtensionList(arguments, "ext");
  if (extensions.empty()) throw UsageError("--set needs extensions: --ext E...");
  const std::vector<Url> directories = readDirectories(arguments, "set");
  if (arguments.has("create")) return valueOf(claimConsistentFiles(directories, base, extensions));
  const UrlsByExtension urls =
      consistentFilePathsAdjustedForCollisionAcrossDirectories(directories, base, extensions, nameIsTaken);
  Files files;
  for (const Url& directory : directories) {
    for (const std::string& extension : extensions) {
      files.push_back({directory.appendingPathComponent(urls.at(extension).lastPathComponent()), extension});
    }
  }
  return unusedFiles(std::move(files));
}

Files filesAskedFor(const Arguments& arguments) {
  const bool isAmong = arguments.has("among");
  const bool isSet = arguments.has("set");
  if (arguments.has("path") + isAmong + isSet != 1) {
    throw UsageError("give a PATH, or --base B with either --among DIR... or --set DIR...");
  }
  if (isSet) return filesOfSet(arguments);
  return isAmong ? filesAmongDirectories(arguments) : filesOfPath(arguments);
}

Json asJson(const Files& files, bool isSet) {
  auto documents = Json::array();
  for (const ClaimedFile& file : files) {
    Json document{{"path", file.url.path()}, {"name", file.url.lastPathComponent()}};
    if (isSet) document["extension"] = file.extension;
    documents.push_back(std::move(document));
  }
  return documents;
}

Status printFreeNames(const Arguments& arguments) {
  const Files files = [&arguments] {
    std::optional<InterruptionsHeld> held;  // until all files are created, or none
    if (arguments.has("create")) held.emplace();
    return filesAskedFor(arguments);
  }();
  if (arguments.has("json")) {
    for (const ClaimedFile& file : files) warnOfInvalidPath(file.url.path());
    printJson(asJson(files, arguments.has("set")));
    return done;
  }
  std::vector<std::string> lines;
  for (const ClaimedFile& file : files) lines.push_back(file.url.path());
  if (arguments.has("among")) lines = {std::string(files.front().url.lastPathComponent())};
  printVector(lines, arguments);
  return done;
}

}  // namespace

Subcommand freeNameCommand() {
  using enum Option::Kind;
  return {
      .name = "free-name",
      .description = "Find unused names for output files, and create the files",
      .details =
          "PATH is printed unchanged if nothing is there, otherwise with a number: clip 2.mov.\n"
          "--among prints one name that is unused in all the directories: clip.mov, clip 2.mov.\n"
          "--set prints the paths of files that share a number in all the directories: clip-2.mov, clip-2.xml.\n"
          "The directories need not exist, and another process can take a printed name before it is used. With\n"
          "--create the files are created, empty, under names that no other process gets: either all of them, or\n"
          "none and the exit status is 1. They stay if only printing their names fails.",
      .example =
          "meridian free-name /out/clip.mov\n"
          "meridian free-name --base clip --ext mov --among /a /b\n"
          "meridian free-name --base clip --ext mov xml --set /a /b --create",
      .options = {{.kind = positional,
                   .name = "path",
                   .help = "The file to write",
                   .valueName = "PATH",
                   .optional = true,
                   .path = true},
                  {value, "base", "The name without a number or an extension", "B"},
                  {.kind = value,
                   .name = "ext",
                   .help = "The extension, in the case given; several for --set: mov xml or mov,xml",
                   .valueName = "E",
                   .repeated = true},
                  {.kind = value,
                   .name = "among",
                   .help = "Find one name for a file in each of these directories",
                   .valueName = "DIR",
                   .repeated = true,
                   .path = true},
                  {.kind = value,
                   .name = "set",
                   .help = "Find names for files with each extension in each of these directories",
                   .valueName = "DIR",
                   .repeated = true,
                   .path = true},
                  {flag, "create", "Create the files, empty"},
                  {flag, "json", "Print a JSON list with an object for each file: path, name, and for --set extension"},
                  {flag, "null", "End each name with a NUL, for names with newlines and for xargs -0"}},
      .exclusive = {"json", "null"},
      .action = printFreeNames,
  };
}

}  // namespace meridian::command
