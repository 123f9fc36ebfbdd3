#include "meridian/base/text.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "meridian/base/printable.h"

namespace meridian {
namespace {

/// The character in UTF-8, surrogates included.
std::string utf8(char32_t c) {
  const auto rest = [c](int shift) { return static_cast<char>(0x80 | (c >> shift & 0x3f)); };
  if (c < 0x80) return {static_cast<char>(c)};
  if (c < 0x800) return {static_cast<char>(0xc0 | c >> 6), rest(0)};
  if (c < 0x10000) return {static_cast<char>(0xe0 | c >> 12), rest(6), rest(0)};
  return {static_cast<char>(0xf0 | c >> 18), rest(12), rest(6), rest(0)};
}

std::vector<std::string_view> unitsOf(std::string_view text) {
  std::vector<std::string_view> units;
  for (; !text.empty(); text.remove_prefix(units.back().size()))
    units.push_back(text.substr(0, firstUnit(text).length));
  return units;
}

std::string invalidBytes(std::string_view text) {
  std::string bytes;
  for (const auto unit : unitsOf(text)) bytes += firstUnit(unit).isCharacter ? std::string_view() : unit;
  return bytes;
}

TEST(Text, MapsCaseByUnicode) {
  const struct {
    std::string_view text, lower, folded;
  } cases[] = {
      {"\u0130T\u00c9", "i\u0307t\u00e9", "i\u0307t\u00e9"},
      {"\u212a\u212b", "k\u00e5", "k\u00e5"},  // the Kelvin and the Angstrom sign
      {"\u017f\u00df\u1e9e\ufb03", "\u017f\u00df\u00df\ufb03", "sssssffi"},
      {"\u03a3\u0391\u03a3\u03c2", "\u03c3\u03b1\u03c3\u03c2",
       "\u03c3\u03b1\u03c3\u03c3"},  // the final sigma is not special
      {"\uff21\u01c5\U00010400", "\uff41\u01c6\U00010428", "\uff41\u01c6\U00010428"},
      {"\u0131e\u0301", "\u0131e\u0301", "\u0131e\u0301"},
  };
  for (const auto& [text, lower, folded] : cases) {
    EXPECT_EQ(lowercased(text), lower);
    EXPECT_EQ(caseFolded(text), folded);
    EXPECT_TRUE(equalsIgnoringCase(text, folded) && equalsIgnoringCase(folded, text)) << text;
    EXPECT_TRUE(containsIgnoringCase(text, folded) && containsIgnoringCase(folded, text)) << text;
  }
  EXPECT_TRUE(containsIgnoringCase("", "") && !containsIgnoringCase("", "a"));
  EXPECT_TRUE(containsIgnoringCase("mask", "\u212a") && !equalsIgnoringCase("\u0130", "i"));
}

TEST(Text, EveryCharacterFollowsTheRules) {
  std::string whiteSpace;
  for (char32_t c = 0; c < 0x20000; ++c) {  // characters beyond have neither case nor white space
    const std::string text = utf8(c);
    const std::string lower = lowercased(text);
    const std::string folded = caseFolded(text);
    if (trimmed(text).empty()) whiteSpace += text;
    ASSERT_EQ(isValidUtf8(text), c < 0xd800 || c > 0xdfff);
    ASSERT_TRUE(isValidUtf8(lower + folded) == isValidUtf8(text) && !lower.empty() && !folded.empty()) << text;
    ASSERT_TRUE(lowercased(lower) == lower && caseFolded(folded) == folded && caseFolded(lower) == folded) << text;
  }
  EXPECT_EQ(whiteSpace,
            "\t\n\v\f\r \u0085\u00a0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200a"
            "\u2028\u2029\u202f\u205f\u3000");
}

TEST(Text, InvalidBytesAreKeptBesideAnyText) {
  // Stray bytes (some are white space in Latin-1), overlong forms ("A", spaces), surrogates, beyond Unicode, truncated.
  for (const std::string bytes :
       {"\x80", "\x85", "\xa0", "\xff", "\xc1\x81", "\xc0\xa0", "\xe0\x82\xa0", "\xf0\x80\x80\xa0", "\xed\xa0\x80",
        "\xed\xb3\xbf", "\xf4\x90\x80\x80", "\xf8\x88\x80\x80\x80", "\xe3\x80", "\xe2\x84", "\xc3", "\xf0\x90\x90"}) {
    EXPECT_EQ(invalidBytes(bytes), bytes);
    for (const std::string left : {"", "A", " ", "\u00c9", "\u3000", "\u212a"}) {
      for (const std::string right : {"", "Z", "\n", "\u00c9", "\u2028", "\u0130"}) {
        const std::string text = left + bytes + right;
        EXPECT_EQ(lowercased(text), lowercased(left) + bytes + lowercased(right));
        EXPECT_EQ(caseFolded(text), caseFolded(left) + bytes + caseFolded(right));
        EXPECT_EQ(trimmed(text), std::string(trimmed(left)) + bytes + std::string(trimmed(right)));
      }
    }
  }
}

TEST(Text, HasItsPropertiesForAnyBytes) {
  const auto pieces = unitsOf(
      "AaBbZz@[`{\x7f \n\u00c9\u0130\u212a\u017f\u00df\u1e9e\u03a3\u03c2\uff21\u00a0\u2028\u3000\u200b\U0001f3ac"
      "\xc0\xe2\x80\x84\xe3\x80\xc1\x81\xf0\x90\xc2\x85\xa0\xaa\xff\xed\xa0\xc3\x89");
  std::mt19937 random(20240611);
  for (int round = 0; round < 6000; ++round) {
    std::string text;
    for (auto count = random() % 16; count > 0; --count)
      text += pieces[random() % (round % 2 == 0 ? pieces.size() : 14)];
    const std::string lower = lowercased(text);
    const std::string folded = caseFolded(text);
    ASSERT_TRUE(lowercased(lower) == lower && caseFolded(folded) == folded && caseFolded(lower) == folded) << text;
    ASSERT_TRUE(trimmed(lower) == lowercased(trimmed(text)) && trimmed(trimmed(text)) == trimmed(text)) << text;
    for (const std::string_view result : {std::string_view(lower), std::string_view(folded), trimmed(text)}) {
      ASSERT_EQ(invalidBytes(result), invalidBytes(text)) << text;
    }
    ASSERT_EQ(containsIgnoringCase(text, "aB"), folded.find("ab") != std::string::npos) << text;
    ASSERT_TRUE(isValidUtf8(printable(text)) && printable(printable(text)) == printable(text)) << text;
    std::string head;
    for (const std::string_view unit : unitsOf(text)) {
      head += unit;
      const std::string tail = text.substr(head.size());
      // If only the head is ASCII, it takes the fast path and the whole the general one.
      ASSERT_EQ(lowercased(head) + lowercased(tail), lower);
      ASSERT_EQ(caseFolded(head) + caseFolded(tail), folded);
      ASSERT_TRUE(containsIgnoringCase(text, head) && containsIgnoringCase(lower, tail)) << text;
      ASSERT_EQ(equalsIgnoringCase(head, tail), caseFolded(head) == caseFolded(tail)) << text;
      // A byte is found on its own, never within a character.
      const std::string last = head.substr(head.size() - 1);
      ASSERT_EQ(containsIgnoringCase(text, last), last[0] > 0 || invalidBytes(text).find(last) != std::string::npos);
    }
  }
}

TEST(Text, PrintableEscapesWhatCouldForgeALineOrControlATerminal) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"clip\nerror: forged\r\t", R"(clip\nerror: forged\r\t)"},
      {{"\x1b[31m\0\a\x7f", 8}, R"(\x1b[31m\x00\x07\x7f)"},
      {"\u0085\u009b31m\u2028\u2029", R"(\u{0085}\u{009b}31m\u{2028}\u{2029})"},
      {"a\u202eb\u2066c\u2069\u200f\u061c", R"(a\u{202e}b\u{2066}c\u{2069}\u{200f}\u{061c})"},
      {"\u009f|\u00ad\u200b\u2060\u2064\ufeff\U000e0000\U000e007f",
       R"(\u{009f}|\u{00ad}\u{200b}\u{2060}\u{2064}\u{feff}\u{e0000}\u{e007f})"},
      {"\x9b\xff|\xc0\x8a|\xed\xa0\x80|\xe3\x81", R"(\x9b\xff|\xc0\x8a|\xed\xa0\x80|\xe3\x81)"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(printable(text), expected);
  constexpr std::string_view ordinary = "C:\\new \u6620\u50cf \U0001f468\u200d\U0001f469 \u05e9\u05dc e\u0301\u00a0~";
  EXPECT_EQ(printable(ordinary), ordinary);
  EXPECT_EQ(displayWidth(ordinary), 23U);
  EXPECT_EQ(displayWidth("\xff\u00e9\xc3"), 3U);
}

}  // namespace
}  // namespace meridian
