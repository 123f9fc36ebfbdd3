#include "meridian/base/decimal_number.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

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

}  // namespace
}  // namespace meridian
