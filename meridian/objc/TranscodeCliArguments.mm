#include "meridian/cli/transcode_cli_arguments.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "meridian/cli/transcode_properties.h"
#include "meridian/objc/blocks.h"
#include "meridian/objc/foundation_values.h"

#import <Meridian/Errors.h>
#import <Meridian/TranscodeCliArguments.h>
#import <Meridian/TranscodeProperties.h>

namespace m = meridian;
using m::objc::arrayOf;
using m::objc::dictionaryOf;
using m::objc::required;
using m::objc::returned;
using m::objc::stringOf;
using m::objc::textOf;

using Store = m::TranscodeCliArguments;

NSString* const MeridianPropertyErrorDomain = @"MeridianPropertyErrorDomain";

static_assert(MeridianPropertyErrorUnknownProperty == static_cast<int>(m::PropertyErrorCode::unknownProperty) &&
              MeridianPropertyErrorInvalidValue == static_cast<int>(m::PropertyErrorCode::invalidValue) &&
              MeridianPropertyErrorWrongType == static_cast<int>(m::PropertyErrorCode::wrongType) &&
              MeridianPropertyErrorBeginsWithDash == static_cast<int>(m::PropertyErrorCode::beginsWithDash) &&
              MeridianPropertyErrorContainsNul == static_cast<int>(m::PropertyErrorCode::containsNul) &&
              m::EnumerationTable<m::PropertyErrorCode>::rows.size() == 5);

namespace {

NSString* const lookupKey = @"flagValueLookup";
NSString* const invalidKey = @"invalidKeyValueLookup";
NSString* const orderKey = @"orderedFlags";

/// Returns a value of the library as an object; nil for an absent one.
NSString* objectOf(std::string_view text) { return stringOf(text); }
template <m::TypedTextType Text>
NSString* objectOf(Text text) {
  return stringOf(text.rawValue());
}
template <m::TabledEnumeration Enumeration>
NSString* objectOf(Enumeration value) {
  return stringOf(rawValue(value));
}
NSNumber* objectOf(std::int64_t number) { return [NSNumber numberWithLongLong:number]; }
NSNumber* objectOf(float number) { return [NSNumber numberWithFloat:number]; }
NSValue* objectOf(const m::Size& size) { return [NSValue valueWithSize:NSMakeSize(size.width, size.height)]; }
NSURL* objectOf(const m::Url& url) { return m::objc::urlOf(url.path()); }
NSString* objectOf(const m::TimecodeComponents& timecode) { return stringOf(timecode.timecodeString()); }
NSString* objectOf(const m::RgbColor& color) { return stringOf(color.text()); }
template <typename Value>
id objectOf(const std::optional<Value>& value) {
  return value ? objectOf(*value) : nil;
}

[[noreturn]] void raiseInvalidValue(const m::TranscodeProperty& property, const std::string& text) {
  m::objc::raiseInvalidArgument(std::string(property.name) + " cannot be set to \"" + text + "\": expected " +
                                expectedForm(property));
}

/// Returns an object as the value of a property. The text that a view refers to is stored in `text`.
template <typename Value>
std::optional<Value> valueOf(id object, const m::TranscodeProperty& property, std::string& text) {
  if (object == nil) return std::nullopt;
  if constexpr (std::is_same_v<Value, std::int64_t>) {
    return m::objc::wholeNumberOf(object, property.name);
  } else if constexpr (std::is_same_v<Value, float>) {
    return [required(object, [NSNumber class], property.name) floatValue];
  } else if constexpr (std::is_same_v<Value, m::Size>) {
    NSValue* const value = required(object, [NSValue class], property.name);
    if (std::string_view([value objCType]) != @encode(NSSize)) raiseInvalidValue(property, "a value of another type");
    const NSSize size = [value sizeValue];
    return m::Size{size.width, size.height};
  } else if constexpr (std::is_same_v<Value, m::Url>) {
    return m::Url::fromFilePath(m::objc::pathOf(object, property.name));
  } else {
    text = textOf(object, property.name);
    if constexpr (std::is_same_v<Value, std::string_view> || m::TypedTextType<Value>) {
      return Value(std::string_view(text));
    } else {
      std::optional<Value> value;
      if constexpr (m::TabledEnumeration<Value>) {
        value = m::fromRawValue<Value>(text);
      } else if constexpr (std::is_same_v<Value, m::TimecodeComponents>) {
        value = m::TimecodeComponents::fromTimecode(text);
      } else {
        value = Value::fromText(text);
      }
      if (!value) raiseInvalidValue(property, text);
      return value;
    }
  }
}

template <typename Optional>
using ValueOf = typename std::remove_cvref_t<Optional>::value_type;

std::optional<std::vector<std::string>> optionalTextsOf(NSArray* array, std::string_view name) {
  if (array == nil) return std::nullopt;
  return m::objc::textsOf(array, name);
}

/// Returns the property of a name; null if there is none.
const m::TranscodeProperty* propertyNamed(NSString* name) {
  return m::findTranscodeProperty(textOf(name, "the property's name"));
}

/// Reports that an archive does not hold a store.
void failToDecode(NSCoder* coder, NSString* key, NSString* expected) {
  NSString* const reason =
      [NSString stringWithFormat:@"TranscodeCliArguments cannot be decoded: \"%@\" is not %@", key, expected];
  const SEL failWithError = NSSelectorFromString(@"failWithError:");
  if (![coder respondsToSelector:failWithError]) {
    [[NSException exceptionWithName:NSInvalidUnarchiveOperationException reason:reason userInfo:nil] raise];
  }
  // NSCoderReadCorruptError of NSCocoaErrorDomain, where Foundation has both.
  [coder performSelector:failWithError
              withObject:[NSError errorWithDomain:NSCocoaErrorDomain
                                             code:4864
                                         userInfo:[NSDictionary dictionaryWithObject:reason
                                                                              forKey:NSLocalizedDescriptionKey]]];
}

}  // namespace

