/* Keyed archives of a store, good and hostile. */
#import <Meridian/Meridian.h>

#include "check.h"

/** Encodes what a test gives it under the keys of a store. */
@interface Impostor : NSObject <NSCoding, NSCopying> {
 @public
  NSDictionary* _members;
}
@end

@implementation Impostor

- (id)initWithCoder:(NSCoder*)coder {
  (void)coder;
  return [self init];
}

- (id)copyWithZone:(NSZone*)zone {
  (void)zone;
  return [self retain];
}

- (void)encodeWithCoder:(NSCoder*)coder {
  for (NSString* key in _members) [coder encodeObject:[_members objectForKey:key] forKey:key];
}

@end

static TranscodeCliArguments* parsed(NSString* line, BOOL keepsOrder) {
  return [[[TranscodeCliArguments alloc] initWithCliArgs:[line componentsSeparatedByString:@" "]
                                maintainOriginalOrdering:keepsOrder] autorelease];
}

static NSData* archive_of_impostor(Impostor* impostor) {
  NSMutableData* data = [NSMutableData data];
  NSKeyedArchiver* archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
  [archiver setClassName:@"TranscodeCliArguments" forClass:[Impostor class]];
  [archiver encodeObject:impostor forKey:@"root"];
  [archiver finishEncoding];
  return data;
}

static NSData* archive_of(NSDictionary* members) {
  Impostor* impostor = [[[Impostor alloc] init] autorelease];
  impostor->_members = members;
  return archive_of_impostor(impostor);
}

/** Returns what an archive made by archive_of() holds, or the reason why it holds nothing. */
static id decoded(NSData* data) {
  @try {
    NSKeyedUnarchiver* unarchiver = [[[NSKeyedUnarchiver alloc] initForReadingWithData:data] autorelease];
    return [unarchiver decodeObjectForKey:@"root"];
  } @catch (NSException* exception) {
    CHECK_EQUAL([exception name], NSInvalidUnarchiveOperationException);
    return [exception reason];
  }
  return nil;
}

static NSSet* set_of(NSArray* array) { return array == nil ? nil : [NSSet setWithArray:array]; }

static void an_archive_goes_there_and_back(void) {
  NSArray* lines = [NSArray
      arrayWithObjects:@"-vr 25 -out /Out/É.mov -foo 1 -Bar -overwrite -preset fast", @"-an", @"-foo 1", @"", nil];
  for (NSString* line in lines) {
    for (int keepsOrder = 0; keepsOrder < 2; ++keepsOrder) {
      TranscodeCliArguments* arguments = parsed(line, keepsOrder != 0);
      NSData* data = [NSKeyedArchiver archivedDataWithRootObject:arguments];
      TranscodeCliArguments* back = [NSKeyedUnarchiver unarchiveObjectWithData:data];
      CHECK_EQUAL(back, arguments);
      CHECK_EQUAL(set_of([back unknownFlags]), set_of([arguments unknownFlags]));
      if (keepsOrder != 0) CHECK_EQUAL([back commandLine], [arguments commandLine]);
    }
  }
}

static void an_archive_goes_through_a_secure_coder(void) {
  TranscodeCliArguments* arguments = parsed(@"-vr 25 -foo 1", YES);
  CHECK([TranscodeCliArguments supportsSecureCoding]);
  NSMutableData* data = [NSMutableData data];
  NSKeyedArchiver* archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
  [archiver setRequiresSecureCoding:YES];
  [archiver encodeObject:arguments forKey:@"root"];
  [archiver finishEncoding];
  NSKeyedUnarchiver* unarchiver = [[[NSKeyedUnarchiver alloc] initForReadingWithData:data] autorelease];
  [unarchiver setRequiresSecureCoding:YES];
  CHECK_EQUAL([unarchiver decodeObjectOfClass:[TranscodeCliArguments class] forKey:@"root"], arguments);
}

