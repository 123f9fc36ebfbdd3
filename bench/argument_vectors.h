// The argument vectors that several benchmarks read.
#pragma once

#include <array>
#include <string_view>

namespace meridian::bench {

/// A usual job, in 28 words: 13 flags with a value and 2 without.
inline constexpr auto words = std::to_array<std::string_view>({
    "-in_0_0",
    "/Volumes/A001/CLIPS/A001C001.mov",
    "-out",
    "/Volumes/Proxies/A001C001.mov",
    "-file_format",
    "qt",
    "-vcodec",
    "prores422proxy",
    "-vr",
    "23.976",
    "-dims",
    "1920x1080",
    "-aspect_scaling",
    "letterbox",
    "-vbr",
    "5000",
    "-clut",
    "/Looks/Rec709.cube",
    "-acodec",
    "lpcm",
    "-asr",
    "48000",
    "-acl",
    "stereo",
    "-progress_file",
    "/tmp/progress.txt",
    "-overwrite",
    "-web",
});
static_assert(words.size() == 28);

/// A property of each kind.
inline constexpr auto propertyWords =
    std::to_array<std::string_view>({"-vcodec", "prores422proxy", "-vr", "23.976", "-dims", "1920x1080", "-vbd", "10",
                                     "-gpu_decoding", "-clut", "/Looks/Rec709.cube", "-vprofile", "main", "-tc_custom",
                                     "01:00:00:00", "-tc_burn_font_rgb", "255,128,0", "-crop_anchor", "tl"});

}  // namespace meridian::bench
