#include "meridian/cli/transcode_properties.h"

#include <gmock/gmock.h>

#include <limits>

#include "tests/cli/random_words.h"

namespace meridian {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Words = std::vector<std::string>;

const TranscodeProperty& named(std::string_view name) { return **transcodePropertyNamed(name); }

/// Sets a property and returns the command line, or the error message.
Words lineAfter(TranscodeCliArguments arguments, std::string_view name, std::string_view input) {
  const auto done = setPropertyText(arguments, named(name), input);
  return done ? arguments.commandLine() : Words{done.error().message()};
}

TEST(TranscodeProperties, EveryFlagButListingsAndPresetsStoresOne) {
  for (const FlagDescription& flag : flagDescriptions) {
    const bool isPart = flag.group != FlagGroup::command && flag.text != SAVPresetFlag.rawValue();
    const auto properties = propertiesOfFlag(flag.text);
    EXPECT_EQ(!properties.empty(), isPart) << flag.text;
    EXPECT_EQ(flag.meaning.empty(), isPart && !properties.front()->isJoint()) << flag.text;
    for (const TranscodeProperty* const property : propertiesOfFlag(flag.text)) {
      EXPECT_THAT(property->flags(), Contains(flag.text));
      if (!property->isJoint()) {
        EXPECT_EQ(flag.takesValue(), property->kind != PropertyKind::onOff) << flag.text;
      }
    }
  }
  EXPECT_THAT(propertiesOfFlag("-acl"), ElementsAre(&named("channelLayout"), &named("outputChannels")));
  EXPECT_THAT(propertiesOfFlag("-acopy"), ElementsAre(&named("copyAudio")));
  EXPECT_THAT(propertiesOfFlag("-foo"), IsEmpty());
}

TEST(TranscodeProperties, EveryExampleCanBeSetReadBackAndRemoved) {
  for (const TranscodeProperty& property : transcodeProperties) {
    SCOPED_TRACE(property.name);
    EXPECT_EQ(findTranscodeProperty(property.name), &property);
    EXPECT_FALSE(property.meaning.empty() || property.whenAbsent.empty());
    TranscodeCliArguments arguments;
    const auto before = propertyText(arguments, property);
    ASSERT_TRUE(setPropertyText(arguments, property, property.example));
    const auto value = propertyValue(arguments, property);
    ASSERT_TRUE(value);
    const auto text = propertyText(arguments, property);
    ASSERT_TRUE(text);
    if (property.kind == PropertyKind::dimensions) {
      EXPECT_EQ(text, "1920.000000x1080.000000");
    } else {
      EXPECT_EQ(text, property.example);
    }
    // An argument vector carries the example, and the typed value sets the same.
    EXPECT_EQ(TranscodeCliArguments(arguments.commandLine()).stored(), arguments.stored());
    TranscodeCliArguments typed;
    ASSERT_TRUE(setPropertyValue(typed, property, *value));
    EXPECT_EQ(typed.stored(), arguments.stored());
    removeProperty(arguments, property);
    EXPECT_EQ(arguments.stored(), TranscodeCliArguments().stored());
    EXPECT_EQ(propertyText(arguments, property), before);
  }
}

TEST(TranscodeProperties, WhatRandomInputSetsReadsBackAsTheSame) {
  const Words odd{"true",  "OFF",     "12",    "1e3",  "-5",          "H264",    "srgb", " tl ",
                  "0, 2",  "1280X72", "1x2x",  "#f80", "01:02:03;04", "/a\n/b ", "inf",  "nan",
                  "Match", "Stereo",  "1,2,3", "+7",   " ",           "2,",      "0x10", "creationDate"};
  RandomWords random(22);
  for (int round = 0; round < 20000; ++round) {
    const auto& property = transcodeProperties[random.below(transcodeProperties.size())];
    TranscodeCliArguments arguments(random.vector());
    const TranscodeCliArguments::Stored before = arguments.stored();
    const std::string input = random.below(3) == 0 ? random.word() : random.oneOf(odd);
    SCOPED_TRACE(std::string(property.name) + " " + input);
    const auto done = setPropertyText(arguments, property, input);
    if (!done) {
      ASSERT_EQ(arguments.stored(), before);
      ASSERT_EQ(done.error().place, property.name);
      continue;
    }
    const auto text = propertyText(arguments, property);
    // Audio that is not copied needs a codec: without one copyAudio stays true.
    if (!text || text->empty() || property.name == "copyAudio") continue;
    const TranscodeCliArguments::Stored once = arguments.stored();
    ASSERT_TRUE(setPropertyText(arguments, property, *text));
    ASSERT_EQ(arguments.stored(), once);
    ASSERT_TRUE(setPropertyValue(arguments, property, *propertyValue(arguments, property)));
    ASSERT_EQ(arguments.stored(), once);
  }
}

TEST(TranscodeProperties, InputIsLenient) {
  EXPECT_THAT(lineAfter({}, "videoFormat", " H264 "), ElementsAre("-vcodec", "h264"));
  EXPECT_THAT(lineAfter({}, "colorSpace", "SRGB"), ElementsAre("-c_space", "sRGB"));
  EXPECT_THAT(lineAfter({}, "videoFrameRate", "25"), ElementsAre("-vr", "25.0"));
  EXPECT_THAT(lineAfter({}, "gpuDecode", "Yes"), ElementsAre("-gpu_decoding", ""));
  EXPECT_THAT(lineAfter({"-gpu_decoding"}, "gpuDecode", "off"), IsEmpty());
  EXPECT_THAT(lineAfter({}, "timecodeBurnFontColor", "#f80"), ElementsAre("-tc_burn_font_rgb", "255,136,0"));
  EXPECT_THAT(lineAfter({}, "watermarkText", " A=B "), ElementsAre("-wmt_text", " A=B "));
  EXPECT_THAT(lineAfter({}, "ignoredAudioFileTracks", "0, 2"), ElementsAre("-ac_omit_0", "", "-ac_omit_2", ""));
}

TEST(TranscodeProperties, JointAndSharedPropertiesKeepTheirRules) {
  EXPECT_THAT(lineAfter({"-in_1_0", "/x", "-inx", "y"}, "inputFiles", "/a\n/b c"),
              ElementsAre("-in_0_0", "/a", "-in_0_1", "/b c"));
  // An empty input leaves the property as it is without its flag: video and audio are included.
  EXPECT_THAT(lineAfter({"-vn"}, "includeVideo", ""), IsEmpty());
  EXPECT_THAT(lineAfter({}, "includeVideo", "false"), ElementsAre("-vn", ""));
  EXPECT_THAT(lineAfter({"-an"}, "includeAudio", ""), IsEmpty());
  EXPECT_THAT(lineAfter({"-acopy"}, "copyAudio", ""), IsEmpty());
  EXPECT_THAT(lineAfter({"-tc_burn"}, "includeTimecode", ""), IsEmpty());
  EXPECT_THAT(lineAfter({"-acl", "2"}, "channelLayout", ""), IsEmpty());
  EXPECT_THAT(lineAfter({"-acl", "stereo"}, "outputChannels", ""), IsEmpty());
  EXPECT_THAT(lineAfter({"-acl", "stereo"}, "outputChannels", "6"), ElementsAre("-acl", "6"));
  EXPECT_THAT(lineAfter({"-tc_match"}, "timecode", "01:00:00;00"), ElementsAre("-tc_custom", "01:00:00;00"));
  EXPECT_THAT(lineAfter({"-tc_creation"}, "timecodeSource", "custom"), ElementsAre("-tc_custom", "00:00:00:00"));
  EXPECT_THAT(lineAfter({"-tc_custom", "abc"}, "timecode", ""), IsEmpty());

  const TranscodeCliArguments arguments({"-acl", "2", "-vn", "-tc_creation", "-tc_match", "-vr", "fast"});
  EXPECT_EQ(propertyText(arguments, named("channelLayout")), std::nullopt);
  EXPECT_EQ(propertyText(arguments, named("outputChannels")), "2");
  EXPECT_EQ(propertyText(arguments, named("includeVideo")), "false");
  EXPECT_EQ(propertyText(arguments, named("copyAudio")), "true");
  EXPECT_EQ(propertyText(arguments, named("timecodeSource")), "creationDate");
  EXPECT_EQ(propertyText(arguments, named("videoFrameRate")), std::nullopt);
  EXPECT_EQ(propertyText(arguments, named("inputFiles")), std::nullopt);
}

TEST(TranscodeProperties, TypedValuesMustHaveTheTypeOfTheProperty) {
  TranscodeCliArguments arguments;
  EXPECT_TRUE(setPropertyValue(arguments, named("inputFiles"), Words{"/a\nb"}));
  EXPECT_EQ(arguments.inputFiles(), Words{"/a\nb"});
  EXPECT_TRUE(setPropertyValue(arguments, named("progressOutputPrefix"), std::string()));
  EXPECT_EQ(arguments.progressOutputPrefix(), "");
  const TranscodeCliArguments::Stored before = arguments.stored();
  EXPECT_EQ(setPropertyValue(arguments, named("videoFrameRate"), std::int64_t{25}).error().code,
            PropertyErrorCode::wrongType);
  EXPECT_EQ(setPropertyValue(arguments, named("videoFrameRate"), std::string("25")).error().code,
            PropertyErrorCode::wrongType);
  EXPECT_FALSE(setPropertyValue(arguments, named("videoFrameRate"), std::numeric_limits<float>::quiet_NaN()));
  EXPECT_FALSE(setPropertyValue(arguments, named("watermarkText"), true));
  EXPECT_FALSE(setPropertyValue(arguments, named("videoFormat"), std::string("vp9")));
  EXPECT_FALSE(setPropertyValue(arguments, named("ignoredAudioFileTracks"), std::vector<std::int64_t>{-1}));
  EXPECT_FALSE(setPropertyValue(arguments, named("inputFiles"), Words{"/a", " -b"}));
  EXPECT_EQ(arguments.stored(), before);
}

TEST(TranscodeProperties, InputFilesMayEndTheirLinesAsFilesDo) {
  TranscodeCliArguments arguments;
  for (const std::string_view input : {"/a\n/b", "/a\n/b\n", "/a\r\n/b\r\n"}) {
    ASSERT_TRUE(setPropertyText(arguments, named("inputFiles"), input));
    EXPECT_EQ(arguments.inputFiles(), (Words{"/a", "/b"}));
  }
}

TEST(TranscodeProperties, ErrorsNameThePlaceAndTheRemedy) {
  struct Case {
    std::string_view name, input;
    PropertyErrorCode code;
    std::string_view message;
  };
  using enum PropertyErrorCode;
  const Case cases[]{
      {"videoFormat", "vp9", invalidValue,
       R"("videoFormat": cannot be set: "vp9" is not a video codec; expected a video codec: dnxhd, h264, )"},
      {"videoFrameRate", "abc", invalidValue,
       R"("videoFrameRate": cannot be set: "abc" is not a frame rate; expected a frame rate, such as 23.976)"},
      {"videoFrameRate", "nan", invalidValue, "expected a frame rate, such as 23.976"},
      {"gpuDecode", "maybe", invalidValue, R"("maybe" is not a switch; expected true or false)"},
      {"ignoredAudioFileTracks", "1,", invalidValue, "such as 0,2"},
      {"timecode", "1:2", invalidValue, "such as 01:00:00:00"},
      {"videoBitDepth", "-5", beginsWithDash,
       R"("videoBitDepth": cannot begin with "-", which marks a flag: "-5"; use a value that begins with another character)"},
      {"outputFile", " -a.mov", beginsWithDash, R"(begin the path with "./")"},
      {"inputFiles", "/a\n-b", beginsWithDash, R"("-b")"},
      {"inputFiles", "/a\n\n/b", invalidValue, "expected a list of paths"},
      {"outputFile", std::string_view("/a\0b", 4), containsNul, R"("/a\x00b"; remove the NUL byte)"},
      {"watermarkText", "-\x1b[2J", beginsWithDash, R"(\x1b[2J)"}};
  for (const auto& [name, input, code, message] : cases) {
    TranscodeCliArguments arguments;
    const auto done = setPropertyText(arguments, named(name), input);
    ASSERT_FALSE(done) << name;
    EXPECT_EQ(done.error().code, code);
    EXPECT_THAT(done.error().message(), HasSubstr(message));
    EXPECT_THAT(arguments.commandLine(), IsEmpty());
  }
  const auto unknown = transcodePropertyNamed("VideoFormat");
  ASSERT_FALSE(unknown);
  EXPECT_EQ(unknown.error().message(), R"("VideoFormat": is not a property; did you mean videoFormat?)");
  const std::pair<std::string, std::string> advices[]{
      {"x", "check the spelling"},
      {"dims", "did you mean videoDimensions?"},
      {"-dims", "did you mean videoDimensions?"},
      {"DIMS", "did you mean videoDimensions?"},
      {"dmis", "did you mean videoDimensions?"},
      {"acl", "did you mean channelLayout or outputChannels?"},
      {"in_0_3", "did you mean inputFiles?"},
      {"-ac_omit_1", "did you mean ignoredAudioFileTracks?"},
      {"VIDEOBITDEPTH", "did you mean videoBitDepth?"},
      {"videoPro", "did you mean videoProfile?"},
      {"preset", "-preset is a flag without a property; it belongs in the argument vector"},
  };
  for (const auto& [name, advice] : advices) {
    EXPECT_EQ(transcodePropertyNamed(name).error().remedy(), advice) << name;
  }
}

}  // namespace
}  // namespace meridian
