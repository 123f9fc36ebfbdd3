#include "meridian/fs/name_rules.h"

#include <gtest/gtest.h>

#include "meridian/base/text.h"

namespace meridian {
namespace {

TEST(NameRules, DeletePrefixesAndSuffixes) {
  EXPECT_EQ(deletingPrefix("/a/a", "/a"), "/a");
  EXPECT_EQ(deletingPrefix("/a", "/A"), "/a");
  EXPECT_EQ(deletingPrefix("a", "ab"), "a");
  EXPECT_EQ(deletingSuffix("clip.mov.mov", ".mov"), "clip.mov");
  EXPECT_EQ(deletingSuffix("clip", ""), "clip");
  EXPECT_EQ(deletingSuffix("clip", "clip"), "");
}

TEST(NameRules, DecideOnEveryByte) {
  EXPECT_EQ(legalLtfsCharacters.size(), 88U);
  for (int code = 0; code < 256; ++code) {
    const std::string byte(1, static_cast<char>(code));
    const bool isLegal = code >= ' ' && code <= '~' && std::string_view("*?<>\"|\\").find(byte) == std::string::npos;
    EXPECT_EQ(removingInvalidLtfsCharacters(byte), isLegal ? byte : "") << code;
    EXPECT_EQ(invalidLtfsCharacters.contains(byte), !isLegal) << code;
    EXPECT_EQ(removingDisallowedMacOSFilesystemCharacters(byte), code == '/' || code == ':' ? "" : byte) << code;
  }
}

TEST(NameRules, TellNamesOfFiles) {
  const std::string withNul("a\0.mov", 6);
  for (const std::string_view name : {"clip.mov", "...", ".a", " ", "-", "\xff"}) {
    EXPECT_TRUE(isFileName(name) && pathNamesFile(name) && pathNamesFile("/out/" + std::string(name))) << name;
  }
  for (const std::string& name : {std::string(), std::string("."), std::string(".."), withNul}) {
    EXPECT_FALSE(isFileName(name) || pathNamesFile(name) || pathNamesFile("/out/" + name)) << name;
  }
  EXPECT_FALSE(isFileName("a/b") || isFileName("/") || isFileName("a/"));
  EXPECT_FALSE(pathNamesFile("/") || pathNamesFile("/a/") || pathNamesFile(withNul + "/clip.mov"));
}

TEST(NameRules, RemoveWholeCharacters) {
  EXPECT_EQ(removingInvalidLtfsCharacters("Caf\xc3\xa9\t<1>/ a:b~"), "Caf1/ a:b~");
  EXPECT_EQ(removingDisallowedMacOSFilesystemCharacters("/a:b/\xc3\xa9\n"), "ab\xc3\xa9\n");
  // A stray byte is not a listed character, even if a listed character contains the same byte.
  const CharacterSet accents("\xc3\xa9\xf0\x9f\x8e\xac");
  const std::string text = "a\xc3\xa9\xc3\xa8\xa9\xc3\xf0\x9f\x8e\xac!";
  EXPECT_EQ(removingDisallowedCharacters(text, accents), "a\xc3\xa8\xa9\xc3!");
  EXPECT_EQ(removingAllExcept(text, accents), "\xc3\xa9\xf0\x9f\x8e\xac");
  EXPECT_EQ(removingAllExcept(text, accents.inverted()), "a\xc3\xa8\xa9\xc3!");
  EXPECT_EQ(removingDisallowedCharacters(text, CharacterSet("")), text);
  EXPECT_EQ(removingAllExcept(text, CharacterSet("")), "");
}

}  // namespace
}  // namespace meridian
