#include "meridian/media/timecode_components.h"

#include <array>
#include <charconv>

namespace meridian::inline v0_2 {

std::string TimecodeComponents::timecodeString() const {
  // Four numbers of up to 20 characters, each after a "0", and three separators.
  std::array<char, 4 * 21 + 3> text{};
  char* end = text.data();
  const auto write = [&end](std::int64_t number, std::string_view separator) {
    if (number <= 9) *end++ = '0';
    end = std::to_chars(end, end + 20, number).ptr;
    for (const char c : separator) *end++ = c;
  };
  write(hours, nonDropSeparator);
  write(minutes, nonDropSeparator);
  write(seconds, isDropFrame ? dropFrameSeparator : nonDropSeparator);
  write(frames, "");
  return {text.data(), end};
}

}  // namespace meridian::inline v0_2
