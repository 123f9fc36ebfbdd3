#include "meridian/engine/encoder_inventory.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/hwcontext.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <optional>

#include "meridian/base/no_destructor.h"
#include "meridian/engine/libav/handles.h"
#include "meridian/engine/libav/log_collector.h"

namespace meridian::inline v0_2 {
namespace {

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

std::optional<CodecKind> kindOf(AVMediaType type) noexcept {
  switch (type) {
    case AVMEDIA_TYPE_VIDEO:
      return CodecKind::video;
    case AVMEDIA_TYPE_AUDIO:
      return CodecKind::audio;
    case AVMEDIA_TYPE_SUBTITLE:
      return CodecKind::subtitle;
    case AVMEDIA_TYPE_DATA:
      return CodecKind::data;
    default:
      return std::nullopt;
  }
}

std::string layoutName(const AVChannelLayout& layout) {
  std::array<char, 128> name{};
  return av_channel_layout_describe(&layout, name.data(), name.size()) > 0 ? name.data() : std::string();
}

EncoderDescription described(const AVCodec& codec, CodecKind kind) {
  EncoderDescription encoder;
  encoder.name = codec.name;
  encoder.codecName = avcodec_get_name(codec.id);
  encoder.kind = kind;
  encoder.isHardware = (codec.capabilities & AV_CODEC_CAP_HARDWARE) != 0;
  encoder.isExperimental = (codec.capabilities & AV_CODEC_CAP_EXPERIMENTAL) != 0;
  for (const AVPixelFormat* each = codec.pix_fmts; each != nullptr && *each != AV_PIX_FMT_NONE; ++each) {
    encoder.pixelFormats.push_back(textOf(av_get_pix_fmt_name(*each)));
  }
  for (const AVSampleFormat* each = codec.sample_fmts; each != nullptr && *each != AV_SAMPLE_FMT_NONE; ++each) {
    encoder.sampleFormats.push_back(textOf(av_get_sample_fmt_name(*each)));
  }
  for (const int* each = codec.supported_samplerates; each != nullptr && *each != 0; ++each) {
    encoder.sampleRates.push_back(*each);
  }
  for (const AVChannelLayout* each = codec.ch_layouts; each != nullptr && each->nb_channels != 0; ++each) {
    encoder.channelLayouts.push_back(layoutName(*each));
  }
  return encoder;
}

void addCodecs(EncoderInventory& inventory) {
  void* place = nullptr;
  while (const AVCodec* const codec = av_codec_iterate(&place)) {
    const auto kind = kindOf(codec->type);
    if (!kind) continue;
    if (av_codec_is_encoder(codec) != 0) {
      inventory.encoders.push_back(described(*codec, *kind));
    } else {
      inventory.decoders.push_back({codec->name, avcodec_get_name(codec->id), *kind});
    }
  }
  std::ranges::sort(inventory.encoders, {}, &EncoderDescription::name);
  std::ranges::sort(inventory.decoders, {}, &DecoderDescription::name);
}

/// Returns the names of all objects that the function iterates over, sorted. A format's name may be a list.
template <auto iterate>
std::vector<std::string> namesOfAll() {
  std::vector<std::string> names;
  void* place = nullptr;
  while (const auto* const object = iterate(&place)) {
    std::string_view list = object->name;
    while (true) {
      const std::size_t end = list.find(',');
      names.emplace_back(list.substr(0, end));
      if (end == std::string_view::npos) break;
      list.remove_prefix(end + 1);
    }
  }
  std::ranges::sort(names);
  names.erase(std::ranges::unique(names).begin(), names.end());
  return names;
}

std::vector<std::string> deviceNames() {
  std::vector<std::string> names;
  for (AVHWDeviceType type = AV_HWDEVICE_TYPE_NONE;
       (type = av_hwdevice_iterate_types(type)) != AV_HWDEVICE_TYPE_NONE;) {
    names.push_back(textOf(av_hwdevice_get_type_name(type)));
  }
  std::ranges::sort(names);
  return names;
}

LibraryVersion library(const char* name, unsigned version) {
  return {name, std::to_string(AV_VERSION_MAJOR(version)) + '.' + std::to_string(AV_VERSION_MINOR(version)) + '.' +
                    std::to_string(AV_VERSION_MICRO(version))};
}

EncoderInventory made() {
  EncoderInventory inventory;
  addCodecs(inventory);
  inventory.muxers = namesOfAll<av_muxer_iterate>();
  inventory.demuxers = namesOfAll<av_demuxer_iterate>();
  inventory.filters = namesOfAll<av_filter_iterate>();
  inventory.devices = deviceNames();
  inventory.version = textOf(av_version_info());
  inventory.libraries = {
      library("libavcodec", avcodec_version()),       library("libavfilter", avfilter_version()),
      library("libavformat", avformat_version()),     library("libavutil", avutil_version()),
      library("libswresample", swresample_version()), library("libswscale", swscale_version()),
  };
  inventory.license = textOf(avcodec_license());
  inventory.configuration = textOf(avcodec_configuration());
  return inventory;
}

}  // namespace

const EncoderInventory& encoderInventory() {
  static const NoDestructor<EncoderInventory> inventory(made());
  return *inventory;
}

bool deviceOpens(const std::string& kind) {
  const libav::LogCollector log;
  const AVHWDeviceType type = av_hwdevice_find_type_by_name(kind.c_str());
  if (type == AV_HWDEVICE_TYPE_NONE) return false;
  AVBufferRef* device = nullptr;
  const int status = av_hwdevice_ctx_create(&device, type, nullptr, nullptr, 0);
  const libav::BufferPointer owned(device);
  return status >= 0;
}

bool encoderHasOption(const std::string& encoder, const std::string& option, const std::string& value) {
  const AVCodec* const codec = avcodec_find_encoder_by_name(encoder.c_str());
  if (codec == nullptr) return false;
  const auto find = [](const AVClass* options, const std::string& name, const char* unit) {
    // FFmpeg looks at the class alone, to which an object begins with a pointer.
    return av_opt_find(static_cast<void*>(&options), name.c_str(), unit, 0, AV_OPT_SEARCH_FAKE_OBJ);
  };
  for (const AVClass* const options : {codec->priv_class, avcodec_get_class()}) {
    const AVOption* const found = options != nullptr ? find(options, option, nullptr) : nullptr;
    if (found == nullptr) continue;
    return value.empty() || (found->unit != nullptr && find(options, value, found->unit) != nullptr);
  }
  return false;
}

}  // namespace meridian::inline v0_2
