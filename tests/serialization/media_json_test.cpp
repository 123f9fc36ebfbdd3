#include "meridian/serialization/media_json.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>
#include <random>

namespace meridian {
namespace {

template <typename Json>
class MediaJsonTest : public ::testing::Test {};
using JsonTypes = ::testing::Types<nlohmann::json, nlohmann::ordered_json>;
TYPED_TEST_SUITE(MediaJsonTest, JsonTypes);

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();

TYPED_TEST(MediaJsonTest, HasTheDocumentedForms) {
  const TimecodeComponents timecode{1, 2, 3, 4, true};
  // Values in a larger document and in containers of the standard library.
  const TypeParam document{{"rates", std::vector{VideoFrameRate::ntsc30p, VideoFrameRate::custom({25, 2})}},
                           {"start", timecode},
                           {"aspect", NumericRational{16, 9}},
                           {"rational", MediaRational{30000, 1001}}};
  EXPECT_EQ(document, TypeParam::parse(R"({"rates": [{"ntsc30p": {}}, {"custom": {"_0": 12.5}}],
      "start": {"hours": 1, "minutes": 2, "seconds": 3, "frames": 4, "isDropFrame": true},
      "aspect": {"numerator": 16, "denominator": 9}, "rational": 29.97002997002997})"));
  if constexpr (std::is_same_v<TypeParam, nlohmann::ordered_json>) {
    EXPECT_EQ(TypeParam(timecode).dump(), R"({"hours":1,"minutes":2,"seconds":3,"frames":4,"isDropFrame":true})");
  }
  EXPECT_EQ(document.at("rates").template get<std::vector<VideoFrameRate>>().at(1),
            VideoFrameRate::custom({12500000, 1000000}));
}

TYPED_TEST(MediaJsonTest, ReadsBackWhatItWrites) {
  for (const VideoFrameRate& rate : standardVideoFrameRates) {
    EXPECT_EQ(TypeParam::parse(TypeParam(rate).dump()).template get<VideoFrameRate>(), rate);
  }
  std::mt19937_64 random(7);
  for (int round = 0; round < 2000; ++round) {
    const auto number = [&] { return static_cast<std::int64_t>(random() >> (random() % 64)); };
    const TimecodeComponents timecode{number(), number(), number(), number(), random() % 2 == 0};
    ASSERT_EQ(TypeParam::parse(TypeParam(timecode).dump()).template get<TimecodeComponents>(), timecode);
    const NumericRational ratio{number(), number()};
    const auto again = TypeParam::parse(TypeParam(ratio).dump()).template get<NumericRational>();
    ASSERT_TRUE(again.numerator == ratio.numerator && again.denominator == ratio.denominator);
    const MediaRational media{number(), number() | 1};
    if (const auto expected = MediaRational::fromRawValue(media.rawValue())) {
      ASSERT_EQ(TypeParam::parse(TypeParam(media).dump()).template get<MediaRational>(), *expected);
    }
  }
  // A custom rate stays custom.
  EXPECT_EQ(TypeParam::parse(R"({"custom": {"_0": 25}})").template get<VideoFrameRate>(),
            VideoFrameRate::custom({25, 1}));
  const auto whole = TypeParam::parse(R"({"numerator": 24000.0, "denominator": -9223372036854775808})");
  EXPECT_EQ(whole.template get<NumericRational>().denominator, least);
  EXPECT_EQ(TypeParam(NumericRational{greatest, 1}).template get<NumericRational>().numerator, greatest);
}

template <typename Value, typename Json>
void expectError(std::string_view text, std::string_view path, std::string_view message) {
  Value value;
  try {
    Json::parse(text).get_to(value);
    ADD_FAILURE() << text << " was read";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.path(), path) << text;
    EXPECT_EQ(error.message(), message) << text;
    EXPECT_THAT(error.what(), ::testing::HasSubstr(message)) << text;
  }
  // Compares encoded forms: rationals with equal numerators are equal.
  EXPECT_EQ(Json(value), Json(Value())) << text;
}

TYPED_TEST(MediaJsonTest, ReadsRecordsOfALaterVersion) {
  for (const std::string_view text :
       {R"({"p24": {"later": 1}, "later": [], "p30": null})", R"({"custom": null, "p24": {}})"}) {
    EXPECT_EQ(TypeParam::parse(text).template get<VideoFrameRate>(), VideoFrameRate::p24) << text;
  }
  EXPECT_EQ(TypeParam::parse(R"({"custom": {"_0": 25, "_1": 1}})").template get<VideoFrameRate>(),
            VideoFrameRate::custom({25, 1}));
  EXPECT_EQ(
      TypeParam::parse(R"({"later": 1, "numerator": 7, "denominator": 3})").template get<NumericRational>().numerator,
      7);
  EXPECT_EQ(
      TypeParam::parse(R"({"hours": 1, "minutes": 2, "seconds": 3, "frames": 4, "isDropFrame": true, "field": 2})")
          .template get<TimecodeComponents>(),
      (TimecodeComponents{1, 2, 3, 4, true}));
}

TYPED_TEST(MediaJsonTest, ErrorsNameThePlaceAndChangeNothing) {
  constexpr std::string_view keys = "Invalid number of keys found, expected one.";
  const auto rate = expectError<VideoFrameRate, TypeParam>;
  rate("{}", "", keys);
  rate(R"({"p24": {}, "p30": {}})", "", keys);
  rate(R"("p24")", "", "expected an object, found string");
  rate(R"([{"p24": {}}])", "", "expected an object, found array");
  rate(R"({"P24": {}})", "", keys);
  rate(R"({"p24": null})", "", keys);
  rate(R"({"p24": 24})", "/p24", "expected an object, found number");
  rate(R"({"custom": {}})", "/custom/_0", "is missing");
  rate(R"({"custom": {"_0": "25"}})", "/custom/_0", "expected a number, found string");
  rate(R"({"custom": {"_0": null}})", "/custom/_0", "is missing");
  constexpr std::string_view number = "expected a finite number other than 0 within 64 bits in millionths";
  for (const std::string_view text : {"0", "-0.0", "1e300", "9223372036854775808"}) {
    rate(R"({"custom": {"_0": )" + std::string(text) + "}}", "/custom/_0", number);
    expectError<MediaRational, TypeParam>(text, "", number);
  }
  expectError<MediaRational, TypeParam>("null", "", "expected a number, found null");

  const std::string integer = "expected an integer within 64 bits, found ";
  const auto ratio = expectError<NumericRational, TypeParam>;
  ratio(R"({"numerator": 1.5, "denominator": 1})", "/numerator", integer + "1.5");
  ratio(R"({"numerator": 6, "denominator": 9223372036854775808})", "/denominator", integer + "9223372036854775808");
  ratio(R"({"numerator": 0, "denominator": 1e300})", "/denominator", integer + "1e+300");
  ratio(R"({"numerator": 5})", "/denominator", "is missing");
  const auto timecode = expectError<TimecodeComponents, TypeParam>;
  timecode(R"({"hours": 1, "minutes": 2, "seconds": 3, "frames": 4})", "/isDropFrame", "is missing");
  timecode(R"({"hours": 1, "minutes": 2, "seconds": 3, "frames": 4, "isDropFrame": 0})", "/isDropFrame",
           "expected a boolean, found number");
  timecode(R"({"hours": 1, "minutes": 2, "seconds": null, "frames": 4, "isDropFrame": true})", "/seconds",
           "is missing");
  timecode("[1, 2, 3, 4, true]", "", "expected an object, found array");
}

}  // namespace
}  // namespace meridian
