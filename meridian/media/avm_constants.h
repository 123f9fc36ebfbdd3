// The keys and values of the suite's playback and conversion dictionaries.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace meridian::inline v0_2 {

/// A constant by its name.
struct AvmConstant {
  std::string_view name;
  std::string_view value;
};

/// Every text constant of the family, by name. "kAVMMediaMetdataSourceFile" is spelled so.
inline constexpr auto avmConstants = std::to_array<AvmConstant>({
    {"kAVMAVAssetReaderTrackOutputSettingsKey", "avAssetReaderTrackOutputSettingsKey"},
    {"kAVMAVAssetWriterInputSettingsKey", "avAssetWriterInputSettingsKey"},
    {"kAVMActualSizingValue", "actualSize"},
    {"kAVMAppliedTransformationValue", "appliedTransformValue"},
    {"kAVMAudioFormatKey", "audioFormatKey"},
    {"kAVMAverageBitRateKey", "averageVideoBitRateKey"},
    {"kAVMBufferSupplyParadigmKey", "bufferSupplyParadigmKey"},
    {"kAVMCenterPointKey", "centerPoint"},
    {"kAVMColorTransformerKey", "colorTransformer"},
    {"kAVMColorTransformerMonikerKey", "colorTransformerMoniker"},
    {"kAVMConfigureForVideoPlaybackKey", "configureForPlayback"},
    {"kAVMDecodedVideoFrameDimensionsValue", "decodedDimensions"},
    {"kAVMDesiredBufferSizeKey", "desiredBufferSize"},
    {"kAVMDesiredOutputAVMPixelFormatKey", "desiredOutputFormat"},
    {"kAVMDesiredOutputBitDepthKey", "desiredBitDepth"},
    {"kAVMDesiredOutputDimensionsValue", "desiredOutputDimensions"},
    {"kAVMDropFrameKey", "dropFrame"},
    {"kAVMEncoderColorPrimariesKey", "encoderColorPrimariesKey"},
    {"kAVMEncoderGammaLevelKey", "encoderGammaLevelKey"},
    {"kAVMEncoderKeyFrameInterval", "encoderKeyFrameInterval"},
    {"kAVMEncoderProfileKey", "encoderProfileKey"},
    {"kAVMEncoderTransferFunctionKey", "encoderTransferFunctionKey"},
    {"kAVMEncoderYCbCrMatrixKey", "encoderYCbCrMatrixKey"},
    {"kAVMFileTypeKey", "fileTypeKey"},
    {"kAVMFitToScreenSizingValue", "fitToScreen"},
    {"kAVMForceExternalAudioFilesKey", "forceExternalAudioFilesKey"},
    {"kAVMFormatTypeKey", "formatType"},
    {"kAVMFramesArePreEncoded", "framesArePreEncoded"},
    {"kAVMFrameworkLoadPath", "frameworkLoadPath"},
    {"kAVMHalfSizingValue", "halfSize"},
    {"kAVMImageCropAnchorKey", "imageCropAnchorKey"},
    {"kAVMImageResizeTypeKey", "imageResizeTypeKey"},
    {"kAVMInPercentagePointKey", "inPercentagePointKey"},
    {"kAVMInputEssenceKey", "inputEssenceKey"},
    {"kAVMInputFrameClassStringKey", "inputFrameClassKey"},
    {"kAVMInputToOutputBridgeKey", "inputToOutputBridgeKey"},
    {"kAVMLoopPlaybackKey", "loopPlaybackKey"},
    {"kAVMMaintainComponentTimecodesKey", "maintainComponentTimecodesKey"},
    {"kAVMMaximumDecodingCPUs", "maximumDecodingCPUs"},
    {"kAVMMediaMetadataDictionaryKey", "metadata"},
    {"kAVMMediaMetdataSourceFile", "filePath"},
    {"kAVMMetalDeviceIndexKey", "metalDeviceIndex"},
    {"kAVMMetalDeviceRegistryIdKey", "metalRegistryId"},
    {"kAVMMetalDeviceRegistryNameKey", "metalDeviceName"},
    {"kAVMMetalFeatureSetKey", "metalFeatureSet"},
    {"kAVMNativeVideoDimensionsValue", "inputDimensions"},
    {"kAVMNumericFrameRateKey", "numericFrameRate"},
    {"kAVMNumericPlaybackFrameRateKey", "numericPlaybackFrameRate"},
    {"kAVMNumericRecordedFrameRateKey", "numericRecordedFrameRate"},
    {"kAVMOmitAudioKey", "omitAudioKey"},
    {"kAVMOmitLPCMAudioBitDepthsKey", "omitLPCMAudioBitDepthsKey"},
    {"kAVMOmitVideoKey", "omitVideoKey"},
    {"kAVMOrdered16BitInputFormatList", "16BitInputKey"},
    {"kAVMOrdered8BitInputFormatList", "8BitInputKey"},
    {"kAVMOutPercentagePointKey", "outPercentagePointKey"},
    {"kAVMOutputEssenceKey", "outputEssenceKey"},
    {"kAVMPassThroughKey", "passThroughKey"},
    {"kAVMPlaybackDimensionsKey", "playbackDimensions"},
    {"kAVMPlaybackFilePathKey", "playbackFile"},
    {"kAVMPlaybackSizingKey", "playbackSizing"},
    {"kAVMPlaybackTimeRangeKey", "timeRangeKey"},
    {"kAVMPlaybackTimeRangeOrderedDictionariesKey", "timeRangeDictionaries"},
    {"kAVMPreferRGBFormat", "kAVMPreferRGBFormat"},
    {"kAVMPreferYUVFormat", "kAVMPreferYUVFormat"},
    {"kAVMPreferredExtensionKey", "preferredExtensionKey"},
    {"kAVMPrepareForInternetStreaming", "PrepareForInternetStreaming"},
    {"kAVMRestrictedVideoBitRateKey", "restrictedVideoBitRateKey"},
    {"kAVMSampleMediaBufferKey", "sampleMediaBufferKey"},
    {"kAVMScaleFactorKey", "scaleFactor"},
    {"kAVMShareOfProcessingResources", "shareOfProcessingResources"},
    {"kAVMShouldMixDownAudio", "shouldMixDownAudio"},
    {"kAVMTempDirectory", "tempDirectory"},
    {"kAVMTimeDisplayTypeKey", "timeDisplayKey"},
    {"kAVMTimecodeEncodedStartTime", "EncodedStartTimecode"},
    {"kAVMTimecodeFrameRateKey", "TimecodeFrameRate"},
    {"kAVMTotalNumberOfSecondsToBufferKey", "secondsToBufferKey"},
    {"kAVMUseGPUAccelerationKey", "gpuAcceleration"},
    {"kAVMVideoFormatKey", "videoFormatKey"},
    {"kAVMVideoQualityLevel", "videoQualityLevel"},
});

