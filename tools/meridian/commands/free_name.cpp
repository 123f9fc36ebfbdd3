// meridian free-name: names for output files that no existing item has, and the files themselves.
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/fs/claimed_files.h"
#include "meridian/fs/free_names.h"
#include "meridian/platform/file_queries.h"
#include "tools/meridian/command.h"
#include "tools/meridian/interruption.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

using Files = std::vector<ClaimedFile>;

/// The files of a claim. Throws CommandError where there are none.
Files claimedFiles(FileClaim claim) {
  if (!claim.refusal) return std::move(claim.files);
  const ClaimRefusal& refusal = *claim.refusal;
  std::string text = inQuotes(refusal.url.path()) + ": " + printable(refusal.message());
  for (const Url& url : refusal.leftBehind) text += "\n  left behind: " + printable(url.path());
  throw CommandError(text);
}

/// The files, which nobody made. Throws CommandError where the system does not say whether one is there.
Files visibleFiles(Files files) {
  for (const ClaimedFile& file : files) {
    if (const auto fault = lookupError(file.url.path())) {
      throw CommandError(inQuotes(file.url.path()) +
                         ": whether it is free cannot be seen: " + printable(fault.message()));
    }
  }
  return files;
}

std::string readNamePart(const std::string& option, const std::string& text) {
  if (text.find('/') != std::string::npos) {
    throw UsageError("--" + option + " takes a part of a file's name, and " + inQuotes(text) + " holds a separator");
  }
  return text;
}

/// Each extension once.
std::vector<std::string> readExtensions(const Arguments& arguments) {
  std::vector<std::string> extensions;
  if (!arguments.has("ext")) return extensions;
  for (const std::string& text : arguments.given.at("ext")) {
    if (std::ranges::find(extensions, text) == extensions.end()) extensions.push_back(readNamePart("ext", text));
  }
  return extensions;
}

std::string readBase(const Arguments& arguments) {
  std::string base = readNamePart("base", arguments.value("base").value_or(""));
  if (base.empty()) throw UsageError("--among and --set need a name: --base B");
  if (base == "." || base == "..") throw UsageError(inQuotes(base) + " names a folder, and --base a file");
  return base;
}

std::vector<Url> readDirectories(const Arguments& arguments, std::string_view option) {
  std::vector<Url> directories;
  for (const std::string& path : arguments.given.find(option)->second) {
    if (path.empty())
      throw UsageError("--" + std::string(option) + " is given a folder without a name; write . for this one");
    directories.push_back(Url::fromFilePath(path));
  }
  return directories;
}

Files filesOfPath(const Arguments& arguments) {
  if (arguments.has("base") || arguments.has("ext")) throw UsageError("--base and --ext go with --among and --set");
  const Url path = Url::fromFilePath(*arguments.value("path"));
  const std::string_view name = path.lastPathComponent();
  if (name.empty() || name == "." || name == ".." || path.path().ends_with('/')) {
    throw UsageError(inQuotes(path.path()) + " names no file");
  }
  if (arguments.has("create")) return claimedFiles(claimFile(path));
  return visibleFiles({{filePathAdjustedForCollision(path, nameIsTaken), {}}});
}

Files filesAmongDirectories(const Arguments& arguments) {
  const std::string base = readBase(arguments);
  const std::vector<std::string> extensions = readExtensions(arguments);
  if (extensions.size() > 1) throw UsageError("--among takes one extension; files of several belong to a --set");
  const std::vector<Url> directories = readDirectories(arguments, "among");
  std::optional<std::string_view> extension;
  if (!extensions.empty()) extension = extensions.front();
  if (arguments.has("create")) return claimedFiles(claimFileAmongstDirectories(base, directories, extension));
  const std::string name = lastPathComponentAdjustedForCollision(base, directories, extension, nameIsTaken);
  Files files;
  for (const Url& directory : directories) files.push_back({directory.appendingPathComponent(name), {}});
  return visibleFiles(std::move(files));
}

Files filesOfSet(const Arguments& arguments) {
  const std::string base = readBase(arguments);
  const std::vector<std::string> extensions = readExtensions(arguments);
  if (extensions.empty()) throw UsageError("--set needs the extensions of its files: --ext E...");
  const std::vector<Url> directories = readDirectories(arguments, "set");
  if (arguments.has("create")) return claimedFiles(claimConsistentFiles(directories, base, extensions));
  const UrlsByExtension urls =
      consistentFilePathsAdjustedForCollisionAcrossDirectories(directories, base, extensions, nameIsTaken);
  Files files;
  for (const Url& directory : directories) {
    for (const std::string& extension : extensions) {
      files.push_back({directory.appendingPathComponent(urls.at(extension).lastPathComponent()), extension});
    }
  }
  return visibleFiles(std::move(files));
}

Files filesAskedFor(const Arguments& arguments) {
  const bool isAmong = arguments.has("among");
  const bool isSet = arguments.has("set");
  if (arguments.has("path") + isAmong + isSet != 1) {
    throw UsageError("give a PATH, or a name (--base B) and either --among DIR... or --set DIR...");
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
    std::optional<InterruptionsHeld> held;  // until the files are made, all or none
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
      .description = "Print names for output files that nothing has yet, and make the files",
      .details =
          "PATH is printed as it is while nothing is there, and with a number otherwise: clip 2.mov.\n"
          "--among prints one name that is free in all the folders: clip.mov, clip 2.mov.\n"
          "--set prints the paths of files that share a number in all the folders: clip-2.mov, clip-2.xml.\n"
          "Whether the folders are there is not asked, and between the printing and the writing another process can\n"
          "take the name. With --create the files are made, empty, each under a name that nobody else gets: all of\n"
          "them, or none and the exit status 1. They stand when only the printing fails.",
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
                  {value, "base", "The name without number and extension", "B"},
                  {.kind = value,
                   .name = "ext",
                   .help = "The extension, and for --set all of them, exactly as they are and without point",
                   .valueName = "E",
                   .repeated = true},
                  {.kind = value,
                   .name = "among",
                   .help = "Find a name for one file in each of these folders",
                   .valueName = "DIR",
                   .repeated = true,
                   .path = true},
                  {.kind = value,
                   .name = "set",
                   .help = "Find names for a file of each extension in each of these folders",
                   .valueName = "DIR",
                   .repeated = true,
                   .path = true},
                  {flag, "create", "Make the files, empty"},
                  {flag, "json",
                   "Print a JSON list with an object for each file: path, name, and extension for those of a set"},
                  {flag, "null", "End each name with a NUL, for xargs -0; a name may hold line ends"}},
      .exclusive = {"json", "null"},
      .action = printFreeNames,
  };
}

}  // namespace meridian::command
