#include "meridian/base/error.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/base/no_destructor.h"

namespace meridian {

enum class TapeErrorCode : std::uint8_t { notOpened, worn };

template <>
struct EnumerationTable<TapeErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<TapeErrorCode>>({
      {TapeErrorCode::notOpened, "notOpened", "cannot be opened", "check that you may read it"},
      {TapeErrorCode::worn, "worn", "is worn"},
  });
};

namespace {

using TapeError = Error<TapeErrorCode>;
using TapeWarning = Warning<TapeErrorCode>;

TEST(Error, MessageLeavesOutEmptyParts) {
  const auto denied = std::make_error_code(std::errc::permission_denied);
  const auto notOpened = TapeErrorCode::notOpened;
  const auto worn = TapeErrorCode::worn;
  EXPECT_EQ(TapeError{notOpened}.message(), "cannot be opened; check that you may read it");
  EXPECT_EQ((TapeError{notOpened, "/a"}.message()), "\"/a\": cannot be opened; check that you may read it");
  EXPECT_EQ((TapeError{notOpened, {}, {}, denied}.message()),
            "cannot be opened: Permission denied; check that you may read it");
  EXPECT_EQ((TapeError{notOpened, "/a", "reel 2", denied}.message()),
            "\"/a\": cannot be opened: reel 2: Permission denied; check that you may read it");
  EXPECT_EQ(TapeError{worn}.message(), "is worn");
  EXPECT_EQ((TapeError{worn, "/a", "reel 2"}.message()), "\"/a\": is worn: reel 2");
  EXPECT_EQ((TapeWarning{notOpened, "/a", "reel 2"}.message()),
            "\"/a\": cannot be opened: reel 2; check that you may read it");
  EXPECT_EQ(detail::messageOf("", "", "", {}, ""), "");
}

TEST(Error, MessageEscapesControlCharacters) {
  EXPECT_EQ((TapeError{TapeErrorCode::worn, "/a\nb\x1b[2J", "\xff\r"}.message()), R"("/a\nb\x1b[2J": is worn: \xff\r)");
}

TEST(Error, EqualityComparesEveryMember) {
  const TapeError error{TapeErrorCode::worn, "/a", "reel 2", std::make_error_code(std::errc::io_error)};
  EXPECT_EQ(error, TapeError(error));
  EXPECT_NE(error, (TapeError{TapeErrorCode::notOpened, error.place, error.detail, error.systemError}));
  EXPECT_NE(error, (TapeError{error.code, "/b", error.detail, error.systemError}));
  EXPECT_NE(error, (TapeError{error.code, error.place, "", error.systemError}));
  EXPECT_NE(error, (TapeError{error.code, error.place, error.detail}));
}

// Literal, so that tables can be checked at compile time; an error code alone is an E.
constexpr Expected<int, TapeErrorCode> half(int number) {
  if (number % 2 != 0) return Unexpected(TapeErrorCode::worn);
  return number / 2;
}
static_assert(half(6).value() == 3 && *half(6) == 3 && half(6) && half(6).value_or(9) == 3);
static_assert(!half(7) && !half(7).has_value() && half(7).error() == TapeErrorCode::worn && half(7).value_or(9) == 9);
static_assert(half(6) == half(6) && half(6) != half(8) && half(6) != half(7) && half(7) == half(9) && half(6) == 3);
static_assert(half(7) == Unexpected(TapeErrorCode::worn) && half(7) != Unexpected(TapeErrorCode::notOpened));

static_assert(!std::constructible_from<Expected<int, std::string>, std::string>, "only Unexpected makes an error");
static_assert(!std::convertible_to<Expected<int, std::string>, bool>);
static_assert(!std::default_initializable<Expected<std::reference_wrapper<int>, int>>);

TEST(Expected, TellsAValueFromAnErrorOfTheSameType) {
  const Expected<std::string, std::string> value = "text";
  const Expected<std::string, std::string> error = Unexpected("text");
  EXPECT_TRUE(value);
  EXPECT_FALSE(error);
  EXPECT_NE(value, error);
  EXPECT_EQ(*value, error.error());
  EXPECT_EQ(value->size(), 4U);
  EXPECT_EQ((Expected<std::string, std::string>()), "");
}

TEST(Expected, HoldsMoveOnlyValuesAndErrors) {
  using Owner = std::unique_ptr<int>;
  const auto value = [] { return Expected<Owner, Owner>(std::make_unique<int>(7)); };
  const auto error = [] { return Expected<Owner, Owner>(Unexpected(std::make_unique<int>(8))); };
  EXPECT_EQ(**value(), 7);
  EXPECT_EQ(*value().value_or(nullptr), 7);
  EXPECT_EQ(*error().value_or(std::make_unique<int>(9)), 9);
  EXPECT_EQ(*error().error(), 8);
  Expected<Owner, Owner> source = value();
  const Owner taken = *std::move(source);
  EXPECT_EQ(*taken, 7);
}

TEST(Expected, LetsItsContentBeChanged) {
  Expected<std::string, std::string> result = "a";
  result->append("b");
  *result += "c";
  EXPECT_EQ(result, "abc");
  result = Unexpected("broken");
  result.error() += "!";
  EXPECT_EQ(result.error(), "broken!");
}

TEST(Expected, OfVoidIsSuccessOrAnError) {
  const Expected<void, TapeError> success;
  const Expected<void, TapeError> failure = Unexpected(TapeError{TapeErrorCode::worn});
  EXPECT_TRUE(success);
  EXPECT_FALSE(failure);
  EXPECT_EQ(failure.error().code, TapeErrorCode::worn);
  EXPECT_NE(success, failure);
}

TEST(ExpectedDeathTest, TerminatesIfWhatIsReadIsNotHeld) {
  const Expected<std::string, int> value = "text";
  const Expected<std::string, int> error = Unexpected(3);
  EXPECT_DEATH(static_cast<void>(value.error()), "fatal: Expected: holds no error");
  EXPECT_DEATH(static_cast<void>(error.value()), "fatal: Expected: holds no value");
  EXPECT_DEATH(static_cast<void>(*error), "fatal: Expected: holds no value");
  EXPECT_DEATH(static_cast<void>(error->size()), "fatal: Expected: holds no value");
  EXPECT_DEATH(static_cast<void>(Expected<void, int>().error()), "fatal: Expected: holds no error");
}

struct Counted {
  Counted(int& destructions, int number) noexcept : count(destructions), value(number) {}
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { ++count; }

  int& count;
  int value;
};

TEST(NoDestructor, ConstructsInPlaceAndNeverDestroys) {
  int destructions = 0;
  {
    const NoDestructor<Counted> kept(destructions, 7);
    EXPECT_EQ(kept->value, 7);
    EXPECT_EQ((*kept).value, 7);
  }
  EXPECT_EQ(destructions, 0);
}

}  // namespace
}  // namespace meridian
