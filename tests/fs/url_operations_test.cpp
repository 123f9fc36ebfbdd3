#include "meridian/fs/url_operations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <system_error>

#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

Url file(std::string_view path) { return Url::fromFilePath(std::string(path)); }

TEST(UrlOperations, ComparePaths) {
  const struct {
    std::string_view path, other;
    bool isEqual, hasPrefix, hasPrefixDirectory, contains;
  } cases[] = {
      {"/a/b", "/A/B", true, false, false, false},
      {"/a/\xc3\x89", "/a/\xc3\xa9", true, false, false, false},
      {"/a/\xff", "/a/\xfe", false, false, false, false},
      {"/a/b", "/a/b/", false, false, true, false},
      {"/a/b/c", "/a/b", false, true, true, true},
      {"/a/bc", "/a/b", false, true, false, false},
      {"/a/bc/d", "/a/b", false, true, false, true},  // a text prefix
      {"/a/b/c", "/A/b", false, false, false, false},
      {"/a/./x/../b/c", "/a//b/", false, false, true, false},
      {"/a", "/", false, true, true, true},
      {"/a/b", "/", false, true, true, true},
      {"a/b", "/a", false, false, false, false},
      {"/a/b", "", false, true, true, true},
      {"a", "", false, true, true, true},
      {"./a", ".", false, true, true, false},
      {"a", "x/..", false, false, true, false},
      {"", "", true, true, true, false},
      {"/a", "/a/b", false, false, false, false},
  };
  for (const auto& [path, other, isEqual, startsWith, startsWithDirectory, contains] : cases) {
    const Url url = file(path);
    EXPECT_EQ(pathIsEqual(url, file(other)), isEqual) << path << " " << other;
    EXPECT_EQ(hasPrefix(url, file(other)), startsWith) << path << " " << other;
    EXPECT_EQ(hasPrefix(url, other), startsWith) << path << " " << other;
    EXPECT_EQ(prefixRange(file(other), url), startsWith ? std::optional(TextRange{0, other.size()}) : std::nullopt);
    EXPECT_EQ(hasPrefixDirectory(url, file(other)), startsWithDirectory) << path << " " << other;
    EXPECT_EQ(containsItem(file(other), url), contains) << path << " " << other;
  }
  EXPECT_TRUE(isSubPath(file("/a/b/c/d"), "b/c"));
  EXPECT_FALSE(isSubPath(file("/a/b/c/d"), "B/c"));
  EXPECT_TRUE(isSubPath(file(""), ""));
}

TEST(UrlOperations, CutPaths) {
  for (const auto& [path, trimmed] : std::initializer_list<std::pair<std::string_view, std::string_view>>{
           {"/x/y///", "/x/y"}, {"/x//y", "/x//y"}, {"///", ""}, {"", ""}}) {
    EXPECT_EQ(trimmingTrailingPathSeparators(file(path)), file(trimmed));
  }
  const struct {
    std::string_view path, volume, subPath, text;
  } cases[] = {
      {"/vol/card/A/1.mov", "/vol/card", "A", "A"},
      {"/vol/card/A/1.mov", "/vol/card/", "A", "A"},
      {"/vol/card/1.mov", "/vol/card", "", ""},
      {"/vol/card/1.mov", "/vol/card/", "vol/card", "vol/card"},
      {"/vol/cards/1.mov", "/vol/card", "s", "s"},
      {"/vol/card//A/1.mov", "/vol/card", "/A", "A"},  // the text loses one more separator than the URL
      {"/other/1.mov", "/vol/card", "other", "other"},
      {"/vol/card/A/", "/vol/card", "", ""},
      {"/1.mov", "", "", ""},
      {"1.mov", "/vol", ".", "."},
  };
  for (const auto& [path, volume, sub, text] : cases) {
    for (const bool includingFileName : {false, true}) {  // has no effect
      EXPECT_EQ(subPath(file(path), volume, includingFileName), file(sub)) << path;
      EXPECT_EQ(subPathString(file(path), volume, includingFileName), text) << path;
    }
  }
}

TEST(UrlOperations, AskTheFileSystem) {
  const test::TemporaryDirectory folder;
  const Url root = file(folder.path().string());
  const Url clip = file(folder.write(".clip.mov", ""));
  const Url missing = root.appendingPathComponent(".missing");
  EXPECT_TRUE(isDirectory(root));
  EXPECT_FALSE(isDirectory(clip));
  EXPECT_FALSE(isDirectory(missing));
  EXPECT_EQ(isHiddenItem(clip), true);
  EXPECT_EQ(isHiddenItem(root), false);
  EXPECT_EQ(isHiddenItem(missing), std::nullopt);
  const Url above = root.deletingLastPathComponent();
  EXPECT_TRUE(containsItem(above, clip, true));
  EXPECT_TRUE(containsItem(above, missing));
  EXPECT_FALSE(containsItem(above, missing, true));
  EXPECT_TRUE(fileSystemSupportsSymbolicLinks(clip));
  EXPECT_FALSE(fileSystemSupportsHardLinks(file("/proc/self")));
  EXPECT_THROW((void)fileSystemSupportsHardLinks(missing), std::system_error);
}

TEST(UrlOperations, TellRemoteUrlsByTheirScheme) {
  EXPECT_TRUE(isRemote(*Url::fromText("https://host/a")));
  EXPECT_TRUE(isRemote(*Url::fromText("http://host/a")));
  EXPECT_FALSE(isRemote(*Url::fromText("HTTPS://host/a")));
  EXPECT_FALSE(isRemote(*Url::fromText("ftp://host/a")));
  EXPECT_FALSE(isRemote(file("http://host/a")));
}

}  // namespace
}  // namespace meridian
