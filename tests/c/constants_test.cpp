// The constants of the C header beside the C++ ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "meridian/c/constants.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_property_list.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/media/avm_constants.h"
#include "meridian/media/media_names.h"

extern "C" {
struct Constant {
  const char* name;
  const char* const* text;
};
extern const Constant cConstants[];
extern const std::size_t cConstantCount;
}

namespace {

std::string_view textOf(std::string_view text) { return text; }
template <meridian::TypedTextType Text>
std::string_view textOf(const Text& text) {
  return text.rawValue();
}

TEST(CConstants, EachHasTheTextOfTheConstantOfItsNameInCpp) {
#define C_CONSTANT(name) EXPECT_EQ(std::string_view(name), textOf(meridian::name)) << #name;
#include "c_constants.def"
  EXPECT_EQ(kAVMVideoQualityLevelMax, meridian::kAVMVideoQualityLevelMax);
  EXPECT_EQ(kAVMVideoQualityLvelMin, meridian::kAVMVideoQualityLvelMin);
}

TEST(CConstants, AreAsManyAsTheTablesOfCppHave) {
  std::map<std::string_view, std::size_t> found;
  for (const Constant& constant : std::span(cConstants, cConstantCount)) {
    const std::string_view name = constant.name;
    ++found[name.starts_with("kAVM") ? "kAVM" : name.starts_with("SLV") ? "SLV" : "SAV"];
  }
  EXPECT_EQ(found["kAVM"], meridian::avmConstants.size());

  // The tables of the flags and of the typed values, and the texts without a type.
  const auto rows = []<typename... Values>(std::type_identity<Values>...) {
    return (meridian::ValueTable<Values>::rows.size() + ...);
  };
  const std::size_t typedValues = rows(std::type_identity<meridian::SAVTranscodeArgumentFileFormatValue>{},
                                       std::type_identity<meridian::SAVTranscodeArgumentVideoCodecValue>{},
                                       std::type_identity<meridian::SAVTranscodeArgumentAspectRatioValue>{},
                                       std::type_identity<meridian::SAVTranscodeArgumentOverlayAnchorValue>{},
                                       std::type_identity<meridian::SAVTranscodeArgumentColorSpaceValue>{},
                                       std::type_identity<meridian::SAVTranscodeArgumentAudioFormatValue>{},
                                       std::type_identity<meridian::SAVTranscodeArgumentAudioChannelLayoutValue>{});
  constexpr std::size_t untypedValues = 0
#define MERIDIAN_VALUE_TEXT(name, text) +1
#include "meridian/cli/transcode_values.def"
      ;
  EXPECT_EQ(found["SAV"], meridian::flagDescriptions.size() + typedValues + untypedValues);
  // Makers, containers, recording formats, series, codecs.
  EXPECT_EQ(found["SLV"], 17U + 10U + 5U + 12U + 15U);
}

TEST(CProperties, EachPropertyButTheListsHasItsFunctions) {
  std::vector<std::string_view> names;
#define MERIDIAN_C_PROPERTY_SWITCH(name, function, type) names.emplace_back(#name);
#define MERIDIAN_C_PROPERTY_VALUE(name, function, type) names.emplace_back(#name);
#define MERIDIAN_C_PROPERTY_TEXT(name, function, type) names.emplace_back(#name);
#define MERIDIAN_C_PROPERTY_FILE(name, function, type) names.emplace_back(#name);
#include "meridian/c/properties.def"
  std::vector<std::string_view> expected;
  for (const auto& property : meridian::transcodeProperties) {
    const bool isList =
        property.kind == meridian::PropertyKind::files || property.kind == meridian::PropertyKind::trackNumbers;
    if (!isList) expected.push_back(property.name);
  }
  EXPECT_EQ(names, expected);
}

TEST(CConstants, IncludeEveryFlag) {
  const std::span constants(cConstants, cConstantCount);
  for (const auto& flag : meridian::flagDescriptions) {
    EXPECT_EQ(std::ranges::count_if(constants, [&](const Constant& each) { return *each.text == flag.text; }), 1)
        << flag.text;
  }
}

}  // namespace
