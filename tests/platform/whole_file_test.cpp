#include "meridian/platform/whole_file.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WholeFileTest : public testing::TestWithParam<WholeFile::Unfinished> {
 protected:
  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }
  [[nodiscard]] static auto create(const std::string& path) { return WholeFile::create(path, GetParam()); }

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
  if (GetParam() == WholeFile::Unfinished::withoutName) {
    EXPECT_THAT(directory_.names(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(, WholeFileTest,
                         testing::Values(WholeFile::Unfinished::withoutName, WholeFile::Unfinished::hidden));

}  // namespace
}  // namespace meridian
