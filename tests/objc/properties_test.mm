// The typed properties by key-value coding, each by its example.
#include <string>
#include <string_view>

#include "leaks.h"
#include "meridian/cli/transcode_properties.h"
#include "pool.h"

#import <Meridian/Meridian.h>

namespace {

using ObjectiveCProperties = ObjectiveC;

NSString* stringOf(std::string_view text) { return [NSString stringWithUTF8String:std::string(text).c_str()]; }

TranscodeCliArguments* emptyStore() { return [[[TranscodeCliArguments alloc] init] autorelease]; }

TEST_F(ObjectiveCProperties, EachIsReadAndSetByItsKey) {
  for (const auto& property : meridian::transcodeProperties) {
    SCOPED_TRACE(property.name);
    NSString* const key = stringOf(property.name);
    TranscodeCliArguments* const source = emptyStore();
    NSError* error = nil;
    ASSERT_TRUE([source setText:stringOf(property.example) ofProperty:key error:&error])
        << textOf([error localizedDescription]);
    NSString* const text = [source textOfProperty:key];
    id const value = [source valueForKey:key];
    ASSERT_NE(value, nil);

    if (property.name == "includeVideo") {
      EXPECT_FALSE([source respondsToSelector:@selector(setIncludeVideo:)]);
      continue;
    }
    TranscodeCliArguments* const destination = emptyStore();
    [destination setValue:value forKey:key];
    EXPECT_EQ(textOf([destination textOfProperty:key]), textOf(text));
    EXPECT_TRUE(isEqual([destination valueForKey:key], value));
    // copyAudio is on in an empty store already.
    EXPECT_TRUE([destination isEqual:source]) << textOf([destination description]);

    if (property.kind == meridian::PropertyKind::onOff) {
      [destination setValue:[NSNumber numberWithBool:NO] forKey:key];
      EXPECT_EQ([[destination valueForKey:key] boolValue], property.name == "copyAudio");
    } else {
      [destination setValue:nil forKey:key];
      EXPECT_EQ([destination valueForKey:key], nil);
      EXPECT_EQ([[destination flagValueLookup] count], 0U);
    }
  }
}

TEST_F(ObjectiveCProperties, AreNamedWithTheirExamplesAndAllowedTexts) {
  NSArray* const names = [TranscodeCliArguments propertyNames];
  ASSERT_EQ([names count], meridian::transcodeProperties.size());
  for (NSUInteger place = 0; place < [names count]; ++place) {
    const meridian::TranscodeProperty& property = meridian::transcodeProperties[place];
    NSString* const name = [names objectAtIndex:place];
    EXPECT_EQ(textOf(name), property.name);
    EXPECT_EQ(textOf([TranscodeCliArguments exampleOfProperty:name]), property.example);
    EXPECT_EQ([[TranscodeCliArguments allowedTextsOfProperty:name] count], meridian::allowedTexts(property).size());
  }
  EXPECT_EQ([TranscodeCliArguments exampleOfProperty:@"videoFrameRat"], nil);
}

TEST_F(ObjectiveCProperties, OfAnOpenTypeStoreAnyText) {
  TranscodeCliArguments* const arguments = emptyStore();
  [arguments setVideoFormat:@" Av1 "];
  EXPECT_EQ(textOf([arguments argumentFlagValue:SAVVideoFormatFlag]), " Av1 ");
  EXPECT_EQ([arguments videoFormat], nil);
}

TEST_F(ObjectiveCProperties, AreNilForATextThatIsNotValid) {
  TranscodeCliArguments* const arguments = emptyStore();
  for (NSString* const flag :
       {SAVVideoFrameRateFlag, SAVVideoDimensionsFlag, SAVColorLutFileFlag, SAVTimecodeCustomFlag}) {
    [arguments setArgumentFlagValue:@"" forFlag:flag];
  }
  for (NSString* const key : {@"videoFrameRate", @"videoDimensions", @"dimensionsSizeValue", @"lutFile", @"timecode"}) {
    EXPECT_EQ([arguments valueForKey:key], nil) << textOf(key);
  }
  EXPECT_EQ([[arguments flagValueLookup] count], 4U);
}

}  // namespace
