#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_reading.h"
#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/cli/transcode_preset.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/fs/claimed_files.h"
#include "meridian/fs/item_filter.h"
#include "meridian/fs/tree_walk.h"
#include "meridian/lut/code_value_format.h"
#include "meridian/lut/image_lut_options.h"
#include "meridian/lut/image_view.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_format.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/media/conversion_codec_type.h"
#include "meridian/media/file_extension.h"
#include "meridian/media/frame_number.h"
#include "meridian/media/frame_rate.h"
#include "meridian/media/media_corporation.h"
#include "meridian/media/video_dimension.h"
#include "meridian/python/module.h"
#include "meridian/python/vocabulary.h"

namespace meridian::inline v0_2::python {
namespace {

void addErrorCodes(py::module_& module) {
  addEnumeration<PropertyErrorCode>(module, "Why a property cannot be set.");
  addEnumeration<TranscodeErrorCode>(module, "Why an entry of an argument vector was rejected.");
  addEnumeration<TranscodeWarningCode>(module, "Why a setting or a dropped word deserves attention.");
  addEnumeration<TimecodeErrorCode>(module, "Why a timecode labels no frame, or a frame number has no timecode.");
  addEnumeration<LutErrorCode>(module, "Why a file is not read as a LUT.");
  addEnumeration<LutWarningCode>(module, "What may surprise about a LUT.");
  addEnumeration<LutFormat>(module, "A published format of LUT files.");
  addEnumeration<ImageErrorCode>(module, "Why a LUT cannot be applied to an image.");
  addEnumeration<TreeWalkErrorCode>(module, "What could not be read or followed during a walk.");
  addEnumeration<ClaimErrorCode>(module, "Why files were not created.");
  addEnumeration<MediaAnalysisCLIError>(module, "What makes the analysis tool's basic options unusable.");
  addEnumeration<MediaAnalysisCLIImageError>(module, "What makes the analysis tool's image options unusable.");
  addEnumeration<MediaAnalysisCLIWarningCode>(module, "Why words of a vector are not in the options read from it.");
  addEnumeration<MediaAnalysisCLIWritingWarningCode>(module, "Why an option does not read back from its own vector.");
}

}  // namespace

void addEnumerations(py::module_& module) {
  const auto vocabulary = py::module_::import("meridian._vocabulary");
  for (const char* base : {"Enumeration", "ErrorCode", "TypedText"}) module.attr(base) = vocabulary.attr(base);
  // The functions that make them, for the package.
  module.attr("_enumerations") = py::dict();
  addErrorCodes(module);

  addEnumeration<FlagGroup>(module, "The groups of the transcoder's flags.");
  addEnumeration<TranscodeCliPreset>(module, "The built-in presets. The value is that of \"-preset\".");
  addEnumeration<VideoCropAnchor>(module,
                                  "Which part of an image a crop keeps. The value is that of \"-crop_anchor\".");
  addEnumeration<TranscodeAudioQuality>(
      module, "The quality of the audio encoder. The value is that of \"-aqual\".", [](const py::object& type) {
        type.attr("av_audio_quality") = py::handle(reinterpret_cast<PyObject*>(&PyProperty_Type))(
            py::cpp_function([](TranscodeAudioQuality value) { return avAudioQuality(value); }), py::none(), py::none(),
            "The quality on the platform's scale of audio-encoder qualities, 0 to 127.");
      });
  addEnumeration<TimecodeSource>(module, "Where the timecode of the output comes from.");
  addEnumeration<PropertyKind>(module, "How a property of a transcode is written as text.");
  addEnumeration<SettingSource>(module, "Where the value of an explained setting came from.");

  addEnumeration<FileExtension>(module, "A file extension. The value is the extension in lower case without its dot.");
  addEnumeration<ConversionCodecType>(module, "The video codecs that stored conversion settings choose from.");
  addEnumeration<MediaCorporation>(module, "A maker of cameras or software. The description is the maker's name.");
  addEnumeration<VideoFrameRateKind>(module, "The cases of VideoFrameRate.");
  addEnumeration<FrameRateKind>(module, "The cases of FrameRate.");
  addEnumeration<VideoDimensionKind>(module, "The cases of VideoDimension.");

  addEnumeration<LutDimensions>(module, "What a LUT is indexed by: each channel on its own, or all three together.");
  addEnumeration<LutValueType>(module, "What the numbers of a LUT are: code values, or floating point from 0 to 1.");
  addEnumeration<CodeValueRange>(module,
                                 "Which code values of n bits are black and white: 0 and 2^n - 1, or in limited range "
                                 "16 * 2^(n-8) and 235 * 2^(n-8).");
  addEnumeration<LutInterpolation>(module, "How colours between the points of a cube are found: from eight or four.");
  addEnumeration<LutAxisOrder>(module,
                               "Which index runs fastest through the rows of a cube's file. Published .cube files are "
                               "red_fastest.");
  addEnumeration<LutInputDomain>(module,
                                 "Which input values the axes of a LUT cover: those of its data, or as declared.");
  addEnumeration<LutRounding>(module, "How results become code values.");

  addEnumeration<ItemKind>(module, "The kind of an item itself: a symbolic link is one wherever it leads.");
  addEnumeration<ItemFilterRule>(module, "The rules of the filter, in order. The first that applies decides.");
  addEnumeration<ItemFilteringOption>(module, "Whether listed extensions are not copied, or are the only ones copied.");
}

}  // namespace meridian::inline v0_2::python
