// The sound of a track, from decoded frames to those of an encoder; and copied sound at the joins of parts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <vector>

#include "meridian/engine/libav/audio_chain.h"
#include "meridian/engine/libav/copied_sound.h"

namespace meridian::libav {
namespace {

constexpr int sourceRate = 48'000;

/// Returns 16-bit sound of so many channels; `valueOf` gives the sample of a place and channel.
FramePointer soundOf(int samples, int channels, int rate, const auto& valueOf) {
  FramePointer frame(av_frame_alloc());
  frame->format = AV_SAMPLE_FMT_S16;
  frame->sample_rate = rate;
  frame->nb_samples = samples;
  av_channel_layout_default(&frame->ch_layout, channels);
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  auto* const values = reinterpret_cast<std::int16_t*>(frame->data[0]);
  for (int place = 0; place < samples; ++place) {
    for (int channel = 0; channel < channels; ++channel) {
      values[place * channels + channel] = static_cast<std::int16_t>(valueOf(place, channel));
    }
  }
  return frame;
}

PlannedAudioTrack trackOf(const char* format, int bits, int rate, std::vector<ChannelLabel> source,
                          std::vector<ChannelLabel> channels) {
  PlannedAudioTrack track;
  track.origins.resize(1);
  track.encoder = "pcm";
  track.sampleFormat = format;
  track.bits = bits;
  track.sampleRate = rate;
  track.sourceSampleRate = sourceRate;
  track.channelCount = static_cast<std::int64_t>(channels.size());
  track.sourceChannels = std::move(source);
  track.channels = std::move(channels);
  return track;
}

const std::vector<ChannelLabel> stereo{ChannelLabel::left, ChannelLabel::right};

/// A piece of sound and when it is heard, in samples.
struct Piece {
  FramePointer sound;
  double place = 0;
  std::size_t origin = 0;
};

/// Runs pieces through a chain; the result has a vector of samples for each channel.
template <typename Sample>
std::vector<std::vector<Sample>> chained(const PlannedAudioTrack& track, std::vector<Piece> pieces,
                                         std::optional<Ticks> end = std::nullopt, std::size_t frameSize = 0) {
  std::vector<std::vector<Sample>> channels(static_cast<std::size_t>(track.channelCount));
  auto chain = AudioChain::open(track, frameSize, "/out.mov");
  EXPECT_TRUE(chain);
  std::int64_t next = 0;
  const auto sink = [&](FramePointer sound) -> std::optional<TranscodeRunError> {
    EXPECT_EQ(sound->pts, next);
    next += sound->nb_samples;
    EXPECT_EQ(sound->ch_layout.nb_channels, track.channelCount);
    EXPECT_TRUE(frameSize == 0 || sound->nb_samples <= static_cast<int>(frameSize));
    const auto* const values = reinterpret_cast<const Sample*>(sound->data[0]);
    for (std::size_t place = 0; place < static_cast<std::size_t>(sound->nb_samples); ++place) {
      for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        channels[channel].push_back(values[place * channels.size() + channel]);
      }
    }
    return std::nullopt;
  };
  for (const Piece& piece : pieces) {
    const auto time = static_cast<Ticks>(std::llround(piece.place * timeLine.den / piece.sound->sample_rate));
    const auto error = (*chain)->take(piece.origin, *piece.sound, time, sink);
    EXPECT_FALSE(error) << error->message();
  }
  EXPECT_FALSE((*chain)->finish(end, sink));
  return channels;
}

int ramp(int place, int channel) { return place % 20'000 + channel; }

TEST(AudioChain, KeepsEachSampleWhereNothingChanges) {
  for (const auto& [format, bits, shift] : {std::tuple{"s16", 16, 0}, {"s32", 24, 16}, {"s32", 32, 16}}) {
    std::vector<Piece> pieces;
    for (int piece = 0; piece < 5; ++piece) {
      pieces.push_back(
          {soundOf(1000, 2, sourceRate, [&](int place, int channel) { return ramp(piece * 1000 + place, channel); }),
           piece * 1000.0});
    }
    const PlannedAudioTrack track = trackOf(format, bits, sourceRate, stereo, stereo);
    const auto check = [&](const auto& channels) {
      for (std::size_t channel = 0; channel < 2; ++channel) {
        ASSERT_EQ(channels[channel].size(), 5000U);
        for (std::size_t place = 0; place < 5000; ++place) {
          ASSERT_EQ(channels[channel][place] >> shift, ramp(static_cast<int>(place), static_cast<int>(channel)));
        }
      }
    };
    if (shift == 0) {
      check(chained<std::int16_t>(track, std::move(pieces), std::nullopt, 1024));
    } else {
      check(chained<std::int32_t>(track, std::move(pieces)));
    }
  }
}

TEST(AudioChain, PlacesSoundByItsTime) {
  struct Case {
    const char* name;
    std::vector<double> places;
    std::optional<double> end;
    std::size_t length;
    /// Where the first sample of each piece of 1000 is found; -1 if it is cut.
    std::vector<int> found;
  };
  const Case cases[]{
      {"in sequence", {0, 1000, 2000}, std::nullopt, 3000, {0, 1000, 2000}},
      {"rounded to milliseconds", {0, 1008, 1992}, std::nullopt, 3000, {0, 1000, 2000}},
      {"late", {500, 1500}, std::nullopt, 2500, {500, 1500}},
      {"early", {-400, 600}, std::nullopt, 1600, {-1, 600}},
      {"a gap", {0, 3000}, std::nullopt, 4000, {0, 3000}},
      {"an overlap", {0, 700}, std::nullopt, 1700, {0, -1}},
      {"filled", {0}, 5000, 5000, {0}},
      {"cut", {0, 1000}, 1500, 1500, {0, 1000}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    std::vector<Piece> pieces;
    for (std::size_t piece = 0; piece < each.places.size(); ++piece) {
      // The first sample of each piece is its number.
      pieces.push_back({soundOf(1000, 1, sourceRate,
                                [&](int place, int) { return place == 0 ? 1000 * (static_cast<int>(piece) + 1) : 1; }),
                        each.places[piece]});
    }
    const auto end = each.end ? std::optional(static_cast<Ticks>(*each.end * timeLine.den / sourceRate)) : std::nullopt;
    const std::vector mono{ChannelLabel::center};
    const auto channels = chained<std::int16_t>(trackOf("s16", 16, sourceRate, mono, mono), std::move(pieces), end);
    ASSERT_EQ(channels[0].size(), each.length);
    for (std::size_t piece = 0; piece < each.found.size(); ++piece) {
      const auto found = std::ranges::find(channels[0], 1000 * (static_cast<int>(piece) + 1));
      EXPECT_EQ(found == channels[0].end() ? -1 : static_cast<int>(found - channels[0].begin()), each.found[piece]);
    }
  }
}

TEST(AudioChain, KeepsNoLongSilenceInMemory) {
  // A second of sound, minutes of none, and a second of sound; and beside it a track that has none at all.
  PlannedAudioTrack track = trackOf("s16", 16, sourceRate, {}, {});
  track.origins.resize(2);
  track.channelCount = 2;
  auto chain = AudioChain::open(track, 0, "/out.wav");
  ASSERT_TRUE(chain);
  constexpr int silence = 300;
  std::int64_t taken = 0;
  std::int64_t loud = 0;
  std::size_t frames = 0;
  const auto sink = [&](FramePointer sound) -> std::optional<TranscodeRunError> {
    EXPECT_EQ(sound->pts, taken);
    taken += sound->nb_samples;
    ++frames;
    const auto* const values = reinterpret_cast<const std::int16_t*>(sound->data[0]);
    for (int place = 0; place < sound->nb_samples; ++place) {
      loud += values[2 * place] != 0 ? 1 : 0;
      loud += values[2 * place + 1] != 0 ? sourceRate : 0;
    }
    return std::nullopt;
  };
  const auto loudSound = [] { return soundOf(sourceRate, 1, sourceRate, [](int, int) { return 1000; }); };
  ASSERT_FALSE((*chain)->take(0, *loudSound(), 0, sink));
  ASSERT_FALSE((*chain)->take(0, *loudSound(), Ticks{timeLine.den} * silence, sink));
  // What waits for the silent track is a few seconds, not the whole silence.
  EXPECT_GT(taken, std::int64_t{sourceRate} * (silence - 20));
  ASSERT_FALSE((*chain)->finish(Ticks{timeLine.den} * 2 * silence, sink));
  EXPECT_EQ(taken, std::int64_t{sourceRate} * 2 * silence);
  EXPECT_EQ(loud, 2 * sourceRate);
  EXPECT_EQ((*chain)->filledSound().samples.count, std::int64_t{sourceRate} * (silence - 1));
}

TEST(AudioChain, KeepsTimeAndLengthWhenItResamples) {
  for (const auto& [from, to] : {std::pair{44'100, 48'000}, {48'000, 44'100}, {96'000, 48'000}, {48'000, 96'000}}) {
    SCOPED_TRACE(from);
    // A click at a second, in sound of two seconds.
    std::vector<Piece> pieces;
    for (int piece = 0; piece < 20; ++piece) {
      const int first = piece * from / 10;
      pieces.push_back(
          {soundOf(from / 10, 1, from, [&, rate = from](int place, int) { return first + place == rate ? 30'000 : 0; }),
           static_cast<double>(first)});
    }
    const std::vector mono{ChannelLabel::center};
    const auto channels = chained<std::int32_t>(trackOf("s32", 24, to, mono, mono), std::move(pieces));
    EXPECT_EQ(channels[0].size(), static_cast<std::size_t>(2 * to));
    const auto loudest = std::ranges::max_element(channels[0]);
    EXPECT_NEAR(static_cast<double>(loudest - channels[0].begin()), to, 1);
  }
}

TEST(AudioChain, MixesByPlacesAndKeepsDiscreteChannels) {
  // Six channels of constant values.
  const std::vector surround{ChannelLabel::left, ChannelLabel::right,        ChannelLabel::center,
                             ChannelLabel::lfe,  ChannelLabel::leftSurround, ChannelLabel::rightSurround};
  std::vector<Piece> pieces;
  pieces.push_back({soundOf(4800, 6, sourceRate, [](int, int channel) { return 1000 * (channel + 1); })});
  const auto mixed = chained<std::int16_t>(trackOf("s16", 16, sourceRate, surround, stereo), std::move(pieces));
  // FFmpeg's matrix: 1 for the front, -3 dB for centre and surround, scaled so that nothing clips.
  const double half = std::numbers::sqrt2 / 2;
  const double scale = 1 / (1 + 2 * half);
  EXPECT_NEAR(mixed[0][2400], (1000 + half * 3000 + half * 5000) * scale, 3);
  EXPECT_NEAR(mixed[1][2400], (2000 + half * 3000 + half * 6000) * scale, 3);

  PlannedAudioTrack discrete = trackOf("s16", 16, sourceRate, {}, {});
  discrete.origins.resize(3);
  discrete.channelCount = 5;
  std::vector<Piece> origins;
  for (std::size_t origin = 0; origin < 3; ++origin) {
    const int channels = origin == 1 ? 2 : 1;
    origins.push_back({soundOf(1000, channels, sourceRate,
                               [&](int, int channel) { return static_cast<int>(origin) * 100 + channel + 1; }),
                       0, origin});
  }
  const auto joined = chained<std::int16_t>(discrete, std::move(origins));
  const std::array<int, 5> expected{1, 101, 102, 201, 0};
  for (std::size_t channel = 0; channel < 5; ++channel) {
    ASSERT_EQ(joined[channel].size(), 1000U);
    EXPECT_TRUE(std::ranges::all_of(joined[channel], [&](int value) { return value == expected[channel]; })) << channel;
  }
}

TEST(AudioChain, DithersOnlyWhereBitsAreLost) {
  FramePointer quiet(av_frame_alloc());
  quiet->format = AV_SAMPLE_FMT_FLTP;
  quiet->sample_rate = sourceRate;
  quiet->nb_samples = sourceRate;
  av_channel_layout_default(&quiet->ch_layout, 1);
  ASSERT_EQ(av_frame_get_buffer(quiet.get(), 0), 0);
  // A third of a step of 16 bits, which plain rounding would make silence.
  constexpr float level = 1.0F / 3 / 32'768;
  std::fill_n(reinterpret_cast<float*>(quiet->data[0]), sourceRate, level);
  std::vector<Piece> pieces;
  pieces.push_back({std::move(quiet)});
  const std::vector mono{ChannelLabel::center};
  const auto channels = chained<std::int16_t>(trackOf("s16", 16, sourceRate, mono, mono), std::move(pieces));
  double sum = 0;
  for (const int value : channels[0]) {
    sum += value;
    EXPECT_LE(std::abs(value), 2);
  }
  EXPECT_NEAR(sum / sourceRate, 1.0 / 3, 0.05);
}

/// Joins parts of packets of coded sound, and returns where the packets that stay are placed, in packets of a part.
std::vector<std::pair<int, double>> joinedPackets(int parts, double partLength, double priming, int packetsOfPart) {
  AVCodecParameters parameters{};
  parameters.codec_type = AVMEDIA_TYPE_AUDIO;
  parameters.codec_id = AV_CODEC_ID_AAC;
  parameters.sample_rate = sourceRate;
  CopiedSound sound(parameters);
  constexpr Ticks duration = Ticks{1024} * timeLine.den / sourceRate;
  const auto ticks = [](double packets) { return static_cast<Ticks>(packets * static_cast<double>(duration)); };
  std::vector<std::pair<int, double>> placed;
  for (int part = 0; part < parts; ++part) {
    const double begin = part * partLength;
    sound.beginPart(ticks(begin), part + 1 < parts ? std::optional(ticks(begin + partLength)) : std::nullopt);
    for (int each = 0; each < packetsOfPart; ++each) {
      const PacketPointer packet(av_packet_alloc());
      EXPECT_EQ(av_new_packet(packet.get(), 100), 0);
      packet->pts = packet->dts = ticks(begin - priming + each);
      packet->duration = duration;
      if (sound.fit(*packet)) {
        placed.emplace_back(part * 1000 + each, static_cast<double>(packet->pts) / static_cast<double>(duration));
      }
    }
  }
  return placed;
}

TEST(CopiedSound, StaysWithinHalfAPacketOverManyParts) {
  for (const double partLength : {93.75, 94.5, 93.1, 50.0}) {
    for (const double priming : {0.0, 0.3, 1.0}) {
      SCOPED_TRACE(partLength);
      const auto placed = joinedPackets(20, partLength, priming, static_cast<int>(partLength + priming) + 2);
      double next = -priming;
      for (const auto& [number, place] : placed) {
        // Each follows the one before it, and is where it belongs but for half a packet.
        EXPECT_NEAR(place, next, 0.51) << number;
        next = place + 1;
        const double right = number / 1000 * partLength - priming + number % 1000;
        EXPECT_NEAR(place, right, 0.51) << number;
      }
      EXPECT_GT(placed.size(), static_cast<std::size_t>(19 * partLength));
    }
  }
}

}  // namespace
}  // namespace meridian::libav
