#include "meridian/fs/free_names.h"

#include "meridian/fs/claimed_files.h"
#include "meridian/python/errors.h"
#include "meridian/python/module.h"
#include "meridian/python/record.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;
using ClaimObject = Typed<"Claim">;

std::vector<Url> urlsOf(const Words& paths) {
  std::vector<Url> urls;
  for (const std::string& path : paths.values) urls.push_back(Url::fromFilePath(path));
  return urls;
}

std::optional<std::string_view> viewOf(const std::optional<Text>& text) {
  return text ? std::optional<std::string_view>(text->value) : std::nullopt;
}

/// Returns the package's context manager of the files that the function creates.
template <typename Claiming>
ClaimObject claimBy(Claiming&& claim) {
  auto claimed = valueOrRaise(withoutLock(std::forward<Claiming>(claim)));
  return {py::module_::import("meridian._claim").attr("Claim")(std::move(claimed))};
}

void addClaims(py::module_& module) {
  Record<ClaimedFile>(module, "ClaimedFile", "An empty file that was created under an unused name.")
      .fact(
          "path", [](const ClaimedFile& file) { return shown(file.url.path()); }, "Its path.", /*isField=*/true)
      .field("extension", &ClaimedFile::extension,
             "The extension with which claim_consistent_files() was asked for it; else empty.")
      .value([](const Path& path, const Text& extension) { return ClaimedFile{path.url(), extension.value}; }, "path"_a,
             "extension"_a = "",
             "Makes the record of a claimed file; creates nothing. Raises TypeError for values of other types.")
      .done()
      .def("__fspath__", [](const ClaimedFile& file) { return shown(file.url.path()); });
  module.attr("Claim") = py::module_::import("meridian._claim").attr("Claim");
  module.def(
      "claim_file", [](const Path& path) { return claimBy([&] { return claimFile(path.url()); }); }, "path"_a,
      "Creates the file that file_path_adjusted_for_collision() names, so that no other process gets the name. Raises "
      "ClaimError.");
  module.def(
      "claim_file_amongst_directories",
      [](const Text& baseName, const Words& directories, const std::optional<Text>& extension) {
        return claimBy(
            [&] { return claimFileAmongstDirectories(baseName.value, urlsOf(directories), viewOf(extension)); });
      },
      "base_name"_a, "directories"_a, "path_extension"_a = py::none(),
      "Creates a file of one unused name in each of the directories. Raises ClaimError.");
  module.def(
      "claim_consistent_files",
      [](const Words& directories, const Text& fileName, const Words& extensions) {
        return claimBy([&] { return claimConsistentFiles(urlsOf(directories), fileName.value, extensions.values); });
      },
      "directories"_a, "file_name"_a, "extensions"_a,
      "Creates a file for each extension in each of the directories, all with one name and number. Raises ClaimError, "
      "and then removes what it created.");
}

}  // namespace

void addFreeNames(py::module_& module) {
  addClaims(module);
  module.def(
      "file_path_adjusted_for_collision",
      [](const Path& path) {
        return shown(withoutLock([&] { return filePathAdjustedForCollision(path.url()); }).path());
      },
      "path"_a,
      "Returns the path, or with a number if it exists: \"/out/clip 2.mov\". Creates nothing; see claim_file().");
  module.def(
      "last_path_component_adjusted_for_collision",
      [](const Text& baseName, const Words& directories, const std::optional<Text>& extension) {
        return shown(withoutLock([&] {
          return lastPathComponentAdjustedForCollision(baseName.value, urlsOf(directories), viewOf(extension));
        }));
      },
      "base_name"_a, "amongst_directories"_a, "path_extension"_a = py::none(),
      "Returns a name, such as \"clip 2.mov\", that exists in none of the directories.");
  module.def(
      "consistent_file_paths_adjusted_for_collision_across_directories",
      [](const Words& directories, const Text& fileName, const Words& extensions) {
        py::dict paths;
        const auto urls = withoutLock([&] {
          return consistentFilePathsAdjustedForCollisionAcrossDirectories(urlsOf(directories), fileName.value,
                                                                          extensions.values);
        });
        for (const auto& [extension, url] : urls) paths[strOf(extension)] = strOf(url.path());
        return Typed<"dict[str, str]">(std::move(paths));
      },
      "directories"_a, "file_name"_a, "extensions"_a,
      "Returns a path for each extension, all with one name and number that are unused in all directories: those in "
      "the "
      "last directory.");
}

}  // namespace meridian::inline v0_2::python
