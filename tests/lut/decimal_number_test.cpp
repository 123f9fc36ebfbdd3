#include "meridian/base/decimal_number.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "meridian/base/plain_decimal.h"

namespace meridian {
namespace {

TEST(DecimalNumber, TextsAreReadExactlyOrNotAtAll) {
  for (const std::string text : {"",   "+",   "-",   ".",   "e5",  "1e",    "1e+",    "--1", "+-1",  "1.2.3",   " 1",
                                 "1 ", "1,5", "0x1", "inf", "nan", "1e400", "-1e400", "1f",  "1__0", "\xd9\xa1"}) {
    EXPECT_FALSE(DecimalNumber::fromText(text)) << text;
  }
  struct Case {
    std::string text;
    std::int64_t integer;
  };
  const Case cases[] = {
      {"9007199254740993", 9007199254740993},
      {"9223372036854775807", INT64_MAX},
      {"9223372036854775808", INT64_MAX},
      {"-9223372036854775808", INT64_MIN},
      {"-9223372036854775809", INT64_MIN},
      {"0.99999999999999999999", 0},
      {"-0.99999999999999999999", 0},
      {"12345e-2", 123},
      {"-1.5e1", -15},
      {"0.00012e5", 12},
      {"1e18", 1000000000000000000},
      {"1e19", INT64_MAX},
      {"0e999999999999999999999", 0},
      {"1e-999999999999999999999", 0},
      {"000000000000000000000000000000012", 12},
      {"1" + std::string(5000, '0') + "e-5000", 1},
      {"0." + std::string(5000, '0') + "7e5001", 7},
  };
  for (const Case& each : cases) {
    const auto number = DecimalNumber::fromText(each.text);
    ASSERT_TRUE(number) << each.text;
    EXPECT_EQ(number->integerValue(), each.integer) << each.text;
    EXPECT_EQ(number->doubleValue(), std::strtod(each.text.c_str(), nullptr)) << each.text;
  }
}

TEST(DecimalNumber, PlainDecimalsAreReadAsOneCharacterAfterTheOtherSays) {
  std::mt19937 random(3);
  const auto digits = [&random](std::size_t most) {
    std::string text;
    for (std::size_t left = random() % (most + 1); left != 0; --left) text += static_cast<char>('0' + random() % 10);
    return text;
  };
  const std::string ends = " \t\n\r:/.eE+-0\x80\xff,";
  std::size_t plain = 0;
  for (int i = 0; i < 300'000; ++i) {
    const char* const signs[] = {"", "", "", "-", "+"};
    std::string text = signs[random() % 5] + digits(i % 3 == 0 ? 9 : 1) + (random() % 8 == 0 ? "" : ".") +
                       (i % 3 == 1 ? digits(6) + digits(9) : digits(8));
    const std::size_t length = text.size();
    // Also with one character that a comparison of many at once might take for a digit.
    if (!text.empty() && random() % 8 == 0) text[random() % length] = static_cast<char>(random());
    text += ends[random() % ends.size()];
    text += digits(2);
    text.resize(text.size() + 1 + detail::plainDecimalPadding, random() % 2 == 0 ? '\0' : '7');
    text[text.size() - 1 - detail::plainDecimalPadding] = '\0';
    const detail::PlainDecimal fast = detail::readPlainDecimal(text.c_str());
    const detail::PlainDecimal expected = detail::readPlainDecimalByCharacters(text.c_str());
    ASSERT_EQ(fast.end, expected.end) << text.c_str();
    ASSERT_EQ(std::bit_cast<std::uint64_t>(fast.number), std::bit_cast<std::uint64_t>(expected.number)) << text.c_str();
    if (fast.end == nullptr) continue;
    ++plain;
    const auto number = DecimalNumber::fromText({text.c_str(), fast.end});
    ASSERT_TRUE(number) << text.c_str();
    ASSERT_EQ(fast.number, number->doubleValue()) << text.c_str();
  }
  EXPECT_GT(plain, 100'000U);
}

}  // namespace
}  // namespace meridian