static void an_archive_is_read_as_it_is_without_normalising(void) {
  NSDictionary* lookup = [NSDictionary dictionaryWithObjectsAndKeys:@" Loud ", @"-VCODEC", @"x", @"no flag", nil];
  NSArray* order = [NSArray arrayWithObjects:@"-Gone", @"no flag", nil];
  id back = decoded(
      archive_of([NSDictionary dictionaryWithObjectsAndKeys:lookup, @"flagValueLookup", [NSDictionary dictionary],
                                                            @"invalidKeyValueLookup", order, @"orderedFlags", nil]));
  CHECK([back isKindOfClass:[TranscodeCliArguments class]]);
  if (![back isKindOfClass:[TranscodeCliArguments class]]) return;
  CHECK_EQUAL([back flagValueLookup], lookup);
  CHECK_EQUAL([[back commandLine] componentsJoinedByString:@"|"], @"no flag|x|-VCODEC| Loud ");
}

static void an_archive_of_anything_else_fails_to_decode(void) {
  NSDictionary* empty = [NSDictionary dictionary];
  NSNumber* number = [NSNumber numberWithInt:1];
  NSDictionary* wrong_value = [NSDictionary dictionaryWithObject:number forKey:@"-vr"];
  NSDictionary* wrong_key = [NSDictionary dictionaryWithObject:@"-vr" forKey:number];
  struct {
    NSString* key;
    id value;
  } cases[] = {
      {@"flagValueLookup", [NSArray array]},
      {@"flagValueLookup", @"-vr"},
      {@"flagValueLookup", wrong_value},
      {@"flagValueLookup", wrong_key},
      {@"invalidKeyValueLookup", number},
      {@"invalidKeyValueLookup", wrong_value},
      {@"invalidKeyValueLookup", [NSArray arrayWithObject:@"-foo"]},
      {@"orderedFlags", @"-vr"},
      {@"orderedFlags", empty},
      {@"orderedFlags", [NSArray arrayWithObjects:@"-vr", number, nil]},
  };
  for (size_t index = 0; index < sizeof(cases) / sizeof(cases[0]); ++index) {
    NSMutableDictionary* members = [NSMutableDictionary dictionaryWithObject:empty forKey:@"flagValueLookup"];
    [members setObject:cases[index].value forKey:cases[index].key];
    id found = decoded(archive_of(members));
    NSString* expected = [NSString stringWithFormat:@"\"%@\" is not a", cases[index].key];
    CHECK([found isKindOfClass:[NSString class]] && [found rangeOfString:expected].location != NSNotFound);
  }
  CHECK([decoded(archive_of(empty)) isKindOfClass:[NSString class]]);
}

static void an_archive_that_refers_to_the_object_itself_fails_to_decode(void) {
  for (int is_key = 0; is_key < 2; ++is_key) {
    Impostor* impostor = [[[Impostor alloc] init] autorelease];
    id lookup = is_key ? (id)[NSDictionary dictionaryWithObject:@"25" forKey:impostor] : [NSSet setWithObject:impostor];
    impostor->_members = [NSDictionary dictionaryWithObject:lookup forKey:@"flagValueLookup"];
    NSData* archive = archive_of_impostor(impostor);
    __lsan_disable();
    id found = decoded(archive);
    __lsan_enable();
    CHECK([found isKindOfClass:[NSString class]]);
  }
}

static void only_a_coder_with_keys_can_encode(void) {
  CHECK_RAISES(NSInvalidArgumentException, [NSArchiver archivedDataWithRootObject:parsed(@"-an", NO)]);
}

int main(void) {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  an_archive_goes_there_and_back();
  an_archive_goes_through_a_secure_coder();
  an_archive_is_read_as_it_is_without_normalising();
  an_archive_of_anything_else_fails_to_decode();
  an_archive_that_refers_to_the_object_itself_fails_to_decode();
  only_a_coder_with_keys_can_encode();
  [pool release];
  return check_failures == 0 ? 0 : 1;
}
