#include "meridian/media/ffmpeg_description_constants.h"

#include "meridian/objc/foundation_values.h"

#import <Meridian/FFmpegDescriptionConstants.h>

using meridian::objc::returned;
using meridian::objc::stringOf;
using meridian::objc::textOf;
using Texts = meridian::FFmpegDescriptionConstants;

@implementation FFmpegDescriptionConstants

+ (NSString*)utilityName {
  return returned([] { return stringOf(Texts::utilityName()); });
}
+ (void)setUtilityName:(NSString*)text {
  returned([&] { Texts::setUtilityName(textOf(text, "utilityName")); });
}
+ (NSString*)maskName {
  return returned([] { return stringOf(Texts::maskName()); });
}
+ (void)setMaskName:(NSString*)text {
  returned([&] { Texts::setMaskName(textOf(text, "maskName")); });
}
+ (NSString*)encoderMetadataKey {
  return returned([] { return stringOf(Texts::encoderMetadataKey()); });
}
+ (void)setEncoderMetadataKey:(NSString*)text {
  returned([&] { Texts::setEncoderMetadataKey(textOf(text, "encoderMetadataKey")); });
}
+ (NSString*)handlerNameMetadataKey {
  return returned([] { return stringOf(Texts::handlerNameMetadataKey()); });
}
+ (void)setHandlerNameMetadataKey:(NSString*)text {
  returned([&] { Texts::setHandlerNameMetadataKey(textOf(text, "handlerNameMetadataKey")); });
}

@end
