/**
 * \file
 * Names of the external FFmpeg tool in the suite's metadata. For example:
 *
 *     FFmpegDescriptionConstants.utilityName = @"Transcoder";
 */
#ifndef MERIDIAN_FFMPEG_DESCRIPTION_CONSTANTS_H
#define MERIDIAN_FFMPEG_DESCRIPTION_CONSTANTS_H

#import <Meridian/Defines.h>

NS_ASSUME_NONNULL_BEGIN

/** Texts that an application may replace for the whole process; code in C++ sees the same texts. Thread-safe. */
@interface FFmpegDescriptionConstants : NSObject

/** The tool's display name; initially "FFmpeg Utility". */
MERIDIAN_SETTABLE_CLASS_PROPERTY(NSString*, utilityName, setUtilityName);
/** The mask's name; initially "Video". */
MERIDIAN_SETTABLE_CLASS_PROPERTY(NSString*, maskName, setMaskName);
/** The metadata key of the encoder in the tool's output; initially "encoder". */
MERIDIAN_SETTABLE_CLASS_PROPERTY(NSString*, encoderMetadataKey, setEncoderMetadataKey);
/** The metadata key of the handler's name in the tool's output; initially "handler name". */
MERIDIAN_SETTABLE_CLASS_PROPERTY(NSString*, handlerNameMetadataKey, setHandlerNameMetadataKey);

@end

NS_ASSUME_NONNULL_END

#endif
