#include "meridian/media/file_extension.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "meridian/base/text.h"
#include "meridian/platform/path_text.h"

namespace meridian {
namespace {

using enum FileExtension;
using Set = FileExtensionSet;

Set setOf(const auto& members) {
  Set set;
  for (const FileExtension member : members) set.insert(member);
  return set;
}

TEST(FileExtension, IsFoundByRawValueAndByPath) {
  EXPECT_EQ(allCases<FileExtension>().size(), 245U);
  for (const FileExtension extension : allCases<FileExtension>()) {
    const std::string raw(rawValue(extension));
    std::string upper = raw;
    for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    EXPECT_EQ(caseFolded(raw), raw);
    EXPECT_EQ(fromRawValue<FileExtension>(raw), extension);
    EXPECT_EQ(fromRawValue<FileExtension>(upper).has_value(), upper == raw) << raw;
    EXPECT_EQ(fileExtensionIgnoringCase(upper), extension);
    EXPECT_EQ(fileExtensionIgnoringCase("." + raw), std::nullopt) << raw;
    // The extension of a path has no dot, so none is "targ.gz".
    EXPECT_EQ(Set{extension}.contains(url(extension, "/out.d/clip")), extension != targz) << raw;
  }
  EXPECT_EQ(url(mov, "/out/clip") + url(directory, "/out/clip"), "/out/clip.mov/out/clip");
  EXPECT_EQ(fromRawValue<FileExtension>("tar.gz"), std::nullopt);
  EXPECT_EQ(fileExtensionIgnoringCase("\u212aMZ"), kmz);  // U+212A, the Kelvin sign, folds to k
}

TEST(FileExtensionSet, ContainsAPathByItsExtension) {
  EXPECT_EQ(lastPathComponent("/card/clip.mov//"), "clip.mov");
  const struct {
    std::string_view path, extension;
    std::optional<FileExtension> named;
  } cases[] = {
      {"/card/A001.MoV", "MoV", mov},      {"clip.mov///", "mov", mov},
      {"file:///a%20b.R3D", "R3D", r3d},   {"backup.tar.gz", "gz", gz},
      {"/card.mov/clip", "", directory},   {"/card/.mov", "", directory},
      {"/card/..mov", "mov", mov},         {"clip.", "", directory},
      {"/card/..", "", directory},         {"//", "", directory},
      {"clip.mov ", "mov ", std::nullopt}, {"clip.mo\xf6", "mo\xf6", std::nullopt},
  };
  const Set all = setOf(allCases<FileExtension>());
  for (const auto& [text, extension, named] : cases) {
    EXPECT_EQ(pathExtension(text), extension) << text;
    EXPECT_EQ(all.contains(text), named.has_value()) << text;
    EXPECT_FALSE((all - Set{named.value_or(mov)}).contains(text)) << text;
  }
}

TEST(FileExtensionSet, UsesOnlyThePathOfAUrl) {
  const Set movies{mov};
  for (const auto url : {"https://h/b.mov?x=1", "file:///a/b.MOV#t", "https://h/b.mov?p=/x", "file:///a/b.m%6Fv",
                         "/a/what?#.mov", "s3://bucket/50%.mov"}) {
    EXPECT_TRUE(movies.contains(url)) << url;
    if (const auto parsed = Url::fromText(url)) {
      EXPECT_TRUE(movies.contains(*parsed)) << url;
    }
  }
  for (const auto url : {"https://h/b?f=a.mov", "https://example.mov", "file:///a/b%2Emo", "http://h#/a.mov"}) {
    EXPECT_FALSE(movies.contains(url) || movies.contains(*Url::fromText(url))) << url;
  }
}

TEST(FileExtensionSet, GroupsRelateAsDocumented) {
  const Set media = Set::multimediaFileExtensions();
  const Set others = Set::extensionsWithoutVideoMedia();
  EXPECT_TRUE((media & others).empty() && (media | others) == setOf(allCases<FileExtension>()));
  EXPECT_TRUE((Set::rawMultimediaFileExtensions() - Set::videoFileExtensions()).empty());
  EXPECT_TRUE((Set::videoFileExtensions() & Set::audioOnlyFileExtensions()).empty());
  EXPECT_EQ(Set::musicFileExtensions(), Set::audioOnlyFileExtensions() - (Set{iff, mpa}));
  EXPECT_TRUE(others.contains("/card/CLIPS") && others.contains("LOOK.CUBE") && !others.contains("A001.MXF"));
}

TEST(FileExtensionSet, BehavesLikeStdSet) {
  std::mt19937 random(20240615);
  const auto draw = [&random](std::set<FileExtension> members) {
    for (auto count = random() % 200; count > 0; --count) members.insert(allCases<FileExtension>()[random() % 245]);
    return members;
  };
  for (int round = 0; round < 500; ++round) {
    const auto left = draw({});
    const auto right = draw({});
    std::set<FileExtension> either = left;
    std::set<FileExtension> alone = left;
    Set rest = setOf(left);
    for (const FileExtension member : right) {
      either.insert(member);
      alone.erase(member);
      rest.remove(member);
    }
    ASSERT_TRUE(std::ranges::equal(setOf(left) | setOf(right), either));
    ASSERT_TRUE(std::ranges::equal(setOf(left) - setOf(right), alone));
    ASSERT_EQ(setOf(left) & setOf(right), setOf(left) - rest);
    ASSERT_TRUE(rest == setOf(alone) && rest.size() == alone.size() && rest.empty() == alone.empty());
    ASSERT_EQ(setOf(left) == setOf(right), left == right);
  }
}

}  // namespace
}  // namespace meridian
