// Keyed archives of a store, good and hostile.
#include <string>

#include "leaks.h"
#include "pool.h"

#import <Meridian/Meridian.h>

/// Encodes what a test gives it under the keys of a store.
@interface MeridianImpostor : NSObject <NSCoding> {
 @public
  NSDictionary* _members;
}
@end

@implementation MeridianImpostor

- (id)initWithCoder:(NSCoder*)coder {
  static_cast<void>(coder);
  return [self init];
}

- (void)encodeWithCoder:(NSCoder*)coder {
  NSArray* const keys = [_members allKeys];
  for (NSUInteger place = 0; place < [keys count]; ++place) {
    NSString* const key = [keys objectAtIndex:place];
    [coder encodeObject:[_members objectForKey:key] forKey:key];
  }
}

@end

namespace {

using ObjectiveCArchive = ObjectiveC;

TranscodeCliArguments* parsed(NSString* line, BOOL keepsOrder) {
  return [[[TranscodeCliArguments alloc] initWithCliArgs:[line componentsSeparatedByString:@" "]
                                maintainOriginalOrdering:keepsOrder] autorelease];
}

NSData* archiveOf(NSDictionary* members) {
  MeridianImpostor* const impostor = [[[MeridianImpostor alloc] init] autorelease];
  impostor->_members = members;
  NSMutableData* const data = [NSMutableData data];
  NSKeyedArchiver* const archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
  [archiver setClassName:@"TranscodeCliArguments" forClass:[MeridianImpostor class]];
  [archiver encodeObject:impostor forKey:@"root"];
  [archiver finishEncoding];
  return data;
}

/// Returns what an archive made by `archiveOf` holds, or the reason why it holds nothing.
id decoded(NSData* data) {
  @try {
    NSKeyedUnarchiver* const unarchiver = [[[NSKeyedUnarchiver alloc] initForReadingWithData:data] autorelease];
    return [unarchiver decodeObjectForKey:@"root"];
  } @catch (NSException* exception) {
    EXPECT_EQ(textOf([exception name]), textOf(NSInvalidUnarchiveOperationException));
    return [exception reason];
  }
}

TEST_F(ObjectiveCArchive, GoesThereAndBack) {
  for (NSString* const line : {@"-vr 25 -out /Out/É.mov -foo 1 -Bar -overwrite -preset fast", @"-an", @"-foo 1", @""}) {
    for (const BOOL keepsOrder : {YES, NO}) {
      SCOPED_TRACE(textOf(line));
      TranscodeCliArguments* const arguments = parsed(line, keepsOrder);
      NSData* const data = [NSKeyedArchiver archivedDataWithRootObject:arguments];
      TranscodeCliArguments* const back = [NSKeyedUnarchiver unarchiveObjectWithData:data];
      EXPECT_TRUE(isEqual(back, arguments));
      EXPECT_TRUE(isEqual([back unknownFlags] == nil ? nil : [NSSet setWithArray:[back unknownFlags]],
                          [arguments unknownFlags] == nil ? nil : [NSSet setWithArray:[arguments unknownFlags]]));
      if (keepsOrder) {
        EXPECT_TRUE(isEqual([back commandLine], [arguments commandLine]));
      }
    }
  }
  EXPECT_TRUE([TranscodeCliArguments supportsSecureCoding]);
}

TEST_F(ObjectiveCArchive, IsReadAsItIsWithoutNormalising) {
  NSDictionary* const lookup = [NSDictionary dictionaryWithObjectsAndKeys:@" Loud ", @"-VCODEC", @"x", @"no flag", nil];
  id const back = decoded(archiveOf([NSDictionary
      dictionaryWithObjectsAndKeys:lookup, @"flagValueLookup", [NSDictionary dictionary], @"invalidKeyValueLookup",
                                   [NSArray arrayWithObjects:@"-Gone", @"no flag", nil], @"orderedFlags", nil]));
  ASSERT_TRUE([back isKindOfClass:[TranscodeCliArguments class]]);
  EXPECT_TRUE(isEqual([back flagValueLookup], lookup));
  EXPECT_EQ(textOf([[back commandLine] componentsJoinedByString:@"|"]), "no flag|x|-VCODEC| Loud ");
}

TEST_F(ObjectiveCArchive, OfAnythingElseFailsToDecode) {
  NSDictionary* const empty = [NSDictionary dictionary];
  NSNumber* const number = [NSNumber numberWithInt:1];
  NSDictionary* const wrongValue = [NSDictionary dictionaryWithObject:number forKey:@"-vr"];
  NSDictionary* const wrongKey = [NSDictionary dictionaryWithObject:@"-vr" forKey:number];
  struct Case {
    NSString* key;
    id value;
  };
  const Case cases[] = {
      {@"flagValueLookup", [NSArray array]},
      {@"flagValueLookup", @"-vr"},
      {@"flagValueLookup", wrongValue},
      {@"flagValueLookup", wrongKey},
      {@"invalidKeyValueLookup", number},
      {@"invalidKeyValueLookup", wrongValue},
      {@"invalidKeyValueLookup", [NSArray arrayWithObject:@"-foo"]},
      {@"orderedFlags", @"-vr"},
      {@"orderedFlags", empty},
      {@"orderedFlags", [NSArray arrayWithObjects:@"-vr", number, nil]},
  };
  for (const Case& each : cases) {
    NSMutableDictionary* const members = [NSMutableDictionary dictionaryWithObject:empty forKey:@"flagValueLookup"];
    [members setObject:each.value forKey:each.key];
    id const found = decoded(archiveOf(members));
    ASSERT_TRUE([found isKindOfClass:[NSString class]]) << textOf([found description]);
    EXPECT_NE(textOf(found).find("\"" + textOf(each.key) + "\" is not a"), std::string::npos) << textOf(found);
  }
  EXPECT_TRUE([decoded(archiveOf(empty)) isKindOfClass:[NSString class]]);
}

TEST_F(ObjectiveCArchive, NeedsACoderWithKeys) {
  @try {
    [NSArchiver archivedDataWithRootObject:parsed(@"-an", NO)];
    ADD_FAILURE() << "archived";
  } @catch (NSException* exception) {
    EXPECT_EQ(textOf([exception name]), textOf(NSInvalidArgumentException));
  }
}

}  // namespace
