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

    // JSON can only hold valid UTF-8.
    if (!isValidUtf8(arguments.cliString()) || !std::ranges::all_of(words, isValidUtf8)) continue;
    const TypeParam json = arguments;
    const auto again = json.template get<TranscodeCliArguments>();
    ASSERT_EQ(again.stored(), arguments.stored());
    if constexpr (isOrdered) {
      ASSERT_EQ(reference::storeOf(again), reference::storeOf(arguments));
    }
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

TYPED_TEST(TranscodeCliArgumentsJsonTest, ReadsStoresOfALaterVersion) {
  const TypeParam json = TypeParam::parse(R"({"later": {"x": 1}, "invalidKeyValueLookup": null, "orderedFlags": null,
      "flagValueLookup": {"-out": "a", "-vr": null}})");
  const Stored expected{TextDictionary{{"-out", "a"}}, std::nullopt, std::nullopt};
  EXPECT_EQ(json.template get<TranscodeCliArguments>().stored(), expected);
}

TYPED_TEST(TranscodeCliArgumentsJsonTest, TextsThatAreNotUtf8AreErrorsWithTheirPlace) {
  const struct {
    Stored stored;
    std::string path;
  } cases[]{{{TextDictionary{{"-out", "\xff"}}, {}, {}}, "/flagValueLookup/-out"},
            {{TextDictionary{{"-\xff", ""}}, {}, {}}, "/flagValueLookup/-\xff"},
            {{{}, TextDictionary{{"-foo", "\xc3"}}, {}}, "/invalidKeyValueLookup/-foo"},
            {{{}, {}, Words{"-vn", "\xed\xa0\x80"}}, "/orderedFlags/1"}};
  for (const auto& [stored, path] : cases) {
    TypeParam json = 5;
    try {
      json = TranscodeCliArguments::fromStored(stored);
      ADD_FAILURE() << path << " was encoded";
    } catch (const EncodingError& error) {
      EXPECT_EQ(error.path(), path);
      EXPECT_THAT(error.message(), ::testing::HasSubstr("is not valid UTF-8"));
    }
    EXPECT_EQ(json, 5);
  }
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
      {R"({"flagValueLookup": {"-a~b/c": 1}})", "/flagValueLookup/-a~0b~1c"},
      {R"({"flagValueLookup": {"": {}}})", "/flagValueLookup/"},
      {R"({"flagValueLookup": {}, "invalidKeyValueLookup": []})", "/invalidKeyValueLookup"},
      {R"({"flagValueLookup": {}, "invalidKeyValueLookup": {"-foo": true}})", "/invalidKeyValueLookup/-foo"},
      {R"({"flagValueLookup": {}, "orderedFlags": {"0": "-vn"}})", "/orderedFlags"},
      {R"({"flagValueLookup": {}, "orderedFlags": ["-vn", 1]})", "/orderedFlags/1"},
      {R"({"flagValueLookup": {}, "orderedFlags": [null]})", "/orderedFlags/0"},
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
