/// \file
/// Names of makers, containers, recording formats, camera series and video codecs, spelled as the suite shows them. For
/// example:
///
///     SLVMediaFileContainerQuickTimeMovie  // "QuickTime"
#pragma once

#include <string_view>

namespace meridian::inline v0_2 {

// Makers of cameras and software.
inline constexpr std::string_view SLVMediaCorporationAdobe = "Adobe";
inline constexpr std::string_view SLVMediaCorporationApple = "Apple";
inline constexpr std::string_view SLVMediaCorporationArri = "Arri";
inline constexpr std::string_view SLVMediaCorporationAvid = "Avid";
inline constexpr std::string_view SLVMediaCorporationBlackMagic = "Blackmagic";
inline constexpr std::string_view SLVMediaCorporationCanon = "Canon";
inline constexpr std::string_view SLVMediaCorporationCodex = "Codex";
inline constexpr std::string_view SLVMediaCorporationConvergentDesign = "Convergent Design";
inline constexpr std::string_view SLVMediaCorporationDJI = "DJI";
inline constexpr std::string_view SLVMediaCorporationGoPro = "GoPro";
inline constexpr std::string_view SLVMediaCorporationInsta360 = "Insta360";
inline constexpr std::string_view SLVMediaCorporationJVC = "JVC";
inline constexpr std::string_view SLVMediaCorporationNikon = "Nikon";
inline constexpr std::string_view SLVMediaCorporationPanasonic = "Panasonic";
inline constexpr std::string_view SLVMediaCorporationPhantom = "Phantom";
inline constexpr std::string_view SLVMediaCorporationRED = "RED";
inline constexpr std::string_view SLVMediaCorporationSony = "Sony";

// Media containers.
inline constexpr std::string_view SLVMediaFileContainerQuickTimeMovie = "QuickTime";
inline constexpr std::string_view SLVMediaFileContainerMXF = "MXF";
inline constexpr std::string_view SLVMediaFileContainerMP4 = "MP4";
inline constexpr std::string_view SLVMediaFileContainerAVI = "AVI";
inline constexpr std::string_view SLVMediaFileContainerR3D = "R3D";
inline constexpr std::string_view SLVMediaFileContainerBRAW = "BRAW";
inline constexpr std::string_view SLVMediaFileContainerDPX = "DPX";
inline constexpr std::string_view SLVMediaFileContainerHDE = "HDE";
inline constexpr std::string_view SLVMediaFileContainerCINE = "CINE";
inline constexpr std::string_view SLVMediaFileContainerImageSequence = "Image Sequence";

// Recording formats of camera cards.
inline constexpr std::string_view SLVMediaRecordingFormatAVCHD = "AVCHD";
inline constexpr std::string_view SLVMediaRecordingFormatCinemaDNG = "CinemaDNG";
inline constexpr std::string_view SLVMediaRecordingFormatP2 = "P2";
inline constexpr std::string_view SLVMediaRecordingFormatRawVolume = "Raw Volume";
inline constexpr std::string_view SLVMediaRecordingFormatXDCAM = "XDCAM";

// Camera series.
inline constexpr std::string_view SLVCameraSeriesArriAlexa = "Arri Alexa";
inline constexpr std::string_view SLVCameraSeriesArriAmira = "Arri Amira";
inline constexpr std::string_view SLVCameraSeriesBlackmagicUrsa = "Blackmagic URSA";
inline constexpr std::string_view SLVCameraSeriesCanonEOS = "Canon EOS";
inline constexpr std::string_view SLVCameraSeriesGoProHero = "GoPro Hero";
inline constexpr std::string_view SLVCameraSeriesPanasonicAVCCAM = "Panasonic AVCCAM";
inline constexpr std::string_view SLVCameraSeriesPanasonicP2 = "Panasonic P2";
inline constexpr std::string_view SLVCameraSeriesPanasonicVariCam = "Panasonic VariCam";
inline constexpr std::string_view SLVCameraSeriesRedDSMC2 = "RED DSMC2";
inline constexpr std::string_view SLVCameraSeriesSonyNXCAM = "Sony NXCAM";
inline constexpr std::string_view SLVCameraSeriesSonyXAVC = "Sony XAVC";
inline constexpr std::string_view SLVCameraSeriesSonyXDCAM = "Sony XDCAM";

// Video codecs.
inline constexpr std::string_view SLVVideoCodecArriRaw = "Arri RAW";
inline constexpr std::string_view SLVVideoCodecAvidDNxHD = "Avid DNxHD";
inline constexpr std::string_view SLVVideoCodecAvidDNxHR = "Avid DNxHR";
inline constexpr std::string_view SLVVideoCodecBlackmagicRaw = "Blackmagic RAW";
inline constexpr std::string_view SLVVideoCodecCanonRaw = "Canon RAW";
inline constexpr std::string_view SLVVideoCodecCineform = "Cineform";
inline constexpr std::string_view SLVVideoCodecH264 = "H.264";
inline constexpr std::string_view SLVVideoCodecH265 = "H.265";
inline constexpr std::string_view SLVVideoCodecJPEG = "JPEG";
inline constexpr std::string_view SLVVideoCodecMpeg2 = "MP2";
inline constexpr std::string_view SLVVideoCodecMpeg4 = "MP4";
inline constexpr std::string_view SLVVideoCodecProRes422 = "ProRes 422";
inline constexpr std::string_view SLVVideoCodecProRes4444 = "ProRes 4444";
inline constexpr std::string_view SLVVideoCodecProResRaw = "ProRes RAW";
inline constexpr std::string_view SLVVideoCodecRedcodeRaw = "REDCODE RAW";

}  // namespace meridian::inline v0_2
