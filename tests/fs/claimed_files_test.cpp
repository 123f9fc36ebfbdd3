#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "meridian/fs/claimed_files.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;
using Claim = Expected<std::vector<ClaimedFile>, ClaimError>;

class ClaimedFiles : public testing::Test {
 protected:
  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }
  [[nodiscard]] Url url(const std::string& name) const { return Url::fromFilePath(path(name)); }
  void makeDirectories(const Texts& names) const {
    for (const std::string& name : names) fs::create_directory(directory_.path() / name);
  }

  /// Returns the relative paths of all items in the directory, at any depth.
  [[nodiscard]] Texts items() const {
    Texts names;
    for (const auto& entry : fs::recursive_directory_iterator(directory_.path())) {
      names.push_back(entry.path().lexically_relative(directory_.path()).string());
    }
    std::ranges::sort(names);
    return names;
  }

  /// Returns the relative paths of the files of a claim.
  [[nodiscard]] Texts createdBy(const Claim& claim) const {
    Texts names;
    if (!claim) {
      ADD_FAILURE() << claim.error().message();
      return names;
    }
    for (const ClaimedFile& file : *claim) {
      names.push_back(fs::path(file.url.path()).lexically_relative(directory_.path()).string());
      EXPECT_TRUE(fs::is_regular_file(file.url.path()) && fs::is_empty(file.url.path()));
    }
    return names;
  }

  test::TemporaryDirectory directory_;
};

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(ClaimedFiles, GetTheFirstUnusedName) {
  directory_.write("clip.mov", "mine");
  fs::create_symlink("nowhere", path("clip 2.mov"));
  EXPECT_THAT(createdBy(claimFile(url("clip.mov"))), ElementsAre("clip 3.mov"));
  EXPECT_THAT(createdBy(claimFile(url("clip.mov"))), ElementsAre("clip 4.mov"));
  EXPECT_THAT(createdBy(claimFile(url("new.mov"))), ElementsAre("new.mov"));
  EXPECT_EQ(contentsOf(path("clip.mov")), "mine");
  EXPECT_FALSE(fs::exists(path("nowhere")));
}

TEST_F(ClaimedFiles, GetOneNameInEveryDirectory) {
  makeDirectories({"a", "b"});
  directory_.write("b/clip.mov", "");
  const std::vector<Url> directories{url("b"), url("a"), url("a/../b")};
  EXPECT_THAT(createdBy(claimFileAmongstDirectories("clip", directories, "mov")),
              ElementsAre("b/clip 2.mov", "a/clip 2.mov"));
  EXPECT_THAT(createdBy(claimFileAmongstDirectories("clip", directories, "")), ElementsAre("b/clip", "a/clip"));
  EXPECT_THAT(createdBy(claimFileAmongstDirectories("clip", directories, "")), ElementsAre("b/clip 2.", "a/clip 2."));
  EXPECT_THAT(createdBy(claimFileAmongstDirectories("clip", {}, "mov")), IsEmpty());
}

TEST_F(ClaimedFiles, ShareANumberAsASetInEveryDirectory) {
  makeDirectories({"a", "b"});
  directory_.write("a/clip.xml", "");
  fs::create_symlink("nowhere", path("b/clip-2.mov"));
  const std::vector<Url> directories{url("b"), url("a"), url("b/")};
  const Texts extensions{"xml", "mov", "xml"};
  const Claim claim = claimConsistentFiles(directories, "clip", extensions);
  EXPECT_THAT(createdBy(claim), ElementsAre("b/clip-3.xml", "b/clip-3.mov", "a/clip-3.xml", "a/clip-3.mov"));
  EXPECT_EQ((*claim)[1].extension, "mov");
  EXPECT_EQ((*claim)[2].extension, "xml");
  // The files created with number 2 before the dangling link was found are gone.
  EXPECT_THAT(items(), UnorderedElementsAre("a", "a/clip.xml", "a/clip-3.xml", "a/clip-3.mov", "b", "b/clip-2.mov",
                                            "b/clip-3.xml", "b/clip-3.mov"));
  EXPECT_THAT(createdBy(claimConsistentFiles(directories, "clip", {})), IsEmpty());
}

