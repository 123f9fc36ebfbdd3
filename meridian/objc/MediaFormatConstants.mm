#include "meridian/media/media_format_constants.h"

#include "meridian/objc/blocks.h"
#include "meridian/objc/foundation_values.h"

#import <Meridian/MediaFormatConstants.h>

using meridian::objc::callBlock;
using meridian::objc::returned;
using meridian::objc::stringOf;
using meridian::objc::textOf;
using Table = meridian::MediaFormatConstants;

namespace {

/// Passes texts to a block. Must not be null.
auto passingTo(MeridianTextBlock block) {
  return [=](std::string_view text, bool& stop) {
    BOOL objcStop = NO;
    callBlock(block, stringOf(text), &objcStop);
    stop = objcStop;
  };
}

/// Passes texts to a function. Must not be null.
auto passingTo(MeridianTextFunction function, void* context) {
  return [=](std::string_view text, bool& stop) {
    BOOL objcStop = NO;
    function(stringOf(text), &objcStop, context);
    stop = objcStop;
  };
}

template <typename Callback>
void require(Callback callback) {
  if (!callback) meridian::objc::raiseInvalidArgument("the block or function is nil");
}

}  // namespace

@implementation MediaFormatConstants

+ (MediaFormatConstants*)sharedInstance {
  // Made by the first thread that comes here, and kept for the life of the process.
  static MediaFormatConstants* const instance = [[MediaFormatConstants alloc] init];
  return instance;
}

/// Key-value coding goes by the methods alone.
+ (BOOL)accessInstanceVariablesDirectly {
  return NO;
}

- (id)init {
  self = [super init];
  if (self == nil) return nil;
  returned([self] {
    NSMutableDictionary* const lookup = [NSMutableDictionary dictionary];
    for (const auto& [container, extensions] : Table::sharedInstance().cachedContainerFileExtensionLookup()) {
      NSMutableArray* const list = [NSMutableArray array];
      for (const std::string_view extension : extensions) [list addObject:stringOf(extension)];
      [lookup setObject:[[list copy] autorelease] forKey:stringOf(container)];
    }
    self->_cachedContainerFileExtensionLookup = [lookup copy];
  });
  return self;
}

- (void)dealloc {
  [_cachedContainerFileExtensionLookup release];
  [super dealloc];
}

- (NSDictionary*)cachedContainerFileExtensionLookup {
  return _cachedContainerFileExtensionLookup;
}

+ (void)enumerateValidFileExtensionsForMediaContainer:(NSString*)container block:(MeridianTextBlock)block {
  require(block);
  returned([&] {
    Table::enumerateValidFileExtensionsForMediaContainer(textOf(container, "the container"), passingTo(block));
  });
}

+ (void)enumerateValidFileExtensionsForMediaContainer:(NSString*)container
                                             function:(MeridianTextFunction)function
                                              context:(void*)context {
  require(function);
  returned([&] {
    Table::enumerateValidFileExtensionsForMediaContainer(textOf(container, "the container"),
                                                         passingTo(function, context));
  });
}

+ (void)enumerateContainersForFileExtension:(NSString*)fileExtension block:(MeridianTextBlock)block {
  require(block);
  returned(
      [&] { Table::enumerateContainersForFileExtension(textOf(fileExtension, "the extension"), passingTo(block)); });
}

+ (void)enumerateContainersForFileExtension:(NSString*)fileExtension
                                   function:(MeridianTextFunction)function
                                    context:(void*)context {
  require(function);
  returned([&] {
    Table::enumerateContainersForFileExtension(textOf(fileExtension, "the extension"), passingTo(function, context));
  });
}

+ (void)alphabeticalEnumerationOfCorporations:(MeridianTextBlock)block {
  if (block) returned([&] { Table::alphabeticalEnumerationOfCorporations(passingTo(block)); });
}

+ (void)alphabeticalEnumerationOfCorporationsUsingFunction:(MeridianTextFunction)function context:(void*)context {
  if (function) returned([&] { Table::alphabeticalEnumerationOfCorporations(passingTo(function, context)); });
}

@end
