/* Adds a LUT to the argument vector of a transcode: checks the LUT and the words, then prints the vector as it will be
   run. Plain Objective-C, for GCC and Clang: compile with `pkg-config --cflags --libs meridian-objc`. */
#import <Meridian/Meridian.h>
#include <stdio.h>

int main(int argc, char** argv) {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  if (argc < 2) {
    fprintf(stderr, "usage: add_look LUT [WORD...]\n");
    return 2;
  }
  NSURL* look = [NSURL fileURLWithPath:[NSString stringWithUTF8String:argv[1]]];
  NSError* error = nil;
  ParsedLutFile* lut = [ParsedLutFactory parsedLutFileAtURL:look error:&error];
  if (lut == nil) {
    fprintf(stderr, "%s\n%s\n", [[error localizedDescription] UTF8String],
            [[error localizedRecoverySuggestion] UTF8String]);
    return 1;
  }
  const char* form = lut.dimensions == MeridianLutDimensionsCube ? "cube" : "1D LUT";
  printf("%s: %s of %lld\n", argv[1], form, (long long)lut.size);

  NSMutableArray* words = [NSMutableArray array];
  for (int index = 2; index < argc; ++index) [words addObject:[NSString stringWithUTF8String:argv[index]]];
  TranscodeCliArguments* arguments = [[[TranscodeCliArguments alloc] initWithCliArgs:words
                                                            maintainOriginalOrdering:YES] autorelease];
  for (NSString* flag in [arguments unknownFlags]) fprintf(stderr, "unknown: %s\n", [flag UTF8String]);
  arguments.lutFile = look;
  for (NSString* word in [arguments commandLine]) printf("[%s]\n", [word UTF8String]);
  [pool release];
  return 0;
}
