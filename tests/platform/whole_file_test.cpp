#include "meridian/platform/whole_file.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

namespace fs = std::filesystem;

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
    EXPECT_FALSE(fs::exists(path("a")));
    EXPECT_FALSE(file->publish());
    EXPECT_THAT(directory_.names(), ElementsAre("a"));
  }
  EXPECT_EQ(fs::file_size(path("a")), 7U);
  fs::create_symlink("nowhere", path("link"));
  for (const char* const taken : {"a", "link"}) {
    auto second = create(path(taken));
    ASSERT_TRUE(second);
    EXPECT_FALSE(second->write("other"));
    EXPECT_EQ(second->publish(), std::errc::file_exists);
  }
  // One that is not published is gone.
  static_cast<void>(create(path("b")));
  EXPECT_THAT(directory_.names(), ElementsAre("a", "link"));
  EXPECT_EQ(fs::file_size(path("a")), 7U);
}

TEST_P(WholeFileTest, SaysWhyItCannotBeCreated) {
  EXPECT_EQ(create(path("none/a")).error(), std::errc::no_such_file_or_directory);
  for (const std::string& name : {path(""), std::string(), path(std::string("a\0b", 3))}) {
    EXPECT_FALSE(create(name)) << name;
  }
  EXPECT_THAT(directory_.names(), IsEmpty());
}

