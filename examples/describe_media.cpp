// Prints what is in media files: describe_media FILE...
#include <meridian/engine/describe_media.h>

#include <iostream>

using namespace meridian;

int main(int argc, char** argv) {
  for (int place = 1; place < argc; ++place) {
    const auto clip = describeMedia(Url::fromFilePath(argv[place]));
    if (!clip) {
      std::cout << clip.error().message() << '\n';
      continue;
    }
    std::cout << argv[place] << ": " << clip->container.value_or(clip->formatName);
    if (const VideoStreamDescription* const video = clip->mainVideo()) {
      std::cout << ", " << video->codec.value_or(video->codecName) << ' ' << video->displayWidth << " x "
                << video->displayHeight;
      if (video->frameRate) std::cout << ", " << video->frameRate->formattedString();
    }
    if (clip->timecode) std::cout << ", " << clip->timecode->start.timecodeString();
    std::cout << ", " << clip->audio.size() << " audio tracks\n";
    for (const MediaWarning& warning : clip->warnings) std::cout << "warning: " << warning.message() << '\n';
  }
}
