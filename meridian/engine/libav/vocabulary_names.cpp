#include "meridian/engine/libav/vocabulary_names.h"

extern "C" {
#include <libavutil/avutil.h>
}

#include <array>

#include "meridian/media/media_names.h"

namespace meridian::inline v0_2::libav {
namespace {

constexpr int anyProfile = FF_PROFILE_UNKNOWN;

/// A row without a codec is found by its tag: FFmpeg does not know what is in it.
struct VideoRow {
  AVCodecID codec;
  int profile;
  std::string_view name;
  std::optional<SAVTranscodeArgumentVideoCodecValue> format = std::nullopt;
};

/// The first row that fits counts. DNxHR is one codec with DNxHD to FFmpeg, told apart by its profiles.
constexpr auto videoRows = std::to_array<VideoRow>({
    {AV_CODEC_ID_PRORES, FF_PROFILE_PRORES_PROXY, SLVVideoCodecProRes422, SAVProRes422Proxy},
    {AV_CODEC_ID_PRORES, FF_PROFILE_PRORES_LT, SLVVideoCodecProRes422, SAVProRes422LT},
    {AV_CODEC_ID_PRORES, FF_PROFILE_PRORES_STANDARD, SLVVideoCodecProRes422, SAVProRes422},
    {AV_CODEC_ID_PRORES, FF_PROFILE_PRORES_HQ, SLVVideoCodecProRes422, SAVProRes422HQ},
    {AV_CODEC_ID_PRORES, FF_PROFILE_PRORES_4444, SLVVideoCodecProRes4444, SAVProRes4444},
    {AV_CODEC_ID_PRORES, FF_PROFILE_PRORES_XQ, SLVVideoCodecProRes4444, SAVProRes4444XQ},
    {AV_CODEC_ID_DNXHD, FF_PROFILE_DNXHR_LB, SLVVideoCodecAvidDNxHR, SAVDnxhdCodec},
    {AV_CODEC_ID_DNXHD, FF_PROFILE_DNXHR_SQ, SLVVideoCodecAvidDNxHR, SAVDnxhdCodec},
    {AV_CODEC_ID_DNXHD, FF_PROFILE_DNXHR_HQ, SLVVideoCodecAvidDNxHR, SAVDnxhdCodec},
    {AV_CODEC_ID_DNXHD, FF_PROFILE_DNXHR_HQX, SLVVideoCodecAvidDNxHR, SAVDnxhdCodec},
    {AV_CODEC_ID_DNXHD, FF_PROFILE_DNXHR_444, SLVVideoCodecAvidDNxHR, SAVDnxhdCodec},
    {AV_CODEC_ID_DNXHD, anyProfile, SLVVideoCodecAvidDNxHD, SAVDnxhdCodec},
    {AV_CODEC_ID_H264, anyProfile, SLVVideoCodecH264, SAVAvcH264Codec},
    {AV_CODEC_ID_HEVC, anyProfile, SLVVideoCodecH265, SAVHevcCodec},
    {AV_CODEC_ID_MJPEG, anyProfile, SLVVideoCodecJPEG, SAVMotionJpegCodec},
    {AV_CODEC_ID_MPEG4, anyProfile, SLVVideoCodecMpeg4, SAVMpeg4Codec},
    {AV_CODEC_ID_MPEG2VIDEO, anyProfile, SLVVideoCodecMpeg2},
    {AV_CODEC_ID_CFHD, anyProfile, SLVVideoCodecCineform},
});

struct TagRow {
  std::string_view tag;
  std::string_view name;
};

/// Codecs that FFmpeg does not decode, by the container's code.
constexpr auto tagRows = std::to_array<TagRow>({
    {"aprn", SLVVideoCodecProResRaw},
    {"aprh", SLVVideoCodecProResRaw},
    {"brhq", SLVVideoCodecBlackmagicRaw},
    {"brlt", SLVVideoCodecBlackmagicRaw},
    {"brst", SLVVideoCodecBlackmagicRaw},
    {"brxq", SLVVideoCodecBlackmagicRaw},
    {"CRAW", SLVVideoCodecCanonRaw},
});

struct AudioRow {
  AVCodecID codec;
  int profile;
  SAVTranscodeArgumentAudioFormatValue format;
};

constexpr auto audioRows = std::to_array<AudioRow>({
    {AV_CODEC_ID_AAC, FF_PROFILE_AAC_HE, SAVAacHEAudioFormatValue},
    {AV_CODEC_ID_AAC, FF_PROFILE_AAC_HE_V2, SAVAacHEAudioFormatValue},
    {AV_CODEC_ID_AAC, FF_PROFILE_AAC_ELD, SAVAacELDLosslessAudioFormatValue},
    {AV_CODEC_ID_AAC, anyProfile, SAVAacAudioFormatValue},
    {AV_CODEC_ID_ALAC, anyProfile, SAVAppleLosslessAudioFormatValue},
    {AV_CODEC_ID_ADPCM_IMA_QT, anyProfile, SAVAppleIMA41ADPCMAudioFormatValue},
});

template <typename Rows>
const auto* rowOf(const Rows& rows, const AVCodecParameters& parameters) noexcept {
  for (const auto& row : rows) {
    if (row.codec == parameters.codec_id && (row.profile == anyProfile || row.profile == parameters.profile)) {
      return &row;
    }
  }
  return static_cast<decltype(rows.data())>(nullptr);
}

}  // namespace

VideoNames videoNames(const AVCodecParameters& parameters) noexcept {
  for (const TagRow& row : tagRows) {
    const auto character = [&row](std::size_t place) { return static_cast<unsigned char>(row.tag[place]); };
    if (parameters.codec_tag == MKTAG(character(0), character(1), character(2), unsigned{character(3)})) {
      return {row.name, std::nullopt};
    }
  }
  const VideoRow* const row = rowOf(videoRows, parameters);
  if (row != nullptr) return {row->name, row->format};
  // Without a profile it may be any of the six.
  if (parameters.codec_id == AV_CODEC_ID_PRORES) return {SLVVideoCodecProRes422, std::nullopt};
  return {};
}

std::optional<SAVTranscodeArgumentAudioFormatValue> audioFormat(const AVCodecParameters& parameters) noexcept {
  if (const AudioRow* const row = rowOf(audioRows, parameters)) return row->format;
  // All linear codecs have a fixed number of bits, and so have the companded ones.
  const bool isLinear = parameters.codec_id >= AV_CODEC_ID_FIRST_AUDIO &&
                        parameters.codec_id < AV_CODEC_ID_ADPCM_IMA_QT &&
                        parameters.codec_id != AV_CODEC_ID_PCM_MULAW && parameters.codec_id != AV_CODEC_ID_PCM_ALAW &&
                        parameters.codec_id != AV_CODEC_ID_PCM_VIDC;
  if (isLinear) return SAVLpcmAudioFormatValue;
  return std::nullopt;
}

}  // namespace meridian::inline v0_2::libav
