// Timecode texts and encoded media values of any bytes: reading against a plain reference, and round trips.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "meridian/base/numbers.h"
#include "meridian/media/frame_number.h"
#include "meridian/media/frame_rate.h"
#include "meridian/serialization/media_json.h"

using namespace meridian;
using fuzz::require;

namespace {

/// Splits the text at each separator and reads every field by itself.
DecomposedTimecode plainlyDecomposed(std::string_view text) {
  std::vector<std::string_view> fields;
  while (true) {
    const std::size_t end = text.find_first_of(":;");
    fields.push_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  const auto read = [&fields](std::size_t place) -> std::optional<std::int64_t> {
    if (place >= fields.size() || fields[place].find_first_not_of("0123456789") != std::string_view::npos) return {};
    return integerFromText(fields[place]);
  };
  DecomposedTimecode result{read(0), read(1), read(2), read(3)};
  if (fields.size() > 4) result.frames.reset();
  return result;
}

void checkTimecode(std::string_view text) {
  DecomposedTimecode expected = plainlyDecomposed(text);
  expected.isDropFrame = text.find(';') != std::string_view::npos;
  require(TimecodeComponents::decomposeTimecodeString(text) == expected, "the reading agrees with the reference");
  const TimecodeComponents sanitized = TimecodeComponents::sanitizedTimecode(text);
  require(TimecodeComponents::sanitizedTimecode(sanitized.timecodeString()) == sanitized,
          "a written timecode reads back");
  if (const auto strict = TimecodeComponents::fromTimecode(text)) {
    require(*strict == sanitized && TimecodeComponents::fromTimecode(strict->timecodeString()) == strict,
            "a proper timecode stays proper");
  }
  require(nlohmann::json(sanitized).get<TimecodeComponents>() == sanitized, "an encoded timecode is decoded again");
  for (const VideoFrameRate& rate : standardVideoFrameRates) {
    const auto frame = frameNumber(sanitized, rate);
    if (frame) require(timecodeOfFrame(*frame, rate, sanitized.isDropFrame) == sanitized, "the frame has this label");
  }
}

void checkRate(const VideoFrameRate& rate) {
  if (const auto matched = VideoFrameRate::matching(rate.rawValue())) {
    require(!matched->formattedString().empty(), "every rate has a text");
    require(VideoFrameRate::matching(matched->rawValue()) == matched, "a matched rate matches itself");
  }
  for (const std::int64_t frame : {std::int64_t{0}, std::int64_t{12345}, INT64_MAX}) {
    const auto label = timecodeOfFrame(frame, rate, false);
    require(label.has_value() == timecodeFramesPerSecond(rate).has_value(), "every frame has a label");
    if (label) require(frameNumber(*label, rate) == frame, "the label leads back to the frame");
  }
}

template <typename Value>
void checkDecoding(const nlohmann::json& json) {
  try {
    const auto value = json.get<Value>();
    if constexpr (std::is_same_v<Value, VideoFrameRate>) checkRate(value);
    // Encoding as a number loses up to a millionth, and 0 is not decoded again.
    const nlohmann::json again = value;
    if constexpr (std::is_same_v<Value, MediaRational>) {
      if (value.numerator != 0) {
        const auto lost = value.rawValue() - again.get<Value>().rawValue();
        require(std::abs(lost) <= 1e-6 * (1 + std::abs(value.rawValue() * 1e-9)),
                "a ratio survives but for a millionth");
      }
    } else if constexpr (!std::is_same_v<Value, VideoFrameRate>) {
      require(nlohmann::json(again.template get<Value>()) == again, "a decoded value is encoded alike");
    } else if (value.kind() != VideoFrameRateKind::custom) {
      require(again.template get<Value>() == value, "a standard rate comes back");
    }
  } catch (const DecodingError& error) {
    require(!error.message().empty(), "an error says why");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  checkTimecode(text);
  std::array<std::int64_t, 2> terms{};
  std::memcpy(terms.data(), text.data(), std::min(size, sizeof terms));
  checkRate(VideoFrameRate::custom({terms[0], terms[1]}));

  const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
  if (json.is_discarded()) return 0;
  checkDecoding<VideoFrameRate>(json);
  checkDecoding<MediaRational>(json);
  checkDecoding<NumericRational>(json);
  checkDecoding<TimecodeComponents>(json);
  return 0;
}
