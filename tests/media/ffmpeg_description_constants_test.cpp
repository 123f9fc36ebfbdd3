#include "meridian/media/ffmpeg_description_constants.h"

#include <gtest/gtest.h>

#include <thread>

namespace meridian {
namespace {

using Constants = FFmpegDescriptionConstants;

TEST(FFmpegDescriptionConstants, MayBeSetWhileOthersRead) {
  EXPECT_EQ(Constants::utilityName(), "FFmpeg Utility");
  EXPECT_EQ(Constants::maskName(), "Video");
  EXPECT_EQ(Constants::encoderMetadataKey(), "encoder");
  EXPECT_EQ(Constants::handlerNameMetadataKey(), "handler name");

  const auto setMany = [](char c) {
    for (int i = 0; i < 2000; ++i) Constants::setMaskName(std::string(100, c));
  };
  Constants::setMaskName(std::string(100, 'a'));
  std::thread setting(setMany, 'a');
  std::thread settingToo(setMany, 'b');
  for (int i = 0; i < 2000; ++i) {
    const std::string name = Constants::maskName();
    ASSERT_EQ(name, std::string(100, name.front()));
  }
  setting.join();
  settingToo.join();
  Constants::setEncoderMetadataKey("writer");
  Constants::setHandlerNameMetadataKey("");
  Constants::setUtilityName("Tool");
  EXPECT_EQ(Constants::encoderMetadataKey() + Constants::handlerNameMetadataKey() + Constants::utilityName(),
            "writerTool");
}

}  // namespace
}  // namespace meridian
