/* The interface from plain Objective-C, as GCC reads it: no literals, no blocks, no @autoreleasepool. */
#import <Meridian/Meridian.h>
#include <unistd.h>

#include <limits.h>

#include "check.h"

/** A string of half a surrogate pair, which Foundation makes where GNUstep makes an empty one. */
@interface HalfPair : NSString
@end

@implementation HalfPair

- (NSUInteger)length {
  return 1;
}

- (unichar)characterAtIndex:(NSUInteger)index {
  return index == 0 ? 0xD800 : 0;
}

@end

static NSArray* words(const char* line) {
  return [[NSString stringWithUTF8String:line] componentsSeparatedByString:@" "];
}

static TranscodeCliArguments* parsed(const char* line) {
  return [[[TranscodeCliArguments alloc] initWithCliArgs:words(line) maintainOriginalOrdering:YES] autorelease];
}

static void a_vector_is_read_queried_changed_and_rendered(void) {
  TranscodeCliArguments* arguments = parsed("-VR 25 -out /Out/A.mov -foo 1 -overwrite");
  CHECK(![arguments allFlagsAreValid]);
  CHECK_EQUAL([arguments unknownFlags], words("-foo"));
  CHECK([arguments hasArgumentFlag:@" -out "] && ![arguments hasArgumentFlag:@"-OUT"]);
  CHECK_EQUAL([arguments argumentFlagValue:SAVOutputFileFlag], @"/Out/A.mov");
  CHECK_EQUAL([arguments argumentFlagValue:SAVOverwriteExistingFlag], @"");
  CHECK([arguments argumentFlagValue:SAVPresetFlag] == nil);
  arguments.videoFrameRate = [NSNumber numberWithFloat:29.97F];
  arguments.shouldOverwrite = NO;
  arguments.prepareForWeb = YES;
  CHECK_EQUAL([[arguments commandLine] componentsJoinedByString:@"|"], @"-vr|29.97|-out|/Out/A.mov|-web|");
  CHECK_EQUAL([arguments commandLineArguments], [arguments commandLine]);
  CHECK_EQUAL([arguments cliString], @"-vr29.97-out/Out/A.mov-web");
  CHECK_EQUAL([[[[TranscodeCliArguments alloc] init] autorelease] commandLine], [NSArray array]);
  CHECK_EQUAL([[[[TranscodeCliArguments alloc] initWithCliArgs:words("-isTranscoder")] autorelease] unknownFlags],
              words("-istranscoder"));
  CHECK_EQUAL([TranscodeCliArguments runInTranscodeModeFlag], @"-isTranscoder");
}

static void a_dictionary_is_checked_and_one_that_is_set_is_not(void) {
  NSDictionary* lookup = [NSDictionary
      dictionaryWithObjectsAndKeys:@"ProRes422", @" -VCODEC", @"solvane_cloud", @"-preset", @"2", @"-bar", nil];
  TranscodeCliArguments* arguments = [[[TranscodeCliArguments alloc] initWithArgumentLookup:lookup] autorelease];
  NSMutableDictionary* cloud = [[[TranscodeCliArguments solvaneCloudPresetArguments] mutableCopy] autorelease];
  CHECK([cloud count] == 8 && [[TranscodeCliArguments solvaneProRes4444XQPresetArguments] count] == 3);
  [cloud setObject:@"prores422" forKey:SAVVideoFormatFlag];
  CHECK_EQUAL([arguments flagValueLookup], cloud);
  CHECK_EQUAL([arguments unknownFlags], words("-bar"));

  arguments = parsed("-vr 25 -dims 1x1");
  [arguments
      setFlagValueLookup:[NSDictionary dictionaryWithObjectsAndKeys:@"30", @"-vr", @"X", @"-a", @"Y", @"-Z", nil]];
  CHECK_EQUAL([[arguments commandLine] componentsJoinedByString:@" "], @"-vr 30 -Z Y -a X");
}

static void a_copy_is_equal_and_independent(void) {
  TranscodeCliArguments* arguments = parsed("-vr 25 -foo 1");
  TranscodeCliArguments* copy = [[arguments copy] autorelease];
  CHECK_EQUAL(copy, arguments);
  CHECK([copy hash] == [arguments hash] && ![copy isEqual:@"-vr"]);
  copy.videoFrameRate = nil;
  CHECK(![copy isEqual:arguments]);
  CHECK_EQUAL([arguments.videoFrameRate stringValue], @"25");
  [copy updateFromVideoDetail:arguments];
  CHECK_EQUAL(copy.videoFrameRate, arguments.videoFrameRate);
}

