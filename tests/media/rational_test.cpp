#include "meridian/media/rational.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <unordered_set>

namespace meridian {
namespace {

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();

constexpr bool sameTerms(const NumericRational& left, const NumericRational& right) {
  return left.numerator == right.numerator && left.denominator == right.denominator;
}

TEST(NumericRational, ComparesByItsOwnRules) {
  struct Case {
    NumericRational left, right;
    bool equal;
  };
  // Equal numerators suffice, and reducing assumes positive terms.
  constexpr Case cases[]{{{1, 2}, {1, 3}, true},    {{2, 4}, {1, 2}, true},      {{2, 4}, {1, 3}, false},
                         {{3, 0}, {5, 0}, true},    {{3, 0}, {3, 7}, true},      {{3, 0}, {5, 7}, false},
                         {{0, 5}, {0, 0}, true},    {{-3, 2}, {-1, 1}, true},    {{4, -2}, {2, -1}, true},
                         {{2, -4}, {-1, 2}, false}, {{-2, -4}, {-1, -2}, false}, {{least, 2}, {least / 2, 1}, true}};
  for (const auto& [left, right, equal] : cases) {
    EXPECT_EQ(left == right, equal) << left.numerator << '/' << left.denominator;
    EXPECT_EQ(right == left, equal) << left.numerator << '/' << left.denominator;
  }
  static_assert(NumericRational{1, 2} == NumericRational{1, 3});
}

TEST(NumericRational, CalculatesReducedFractions) {
  std::mt19937_64 random(3);
  for (int round = 0; round < 20000; ++round) {
    const auto term = [&] { return static_cast<std::int64_t>(random() % (1U << (1 + random() % 31))); };
    const NumericRational left{term(), term()};
    const NumericRational right{term(), term()};
    const auto check = [](const NumericRational& result, std::int64_t numerator, std::int64_t denominator) {
      const std::int64_t divisor = numerator == 0 ? denominator : std::gcd(numerator, denominator);
      return denominator == 0 ? sameTerms(result, {numerator, 0})
                              : sameTerms(result, {numerator / divisor, denominator / divisor});
    };
    ASSERT_TRUE(check(left * right, left.numerator * right.numerator, left.denominator * right.denominator));
    ASSERT_TRUE(check(left / right, left.numerator * right.denominator, left.denominator * right.numerator));
    const auto quotient = left.safeQuotient(right);
    const NumericRational exact = left / right;
    ASSERT_EQ(quotient.has_value(), exact.denominator != 0);
    if (quotient) {
      ASSERT_EQ(*quotient, static_cast<double>(exact.numerator) / static_cast<double>(exact.denominator));
    }
    // Equal ratios have equal hashes.
    ASSERT_TRUE(left != right || std::hash<NumericRational>{}(left) == std::hash<NumericRational>{}(right));
  }
  EXPECT_TRUE(sameTerms(NumericRational{1, 0} * NumericRational{2, 3}, {2, 0}));
  EXPECT_EQ((NumericRational{1, 2}.safeQuotient({0, 5})), std::nullopt);
  EXPECT_EQ((NumericRational{0, 5}.safeQuotient({1, 2})), 0.0);
  // 4/-2 reduces to 1/0.
  EXPECT_EQ((NumericRational{4, 1}.safeQuotient({-2, 1})), std::nullopt);
  EXPECT_EQ((CGFloatRational{1, 2}.safeQuotient({3, 4})), 4.0 / 6.0);
  EXPECT_EQ((CGFloatRational{1, 2}.safeQuotient({-0.0, 4})), std::nullopt);
}

TEST(NumericRationalDeathTest, NamesOperationAndOperandsOnOverflow) {
  EXPECT_DEATH((void)(NumericRational{greatest, 1} * NumericRational{2, 3}),
               "NumericRational \\* of 9223372036854775807/1 and 2/3 leaves the signed 64-bit range");
  EXPECT_DEATH((void)(NumericRational{5, least} / NumericRational{-1, 7}),
               "NumericRational / of 5/-9223372036854775808 and -1/7 ");
  EXPECT_DEATH((void)(NumericRational{1, greatest}.safeQuotient({2, 1})),
               "safeQuotient of 1/9223372036854775807 and 2/1");
  EXPECT_DEATH((void)NumericRational::fromSize({std::nan(""), 1}), "of the size nan x 1.0");
  EXPECT_DEATH((void)NumericRational::fromSize({1, 0x1p63}), "of the size 1.0 x 9223372036854775808.0");
}

TEST(NumericRational, CheckedResultsAreAbsentExactlyOnOverflow) {
  std::mt19937_64 random(4);
  int overflows = 0;
  for (int round = 0; round < 20000; ++round) {
    // Terms of any length, so that about half the products leave 64 bits.
    const auto term = [&] { return static_cast<std::int64_t>(random() >> (1 + random() % 62)); };
    const NumericRational left{term(), term()};
    const NumericRational right{term(), term()};
    const auto fits = [](std::int64_t one, std::int64_t other) { return one == 0 || other <= greatest / one; };
    const bool productFits = fits(left.numerator, right.numerator) && fits(left.denominator, right.denominator);
    const bool quotientFits = fits(left.numerator, right.denominator) && fits(left.denominator, right.numerator);
    ASSERT_EQ(checkedProduct(left, right).has_value(), productFits);
    ASSERT_EQ(checkedQuotient(left, right).has_value(), quotientFits);
    if (productFits) {
      ASSERT_TRUE(sameTerms(*checkedProduct(left, right), left * right));
    }
    if (quotientFits) {
      ASSERT_TRUE(sameTerms(*checkedQuotient(left, right), left / right));
    }
    overflows += !productFits;
  }
  EXPECT_TRUE(overflows > 4000 && overflows < 16000) << overflows;
  EXPECT_EQ(NumericRational::checkedFromSize({1920, std::nan("")}), std::nullopt);
  EXPECT_EQ(NumericRational::checkedFromSize({-0x1p64, 1080}), std::nullopt);
  EXPECT_TRUE(sameTerms(*NumericRational::checkedFromSize({-0x1p63, 0}), {least, 0}));
}

TEST(NumericRational, TruncatesASize) {
  EXPECT_TRUE(sameTerms(NumericRational::fromSize({1920.9, -1080.9}), {1920, -1080}));
  EXPECT_TRUE(sameTerms(NumericRational::fromSize({-0x1p63, std::nextafter(0x1p63, 0)}), {least, 9223372036854774784}));
}

TEST(MediaRational, ReadsANumberInMillionths) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  struct Case {
    double number;
    std::optional<MediaRational> ratio;
  };
  const Case cases[]{{29.97, {{29970000, 1000000}}},
                     {25, {{25, 1}}},
                     {-23.976, {{-23976000, 1000000}}},
                     {0.0000019, {{1, 1000000}}},
                     {1e-9, {{0, 1000000}}},
                     {std::nextafter(0x1p63, 0), {{9223372036854774784, 1}}},
                     {std::nextafter(-0x1p63, 0), {{-9223372036854774784, 1}}},
                     {0.0, {}},
                     {-0.0, {}},
                     {0x1p63, {}},
                     {-0x1p63, {}},
                     {9223372036854.5, {{0x7FFFFFFFFFFBCC00, 1000000}}},
                     {9223372036855.5, {}},
                     {-9223372036855.5, {}},
                     {infinity, {}},
                     {-infinity, {}},
                     {std::nan(""), {}}};
  for (const auto& [number, ratio] : cases) EXPECT_EQ(MediaRational::fromRawValue(number), ratio) << number;

  // Neither conversion is exact.
  EXPECT_EQ(MediaRational::fromRawValue(MediaRational{30000, 1001}.rawValue()), (MediaRational{29970029, 1000000}));
  EXPECT_EQ(MediaRational::fromTime(1, 0), std::nullopt);
  EXPECT_EQ((MediaRational{30000, 1001}.roundedDecimalString()), "29.97");
  EXPECT_EQ((MediaRational{1, 0}.roundedDecimalString()), "inf");
  EXPECT_EQ((std::unordered_set<MediaRational>{{1, 2}, {2, 4}, {1, 2}}).size(), 2U);
}

}  // namespace
}  // namespace meridian
