/* The interface from Clang's Objective-C: blocks, literals, element types, nullability, class properties. */
#import <Meridian/Meridian.h>

#include "check.h"

/* Stack blocks and global blocks name their classes. Nothing here copies a block or sends it a message, so that the
   classes need not be there: an application links a blocks runtime. */
void* _NSConcreteStackBlock[32];
void* _NSConcreteGlobalBlock[32];

static void a_block_enumerates_and_may_stop(void) {
  NSMutableArray<NSString*>* texts = [NSMutableArray array];
  [MediaFormatConstants enumerateValidFileExtensionsForMediaContainer:SLVMediaFileContainerMP4
                                                                block:^(NSString* text, BOOL* stop) {
                                                                  [texts addObject:text];
                                                                  *stop = texts.count == 4;
                                                                }];
  CHECK_EQUAL(texts, (@[ @"mp4", @"m4v", @".m4a", @".m4p" ]));
  __block int containers = 0;
  [MediaFormatConstants enumerateContainersForFileExtension:@".M4A"
                                                      block:^(NSString* text, BOOL* stop) {
                                                        CHECK_EQUAL(text, SLVMediaFileContainerMP4);
                                                        containers += *stop ? 100 : 1;
                                                      }];
  CHECK(containers == 1);
  __block NSUInteger makers = 0;
  [MediaFormatConstants alphabeticalEnumerationOfCorporations:^(NSString* text, BOOL* stop) {
    makers += text.length > 0 && !*stop;
  }];
  CHECK(makers == 15);
  [MediaFormatConstants alphabeticalEnumerationOfCorporations:nil];
}

static void what_a_block_raises_passes_through(void) {
  TranscodeCliArguments* arguments = [[[TranscodeCliArguments alloc] initWithCliArgs:@[ @"-foo", @"1" ]] autorelease];
  __block int calls = 0;
  CHECK_RAISES(@"Stop", [arguments enumerateUnknownFlags:^(NSString* flag, NSString* value) {
                 calls += [flag isEqual:@"-foo"] && [value isEqual:@"1"];
                 [NSException raise:@"Stop" format:@"here"];
               }]);
  CHECK(calls == 1);
}

static void properties_have_their_types(void) {
  TranscodeCliArguments* arguments = [[[TranscodeCliArguments alloc] init] autorelease];
  SAVTranscodeArgumentVideoCodecValue _Nullable codec = SAVProRes422HQ;
  arguments.videoFormat = codec;
  arguments.videoFrameRate = @23.976f;
  arguments.keyFrames = @25;
  arguments.lutFile = [NSURL fileURLWithPath:@"/Looks/a b.cube"];
  arguments.flagValueLookup = @{@"-vr" : @"24"};
  CHECK_EQUAL(arguments.videoFrameRate, @24.0f);
  CHECK(arguments.lutFile == nil && arguments.videoFormat == nil && arguments.dimensionsSizeValue == nil);
  for (NSString* flag in TranscodeCliArguments.allKnownCommandFlags) CHECK([flag hasPrefix:@"-"]);
  FFmpegDescriptionConstants.utilityName = @"Transcoder";
  CHECK_EQUAL(FFmpegDescriptionConstants.utilityName, @"Transcoder");
}

int main(void) {
  @autoreleasepool {
    a_block_enumerates_and_may_stop();
    what_a_block_raises_passes_through();
    properties_have_their_types();
  }
  return check_failures == 0 ? 0 : 1;
}