static void inputs_tracks_and_sizes_are_objects_of_foundation(void) {
  TranscodeCliArguments* arguments = parsed("-in_1_0 /b -in_0_0 /a -dims 1280x720 -ac_omit_2 -aspect_scaling crop");
  CHECK_EQUAL([arguments inputFiles], words("/a /b"));
  CHECK_EQUAL([[arguments inputFileGroups] objectForKey:[NSNumber numberWithInt:1]], words("/b"));
  CHECK_EQUAL([arguments firstInputFile], @"/a");
  [arguments setInputFileGroups:[NSDictionary dictionaryWithObject:words("/c") forKey:[NSNumber numberWithInt:7]]];
  CHECK_EQUAL([arguments argumentFlagValue:@"-in_7_0"], @"/c");
  [arguments setInputFiles:nil];
  CHECK([arguments inputFiles] == nil && [arguments inputFileGroups] == nil && [arguments firstInputFile] == nil);
  CHECK_EQUAL([arguments ignoredAudioFileTracks], [NSArray arrayWithObject:[NSNumber numberWithInt:2]]);
  NSNumber* beyond[] = {[NSNumber numberWithUnsignedLongLong:ULLONG_MAX], [NSNumber numberWithDouble:1e300],
                        [NSNumber numberWithDouble:0x1p63], [NSDecimalNumber notANumber]};
  for (size_t index = 0; index < sizeof(beyond) / sizeof(beyond[0]); ++index) {
    CHECK_RAISES(NSInvalidArgumentException, arguments.keyFrames = beyond[index]);
  }
  arguments.keyFrames = [NSNumber numberWithLongLong:LLONG_MAX];
  CHECK_EQUAL(arguments.keyFrames, [NSNumber numberWithLongLong:LLONG_MAX]);
  arguments.keyFrames = nil;
  CHECK_RAISES(NSInvalidArgumentException,
               [arguments setIgnoredAudioFileTracks:[NSArray arrayWithObject:[NSNumber numberWithInt:-1]]]);
  CHECK_RAISES(NSInvalidArgumentException, arguments.lutFile = [NSURL URLWithString:@"https://h/a.cube"]);
  CHECK_RAISES(NSUndefinedKeyException,
               [[MediaFormatConstants sharedInstance] setValue:@"" forKey:@"cachedContainerFileExtensionLookup"]);
  [arguments setIgnoredAudioFileTracks:[NSArray arrayWithObject:[NSNumber numberWithInt:0]]];
  CHECK([arguments hasArgumentFlag:@"-ac_omit_0"] && ![arguments hasArgumentFlag:@"-ac_omit_2"]);
  CHECK([[arguments dimensionsSizeValue] sizeValue].width == 1280);
  CHECK([arguments sourceFileAnalysisRequired]);
  arguments.videoDimensions = [NSValue valueWithSize:NSMakeSize(1920, 1080)];
  CHECK_EQUAL([arguments argumentFlagValue:SAVVideoDimensionsFlag], @"1920.000000x1080.000000");
  [arguments setCommand:SAVCliHelpFlag requested:YES];
  CHECK([arguments isCommandRequested:SAVCliHelpFlag] && ![arguments isCommandRequested:SAVCliCodecsFlag]);
}

static void collect(NSString* text, BOOL* stop, void* context) {
  NSMutableArray* texts = (NSMutableArray*)context;
  [texts addObject:text];
  *stop = [texts count] == 3;
}

static void collect_entry(NSString* flag, NSString* value, void* context) {
  [(NSMutableArray*)context addObject:[flag stringByAppendingString:value]];
}

static void functions_enumerate_where_there_are_no_blocks(void) {
  NSMutableArray* texts = [NSMutableArray array];
  [MediaFormatConstants enumerateValidFileExtensionsForMediaContainer:SLVMediaFileContainerMP4
                                                             function:collect
                                                              context:texts];
  CHECK_EQUAL(texts, words("mp4 m4v .m4a"));
  [texts removeAllObjects];
  [MediaFormatConstants enumerateContainersForFileExtension:@"ARX" function:collect context:texts];
  [MediaFormatConstants enumerateContainersForFileExtension:@"m4a" function:collect context:texts];
  CHECK_EQUAL(texts, words("HDE"));
  [texts removeAllObjects];
  [MediaFormatConstants alphabeticalEnumerationOfCorporationsUsingFunction:collect context:texts];
  [MediaFormatConstants alphabeticalEnumerationOfCorporationsUsingFunction:NULL context:texts];
  [MediaFormatConstants alphabeticalEnumerationOfCorporations:nil];
  CHECK_EQUAL(texts, words("Adobe Apple Arri"));
  [texts removeAllObjects];
  [parsed("-foo 1 -bar") enumerateUnknownFlagsUsingFunction:collect_entry context:texts];
  CHECK_EQUAL(texts, words("-foo1 -bar"));

  MediaFormatConstants* constants = [MediaFormatConstants sharedInstance];
  CHECK(constants == [MediaFormatConstants sharedInstance]);
  CHECK([[constants cachedContainerFileExtensionLookup] count] == 9);
  CHECK_EQUAL([[constants valueForKey:@"cachedContainerFileExtensionLookup"] objectForKey:@"HDE"], words("arx"));
}