@interface TranscodeCliArguments ()
- (id)initWithoutStore NS_DESIGNATED_INITIALIZER;
@end

@implementation TranscodeCliArguments

/// An archive may refer to the object that is being decoded, which has no store yet.
static Store& storeOf(TranscodeCliArguments* arguments) {
  if (arguments->_store == nullptr) {
    [[NSException exceptionWithName:NSInvalidUnarchiveOperationException
                             reason:@"TranscodeCliArguments is used before it is initialised"
                           userInfo:nil] raise];
  }
  return *static_cast<Store*>(arguments->_store);
}

/// Gives a new object the store that the work makes; frees the object if that raises an exception.
static id initialized(TranscodeCliArguments* arguments, m::FunctionRef<Store()> work) {
  if (arguments == nil) return nil;
  // GCC's Objective-C++ does not throw a caught exception again.
  struct Owner {
    id object;
    ~Owner() { [object release]; }
  } owner{arguments};
  returned([&] {
    Store* const made = new Store(work());
    delete static_cast<Store*>(std::exchange(arguments->_store, made));
  });
  return std::exchange(owner.object, nil);
}

+ (NSString*)runInTranscodeModeFlag {
  return stringOf(Store::runInTranscodeModeFlag);
}

+ (NSArray*)allKnownCommandFlags {
  return returned([] { return arrayOf({Store::allKnownCommandFlags().begin(), Store::allKnownCommandFlags().end()}); });
}

+ (NSDictionary*)solvaneCloudPresetArguments {
  return returned([] { return dictionaryOf(Store::solvaneCloudPresetArguments()); });
}

+ (NSDictionary*)solvaneProRes4444XQPresetArguments {
  return returned([] { return dictionaryOf(Store::solvaneProRes4444XQPresetArguments()); });
}

/// Key-value coding goes by the methods alone.
+ (BOOL)accessInstanceVariablesDirectly {
  return NO;
}

- (id)init {
  return initialized([super init], [] { return Store(); });
}

- (id)initWithCliArgs:(NSArray*)cliArgs {
  return [self initWithCliArgs:cliArgs maintainOriginalOrdering:NO];
}

- (id)initWithCliArgs:(NSArray*)cliArgs maintainOriginalOrdering:(BOOL)maintainOriginalOrdering {
  return initialized([super init],
                     [&] { return Store(m::objc::textsOf(cliArgs, "the vector"), maintainOriginalOrdering == YES); });
}

- (id)initWithArgumentLookup:(NSDictionary*)argumentLookup {
  return initialized([super init], [&] {
    return Store::fromArgumentLookup(m::objc::textDictionaryOf(argumentLookup, "the dictionary"));
  });
}

