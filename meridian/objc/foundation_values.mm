#include "meridian/objc/foundation_values.h"

#include <algorithm>
#include <limits>
#include <string>

#include "meridian/base/text.h"

#import <Meridian/Errors.h>

NSString* const MeridianErrorNameKey = @"MeridianErrorName";

namespace meridian::inline v0_2::objc {

void raise(Thrown thrown) {
  if (thrown == Thrown::outOfMemory) {
    [[NSException exceptionWithName:NSMallocException reason:@"there is not enough memory" userInfo:nil] raise];
  }
  [[NSException exceptionWithName:NSInternalInconsistencyException reason:@"Meridian failed unexpectedly"
                         userInfo:nil] raise];
  __builtin_unreachable();
}

void raiseInvalidArgument(std::string_view reason) {
  [[NSException exceptionWithName:NSInvalidArgumentException reason:stringOf(reason) userInfo:nil] raise];
  __builtin_unreachable();
}

id required(id object, Class type, std::string_view name) {
  if (![object isKindOfClass:type]) {
    const std::string found = object == nil ? "nil" : "of class " + textOf(NSStringFromClass([object class]), "class");
    raiseInvalidArgument(std::string(name) + " is " + found + ", expected " + textOf(NSStringFromClass(type), "class"));
  }
  return object;
}

std::int64_t wholeNumberOf(id object, std::string_view name) {
  NSNumber* const number = required(object, [NSNumber class], name);
  const double value = [number doubleValue];
  // As a double, an integer next to the largest is 2^63 as well.
  const std::string_view type = [number objCType];
  const bool isInteger = type != @encode(double) && type != @encode(float);
  const bool isLargest = value == 0x1p63 && isInteger &&
                         [number unsignedLongLongValue] <= std::uint64_t{std::numeric_limits<std::int64_t>::max()};
  const bool fits = (value >= -0x1p63 && value < 0x1p63) || isLargest;
  if (!fits) {
    raiseInvalidArgument(std::string(name) + " is not a number of 64 bits");
  }
  return [number longLongValue];
}

NSString* stringOf(std::string_view text) {
  if (text.empty()) return @"";
  NSString* const string = [[[NSString alloc] initWithBytes:text.data()
                                                     length:text.size()
                                                   encoding:NSUTF8StringEncoding] autorelease];
  if (string != nil) return string;
  // A path of the file system may be of any bytes.
  return [[[NSString alloc] initWithBytes:text.data() length:text.size()
                                 encoding:NSISOLatin1StringEncoding] autorelease];
}

bool getText(id object, std::string& text) {
  if (![object isKindOfClass:[NSString class]]) return false;
  NSData* const data = [object dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:NO];
  if (data == nil) return false;
  text.assign(static_cast<const char*>([data bytes]), [data length]);
  // GNUstep encodes half a surrogate pair.
  return isValidUtf8(text);
}

std::string textOf(id string, std::string_view name) {
  std::string text;
  if (!getText(required(string, [NSString class], name), text)) {
    raiseInvalidArgument(std::string(name) + " has half a surrogate pair, which UTF-8 cannot carry");
  }
  return text;
}

NSArray* arrayOf(const std::vector<std::string>& texts) {
  NSMutableArray* const array = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string& text : texts) [array addObject:stringOf(text)];
  return array;
}

std::vector<std::string> textsOf(id array, std::string_view name) {
  std::vector<std::string> texts;
  // GCC's Objective-C++ has no fast enumeration.
  required(array, [NSArray class], name);
  for (NSUInteger place = 0; place < [array count]; ++place) {
    texts.push_back(textOf([array objectAtIndex:place], "an element of " + std::string(name)));
  }
  return texts;
}

NSDictionary* dictionaryOf(const TextDictionary& dictionary) {
  NSMutableDictionary* const result = [NSMutableDictionary dictionaryWithCapacity:dictionary.size()];
  for (const auto& [key, value] : dictionary) [result setObject:stringOf(value) forKey:stringOf(key)];
  return result;
}

bool getDictionary(id object, TextDictionary& dictionary) {
  if (![object isKindOfClass:[NSDictionary class]]) return false;
  std::vector<std::pair<std::string, std::string>> entries;
  NSArray* const keys = [object allKeys];
  for (NSUInteger place = 0; place < [keys count]; ++place) {
    id const key = [keys objectAtIndex:place];
    auto& [keyText, valueText] = entries.emplace_back();
    if (!getText(key, keyText) || !getText([object objectForKey:key], valueText)) return false;
  }
  std::sort(entries.begin(), entries.end());
  dictionary = TextDictionary::fromPairs(entries);
  return true;
}

TextDictionary textDictionaryOf(id dictionary, std::string_view name) {
  TextDictionary result;
  if (!getDictionary(required(dictionary, [NSDictionary class], name), result)) {
    raiseInvalidArgument(std::string(name) + " has a key or a value that is not a string of Unicode");
  }
  return result;
}

NSURL* urlOf(const std::string& path) {
  if (path.empty()) return nil;
  // A relative path with a colon would begin like a URL.
  return [NSURL fileURLWithPath:stringOf(path.front() == '/' ? path : "./" + path) isDirectory:NO];
}

std::string pathOf(id url, std::string_view name) {
  if (![required(url, [NSURL class], name) isFileURL]) {
    raiseInvalidArgument(std::string(name) + " is not the URL of a file");
  }
  return textOf([url path], "the path of " + std::string(name));
}

void storeError(NSError** destination, NSString* domain, NSInteger code, std::string_view name, std::string_view place,
                std::string_view text, std::string_view detail, std::error_code systemError, std::string_view remedy,
                bool isFile) {
  if (destination == nullptr) return;
  NSMutableDictionary* const info = [NSMutableDictionary dictionary];
  [info setObject:stringOf(meridian::detail::messageOf(place, text, detail, systemError, {}))
           forKey:NSLocalizedDescriptionKey];
  [info setObject:stringOf(text) forKey:NSLocalizedFailureReasonErrorKey];
  if (!remedy.empty()) [info setObject:stringOf(remedy) forKey:NSLocalizedRecoverySuggestionErrorKey];
  [info setObject:stringOf(name) forKey:MeridianErrorNameKey];
  if (isFile) [info setObject:stringOf(place) forKey:NSFilePathErrorKey];
  if (systemError) {
    [info setObject:[NSError errorWithDomain:NSPOSIXErrorDomain code:systemError.value() userInfo:nil]
             forKey:NSUnderlyingErrorKey];
  }
  *destination = [NSError errorWithDomain:domain code:code userInfo:info];
}

void storeThrown(NSError** destination, Thrown thrown) {
  if (thrown != Thrown::outOfMemory) raise(thrown);
  if (destination == nullptr) return;
  *destination = [NSError errorWithDomain:NSPOSIXErrorDomain
                                     code:static_cast<NSInteger>(std::errc::not_enough_memory)
                                 userInfo:[NSDictionary dictionaryWithObject:@"there is not enough memory"
                                                                      forKey:NSLocalizedDescriptionKey]];
}

}  // namespace meridian::inline v0_2::objc
