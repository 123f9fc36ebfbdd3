#include "meridian/platform/whole_file.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WholeFileTest : public testing::TestWithParam<bool> {
 protected:
  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }
  [[nodiscard]] static auto create(const std::string& path, WholeFileOptions options = {}) {
    options.isHidden = GetParam();
    return WholeFile::create(path, options);
  }

  [[nodiscard]] std::string contentOf(const std::string& name) const {
    std::ifstream file(path(name));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  test::TemporaryDirectory directory_;
};

TEST_P(WholeFileTest, AppearsWhenItIsPublishedAndReplacesNothing) {
  {
    auto file = create(path("a"));
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->write("one "));
    EXPECT_FALSE(file->write("two"));
    EXPECT_FALSE(std::filesystem::exists(path("a")));
    EXPECT_FALSE(file->publish());
    EXPECT_THAT(directory_.names(), ElementsAre("a"));
  }
  EXPECT_EQ(std::filesystem::file_size(path("a")), 7U);
  std::filesystem::create_symlink("nowhere", path("link"));
  for (const char* const taken : {"a", "link"}) {
    auto second = create(path(taken));
    ASSERT_TRUE(second);
    EXPECT_FALSE(second->write("other"));
    EXPECT_EQ(second->publish(), std::errc::file_exists);
  }
  // One that is not published is gone.
  static_cast<void>(create(path("b")));
  EXPECT_THAT(directory_.names(), ElementsAre("a", "link"));
  EXPECT_EQ(std::filesystem::file_size(path("a")), 7U);
}

TEST_P(WholeFileTest, SaysWhyItCannotBeCreated) {
  EXPECT_EQ(create(path("none/a")).error(), std::errc::no_such_file_or_directory);
  for (const std::string& name : {path(""), std::string(), path(std::string("a\0b", 3))}) {
    EXPECT_FALSE(create(name)) << name;
  }
  EXPECT_THAT(directory_.names(), IsEmpty());
}

TEST_P(WholeFileTest, LeavesNothingWhenTheVolumeIsFull) {
  const auto write = [this] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{10'000, 10'000};
    setrlimit(RLIMIT_FSIZE, &limit);
    auto file = create(path("a"));
    const std::error_code error = file->write(std::string(20'000, 'x'));
    _exit(error == std::errc::file_too_large ? 0 : 1);
  };
  // Ends without a destructor, as a process that is killed.
  EXPECT_EXIT(write(), testing::ExitedWithCode(0), "");
  if (!GetParam()) {
    EXPECT_THAT(directory_.names(), IsEmpty());
  }
}

TEST_P(WholeFileTest, ReplacesAFileWhenItIsComplete) {
  directory_.write("a", "old");
  std::filesystem::permissions(path("a"), std::filesystem::perms(0640));
  std::filesystem::create_symlink("a", path("link"));
  for (const char* const name : {"a", "link", "new"}) {
    {
      auto abandoned = create(path(name), {.replaces = true});
      ASSERT_TRUE(abandoned && !abandoned->write("abandoned"));
    }
    auto file = create(path(name), {.replaces = true});
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->write(name));
    EXPECT_NE(contentOf(name), name);
    EXPECT_FALSE(file->publish());
    EXPECT_EQ(contentOf(name), name);
  }
  // The link stays, and so do the permissions of the file that it leads to.
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(contentOf("a"), "link");
  EXPECT_EQ(std::filesystem::status(path("a")).permissions(), std::filesystem::perms(0640));
  EXPECT_THAT(directory_.names(), ElementsAre("a", "link", "new"));
}

TEST_P(WholeFileTest, IsKeptInAWorkDirectory) {
  std::filesystem::create_directory(path("work"));
  // Often another volume, from which the file is copied.
  const test::TemporaryDirectory memory("/dev/shm");
  for (const std::string& work : {path("work"), memory.path().string()}) {
    for (const bool replaces : {false, true}) {
      SCOPED_TRACE(work);
      auto file = create(path("a"), {.replaces = replaces, .workDirectory = work});
      ASSERT_TRUE(file);
      EXPECT_FALSE(file->write(work));
      EXPECT_FALSE(file->publish());
      EXPECT_EQ(contentOf("a"), work);
    }
    auto second = create(path("a"), {.workDirectory = work});
    ASSERT_TRUE(second);
    EXPECT_EQ(second->publish(), std::errc::file_exists);
    std::filesystem::remove(path("a"));
  }
  EXPECT_THAT(directory_.names(), ElementsAre("work"));
  EXPECT_TRUE(std::filesystem::is_empty(path("work")));
  EXPECT_THAT(memory.names(), IsEmpty());
  EXPECT_FALSE(create(path("a"), {.workDirectory = path("none")}));
}

INSTANTIATE_TEST_SUITE_P(Unfinished, WholeFileTest, testing::Bool());

}  // namespace
}  // namespace meridian
