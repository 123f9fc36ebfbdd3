#include <gmock/gmock.h>

#include "meridian/base/joined.h"
#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;

MediaDescription changedTrack(auto change) {
  MediaDescription clip = hdClip();
  change(clip.audio.front());
  return clip;
}

/// Returns a track as text: "pcm_s24le 24 48000 L R tag 101/2".
std::string trackText(const PlannedAudioTrack& track) {
  std::vector<std::string> texts{track.isCopied() ? "copy " + track.copiedCodec : track.encoder};
  if (track.bits) texts.push_back(std::to_string(*track.bits));
  if (track.bitRate) texts.push_back(std::to_string(*track.bitRate / 1000) + "k");
  texts.push_back(std::to_string(track.sampleRate));
  for (const ChannelLabel label : track.channels) texts.emplace_back(description(label));
  if (track.layoutTag) {
    texts.push_back("tag " + std::to_string(*track.layoutTag >> 16U) + "/" +
                    std::to_string(*track.layoutTag & 0xffffU));
  }
  return joined(texts, " ");
}

struct TrackCase {
  std::string words;
  std::string track;
  MediaDescription clip = hdClip();
};

TEST(PlanAudio, ChoosesEncoderDepthAndLayout) {
  const auto wide = [](int channels) {
    return changedTrack([channels](auto& track) {
      track.channelCount = channels;
      track.channels.clear();
    });
  };
  const auto surround = changedTrack([](auto& track) {
    track.channelCount = 6;
    track.channels = {{1, "FL"}, {2, "FR"}, {3, "FC"}, {4, "LFE"}, {10, "SL"}, {11, "SR"}};
  });
  const auto floats = changedTrack([](auto& track) {
    track.codecName = "pcm_f32le";
    track.bitsPerChannel = 32;
  });
  const auto compressed = changedTrack([](auto& track) {
    track.codecName = "aac";
    track.bitsPerChannel.reset();
  });
  const std::vector<TrackCase> cases{
      {"", "copy pcm_s24le 24 48000 L R tag 101/2"},
      {"-acopy -acodec lpcm", "copy pcm_s24le 24 48000 L R tag 101/2"},
      {"-acodec lpcm", "pcm_s24le 24 48000 L R tag 101/2"},
      {"-acodec lpcm -abpc 8", "pcm_u8 8 48000 L R tag 101/2"},
      {"-acodec lpcm -abpc 16 -asr 44100", "pcm_s16le 16 44100 L R tag 101/2"},
      {"-acodec lpcm", "pcm_f32le 32 48000 L R tag 101/2", floats},
      {"-out /o.mxf -vcodec dnxhd -acodec lpcm", "pcm_s24le 24 48000 L R tag 101/2", floats},
      {"-acodec lpcm -abpc 32", "pcm_s32le 32 48000 L R tag 101/2", floats},
      {"-acodec lpcm", "pcm_s16le 16 48000 L R tag 101/2", compressed},
      {"-acodec lpcm", "pcm_s16le 16 48000 L R tag 101/2", changedTrack([](auto& track) { track.bitsPerChannel = 8; })},
      {"-acodec lpcm", "pcm_s24le 24 48000 L R tag 101/2",
       changedTrack([](auto& track) { track.bitsPerChannel = 20; })},
      {"-acodec apple_lossless", "alac 24 48000 L R tag 101/2"},
      {"-acodec apple_lossless -abpc 16", "alac 16 48000 L R tag 101/2"},
      {"-acodec apple_lossless", "alac 24 48000 L R C LFE Ls Rs tag 121/6", surround},
      {"-acodec aac", "aac 128k 48000 L R tag 101/2"},
      {"-acodec aac -abr 96000", "aac 96k 48000 L R tag 101/2"},
      {"-acodec aac -aqual min", "aac 64k 48000 L R tag 101/2"},
      {"-acodec aac -aqual low", "aac 96k 48000 L R tag 101/2"},
      {"-acodec aac -aqual high", "aac 192k 48000 L R tag 101/2"},
      {"-acodec aac -aqual max", "aac 320k 48000 L R tag 101/2"},
      {"-acodec aac -abr copy", "aac 192k 48000 L R tag 101/2",
       changedTrack([](auto& track) { track.bitRate = 192000; })},
      {"-acodec aac -abr copy", "aac 576k 48000 L R tag 101/2",
       changedTrack([](auto& track) { track.bitRate = 2304000; })},
      {"-acodec aac -aqual max -asr 8000", "aac 96k 8000 L R tag 101/2"},
      // Layouts.
      {"-acodec lpcm -acl mono", "pcm_s24le 24 48000 C tag 100/1"},
      {"-acodec lpcm -acl stereo", "pcm_s24le 24 48000 L R tag 101/2"},
      {"-acodec lpcm -acl quad", "pcm_s24le 24 48000 L R Ls Rs tag 108/4"},
      {"-acodec lpcm -acl pent", "pcm_s24le 24 48000 L R C Ls Rs tag 117/5"},
      {"-acodec lpcm -acl hex", "pcm_s24le 24 48000 L R C Ls Rs Cs"},
      {"-acodec lpcm -acl oct", "pcm_s24le 24 48000 L R C Ls Rs Cs Lsd Rsd"},
      {"-acodec lpcm -acl 6", "pcm_s24le 24 48000 L R C LFE Ls Rs tag 121/6"},
      {"-acodec lpcm -acl 6", "pcm_s24le 24 48000 L R C LFE Lsd Rsd tag 121/6", surround},
      {"-acodec lpcm -acl stereo", "pcm_s24le 24 48000 L R tag 101/2", wide(6)},
      {"-acodec lpcm -acl_tag 7929862", "pcm_s24le 24 48000 L R C LFE Ls Rs tag 121/6"},
      {"-acodec lpcm -acl_tag 7995398 -acl 6", "pcm_s24le 24 48000 L R C LFE Ls Rs tag 121/6"},
      {"-acodec lpcm -acl_tag 9633794", "pcm_s24le 24 48000"},
      {"-acodec lpcm -acl_descs [2~1", "pcm_s24le 24 48000 L R tag 101/2"},
      {"-acodec lpcm -acl_descs [38~39", "pcm_s24le 24 48000 Lt Rt tag 103/2"},
      {"-acodec lpcm -acl_descs [1~2~3~4~5~6 -acl 6", "pcm_s24le 24 48000 L R C LFE Ls Rs tag 121/6"},
      {"-acodec lpcm -acl_bitmap 63", "pcm_s24le 24 48000 L R C LFE Ls Rs tag 121/6"},
      {"-acodec lpcm -acl_tag 65536 -acl_bitmap 4", "pcm_s24le 24 48000 C tag 100/1"},
      {"-acodec aac", "aac 384k 48000 L R C LFE Ls Rs tag 121/6", wide(6)},
      {"-acodec aac", "aac 1024k 48000 L R C Ls Rs Cs Lsd Rsd Vhl Vhc Vhr Tbl Tbc Tbr Lw Rw", wide(16)},
      {"-acodec lpcm", "pcm_s24le 24 48000", wide(6)},
      {"-acodec lpcm", "pcm_s24le 24 48000", changedTrack([](auto& track) { track.channels.resize(1); })},
      {"-acodec lpcm -adiscrete", "pcm_s24le 24 48000"},
      {"-acodec lpcm -adiscrete -acl 4", "pcm_s24le 24 48000"},
  };
  for (const auto& [words, track, clip] : cases) {
    SCOPED_TRACE(words);
    const TranscodePlan plan = successful(planned(words, {clip}));
    ASSERT_EQ(plan.audio.size(), 1U);
    EXPECT_EQ(trackText(plan.audio.front()), track);
  }
}

