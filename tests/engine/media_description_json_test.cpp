#include "meridian/serialization/media_description_json.h"

#include <gmock/gmock.h>

#include <string>

#include "meridian/media/media_names.h"

namespace meridian {
namespace {

using Json = nlohmann::ordered_json;

TEST(MediaDescriptionJsonTest, EncodesWhatIsKnownInTheVocabularysForms) {
  MediaDescription clip;
  clip.path = "/card/A001.MOV";
  clip.size = 1234;
  clip.container = SLVMediaFileContainerQuickTimeMovie;
  clip.recordingFormat = SLVMediaRecordingFormatP2;
  clip.duration = MediaRational{1001, 3000};
  clip.corporation = MediaCorporation::arri;
  clip.timecode = {
      {1, 0, 58, 28, true}, TimecodeComponents{1, 0, 59, 7, true}, VideoFrameRate::ntsc30p, MediaTimecodeSource::tmcd};
  VideoStreamDescription& video = clip.video.emplace_back();
  video.codec = SLVVideoCodecProRes422;
  video.format = SAVProRes422HQ;
  video.width = 1920;
  video.height = 1080;
  video.frameRate = VideoFrameRate::ntsc30p;
  video.exactFrameRate = MediaRational{30000, 1001};
  video.frameCount = 10;
  video.chroma = ChromaSubsampling::yuv422;
  video.primaries = {1, "bt709"};
  video.colorSource = ColorTagSource::container;
  video.colorSpace = SAVRec709ColorSpace;
  AudioStreamDescription& audio = clip.audio.emplace_back();
  audio.format = SAVLpcmAudioFormatValue;
  audio.channelLayout = SAVMonoAudioLayout;
  audio.channels = {{3, "FC"}};
  clip.others.emplace_back().kind = OtherStreamKind::timecode;
  clip.warnings = {{MediaWarningCode::endsBeforeItsData, clip.path, "9 bytes are missing"}};

  const Json json = clip;
  const Json expected = Json::parse(R"json({
    "path": "/card/A001.MOV", "size": 1234, "extension": "mov", "container": "QuickTime", "recordingFormat": "P2", "corporation": "Arri",
    "isHardwareManufacturer": true, "model": null, "frameCount": 10,
    "duration": {"numerator": 1001, "denominator": 3000}, "startTimecodeText": "01:00:58;28",
    "endTimecode": {"hours": 1, "minutes": 0, "seconds": 59, "frames": 7, "isDropFrame": true},
    "timecodeRate": {"ntsc30p": {}}, "timecodeSource": "tmcd", "isDropFrame": true,
    "video": {"codec": "ProRes 422", "format": "prores422hq", "videoDimension": "Full HD (1920 x 1080)",
              "frameRate": {"ntsc30p": {}}, "frameRateText": "29.97 FPS", "averageFrameRate": null,
              "exactFrameRate": {"numerator": 30000, "denominator": 1001}, "chroma": "4:2:2",
              "pixelAspectRatio": {"numerator": 1, "denominator": 1}, "fieldOrder": "unknown", "range": "unknown",
              "primaries": {"number": 1, "name": "bt709"}, "colorSource": "container", "colorSpace": "rec_709",
              "bitDepth": null},
    "audio": {"track": 0, "format": "lpcm", "channelLayout": "mono", "bitRate": null,
              "channelLabels": [{"number": 3, "name": "FC"}]}
  })json");
  const auto expectMembers = [](const Json& found, const Json& members) {
    for (const auto& [name, value] : members.items()) {
      if (name != "video" && name != "audio") {
        EXPECT_EQ(found.at(name), value) << name;
      }
    }
  };
  expectMembers(json, expected);
  expectMembers(json["video"].at(0), expected["video"]);
  expectMembers(json["audio"].at(0), expected["audio"]);
  EXPECT_DOUBLE_EQ(json["seconds"].get<double>(), 1001.0 / 3000);
  EXPECT_EQ(json["others"].at(0)["kind"], "timecode");
  EXPECT_EQ(json["warnings"].at(0)["code"], "endsBeforeItsData");
}

TEST(MediaDescriptionJsonTest, EncodesWhatIsAbsentAsNull) {
  const Json json = MediaDescription{};
  for (const char* const name : {"container", "duration", "seconds", "frameCount", "startTimecode", "endTimecodeText",
                                 "isDropFrame", "corporation", "creationDate", "recordingFormat", "extension"}) {
    EXPECT_TRUE(json.at(name).is_null()) << name;
  }
  EXPECT_EQ(json["timecodeSource"], "none");
  EXPECT_EQ(json["video"], Json::array());
}

TEST(MediaDescriptionJsonTest, GivesADirectoryOrAnUnknownExtensionNone) {
  MediaDescription item;
  item.path = "/card/A001.xyz";
  EXPECT_TRUE(Json(item).at("extension").is_null());
  item.path = "/card/A001.mov";
  item.container = SLVMediaFileContainerImageSequence;
  EXPECT_TRUE(Json(item).at("extension").is_null());
}

}  // namespace
}  // namespace meridian
