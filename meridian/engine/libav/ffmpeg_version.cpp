#include "meridian/engine/libav/ffmpeg_version.h"

extern "C" {
#include <libavutil/avutil.h>
}

namespace meridian::inline v0_2::libav {

std::string ffmpegVersion() { return av_version_info(); }

}  // namespace meridian::inline v0_2::libav
