#include "meridian/base/numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cctype>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

namespace meridian {
namespace {

/// Compares the sign of zero and NaN too.
template <typename Number>
bool same(std::optional<Number> left, std::optional<Number> right) {
  if (!left || !right) return !left && !right;
  const bool alike = std::isnan(*left) ? std::isnan(*right) : *left == *right;
  return alike && std::signbit(*left) == std::signbit(*right);
}

/// Sets the process locale, and "C" again at the end of the scope.
class ScopedLocale {
 public:
  explicit ScopedLocale(const char* name) : isSet_(std::setlocale(LC_ALL, name) != nullptr) {}
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;
  ~ScopedLocale() { std::setlocale(LC_ALL, "C"); }

  [[nodiscard]] bool hasDecimalComma() const {
    return isSet_ && std::string_view(std::localeconv()->decimal_point) == ",";
  }

 private:
  bool isSet_;
};

/// Holds the reading to strtof or strtod in the "C" locale, then once more under a locale with a decimal comma.
template <typename Number>
void expectReadsWhatCReads(auto read, Number (*readByC)(const char*, char**)) {
  const std::string zeros(1000, '0');
  std::istringstream words(
      ". + - +-1 --1 1e 1e+ 1e+-1 1.e5 .5 5. -.5e-1 1,5 1_0 1f 0x 0x. 0x.p1 0x1p 0x1p+ 0x1p+-1 0X.8P1 0x1.8p+3 0xinf "
      "0xnan 0x-1 0x0x1 00x1 inf -INF +inf infi iNfInItY infinityx nan -NaN nan(x) nan() nan( nan(-) 1e400 -1e400 "
      "1e-400 -1e-400 0e400 -0 1e39 1e-46 7e-46 7.1e-46 3.4028236e38 0x1p-149 0x1p-150 0x1.8p-150 2.4e-324 2.5e-324 "
      "0x1p-1075 0x1.8p-1075 1.7976931348623159e308 1e99999999999999999999 0x1p-99999999999999999999 "
      "0e99999999999999999999 0x0p99999999999999999999 3.14159265358979323846264338327950288e-10 16777217 "
      "0x.00000000000000000001p1100 0x1.921fb54442d18469898cc51701b84p-37 0XABCDEFabcdef.0123456789p-100 "
      "123456789.0625 0." +
      zeros + "1e1001 1" + zeros + "e-1000 1" + zeros + " 0x1" + zeros + "p-2500");
  std::vector<std::string> texts{"", " 1", "1\n"};
  for (std::string word; words >> word;) texts.push_back(word);
  for (std::size_t length = 60; length < 70; ++length) {
    texts.push_back("1." + zeros.substr(0, length - 3) + "5");
    texts.push_back(texts.back() + " ");
  }

  const std::size_t unchanged = texts.size();
  std::mt19937 random(20240612);
  constexpr std::string_view characters = "0123456789012345678901234567890123456789abcfxXpPeE+-.,inty() ";
  std::vector<std::optional<Number>> expected;
  std::ptrdiff_t numbers = 0;
  for (std::size_t round = 0; round < 100000; ++round) {
    if (round >= unchanged) {
      std::string& text = texts.emplace_back(texts[round % unchanged]);
      for (auto changes = 1 + random() % 4; changes > 0; --changes) {
        text.replace(random() % (text.size() + 1), random() % 2, random() % 3,
                     characters[random() % characters.size()]);
      }
    }
    const std::string& text = texts[round];
    char* end = nullptr;
    const Number number = readByC(text.c_str(), &end);
    const bool isNumber = !text.empty() && !std::isspace(text[0]) && end == text.c_str() + text.size();
    expected.push_back(isNumber ? std::optional(number) : std::nullopt);
    numbers += isNumber;
  }
  EXPECT_TRUE(numbers > 30000 && numbers < 70000) << numbers;

  for (const char* locale : {"C", "de_DE.UTF-8"}) {
    const ScopedLocale scope(locale);
    for (std::size_t place = 0; place < texts.size(); ++place) {
      ASSERT_TRUE(same(read(texts[place]), expected[place])) << locale << ": " << texts[place];
    }
  }
  // A view may be followed by anything, and a NUL within it does not end it.
  EXPECT_EQ(read(std::string_view("12345").substr(1, 2)), Number{23});
  EXPECT_EQ(read(std::string_view("1\0", 2)), std::nullopt);
  EXPECT_EQ(read("1" + zeros + std::string(1, '\0')), std::nullopt);
  EXPECT_EQ(read("1" + std::string(1, '\0') + zeros), std::nullopt);
}

static_assert(noexcept(floatFromText("1")) && noexcept(doubleFromText("1")) && noexcept(integerFromText("1")));

template <typename Number, typename Bits>
void expectReadsBack(auto read) {
  using Limits = std::numeric_limits<Number>;
  std::vector<Number> numbers{Number(0), Number(1e-7), Number(1e21), Limits::min(), Limits::max()};
  for (std::size_t edge = 5; edge-- > 0;) numbers.push_back(std::nextafter(numbers[edge], Number(0)));
  numbers.insert(numbers.end(), {Limits::denorm_min(), -Limits::infinity(), Limits::infinity(), Number(-0.0)});
  std::mt19937_64 random(20240613);
  for (int round = 0; round < 30000; ++round) {
    numbers.push_back(std::bit_cast<Number>(static_cast<Bits>(random())));
    numbers.push_back(static_cast<Number>(random() % 100000000) / 1000);
  }
  for (const Number number : numbers) {
    const std::string text = shortestDecimalText(number);
    if (std::isnan(number)) {
      ASSERT_EQ(text, "nan");
      continue;
    }
    ASSERT_TRUE(same(read(text), std::optional(number))) << text;
    const Number magnitude = std::fabs(number);
    const bool plain = number == 0 || (magnitude >= Number(1e-7) && magnitude < Number(1e21));
    ASSERT_EQ(text.find_first_of("ei") == std::string::npos, plain) << text;
    ASSERT_TRUE(!plain || (text.find('.') < text.size() - 1 && std::isdigit(text[text.find('.') - 1]))) << text;
  }
}

TEST(Numbers, FloatReadsWhatCReads) { expectReadsWhatCReads<float>(floatFromText, std::strtof); }
TEST(Numbers, DoubleReadsWhatCReads) { expectReadsWhatCReads<double>(doubleFromText, std::strtod); }
TEST(Numbers, FloatReadsBack) { expectReadsBack<float, std::uint32_t>(floatFromText); }
TEST(Numbers, DoubleReadsBack) { expectReadsBack<double, std::uint64_t>(doubleFromText); }

TEST(Numbers, AreIndependentOfTheProcessLocale) {
  const ScopedLocale german("de_DE.UTF-8");
  ASSERT_TRUE(german.hasDecimalComma()) << "the build makes this locale, and LOCPATH says where";
  EXPECT_EQ(shortestDecimalText(30.0F) + " " + shortestDecimalText(23.976F), "30.0 23.976");
  EXPECT_EQ(shortestDecimalText(100000.0) + " " + shortestDecimalText(0.0001), "100000.0 0.0001");
  EXPECT_EQ(shortestDecimalText(1e-8F) + " " + shortestDecimalText(1e21), "1e-08 1e+21");
  EXPECT_EQ(fixedDecimalText(23.976, 2), "23.98");
  EXPECT_EQ(floatFromText("23.976"), 23.976F);
  EXPECT_EQ(doubleFromText("0x1.8p3"), 12.0);
  EXPECT_EQ(doubleFromText("1,5"), std::nullopt);
}

TEST(Numbers, ReadsIntegersUpToTheirBounds) {
  EXPECT_EQ(integerFromText("-0"), 0);
  EXPECT_EQ(integerFromText("+007"), 7);
  EXPECT_EQ(integerFromText("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(integerFromText("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  for (const auto text : {"", "+", "-", "+-1", "-+1", "++1", "--1", " 1", "1 ", "1.0", "1e3", "0x10", "1_0",
                          "9223372036854775808", "+9223372036854775808", "-9223372036854775809"}) {
    EXPECT_EQ(integerFromText(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace meridian