static void misuse_raises_and_changes_nothing(void) {
  TranscodeCliArguments* arguments = parsed("-vr 25 -crop_anchor c");
  id none = nil;
  MeridianTextFunction no_function = NULL;
  CHECK_RAISES(NSInvalidArgumentException, [arguments hasArgumentFlag:none]);
  CHECK_RAISES(NSInvalidArgumentException, [arguments setFlagValueLookup:none]);
  CHECK_RAISES(NSInvalidArgumentException, [[TranscodeCliArguments alloc] initWithCliArgs:none]);
  CHECK_RAISES(NSInvalidArgumentException,
               [[TranscodeCliArguments alloc] initWithCliArgs:[NSArray arrayWithObject:[NSNull null]]]);
  CHECK_RAISES(NSInvalidArgumentException, [arguments setValue:@"25" forKey:@"videoFrameRate"]);
  CHECK_RAISES(NSInvalidArgumentException, [arguments setValue:[NSNumber numberWithInt:1] forKey:@"videoDimensions"]);
  CHECK_RAISES(NSInvalidArgumentException, [arguments setValue:@"middle" forKey:@"videoCropAnchor"]);
  CHECK_RAISES(NSInvalidArgumentException, [arguments setValue:@"1:2" forKey:@"timecode"]);
  CHECK_RAISES(NSInvalidArgumentException, [arguments setValue:@"puce" forKey:@"watermarkTextFontColor"]);
  CHECK_RAISES(NSInvalidArgumentException, [arguments setValue:[[[HalfPair alloc] init] autorelease]
                                                        forKey:@"watermarkText"]);
  CHECK_RAISES(NSInvalidArgumentException, [MediaFormatConstants enumerateContainersForFileExtension:@"mov"
                                                                                            function:no_function
                                                                                             context:NULL]);
  CHECK_RAISES(NSUndefinedKeyException, [arguments valueForKey:@"store"]);
  CHECK_EQUAL([arguments commandLine], words("-vr 25 -crop_anchor c"));
}

static void people_set_properties_as_text(void) {
  TranscodeCliArguments* arguments = parsed("-vr 25");
  NSError* error = nil;
  CHECK([arguments setText:@" PRORES422 " ofProperty:@"videoFormat" error:&error] && error == nil);
  CHECK_EQUAL(arguments.videoFormat, SAVProRes422);
  CHECK_EQUAL([arguments textOfProperty:@"videoFrameRate"], @"25");
  CHECK([arguments textOfProperty:@"videoFrameRat"] == nil);
  CHECK(![arguments setText:@"25" ofProperty:@"videoFrameRat" error:&error]);
  CHECK_EQUAL([error domain], MeridianPropertyErrorDomain);
  CHECK([error code] == MeridianPropertyErrorUnknownProperty);
  CHECK_EQUAL([error localizedDescription], @"\"videoFrameRat\": is not a property");
  CHECK_EQUAL([error localizedFailureReason], @"is not a property");
  CHECK_EQUAL([error localizedRecoverySuggestion], @"did you mean videoFrameRate?");
  CHECK_EQUAL([[error userInfo] objectForKey:MeridianErrorNameKey], @"unknownProperty");
  CHECK(![arguments setText:@"-1" ofProperty:@"videoBitDepth" error:NULL]);
}

static void a_lut_raises_for_a_row_that_it_does_not_have(void) {
  NSString* path = [NSTemporaryDirectory()
      stringByAppendingPathComponent:[NSString stringWithFormat:@"meridian_objc_%d.cube", (int)getpid()]];
  NSString* rows = [@"" stringByPaddingToLength:256 * 12 withString:@"0.0 0.5 1.0\n" startingAtIndex:0];
  CHECK([rows writeToFile:path atomically:NO]);
  ParsedLutFile* lut = [ParsedLutFactory parsedLutFileAtURL:[NSURL fileURLWithPath:path]];
  CHECK([[NSFileManager defaultManager] removeItemAtPath:path error:NULL]);
  CHECK(lut.rowCount == 256 && [lut rowAtIndex:255].green == 0.5);
  CHECK_RAISES(NSRangeException, [lut rowAtIndex:256]);
}

static void texts_of_ffmpeg_are_read_and_set(void) {
  CHECK_EQUAL([FFmpegDescriptionConstants utilityName], @"FFmpeg Utility");
  CHECK_EQUAL([FFmpegDescriptionConstants maskName], @"Video");
  CHECK_EQUAL([FFmpegDescriptionConstants encoderMetadataKey], @"encoder");
  CHECK_EQUAL([FFmpegDescriptionConstants handlerNameMetadataKey], @"handler name");
  [FFmpegDescriptionConstants setMaskName:@"Bild"];
  CHECK_EQUAL([FFmpegDescriptionConstants maskName], @"Bild");
}

int main(void) {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  a_vector_is_read_queried_changed_and_rendered();
  a_dictionary_is_checked_and_one_that_is_set_is_not();
  a_copy_is_equal_and_independent();
  inputs_tracks_and_sizes_are_objects_of_foundation();
  functions_enumerate_where_there_are_no_blocks();
  misuse_raises_and_changes_nothing();
  people_set_properties_as_text();
  a_lut_raises_for_a_row_that_it_does_not_have();
  texts_of_ffmpeg_are_read_and_set();
  [pool release];
  return check_failures == 0 ? 0 : 1;
}
