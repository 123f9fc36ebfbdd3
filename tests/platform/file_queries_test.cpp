#include "meridian/platform/file_queries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <system_error>

#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

namespace filesystem = std::filesystem;

TEST(FileQueries, FollowLinks) {
  const test::TemporaryDirectory temporary;
  const std::string root = temporary.path().string();
  const std::string file = temporary.write("\xff\n.mov", "");
  filesystem::create_directory(root + "/.directory");
  filesystem::create_directory_symlink(root + "/.directory", root + "/to directory");
  filesystem::create_symlink("nowhere", root + "/.dangling");
  filesystem::create_symlink("circle", root + "/circle");
  filesystem::create_symlink(std::filesystem::path(file).filename().string() + "/x", root + "/to below a file");
  filesystem::create_symlink(std::string(300, 'x'), root + "/too far");
  using Hidden = std::optional<bool>;
  const struct {
    std::string path;
    bool exists, isDirectory;
    Hidden isHidden;
    std::errc lookupError = {};
  } cases[] = {
      {file, true, false, false},
      {file + "/", false, false, std::nullopt, std::errc::not_a_directory},
      {root + "/to below a file", false, false, false},
      {root + "/too far", false, false, false, std::errc::filename_too_long},
      {root, true, true, false},
      {root + "/.directory", true, true, true},
      {root + "/.directory/", true, true, true},
      {root + "/.directory/.", true, true, false},
      {root + "/.directory/..", true, true, false},
      {root + "/to directory", true, true, false},
      {root + "/.dangling", false, false, true},
      {root + "/circle", false, false, false},
      {root + "/.missing", false, false, std::nullopt},
      {root + std::string("\0/x", 3), false, false, std::nullopt, std::errc::no_such_file_or_directory},
      {root + "/" + std::string(300, '.'), false, false, std::nullopt, std::errc::filename_too_long},
      {std::string(5000, '/') + "tmp", false, false, std::nullopt, std::errc::filename_too_long},
      {"", false, false, std::nullopt},
      {"/", true, true, false},
  };
  for (const auto& [path, exists, isDirectory, isHidden, error] : cases) {
    EXPECT_EQ(pathExists(path), exists) << path;
    EXPECT_EQ(pathIsDirectory(path), isDirectory) << path;
    EXPECT_EQ(pathIsHidden(path), isHidden) << path;
    EXPECT_EQ(nameIsTaken(path), isHidden.has_value()) << path;
    EXPECT_EQ(lookupError(path), error == std::errc() ? std::error_code() : make_error_code(error)) << path;
  }
}

TEST(FileQueries, AVolumeSupportsTheLinksThatCanBeCreatedOnIt) {
  const test::TemporaryDirectory temporary;
  const std::string file = temporary.write("file", "");
  std::error_code symbolic;
  std::error_code hard;
  filesystem::create_symlink("file", file + " symbolic", symbolic);
  filesystem::create_hard_link(file, file + " hard", hard);
  EXPECT_EQ(volumeLinks(file).symbolic, !symbolic);
  EXPECT_EQ(volumeLinks(file).hard, !hard);
  EXPECT_FALSE(volumeLinks("/proc").symbolic);
  EXPECT_FALSE(volumeLinks("/proc").hard);
  for (const std::string& missing : {file + "/missing", std::string("/tmp\0x", 6)}) {
    try {
      EXPECT_TRUE(volumeLinks(missing).hard);
      ADD_FAILURE() << "nothing thrown";
    } catch (const std::system_error& error) {
      EXPECT_NE(error.code(), std::error_code());
      EXPECT_THAT(error.what(), testing::HasSubstr(missing.substr(0, 4)));
    }
  }
}

}  // namespace
}  // namespace meridian