TEST(PlanAudio, CountsTracksOverAllGroups) {
  MediaDescription clip = hdClip();
  clip.audio.push_back(clip.audio.front());
  const auto tracksOf = [&clip](std::string_view words) {
    std::vector<std::string> texts;
    for (const PlannedAudioTrack& track : successful(planned(words, {clip, soundClip()})).audio) {
      std::string text;
      for (const AudioOrigin& origin : track.origins) {
        text += (text.empty() ? "" : "+") + std::to_string(origin.group) + ":" + std::to_string(origin.track);
      }
      texts.push_back(text + " of " + std::to_string(track.channelCount));
    }
    return texts;
  };
  EXPECT_THAT(tracksOf("-in_1_0 b.wav"), ElementsAre("0:0 of 2", "0:1 of 2", "1:2 of 2"));
  EXPECT_THAT(tracksOf("-in_1_0 b.wav -ac_omit_0 -ac_omit_1"), ElementsAre("1:2 of 2"));
  EXPECT_THAT(tracksOf("-in_1_0 b.wav -ac_omit_1 -adiscrete -acodec lpcm"), ElementsAre("0:0+1:2 of 4"));
  EXPECT_THAT(tracksOf("-in_1_0 b.wav -an"), ElementsAre());
  // A track that several become keeps what each of them has.
  MediaDescription deep = soundClip();
  deep.audio.front().bitsPerChannel = 16;
  EXPECT_EQ(successful(planned("-in_1_0 b.wav -acodec lpcm -adiscrete", {deep, clip})).audio.front().bits, 24);
  // Images that are left out need not fit together.
  EXPECT_EQ(successful(planned("-vn -in_1_0 b.mov", {clip, clip})).audio.size(), 4U);
  EXPECT_EQ(successful(planned("-vn -in_0_1 b.mov", {clip, withSize(clip, 640, 480)})).audio.size(), 2U);
  // Many tracks of a codec are one error.
  clip.audio.resize(1000, clip.audio.front());
  const Plan many = planned("-out /o/a.mp4 -vn", {clip});
  ASSERT_EQ(many.error().size(), 2U);
  EXPECT_THAT(many.error().front().message(),
              ::testing::HasSubstr("pcm_s24le of tracks 0, 1, 2, 3, 4, 5, 6, 7 and 992 more"));
  // The image may come from a later group.
  clip.audio.resize(2);
  const TranscodePlan plan = successful(planned("-in_1_0 b.mov", {soundClip(), clip}));
  EXPECT_FALSE(plan.sources[0].givesImage);
  EXPECT_TRUE(plan.sources[1].givesImage);
  EXPECT_EQ(plan.audio.size(), 3U);
}

}  // namespace
}  // namespace meridian