namespace detail {

/// The value in the table; a name that it does not hold does not compile.
consteval std::string_view avmValue(std::string_view name) {
  const auto found = std::ranges::find(avmConstants, name, &AvmConstant::name);
  if (found == avmConstants.end()) throw "the table has no constant of this name";
  return found->value;
}

}  // namespace detail

inline constexpr std::string_view kAVMAVAssetReaderTrackOutputSettingsKey =
    detail::avmValue("kAVMAVAssetReaderTrackOutputSettingsKey");
inline constexpr std::string_view kAVMAVAssetWriterInputSettingsKey =
    detail::avmValue("kAVMAVAssetWriterInputSettingsKey");
inline constexpr std::string_view kAVMActualSizingValue = detail::avmValue("kAVMActualSizingValue");
inline constexpr std::string_view kAVMAppliedTransformationValue = detail::avmValue("kAVMAppliedTransformationValue");
inline constexpr std::string_view kAVMAudioFormatKey = detail::avmValue("kAVMAudioFormatKey");
inline constexpr std::string_view kAVMAverageBitRateKey = detail::avmValue("kAVMAverageBitRateKey");
inline constexpr std::string_view kAVMBufferSupplyParadigmKey = detail::avmValue("kAVMBufferSupplyParadigmKey");
inline constexpr std::string_view kAVMCenterPointKey = detail::avmValue("kAVMCenterPointKey");
inline constexpr std::string_view kAVMColorTransformerKey = detail::avmValue("kAVMColorTransformerKey");
inline constexpr std::string_view kAVMColorTransformerMonikerKey = detail::avmValue("kAVMColorTransformerMonikerKey");
inline constexpr std::string_view kAVMConfigureForVideoPlaybackKey =
    detail::avmValue("kAVMConfigureForVideoPlaybackKey");
inline constexpr std::string_view kAVMDecodedVideoFrameDimensionsValue =
    detail::avmValue("kAVMDecodedVideoFrameDimensionsValue");
inline constexpr std::string_view kAVMDesiredBufferSizeKey = detail::avmValue("kAVMDesiredBufferSizeKey");
inline constexpr std::string_view kAVMDesiredOutputAVMPixelFormatKey =
    detail::avmValue("kAVMDesiredOutputAVMPixelFormatKey");