TEST_F(ClaimedFiles, AreAllCreatedOrNone) {
  makeDirectories({"a", "b"});
  directory_.write("file", "");
  const std::string almostTooLong(251, 'x');
  directory_.write("a/" + almostTooLong + ".mov", "");
  const std::vector<Url> good{url("a"), url("b")};
  const Texts before = items();
  using Code = ClaimErrorCode;
  const struct {
    std::string what;
    Claim claim;
    Code code;
    std::string place;
    std::errc systemError{};
  } cases[] = {
      {"missing directory",
       claimConsistentFiles(std::vector{url("a"), url("z"), url("b")}, "clip", Texts{"mov", "xml"}), Code::notCreated,
       path("z/clip.mov"), std::errc::no_such_file_or_directory},
      // Files are created in the order of their paths.
      {"two missing directories", claimFileAmongstDirectories("clip", std::vector{url("z"), url("y")}),
       Code::notCreated, path("y/clip"), std::errc::no_such_file_or_directory},
      {"missing directory for a name", claimFileAmongstDirectories("clip", std::vector{url("a"), url("z")}),
       Code::notCreated, path("z/clip"), std::errc::no_such_file_or_directory},
      {"missing directory for a path", claimFile(url("z/clip.mov")), Code::notCreated, path("z/clip.mov"),
       std::errc::no_such_file_or_directory},
      {"file for a directory", claimConsistentFiles(std::vector{url("a"), url("file")}, "clip", Texts{"mov"}),
       Code::notCreated, path("file/clip.mov"), std::errc::not_a_directory},
      {"a long extension of two", claimConsistentFiles(good, "clip", Texts{"mov", std::string(251, 'y')}),
       Code::nameTooLong, path("a/clip." + std::string(251, 'y')), std::errc::filename_too_long},
      {"no room for a number", claimFileAmongstDirectories(almostTooLong, good, "mov"), Code::nameTooLong,
       path("a/" + almostTooLong + " 2.mov"), std::errc::filename_too_long},
      {"no room for a number in a path", claimFile(url("a/" + almostTooLong + ".mov")), Code::nameTooLong,
       path("a/" + almostTooLong + " 2.mov"), std::errc::filename_too_long},
      {"separator in a name", claimConsistentFiles(good, "../clip", Texts{"mov"}), Code::unusableName, "../clip.mov"},
      {"separator in an extension", claimFileAmongstDirectories("clip", good, "x/mov"), Code::unusableName,
       "clip.x/mov"},
      {"NUL", claimConsistentFiles(good, "clip", Texts{"mov", std::string("m\0", 2)}), Code::unusableName,
       std::string("clip.m\0", 7)},
      {"the directory above for a name", claimFileAmongstDirectories("..", good), Code::unusableName, ".."},
      {"the directory itself for a path", claimFile(url("a/.")), Code::unusableName, path("a/.")},
      {"a directory for a path", claimFile(url("a/clip/")), Code::unusableName, path("a/clip/")},
      {"not a file URL", claimFile(*Url::fromText("https://host/clip.mov")), Code::notAFileUrl,
       "https://host/clip.mov"},
      {"NUL in a path", claimFile(url(std::string("c\0.mov", 6))), Code::unusableName, path(std::string("c\0.mov", 6))},
      {"empty name", claimConsistentFiles(good, "", Texts{"mov"}), Code::unusableName, ""},
      {"empty name with an extension", claimFileAmongstDirectories("", good, "mov"), Code::unusableName, ""},
      {"empty path", claimFile(Url::fromFilePath("")), Code::unusableName, ""},
      {"root", claimFile(Url::fromFilePath("/")), Code::unusableName, "/"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    ASSERT_FALSE(each.claim);
    const std::error_code systemError =
        each.systemError == std::errc{} ? std::error_code() : make_error_code(each.systemError);
    EXPECT_EQ(each.claim.error(), (ClaimError{{each.code, each.place, {}, systemError}, {}}));
  }
  EXPECT_EQ(items(), before);
}

TEST_F(ClaimedFiles, NameTheFilesLeftBehindInTheirError) {
  ClaimError error{{ClaimErrorCode::notCreated, "/b/a\n.mov", {}, make_error_code(std::errc::permission_denied)}, {}};
  EXPECT_EQ(error.message(),
            "\"/b/a\\n.mov\": cannot be created: Permission denied; check that its directory exists and is writable, "
            "and that the volume has space");
  error.leftBehind = {Url::fromFilePath("/a/a\n.mov"), Url::fromFilePath("/a/b.mov")};
  EXPECT_THAT(error.message(), EndsWith("; left behind, empty: \"/a/a\\n.mov\" \"/a/b.mov\""));
}

/// Claims files under one name after the other, as all processes do, and writes the process into each.
void claimManyFiles(const std::string& root, int process, int rounds) {
  const Url a = Url::fromFilePath(root + "/a");
  const Url b = Url::fromFilePath(root + "/b");
  const std::vector<Url> directories = process % 2 == 0 ? std::vector{a, b} : std::vector{b, a};
  const Texts extensions = process % 3 == 0 ? Texts{"mov", "xml"} : Texts{"xml", "mov"};
  std::ofstream log(root + "/log" + std::to_string(process));
  for (int round = 0; round < rounds; ++round) {
    const std::string name = "clip" + std::to_string(round);
    // A single file takes the name of a claim for both directories between its first file and its last.
    const Claim single = process % 2 == 0 ? claimFileAmongstDirectories(name, directories, "mov")
                                          : claimFile(Url::fromFilePath(root + "/b/" + name + ".mov"));
    for (const Claim& claim : {single, claimConsistentFiles(directories, name, extensions)}) {
      if (!claim) {
        log << "error: " << claim.error().message() << '\n';
        continue;
      }
      for (const ClaimedFile& file : *claim) {
        std::ofstream(file.url.path(), std::ios::app) << process;
        log << file.url.path() << '\n';
      }
    }
  }
  log.flush();
}

TEST_F(ClaimedFiles, AreNeverSharedBetweenProcesses) {
  constexpr int processes = 6;
  constexpr int rounds = 100;
  makeDirectories({"a", "b"});
  directory_.write("b/clip0.mov", "first");
  int start[2];
  ASSERT_EQ(pipe(start), 0);
  std::vector<pid_t> children;
  for (int process = 0; process < processes; ++process) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      close(start[1]);
      char unused = 0;
      const bool began = read(start[0], &unused, 1) == 0;  // all processes begin when the pipe is closed
      if (began) claimManyFiles(directory_.path().string(), process, rounds);
      _exit(began ? 0 : 1);
    }
    children.push_back(child);
  }
  close(start[0]);
  close(start[1]);
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }

  std::map<std::string, std::string> owners{{path("b/clip0.mov"), "first"}};
  for (int process = 0; process < processes; ++process) {
    std::ifstream log(path("log" + std::to_string(process)));
    std::size_t count = 0;
    for (std::string line; std::getline(log, line); ++count) {
      EXPECT_TRUE(owners.emplace(line, std::to_string(process)).second) << line << " was claimed twice";
    }
    EXPECT_EQ(count, std::size_t{rounds} * (process % 2 == 0 ? 2 + 4 : 1 + 4));
  }
  std::map<std::string, std::string> found;
  for (const char* const directory : {"a", "b"}) {
    for (const auto& entry : fs::directory_iterator(path(directory))) {
      found.emplace(entry.path().string(), contentsOf(entry.path().string()));
    }
  }
  EXPECT_EQ(found, owners);
}

}  // namespace
}  // namespace meridian