- (void)dealloc {
  delete static_cast<Store*>(_store);
  [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
  storeOf(self);
  return initialized([[[self class] allocWithZone:zone] initWithoutStore], [&] { return storeOf(self); });
}

/// Makes the object alone.
- (id)initWithoutStore {
  return [super init];
}

- (BOOL)isEqual:(id)other {
  if (self == other) return YES;
  return [other isKindOfClass:[TranscodeCliArguments class]] &&
         storeOf(self).stored() == storeOf(static_cast<TranscodeCliArguments*>(other)).stored();
}

- (NSUInteger)hash {
  return storeOf(self).flagValueLookup().size();
}

- (NSString*)description {
  return [[self commandLine] componentsJoinedByString:@" "];
}

+ (BOOL)supportsSecureCoding {
  return YES;
}

- (void)encodeWithCoder:(NSCoder*)coder {
  if (![coder allowsKeyedCoding]) {
    m::objc::raiseInvalidArgument("TranscodeCliArguments is encoded by coders with keys alone");
  }
  returned([&] {
    const Store::Stored& stored = storeOf(self).stored();
    [coder encodeObject:dictionaryOf(stored.flagValueLookup) forKey:lookupKey];
    if (stored.invalidKeyValueLookup) {
      [coder encodeObject:dictionaryOf(*stored.invalidKeyValueLookup) forKey:invalidKey];
    }
    if (stored.orderedFlags) [coder encodeObject:arrayOf(*stored.orderedFlags) forKey:orderKey];
  });
}

- (id)initWithCoder:(NSCoder*)coder {
  if (![coder allowsKeyedCoding]) {
    [self release];
    [[NSException exceptionWithName:NSInvalidUnarchiveOperationException
                             reason:@"TranscodeCliArguments is decoded by coders with keys alone"
                           userInfo:nil] raise];
  }
  NSString* failedKey = nil;
  NSString* expected = @"a dictionary from strings to strings";
  self = initialized([self initWithoutStore], [&] {
    Store::Stored stored;
    NSSet* const dictionaryClasses = [NSSet setWithObjects:[NSDictionary class], [NSString class], nil];
    if (!m::objc::getDictionary([coder decodeObjectOfClasses:dictionaryClasses forKey:lookupKey],
                                stored.flagValueLookup)) {
      failedKey = lookupKey;
    }
    // A coder may have encoded what is absent as nil.
    id const invalid = [coder decodeObjectOfClasses:dictionaryClasses forKey:invalidKey];
    if (invalid != nil && !m::objc::getDictionary(invalid, stored.invalidKeyValueLookup.emplace())) {
      failedKey = invalidKey;
    }
    id const flags = [coder decodeObjectOfClasses:[NSSet setWithObjects:[NSArray class], [NSString class], nil]
                                           forKey:orderKey];
    if (flags != nil) {
      auto& texts = stored.orderedFlags.emplace();
      bool isList = [flags isKindOfClass:[NSArray class]];
      for (NSUInteger place = 0; isList && place < [flags count]; ++place) {
        isList = m::objc::getText([flags objectAtIndex:place], texts.emplace_back());
      }
      if (!isList) {
        failedKey = orderKey;
        expected = @"an array of strings";
      }
    }
    return Store::fromStored(std::move(stored));
  });
  if (failedKey == nil) return self;
  [self release];
  failToDecode(coder, failedKey, expected);
  return nil;
}

- (NSDictionary*)flagValueLookup {
  return returned([&] { return dictionaryOf(storeOf(self).flagValueLookup()); });
}

- (void)setFlagValueLookup:(NSDictionary*)lookup {
  returned([&] {
    const m::TextDictionary given = m::objc::textDictionaryOf(lookup, "flagValueLookup");
    m::TextDictionary entries;
    for (const auto& [flag, value] : storeOf(self).flagValueLookup()) {
      if (const std::string* const found = given.find(flag)) entries.set(flag, std::string_view(*found));
    }
    for (const auto& [flag, value] : given) entries.setIfAbsent(flag, value);
    storeOf(self).setFlagValueLookup(std::move(entries));
  });
}

- (BOOL)hasArgumentFlag:(NSString*)flag {
  return returned([&] { return storeOf(self).hasArgumentFlag(textOf(flag, "the flag")); });
}

- (NSString*)argumentFlagValue:(NSString*)flag {
  return returned([&]() -> NSString* { return objectOf(storeOf(self).argumentFlagValue(textOf(flag, "the flag"))); });
}

- (void)setArgumentFlagValue:(NSString*)value forFlag:(NSString*)flag {
  returned([&] {
    const std::string flagText = textOf(flag, "the flag");
    if (value == nil) {
      storeOf(self).setArgumentFlagValue(flagText, std::nullopt);
    } else {
      storeOf(self).setArgumentFlagValue(flagText, textOf(value, "the value"));
    }
  });
}

- (NSArray*)unknownFlags {
  return returned([&]() -> NSArray* {
    const auto flags = storeOf(self).unknownFlags();
    return flags ? arrayOf(*flags) : nil;
  });
}

- (BOOL)allFlagsAreValid {
  return storeOf(self).allFlagsAreValid();
}

- (void)enumerateUnknownFlags:(MeridianEntryBlock)unknownFlagFound {
  if (!unknownFlagFound) m::objc::raiseInvalidArgument("the block is nil");
  returned([&] {
    storeOf(self).enumerateUnknownFlags([&](std::string_view flag, std::string_view value) {
      m::objc::callBlock(unknownFlagFound, stringOf(flag), stringOf(value));
    });
  });
}

- (void)enumerateUnknownFlagsUsingFunction:(MeridianEntryFunction)unknownFlagFound context:(void*)context {
  if (!unknownFlagFound) m::objc::raiseInvalidArgument("the function is nil");
  returned([&] {
    storeOf(self).enumerateUnknownFlags([&](std::string_view flag, std::string_view value) {
      unknownFlagFound(stringOf(flag), stringOf(value), context);
    });
  });
}

- (NSArray*)commandLine {
  return returned([&] { return arrayOf(storeOf(self).commandLine()); });
}

- (NSArray*)commandLineArguments {
  return [self commandLine];
}

- (NSString*)cliString {
  return returned([&] { return stringOf(storeOf(self).cliString()); });
}

- (NSArray*)inputFiles {
  return returned([&]() -> NSArray* {
    const auto paths = storeOf(self).inputFiles();
    return paths ? arrayOf(*paths) : nil;
  });
}

- (void)setInputFiles:(NSArray*)paths {
  returned([&] { storeOf(self).setInputFiles(optionalTextsOf(paths, "inputFiles")); });
}

- (NSDictionary*)inputFileGroups {
  return returned([&]() -> NSDictionary* {
    const auto groups = storeOf(self).inputFileGroups();
    if (!groups) return nil;
    NSMutableDictionary* const result = [NSMutableDictionary dictionary];
    for (const auto& [number, paths] : *groups) [result setObject:arrayOf(paths) forKey:objectOf(number)];
    return result;
  });
}

- (void)setInputFileGroups:(NSDictionary*)groups {
  returned([&] {
    Store::InputFileGroups taken;
    if (groups != nil) {
      NSArray* const numbers = [required(groups, [NSDictionary class], "inputFileGroups") allKeys];
      for (NSUInteger place = 0; place < [numbers count]; ++place) {
        id const number = [numbers objectAtIndex:place];
        const std::int64_t group = m::objc::wholeNumberOf(number, "the number of a group");
        auto paths = m::objc::textsOf([groups objectForKey:number], "a group of input files");
        if (!taken.emplace(group, std::move(paths)).second) {
          m::objc::raiseInvalidArgument("the number of a group occurs twice: " + std::to_string(group));
        }
      }
    }
    storeOf(self).setInputFileGroups(taken);
  });
}

- (NSString*)firstInputFile {
  return returned([&]() -> NSString* { return objectOf(storeOf(self).firstInputFile()); });
}

- (NSArray*)ignoredAudioFileTracks {
  return returned([&]() -> NSArray* {
    NSMutableArray* const tracks = [NSMutableArray array];
    storeOf(self).enumerateIgnoredAudioFileTracks([&](std::int64_t track) { [tracks addObject:objectOf(track)]; });
    return [tracks count] == 0 ? nil : tracks;
  });
}

- (void)setIgnoredAudioFileTracks:(NSArray*)tracks {
  returned([&] {
    std::vector<std::int64_t> numbers;
    if (tracks != nil) {
      required(tracks, [NSArray class], "ignoredAudioFileTracks");
      for (NSUInteger place = 0; place < [tracks count]; ++place) {
        id const track = [tracks objectAtIndex:place];
        numbers.push_back(m::objc::wholeNumberOf(track, "the number of a track"));
        if (numbers.back() < 0) m::objc::raiseInvalidArgument("the number of a track is negative");
      }
    }
    storeOf(self).setIgnoredAudioFileTracks(numbers);
  });
}

- (NSValue*)dimensionsSizeValue {
  return [self videoDimensions];
}

- (BOOL)sourceFileAnalysisRequired {
  return storeOf(self).sourceFileAnalysisRequired();
}

- (BOOL)isCommandRequested:(SAVTranscodeCliCommand)command {
  return [self hasArgumentFlag:command];
}

- (void)setCommand:(SAVTranscodeCliCommand)command requested:(BOOL)isRequested {
  [self setArgumentFlagValue:isRequested ? @"" : nil forFlag:command];
}

- (void)updateFromVideoDetail:(TranscodeCliArguments*)detail {
  required(detail, [TranscodeCliArguments class], "the detail");
  returned([&] { storeOf(self).updateFromVideoDetail(storeOf(detail)); });
}

- (void)updateFromAudioDetail:(TranscodeCliArguments*)detail {
  required(detail, [TranscodeCliArguments class], "the detail");
  returned([&] { storeOf(self).updateFromAudioDetail(storeOf(detail)); });
}

- (void)updateFromTimecodeDetail:(TranscodeCliArguments*)detail {
  required(detail, [TranscodeCliArguments class], "the detail");
  returned([&] { storeOf(self).updateFromTimecodeDetail(storeOf(detail)); });
}

+ (NSArray*)propertyNames {
  return returned([] {
    NSMutableArray* const names = [NSMutableArray array];
    for (const m::TranscodeProperty& property : m::transcodeProperties) [names addObject:stringOf(property.name)];
    return static_cast<NSArray*>(names);
  });
}

+ (NSArray*)allowedTextsOfProperty:(NSString*)name {
  return returned([&] {
    NSMutableArray* const texts = [NSMutableArray array];
    if (const m::TranscodeProperty* const property = propertyNamed(name)) {
      for (const std::string_view text : m::allowedTexts(*property)) [texts addObject:stringOf(text)];
    }
    return static_cast<NSArray*>(texts);
  });
}

+ (NSString*)exampleOfProperty:(NSString*)name {
  return returned([&]() -> NSString* {
    const m::TranscodeProperty* const property = propertyNamed(name);
    return property == nullptr ? nil : stringOf(property->example);
  });
}

- (NSString*)textOfProperty:(NSString*)name {
  return returned([&]() -> NSString* {
    const m::TranscodeProperty* const property = propertyNamed(name);
    const auto text = property == nullptr ? std::nullopt : m::propertyText(storeOf(self), *property);
    return text ? stringOf(*text) : nil;
  });
}

- (BOOL)setText:(NSString*)input ofProperty:(NSString*)name error:(NSError**)error {
  BOOL isSet = NO;
  const auto thrown = m::objc::guarded([&] {
    const auto property = m::transcodePropertyNamed(textOf(name, "the property's name"));
    if (!property) {
      m::objc::failed(error, MeridianPropertyErrorDomain, property.error());
      return;
    }
    const auto done = m::setPropertyText(storeOf(self), **property, textOf(input, "the text"));
    isSet = done ? YES : m::objc::failed(error, MeridianPropertyErrorDomain, done.error());
  });
  if (thrown) m::objc::storeThrown(error, *thrown);
  return isSet;
}

// The typed properties, from the list that the header was made from.
#define MERIDIAN_OBJC_READ_ONLY_SWITCH(name, Name)           \
  static_assert(![]<typename Type>(Type*) {                  \
    return requires(Type& store) { store.set##Name(true); }; \
  }(static_cast<m::TranscodeCliArguments*>(nullptr)));       \
  -(BOOL)name {                                              \
    return returned([&] { return storeOf(self).name(); });   \
  }
#define MERIDIAN_OBJC_SWITCH(name, Name)                     \
  -(BOOL)name {                                              \
    return returned([&] { return storeOf(self).name(); });   \
  }                                                          \
  -(void)set##Name : (BOOL)value {                           \
    returned([&] { storeOf(self).set##Name(value != NO); }); \
  }
#define MERIDIAN_OBJC_PROPERTY(name, Name, type)                                              \
  -(type)name {                                                                               \
    return returned([&]() -> type { return objectOf(storeOf(self).name()); });                \
  }                                                                                           \
  -(void)set##Name : (type)value {                                                            \
    returned([&] {                                                                            \
      std::string text;                                                                       \
      using Value = ValueOf<decltype(storeOf(self).name())>;                                  \
      storeOf(self).set##Name(valueOf<Value>(value, *m::findTranscodeProperty(#name), text)); \
    });                                                                                       \
  }
#include "objc/TranscodeProperties.def"

@end