inline constexpr std::string_view kAVMDesiredOutputBitDepthKey = detail::avmValue("kAVMDesiredOutputBitDepthKey");
inline constexpr std::string_view kAVMDesiredOutputDimensionsValue =
    detail::avmValue("kAVMDesiredOutputDimensionsValue");
inline constexpr std::string_view kAVMDropFrameKey = detail::avmValue("kAVMDropFrameKey");
inline constexpr std::string_view kAVMEncoderColorPrimariesKey = detail::avmValue("kAVMEncoderColorPrimariesKey");
inline constexpr std::string_view kAVMEncoderGammaLevelKey = detail::avmValue("kAVMEncoderGammaLevelKey");
inline constexpr std::string_view kAVMEncoderKeyFrameInterval = detail::avmValue("kAVMEncoderKeyFrameInterval");
inline constexpr std::string_view kAVMEncoderProfileKey = detail::avmValue("kAVMEncoderProfileKey");
inline constexpr std::string_view kAVMEncoderTransferFunctionKey = detail::avmValue("kAVMEncoderTransferFunctionKey");
inline constexpr std::string_view kAVMEncoderYCbCrMatrixKey = detail::avmValue("kAVMEncoderYCbCrMatrixKey");
inline constexpr std::string_view kAVMFileTypeKey = detail::avmValue("kAVMFileTypeKey");
inline constexpr std::string_view kAVMFitToScreenSizingValue = detail::avmValue("kAVMFitToScreenSizingValue");
inline constexpr std::string_view kAVMForceExternalAudioFilesKey = detail::avmValue("kAVMForceExternalAudioFilesKey");
inline constexpr std::string_view kAVMFormatTypeKey = detail::avmValue("kAVMFormatTypeKey");
inline constexpr std::string_view kAVMFramesArePreEncoded = detail::avmValue("kAVMFramesArePreEncoded");
inline constexpr std::string_view kAVMFrameworkLoadPath = detail::avmValue("kAVMFrameworkLoadPath");
inline constexpr std::string_view kAVMHalfSizingValue = detail::avmValue("kAVMHalfSizingValue");
inline constexpr std::string_view kAVMImageCropAnchorKey = detail::avmValue("kAVMImageCropAnchorKey");
inline constexpr std::string_view kAVMImageResizeTypeKey = detail::avmValue("kAVMImageResizeTypeKey");
inline constexpr std::string_view kAVMInPercentagePointKey = detail::avmValue("kAVMInPercentagePointKey");
inline constexpr std::string_view kAVMInputEssenceKey = detail::avmValue("kAVMInputEssenceKey");
inline constexpr std::string_view kAVMInputFrameClassStringKey = detail::avmValue("kAVMInputFrameClassStringKey");
inline constexpr std::string_view kAVMInputToOutputBridgeKey = detail::avmValue("kAVMInputToOutputBridgeKey");
inline constexpr std::string_view kAVMLoopPlaybackKey = detail::avmValue("kAVMLoopPlaybackKey");
inline constexpr std::string_view kAVMMaintainComponentTimecodesKey =
    detail::avmValue("kAVMMaintainComponentTimecodesKey");
