#include "tools/meridian/media_words.h"

namespace meridian::command {

std::string writtenName(std::string_view name) {
  if (name == "mpegts") return "MPEG-TS";
  if (name == "mpeg") return "MPEG-PS";
  if (name == "matroska") return "Matroska";
  if (name == "asf") return "Windows Media";
  constexpr std::string_view image = "_pipe";
  if (name.ends_with(image)) name.remove_suffix(image.size());
  std::string text;
  for (const char each : name) {
    const bool isSmall = each >= 'a' && each <= 'z';
    const char capital = isSmall ? static_cast<char>(each - 'a' + 'A') : each;
    text += each == '_' ? ' ' : capital;
  }
  return text;
}

std::string containerText(const MediaDescription& media) {
  if (media.container) return std::string(*media.container);
  return writtenName(std::string_view(media.formatName).substr(0, media.formatName.find(',')));
}

std::string codecText(const VideoStreamDescription& video) {
  const std::string text = video.codec ? std::string(*video.codec) : writtenName(video.codecName);
  return video.profile.empty() ? text : text + " " + video.profile;
}

}  // namespace meridian::command
