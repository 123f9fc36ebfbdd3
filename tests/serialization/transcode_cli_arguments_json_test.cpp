#include "meridian/serialization/transcode_cli_arguments_json.h"

#include <gmock/gmock.h>

#include "meridian/base/text.h"
#include "tests/cli/random_words.h"
#include "tests/cli/reference_reading.h"

namespace meridian {
namespace {

using ::testing::StartsWith;
using Stored = TranscodeCliArguments::Stored;
using Words = std::vector<std::string>;

template <typename Json>
class TranscodeCliArgumentsJsonTest : public ::testing::Test {};
using JsonTypes = ::testing::Types<nlohmann::json, nlohmann::ordered_json>;
TYPED_TEST_SUITE(TranscodeCliArgumentsJsonTest, JsonTypes);

TYPED_TEST(TranscodeCliArgumentsJsonTest, HasTheDocumentedForm) {
  const TypeParam json = TranscodeCliArguments({"-overwrite", "-out", "/out/a.mov", "-foo", "1"}, true);
  EXPECT_EQ(json, TypeParam::parse(R"({"flagValueLookup": {"-overwrite": "", "-out": "/out/a.mov"},
                                       "invalidKeyValueLookup": {"-foo": "1"},
                                       "orderedFlags": ["-overwrite", "-out"]})"));
  EXPECT_EQ(TypeParam(TranscodeCliArguments()).dump(), R"({"flagValueLookup":{}})");
}

TYPED_TEST(TranscodeCliArgumentsJsonTest, ReadsBackRandomStores) {
  constexpr bool isOrdered = std::is_same_v<TypeParam, nlohmann::ordered_json>;
  RandomWords random(8);
  for (int round = 0; round < 3000; ++round) {
    const Words words = random.vector();
    SCOPED_TRACE(shown(words));
    TranscodeCliArguments arguments(words, random.below(2) == 0);
    arguments.setArgumentFlagValue(random.word(), random.word());

    const TypeParam json = arguments;
    const auto again = json.template get<TranscodeCliArguments>();
    ASSERT_EQ(again.stored(), arguments.stored());
    if constexpr (isOrdered) {
      ASSERT_EQ(reference::storeOf(again), reference::storeOf(arguments));
    }
    // JSON text can only hold valid UTF-8.
    if (!isValidUtf8(arguments.cliString()) || !std::ranges::all_of(words, isValidUtf8)) continue;
    const auto parsed = TypeParam::parse(json.dump()).template get<TranscodeCliArguments>();
    ASSERT_EQ(reference::storeOf(parsed), reference::storeOf(again));
  }
}

TYPED_TEST(TranscodeCliArgumentsJsonTest, DoesNotNormaliseAgain) {
  const Stored stored{TextDictionary{{" -OUT ", " A "}, {"-preset", "solvane_cloud"}, {"", "-foo"}}, TextDictionary{},
                      Words{"-vn", "stray", "-vn"}};
  const TypeParam json = TypeParam::parse(R"({"orderedFlags": ["-vn", "stray", "-vn"], "invalidKeyValueLookup": {},
      "flagValueLookup": {" -OUT ": " A ", "-preset": "solvane_cloud", "": "-foo"}})");
  EXPECT_EQ(json.template get<TranscodeCliArguments>().stored(), stored);
  EXPECT_EQ(TypeParam(TranscodeCliArguments::fromStored(stored)).size(), 3U);
}

TYPED_TEST(TranscodeCliArgumentsJsonTest, ErrorsNameThePlaceAndChangeNothing) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"null", ""},
      {"[]", ""},
      {"{}", "/flagValueLookup"},
      {R"({"orderedFlags": []})", "/flagValueLookup"},
      {R"({"flagValueLookup": null})", "/flagValueLookup"},
      {R"({"flagValueLookup": ["-out", "a"]})", "/flagValueLookup"},
      {R"({"flagValueLookup": {"-vn": "", "-vbr": 5}})", "/flagValueLookup/-vbr"},
      {R"({"flagValueLookup": {"-a~b/c": null}})", "/flagValueLookup/-a~0b~1c"},
      {R"({"flagValueLookup": {"": {}}})", "/flagValueLookup/"},
      {R"({"flagValueLookup": {}, "invalidKeyValueLookup": null})", "/invalidKeyValueLookup"},
      {R"({"flagValueLookup": {}, "invalidKeyValueLookup": {"-foo": true}})", "/invalidKeyValueLookup/-foo"},
      {R"({"flagValueLookup": {}, "orderedFlags": {"0": "-vn"}})", "/orderedFlags"},
      {R"({"flagValueLookup": {}, "orderedFlags": ["-vn", 1]})", "/orderedFlags/1"},
      {R"({"flagValueLookup": {}, "flags/~": {}})", "/flags~1~0"},
  };
  for (const auto& [text, path] : cases) {
    TranscodeCliArguments arguments({"-out", "a"});
    try {
      TypeParam::parse(text).get_to(arguments);
      ADD_FAILURE() << text << " was read";
    } catch (const DecodingError& error) {
      EXPECT_EQ(error.path(), path) << text;
      EXPECT_THAT(error.what(), StartsWith(path.empty() ? "the record: " : path + ": ")) << text;
    }
    EXPECT_EQ(arguments.cliString(), "-outa") << text;
  }
}

}  // namespace
}  // namespace meridian
