// The exported constants under their own names, and the types of the typed ones, from the lists of the C++ constants.
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/media/avm_constants.h"
#include "meridian/media/media_names.h"
#include "meridian/python/module.h"
#include "meridian/python/vocabulary.h"

namespace meridian::inline v0_2::python {
namespace {

template <typename T>
std::vector<T> casesOf() {
  const auto cases = T::allCases();
  return {cases.begin(), cases.end()};
}

/// Adds a static method. `arguments` are the names of its parameters.
template <typename Function, typename... Arguments>
void addStatic(const py::object& type, const char* name, const char* doc, Function&& function,
               const Arguments&... arguments) {
  type.attr(name) = py::staticmethod(
      py::cpp_function(std::forward<Function>(function), py::name(name), py::doc(doc), py::scope(type), arguments...));
}

/// Adds a property that is computed from the text.
template <typename Function>
void addFact(const py::object& type, const char* name, const char* doc, Function&& function) {
  type.attr(name) = py::handle(reinterpret_cast<PyObject*>(&PyProperty_Type))(
      py::cpp_function(std::forward<Function>(function)), py::none(), py::none(), doc);
}

template <typename T>
void addFlags(py::module_& module, const char* doc) {
  const py::object type = addTypedText<T>(module, doc);
  addStatic(type, "all_cases", "Returns the flags of the group that the parser knows.", &casesOf<T>);
  addFact(type, "accepts_arguments",
          "Whether a value follows the flag. True for a text that is not a flag of the group.",
          [](const Text& text) { return T(std::string_view(text.value)).acceptsArguments(); });
}

template <typename T>
py::object addValues(py::module_& module, const char* doc) {
  py::object type = addTypedText<T>(module, doc);
  addStatic(type, "all_cases", "Returns the values offered as choices.", &casesOf<T>);
  addStatic(
      type, "from_raw_value", "Returns the case with exactly this text; None if it is not one of all_cases().",
      [](const Text& text) { return T::fromRawValue(text.value); }, py::arg("raw_value"));
  if constexpr (requires { T::cliFlag(); }) type.attr("cli_flag") = strOf(T::cliFlag());
  return type;
}

template <typename Extensions>
std::vector<FileExtension> listOf(const Extensions& extensions) {
  return {extensions.begin(), extensions.end()};
}

void addTypes(py::module_& module) {
  addFlags<SAVTranscodeCliCommand>(module, "Listing commands: the transcoder prints a list and exits.");
  addFlags<SAVTranscodeArgumentFlag>(module, "General flags: the files of a transcode and how it reports.");
  addFlags<SAVTranscodeVideoArgumentFlag>(module, "Video flags.");
  addFlags<SAVTranscodeAudioArgumentFlag>(module, "Audio flags.");
  addFlags<SAVTranscodeTimecodeArgumentFlag>(module, "Timecode flags.");
  addFlags<SAVTranscodeWatermarkFileArgumentFlag>(module, "Watermark-file flags.");
  addFlags<SAVTranscodeWatermarkTextArgumentFlag>(module, "Watermark-text flags.");
  addFlags<SAVTranscodeArriLookArgumentFlag>(module, "Camera look flags: the colour settings of ARRI look files.");

  using Format = SAVTranscodeArgumentFileFormatValue;
  const auto format = addValues<Format>(module, "Value of \"-file_format\": the container of the output file.");
  addFact(format, "valid_extensions", "The extensions that a file of this format may have, the preferred one first.",
          [](const Text& text) { return listOf(Format(std::string_view(text.value)).validExtensions()); });
  addFact(format, "preferred_file_extension", "The first of the valid extensions; None for an unknown text.",
          [](const Text& text) { return Format(std::string_view(text.value)).preferredFileExtension(); });

  using Codec = SAVTranscodeArgumentVideoCodecValue;
  const auto codec = addValues<Codec>(module, "Value of \"-vcodec\": the video codec.");
  addFact(codec, "permitted_extensions", "The extensions that a file with this codec may have.",
          [](const Text& text) { return listOf(Codec(std::string_view(text.value)).permittedExtensions()); });
  addFact(codec, "conversion_codec_type", "The codec of conversion settings; None for an unknown text.",
          [](const Text& text) { return Codec(std::string_view(text.value)).conversionCodecType(); });
  addStatic(
      codec, "from_conversion_codec_type", "Returns the text that names the codec of conversion settings.",
      [](ConversionCodecType type) { return Codec::fromConversionCodecType(type); }, py::arg("type"));
  const auto family = [](auto codecs) { return std::vector<Codec>(codecs.begin(), codecs.end()); };
  addStatic(codec, "all_avid_d_nx_formats", "Returns the Avid DNx codecs.",
            [family] { return family(Codec::allAvidDNxFormats()); });
  addStatic(codec, "all_web_formats", "Returns the codecs for the web; Motion JPEG is deliberately one.",
            [family] { return family(Codec::allWebFormats()); });
  addStatic(codec, "all_pro_res_formats", "Returns the ProRes codecs.",
            [family] { return family(Codec::allProResFormats()); });

  addValues<SAVTranscodeArgumentAspectRatioValue>(
      module, "Value of \"-aspect_scaling\": how an image fits a frame of another aspect ratio.");
  addValues<SAVTranscodeArgumentOverlayAnchorValue>(module, "The place of a crop, a burn-in or a watermark.");
  addValues<SAVTranscodeArgumentColorSpaceValue>(module, "Value of \"-c_space\": the colour space of the output.");
  addValues<SAVTranscodeArgumentAudioFormatValue>(
      module, "Value of \"-acodec\": the audio format. Three of the six constants are deliberately not cases.");
  addValues<SAVTranscodeArgumentAudioChannelLayoutValue>(module, "Value of \"-acl\": the layout of the channels.");
}

}  // namespace

void addConstants(py::module_& module) {
  addTypes(module);

#define MERIDIAN_PYTHON_CONSTANT(name, ...) addConstant(module, #name, meridian::name);
#define MERIDIAN_COMMAND_FLAG MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_GENERAL_FLAG MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_VIDEO_FLAG MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_AUDIO_FLAG MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_TIMECODE_FLAG MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_WATERMARK_FILE_FLAG MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_WATERMARK_TEXT_FLAG MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_CAMERA_LOOK_FLAG MERIDIAN_PYTHON_CONSTANT
#include "meridian/cli/transcode_flags.def"

#define MERIDIAN_FILE_FORMAT MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_VIDEO_CODEC MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_ASPECT_RATIO MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_OVERLAY_ANCHOR MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_COLOR_SPACE MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_AUDIO_FORMAT MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_CHANNEL_LAYOUT MERIDIAN_PYTHON_CONSTANT
#define MERIDIAN_VALUE_TEXT MERIDIAN_PYTHON_CONSTANT
#include "meridian/cli/transcode_values.def"

#define MERIDIAN_MEDIA_NAME MERIDIAN_PYTHON_CONSTANT
#include "meridian/media/media_names.def"

#define MERIDIAN_AVM_CONSTANT MERIDIAN_PYTHON_CONSTANT
#include "meridian/media/avm_constants.def"

  MERIDIAN_PYTHON_CONSTANT(kAVMVideoQualityLevelMax)
  MERIDIAN_PYTHON_CONSTANT(kAVMVideoQualityLvelMin)
}

}  // namespace meridian::inline v0_2::python