TEST_P(WholeFileTest, LeavesNothingWhenTheVolumeIsFull) {
  const auto write = [this](bool isAtPlace) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{10'000, 10'000};
    setrlimit(RLIMIT_FSIZE, &limit);
    auto file = create(path("a"));
    const std::string bytes(20'000, 'x');
    const std::error_code error = isAtPlace ? file->writeAt(5, bytes) : file->write(bytes);
    _exit(error == std::errc::file_too_large ? 0 : 1);
  };
  // Ends without a destructor, as a process that is killed.
  EXPECT_EXIT(write(false), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(write(true), testing::ExitedWithCode(0), "");
  if (!GetParam()) {
    EXPECT_THAT(directory_.names(), IsEmpty());
  }
}

TEST_P(WholeFileTest, IsWrittenAndReadAtAnyPlace) {
  auto file = create(path("a"));
  ASSERT_TRUE(file);
  EXPECT_FALSE(file->writeAt(6, "world"));
  EXPECT_FALSE(file->writeAt(0, "hello "));
  std::string read(20, '.');
  EXPECT_EQ(file->readAt(3, read).value(), 8U);
  EXPECT_EQ(read.substr(0, 9), "lo world.");
  EXPECT_EQ(file->readAt(11, read).value(), 0U);
  std::ofstream(file->unfinishedPath(), std::ios::app) << "!";
  EXPECT_FALSE(file->publish());
  EXPECT_EQ(contentOf("a"), "hello world!");
}

TEST_P(WholeFileTest, ReplacesAFileWhenItIsComplete) {
  directory_.write("a", "old");
  fs::permissions(path("a"), fs::perms(0640));
  fs::create_symlink("a", path("link"));
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
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_EQ(contentOf("a"), "link");
  EXPECT_EQ(fs::status(path("a")).permissions(), fs::perms(0640));
  EXPECT_THAT(directory_.names(), ElementsAre("a", "link", "new"));
}

TEST_P(WholeFileTest, ReplacesNothingButFilesThatMayBeWritten) {
  fs::create_directory(path("directory"));
  fs::create_symlink("nowhere", path("dangling"));
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  directory_.write("locked", "old");
  fs::permissions(path("locked"), fs::perms::owner_read);
  const auto errorOf = [this](const std::string& name) { return create(path(name), {.replaces = true}).error(); };
  EXPECT_EQ(errorOf("directory"), std::errc::is_a_directory);
  EXPECT_EQ(errorOf("dangling"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("pipe"), std::errc::not_supported);
  // The superuser may write all files.
  if (geteuid() != 0) {
    EXPECT_EQ(errorOf("locked"), std::errc::permission_denied);
  }
  EXPECT_THAT(directory_.names(), ElementsAre("dangling", "directory", "locked", "pipe"));
}

TEST_P(WholeFileTest, IsKeptInAWorkDirectory) {
  fs::create_directory(path("work"));
  // Often another volume, from which the file is copied.
  const test::TemporaryDirectory memory("/dev/shm");
  // More than is copied at a time.
  const std::string bytes = std::string(3'000'000, 'x') + "end";
  for (const std::string& work : {path("work"), memory.path().string()}) {
    SCOPED_TRACE(work);
    for (const bool replaces : {false, true}) {
      auto file = create(path("a"), {.replaces = replaces, .workDirectory = work});
      ASSERT_TRUE(file);
      EXPECT_FALSE(file->write(bytes));
      EXPECT_FALSE(file->publish());
      EXPECT_EQ(contentOf("a"), bytes);
    }
    auto second = create(path("a"), {.workDirectory = work});
    ASSERT_TRUE(second);
    EXPECT_EQ(second->publish(), std::errc::file_exists);
    fs::remove(path("a"));
  }
  EXPECT_THAT(directory_.names(), ElementsAre("work"));
  EXPECT_THAT(memory.names(), IsEmpty());
  EXPECT_TRUE(fs::is_empty(path("work")));
  EXPECT_FALSE(create(path("a"), {.workDirectory = path("none")}));
  EXPECT_EQ(create(path("none/a"), {.workDirectory = path("work")}).error(), std::errc::no_such_file_or_directory);
}

TEST_P(WholeFileTest, StopsWhileItIsCopied) {
  const test::TemporaryDirectory memory("/dev/shm");
  struct stat here{};
  struct stat there{};
  ASSERT_EQ(stat(directory_.path().c_str(), &here) | stat(memory.path().c_str(), &there), 0);
  if (here.st_dev == there.st_dev) GTEST_SKIP() << "/dev/shm is on the same volume";
  {
    auto file = create(path("a"), {.workDirectory = memory.path().string()});
    ASSERT_TRUE(file && !file->write("text"));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(file->publish(stop.get_token()), std::errc::operation_canceled);
  }
  EXPECT_THAT(directory_.names(), IsEmpty());
  EXPECT_THAT(memory.names(), IsEmpty());
}

TEST_P(WholeFileTest, GuardsItsHiddenNamesOnlyWhileItHasThem) {
  directory_.write("a", "old");
  std::vector<std::string> guarded;
  std::weak_ptr<void> held;
  auto file = create(path("a"), {.replaces = true, .guard = [&](const std::string& hidden) {
                                   EXPECT_FALSE(fs::exists(hidden));
                                   guarded.push_back(hidden);
                                   auto guard = std::make_shared<int>();
                                   held = guard;
                                   return guard;
                                 }});
  ASSERT_TRUE(file);
  EXPECT_EQ(!held.expired(), GetParam());
  EXPECT_FALSE(file->publish());
  EXPECT_TRUE(held.expired());
  EXPECT_EQ(guarded.size(), 1U);
}

/// Publishes a file again and again until the process is killed.
[[noreturn]] void publishForever(const std::string& path, const WholeFileOptions& options, const std::string& bytes) {
  for (;;) {
    auto file = WholeFile::create(path, options);
    if (!file || file->write(bytes)) _exit(1);
    const std::error_code error = file->publish();
    if (error && error != std::errc::file_exists) _exit(1);
    if (!options.replaces) unlink(path.c_str());
  }
}

TEST(WholeFileKilledTest, IsWholeOrNotThere) {
  const std::string old(200'000, 'o');
  const std::string bytes(200'000, 'n');
  for (int attempt = 0; attempt < 40; ++attempt) {
    const test::TemporaryDirectory directory;
    const bool replaces = attempt % 2 != 0;
    const std::string path = replaces ? directory.write("a", old) : (directory.path() / "a").string();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) publishForever(path, {.replaces = replaces}, bytes);
    usleep(static_cast<useconds_t>(500 + attempt * 250));
    ASSERT_EQ(kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "it failed before";
    std::ifstream file(path);
    const std::string found{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(found == bytes || found == (replaces ? old : "")) << found.size();
    if (replaces) continue;
    for (const std::string& name : directory.names()) EXPECT_EQ(name, "a");
  }
}

INSTANTIATE_TEST_SUITE_P(Unfinished, WholeFileTest, testing::Bool());

}  // namespace
}  // namespace meridian
