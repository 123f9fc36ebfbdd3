#include "meridian/c/media.h"

#include "meridian/c/handles.h"
#include "meridian/c/media_values.h"
#include "meridian/media/frame_number.h"
#include "meridian/media/media_format_constants.h"

namespace m = meridian;
using m::c::created;
using m::c::done;
using m::c::failed;
using m::c::fromC;
using m::c::textOf;
using m::c::toC;
using m::c::viewOf;

namespace {

/// Gets a value that may be absent.
bool get(const std::optional<std::int64_t>& found, int64_t* value) noexcept {
  if (found) *value = *found;
  return found.has_value();
}

/// Enumerates texts by a function of the table of containers, which allocates when it is used first; passes nothing
/// if there is no memory for it.
template <typename Enumerate>
void pass(MeridianTextVisitor visit, void* context, Enumerate&& enumerate) noexcept {
  std::ignore = done(nullptr, [&] {
    enumerate([&](std::string_view text, bool& stop) { visit(textOf(text), &stop, context); });
    return true;
  });
}

}  // namespace

void meridian_enumerate_container_extensions(const char* container, MeridianTextVisitor visit, void* context) noexcept {
  pass(visit, context, [&](const auto& block) {
    m::MediaFormatConstants::enumerateValidFileExtensionsForMediaContainer(viewOf(container), block);
  });
}

void meridian_enumerate_containers_of_extension(const char* extension, MeridianTextVisitor visit,
                                                void* context) noexcept {
  pass(visit, context, [&](const auto& block) {
    m::MediaFormatConstants::enumerateContainersForFileExtension(viewOf(extension), block);
  });
}

void meridian_enumerate_makers(MeridianTextVisitor visit, void* context) noexcept {
  pass(visit, context,
       [](const auto& block) { m::MediaFormatConstants::alphabeticalEnumerationOfCorporations(block); });
}

size_t meridian_standard_frame_rate_count() noexcept { return m::standardVideoFrameRates.size(); }

MeridianFrameRate meridian_standard_frame_rate_at(size_t index) noexcept {
  return toC(m::standardVideoFrameRates[index]);
}

MeridianText meridian_frame_rate_name(MeridianFrameRate rate) noexcept { return textOf(rawValue(fromC(rate).kind())); }

bool meridian_frame_rate_matching(MeridianRational rational, MeridianFrameRate* rate) noexcept {
  const auto matched = m::VideoFrameRate::matching({rational.numerator, rational.denominator});
  if (matched) *rate = toC(*matched);
  return matched.has_value();
}

MeridianFrameRate meridian_frame_rate_custom(MeridianRational rational) noexcept {
  return {rational, MERIDIAN_CUSTOM_FRAME_RATE};
}

MeridianString* meridian_frame_rate_string_create(MeridianFrameRate rate, MeridianError** error) noexcept {
  return created(error, [&] { return new MeridianString{fromC(rate).formattedString()}; });
}

MeridianString* meridian_frame_rate_description_create(double frames_per_second, MeridianError** error) noexcept {
  return created(error, [&] { return new MeridianString{m::describeFrameRate(frames_per_second)}; });
}

bool meridian_timecode_parse(MeridianText text, MeridianTimecode* timecode) noexcept {
  const auto components = m::TimecodeComponents::fromTimecode(viewOf(text));
  if (components) *timecode = toC(*components);
  return components.has_value();
}

MeridianTimecode meridian_timecode_sanitized(MeridianText text) noexcept {
  return toC(m::TimecodeComponents::sanitizedTimecode(viewOf(text)));
}

MeridianString* meridian_timecode_string_create(MeridianTimecode timecode, MeridianError** error) noexcept {
  return created(error, [&] { return new MeridianString{fromC(timecode).timecodeString()}; });
}

bool meridian_timecode_frames_per_second(MeridianFrameRate rate, int64_t* frames) noexcept {
  return get(m::timecodeFramesPerSecond(fromC(rate)), frames);
}

bool meridian_timecode_dropped_labels_per_minute(MeridianFrameRate rate, int64_t* labels) noexcept {
  return get(m::droppedLabelsPerMinute(fromC(rate)), labels);
}

bool meridian_frame_number(MeridianTimecode timecode, MeridianFrameRate rate, int64_t* number,
                           MeridianError** error) noexcept {
  return done(error, [&] {
    const m::TimecodeComponents label = fromC(timecode);
    const auto found = m::frameNumber(label, fromC(rate));
    if (!found) return failed(error, m::TimecodeError{found.error(), label.timecodeString()});
    *number = *found;
    return true;
  });
}

bool meridian_timecode_of_frame(int64_t number, MeridianFrameRate rate, bool is_drop_frame, MeridianTimecode* timecode,
                                MeridianError** error) noexcept {
  return done(error, [&] {
    const auto found = m::timecodeOfFrame(number, fromC(rate), is_drop_frame);
    if (!found) return failed(error, m::TimecodeError{found.error(), std::to_string(number)});
    *timecode = toC(*found);
    return true;
  });
}
