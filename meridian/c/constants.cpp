// The values of the global constants, from the lists that the C++ constants are made from.
#include "meridian/c/constants.h"

#include "meridian/media/avm_constants.h"

#define MERIDIAN_C_CONSTANT(name, text, ...) const char* const name = text;

#define MERIDIAN_COMMAND_FLAG MERIDIAN_C_CONSTANT
#define MERIDIAN_GENERAL_FLAG MERIDIAN_C_CONSTANT
#define MERIDIAN_VIDEO_FLAG MERIDIAN_C_CONSTANT
#define MERIDIAN_AUDIO_FLAG MERIDIAN_C_CONSTANT
#define MERIDIAN_TIMECODE_FLAG MERIDIAN_C_CONSTANT
#define MERIDIAN_WATERMARK_FILE_FLAG MERIDIAN_C_CONSTANT
#define MERIDIAN_WATERMARK_TEXT_FLAG MERIDIAN_C_CONSTANT
#define MERIDIAN_CAMERA_LOOK_FLAG MERIDIAN_C_CONSTANT
#include "meridian/cli/transcode_flags.def"

#define MERIDIAN_FILE_FORMAT MERIDIAN_C_CONSTANT
#define MERIDIAN_VIDEO_CODEC MERIDIAN_C_CONSTANT
#define MERIDIAN_ASPECT_RATIO MERIDIAN_C_CONSTANT
#define MERIDIAN_OVERLAY_ANCHOR MERIDIAN_C_CONSTANT
#define MERIDIAN_COLOR_SPACE MERIDIAN_C_CONSTANT
#define MERIDIAN_AUDIO_FORMAT MERIDIAN_C_CONSTANT
#define MERIDIAN_CHANNEL_LAYOUT MERIDIAN_C_CONSTANT
#define MERIDIAN_VALUE_TEXT MERIDIAN_C_CONSTANT
#include "meridian/cli/transcode_values.def"

#define MERIDIAN_MEDIA_NAME MERIDIAN_C_CONSTANT
#include "meridian/media/media_names.def"

#define MERIDIAN_AVM_CONSTANT MERIDIAN_C_CONSTANT
#include "meridian/media/avm_constants.def"

const double kAVMVideoQualityLevelMax = meridian::kAVMVideoQualityLevelMax;
const double kAVMVideoQualityLvelMin = meridian::kAVMVideoQualityLvelMin;
