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
  NSMutableArray* words = [NSMutableArray array];
  for (int index = 1; index < argc; ++index) {
    NSString* word = [NSString stringWithUTF8String:argv[index]];
    if (word == nil) {
      fprintf(stderr, "argument %d is not UTF-8\n", index);
      return 2;
    }
    [words addObject:word];
  }
  NSURL* look = [NSURL fileURLWithPath:[words objectAtIndex:0]];
  [words removeObjectAtIndex:0];
  NSError* error = nil;
  ParsedLutFile* lut = [ParsedLutFactory parsedLutFileAtURL:look error:&error];
  if (lut == nil) {
    fprintf(stderr, "%s\n", [[error localizedDescription] UTF8String]);
    if ([error localizedRecoverySuggestion]) fprintf(stderr, "%s\n", [[error localizedRecoverySuggestion] UTF8String]);
    return 1;
  }
  const char* form = lut.dimensions == MeridianLutDimensionsCube ? "cube" : "1D LUT";
  printf("%s: %s of %lld\n", argv[1], form, (long long)lut.size);

  TranscodeCliArguments* arguments = [[[TranscodeCliArguments alloc] initWithCliArgs:words
                                                            maintainOriginalOrdering:YES] autorelease];
  for (NSString* flag in [arguments unknownFlags]) fprintf(stderr, "unknown: %s\n", [flag UTF8String]);
  arguments.lutFile = look;
  for (NSString* word in [arguments commandLine]) printf("[%s]\n", [word UTF8String]);
  [pool release];
  return 0;
}