inline constexpr std::string_view kAVMMaximumDecodingCPUs = detail::avmValue("kAVMMaximumDecodingCPUs");
inline constexpr std::string_view kAVMMediaMetadataDictionaryKey = detail::avmValue("kAVMMediaMetadataDictionaryKey");
inline constexpr std::string_view kAVMMediaMetdataSourceFile = detail::avmValue("kAVMMediaMetdataSourceFile");
inline constexpr std::string_view kAVMMetalDeviceIndexKey = detail::avmValue("kAVMMetalDeviceIndexKey");
inline constexpr std::string_view kAVMMetalDeviceRegistryIdKey = detail::avmValue("kAVMMetalDeviceRegistryIdKey");
inline constexpr std::string_view kAVMMetalDeviceRegistryNameKey = detail::avmValue("kAVMMetalDeviceRegistryNameKey");
inline constexpr std::string_view kAVMMetalFeatureSetKey = detail::avmValue("kAVMMetalFeatureSetKey");
inline constexpr std::string_view kAVMNativeVideoDimensionsValue = detail::avmValue("kAVMNativeVideoDimensionsValue");
inline constexpr std::string_view kAVMNumericFrameRateKey = detail::avmValue("kAVMNumericFrameRateKey");
inline constexpr std::string_view kAVMNumericPlaybackFrameRateKey = detail::avmValue("kAVMNumericPlaybackFrameRateKey");
inline constexpr std::string_view kAVMNumericRecordedFrameRateKey = detail::avmValue("kAVMNumericRecordedFrameRateKey");
inline constexpr std::string_view kAVMOmitAudioKey = detail::avmValue("kAVMOmitAudioKey");
inline constexpr std::string_view kAVMOmitLPCMAudioBitDepthsKey = detail::avmValue("kAVMOmitLPCMAudioBitDepthsKey");
inline constexpr std::string_view kAVMOmitVideoKey = detail::avmValue("kAVMOmitVideoKey");
inline constexpr std::string_view kAVMOrdered16BitInputFormatList = detail::avmValue("kAVMOrdered16BitInputFormatList");
inline constexpr std::string_view kAVMOrdered8BitInputFormatList = detail::avmValue("kAVMOrdered8BitInputFormatList");
inline constexpr std::string_view kAVMOutPercentagePointKey = detail::avmValue("kAVMOutPercentagePointKey");
inline constexpr std::string_view kAVMOutputEssenceKey = detail::avmValue("kAVMOutputEssenceKey");
inline constexpr std::string_view kAVMPassThroughKey = detail::avmValue("kAVMPassThroughKey");
inline constexpr std::string_view kAVMPlaybackDimensionsKey = detail::avmValue("kAVMPlaybackDimensionsKey");
inline constexpr std::string_view kAVMPlaybackFilePathKey = detail::avmValue("kAVMPlaybackFilePathKey");
inline constexpr std::string_view kAVMPlaybackSizingKey = detail::avmValue("kAVMPlaybackSizingKey");
inline constexpr std::string_view kAVMPlaybackTimeRangeKey = detail::avmValue("kAVMPlaybackTimeRangeKey");
inline constexpr std::string_view kAVMPlaybackTimeRangeOrderedDictionariesKey =
    detail::avmValue("kAVMPlaybackTimeRangeOrderedDictionariesKey");
inline constexpr std::string_view kAVMPreferRGBFormat = detail::avmValue("kAVMPreferRGBFormat");
inline constexpr std::string_view kAVMPreferYUVFormat = detail::avmValue("kAVMPreferYUVFormat");
inline constexpr std::string_view kAVMPreferredExtensionKey = detail::avmValue("kAVMPreferredExtensionKey");
inline constexpr std::string_view kAVMPrepareForInternetStreaming = detail::avmValue("kAVMPrepareForInternetStreaming");
inline constexpr std::string_view kAVMRestrictedVideoBitRateKey = detail::avmValue("kAVMRestrictedVideoBitRateKey");
inline constexpr std::string_view kAVMSampleMediaBufferKey = detail::avmValue("kAVMSampleMediaBufferKey");
inline constexpr std::string_view kAVMScaleFactorKey = detail::avmValue("kAVMScaleFactorKey");
inline constexpr std::string_view kAVMShareOfProcessingResources = detail::avmValue("kAVMShareOfProcessingResources");
inline constexpr std::string_view kAVMShouldMixDownAudio = detail::avmValue("kAVMShouldMixDownAudio");
inline constexpr std::string_view kAVMTempDirectory = detail::avmValue("kAVMTempDirectory");
inline constexpr std::string_view kAVMTimeDisplayTypeKey = detail::avmValue("kAVMTimeDisplayTypeKey");
inline constexpr std::string_view kAVMTimecodeEncodedStartTime = detail::avmValue("kAVMTimecodeEncodedStartTime");
inline constexpr std::string_view kAVMTimecodeFrameRateKey = detail::avmValue("kAVMTimecodeFrameRateKey");
inline constexpr std::string_view kAVMTotalNumberOfSecondsToBufferKey =
    detail::avmValue("kAVMTotalNumberOfSecondsToBufferKey");
inline constexpr std::string_view kAVMUseGPUAccelerationKey = detail::avmValue("kAVMUseGPUAccelerationKey");
inline constexpr std::string_view kAVMVideoFormatKey = detail::avmValue("kAVMVideoFormatKey");
inline constexpr std::string_view kAVMVideoQualityLevel = detail::avmValue("kAVMVideoQualityLevel");

/// The range of `kAVMVideoQualityLevel`: from the smallest file to the best image.
inline constexpr double kAVMVideoQualityLevelMax = 1.0;
/// Spelled so.
inline constexpr double kAVMVideoQualityLvelMin = 0.0;

}  // namespace meridian::inline v0_2
