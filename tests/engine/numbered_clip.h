/// \file
/// Clips whose images carry their number, so that one that is lost, doubled or out of place is found.
#pragma once

#include <string>
#include <vector>

namespace meridian::test {

/// How a clip of 256 x 144 pixels is made. Its images are numbered in 16 columns of the width, the lowest bit at the
/// left; its sound is a tone.
struct NumberedClip {
  int frames = 24;
  std::string rate = "25";
  int first = 0;
  /// As on ffmpeg's command line, separated by blanks.
  std::string options = "-c:v prores_ks -profile:v 0 -pix_fmt yuv422p10le -c:a pcm_s16le";
  /// A filter of the images, such as "setfield=tff"; may be empty.
  std::string filter = {};
  /// Seconds of the sound; that of the images if 0.
  double soundSeconds = 0;
};

/// Writes the clip; reports a failure to the test.
void makeClip(const std::string& path, const NumberedClip& clip);

/// Returns the numbers of all images as ffmpeg decodes them.
std::vector<int> numbersIn(const std::string& path);

/// Returns the numbers from `first` on.
std::vector<int> numbersFrom(int first, int count);

/// Returns one hash for each packet of a stream ("v:0", "a:0"), as ffmpeg reads them.
std::vector<std::string> packetHashes(const std::string& path, const std::string& stream);

/// Returns what ffprobe says of an entry of a stream ("codec_name") or of the format, without its newline.
std::string probed(const std::string& path, const std::string& stream, const std::string& entry);

/// Returns the samples of the first audio stream, mixed to one channel of 48 kHz.
std::vector<float> samplesIn(const std::string& path);

}  // namespace meridian::test
