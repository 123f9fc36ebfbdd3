// The constants of the Objective-C header beside the C++ ones. Their names are read from the header itself.
#include <map>
#include <string>
#include <string_view>

#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/media/avm_constants.h"
#include "meridian/media/media_names.h"
#include "pool.h"

#import <Meridian/Constants.h>

namespace {

std::string_view rawTextOf(std::string_view text) { return text; }
template <meridian::TypedTextType Text>
std::string_view rawTextOf(const Text& text) {
  return text.rawValue();
}

using ObjectiveCConstants = ObjectiveC;

TEST_F(ObjectiveCConstants, EachHasTheTextOfTheConstantOfItsNameInCpp) {
#define OBJC_CONSTANT(name) EXPECT_EQ(textOf(name), rawTextOf(meridian::name)) << #name;
#include "objc_constants.def"
#undef OBJC_CONSTANT
  EXPECT_EQ(kAVMVideoQualityLevelMax, meridian::kAVMVideoQualityLevelMax);
  EXPECT_EQ(kAVMVideoQualityLvelMin, meridian::kAVMVideoQualityLvelMin);
}

TEST_F(ObjectiveCConstants, AreAllOfTheLists) {
  std::map<std::string, int> declared;
#define OBJC_CONSTANT(name) ++declared[#name];
#include "objc_constants.def"
#undef OBJC_CONSTANT
  std::map<std::string, int> listed;
#define COUNT(name, ...) ++listed[#name];
#define MERIDIAN_COMMAND_FLAG COUNT
#define MERIDIAN_GENERAL_FLAG COUNT
#define MERIDIAN_VIDEO_FLAG COUNT
#define MERIDIAN_AUDIO_FLAG COUNT
#define MERIDIAN_TIMECODE_FLAG COUNT
#define MERIDIAN_WATERMARK_FILE_FLAG COUNT
#define MERIDIAN_WATERMARK_TEXT_FLAG COUNT
#define MERIDIAN_CAMERA_LOOK_FLAG COUNT
#include "meridian/cli/transcode_flags.def"
#define MERIDIAN_FILE_FORMAT COUNT
#define MERIDIAN_VIDEO_CODEC COUNT
#define MERIDIAN_ASPECT_RATIO COUNT
#define MERIDIAN_OVERLAY_ANCHOR COUNT
#define MERIDIAN_COLOR_SPACE COUNT
#define MERIDIAN_AUDIO_FORMAT COUNT
#define MERIDIAN_CHANNEL_LAYOUT COUNT
#define MERIDIAN_VALUE_TEXT COUNT
#include "meridian/cli/transcode_values.def"
#define MERIDIAN_MEDIA_NAME COUNT
#include "meridian/media/media_names.def"
#define MERIDIAN_AVM_CONSTANT COUNT
#include "meridian/media/avm_constants.def"
  EXPECT_EQ(declared, listed);
  // With the two numbers.
  EXPECT_EQ(declared.size() + 2, 281U);
}

}  // namespace
