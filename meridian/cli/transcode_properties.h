/// \file
/// Reads and sets the properties of a transcode by name, as text, for commands, scripts and other languages.
///
///     TranscodeCliArguments arguments({"-preset", "solvane_cloud"});
///     const auto property = transcodePropertyNamed("videoFrameRate");
///     if (!property) return property.error().message();
///     const auto done = setPropertyText(arguments, **property, "25");
///     if (!done) return done.error().message();
///     propertyText(arguments, **property);  // "25.0"
///
/// The list of the properties and all that is known about each is in transcode_property_list.h.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/cli/advised.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_property_list.h"
#include "meridian/export.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/size.h"
#include "meridian/media/timecode_components.h"

namespace meridian::inline v0_2 {

/// The value of a property of any kind. Paths and the kinds that accept one of a list of texts are texts. A list of
/// texts is the value of `files`, a list of integers that of `trackNumbers`.
using PropertyValue = std::variant<bool, std::int64_t, float, Size, TimecodeComponents, RgbColor, std::string,
                                   std::vector<std::string>, std::vector<std::int64_t>>;

/// Why a property cannot be set.
enum class PropertyErrorCode : std::uint8_t {
  unknownProperty,
  invalidValue,
  wrongType,
  beginsWithDash,
  containsNul,
};

template <>
struct EnumerationTable<PropertyErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<PropertyErrorCode>>({
      {PropertyErrorCode::unknownProperty, "unknownProperty", "is not a property", "check the spelling"},
      {PropertyErrorCode::invalidValue, "invalidValue", "cannot be set"},
      {PropertyErrorCode::wrongType, "wrongType", "has a value of another type",
       "pass the type that propertyValue returns"},
      {PropertyErrorCode::beginsWithDash, "beginsWithDash", "cannot begin with \"-\", which marks a flag"},
      {PropertyErrorCode::containsNul, "containsNul", "contains a NUL byte, which no argument can carry",
       "remove the NUL byte"},
  });
};

/// Says why a property cannot be set. The place is the property's name; the remedy names what is expected.
using PropertyError = Advised<Error<PropertyErrorCode>>;

/// Returns the property of exactly this name, never null; an error that suggests the nearest name, or for a flag its
/// property, if there is none.
[[nodiscard]] MERIDIAN_API Expected<const TranscodeProperty*, PropertyError> transcodePropertyNamed(
    std::string_view name);

/// Returns the properties that a flag stores. For a flag without a property of its own, such as "-acopy" or the prefix
/// "-in", returns the joint property that it is a part of. Empty for a flag that is part of none.
[[nodiscard]] MERIDIAN_API std::vector<const TranscodeProperty*> propertiesOfFlag(std::string_view flag);

/// Returns what the flag does, as one line: its own meaning, or that of its first property.
[[nodiscard]] MERIDIAN_API std::string_view meaningOfFlag(const FlagDescription& flag);

/// Returns the property's value as text: the text that its flag stores, "true" or "false" for a switch, and for a joint
/// property the form of its kind. Absent when the property is not set or its text is not valid. The text can be passed
/// to `setPropertyText`, except for an empty text, a number or size that is not finite, and a path with a newline.
[[nodiscard]] MERIDIAN_API std::optional<std::string> propertyText(const TranscodeCliArguments& arguments,
                                                                   const TranscodeProperty& property);

/// Returns the property's typed value; absent when the property is not set or its text is not valid. A switch always
/// has a value.
[[nodiscard]] MERIDIAN_API std::optional<PropertyValue> propertyValue(const TranscodeCliArguments& arguments,
                                                                      const TranscodeProperty& property);

/// Sets the property to a person's input. Input is parsed more leniently than the text of a flag: surrounding blanks
/// and, where the property accepts one of a list of texts, letter case are ignored, and a switch accepts "true",
/// "false", "on", "off", "yes" and "no". The empty input removes the property.
///
/// Input files are separated by newlines; a newline at the end and CRLF are accepted. Track numbers are stored in
/// ascending order, each once. Sizes keep six decimals.
///
/// Fails, and changes nothing, for input that is not valid, for a number or size that is not finite, and for a value
/// that no command line can carry because it begins with "-" or contains a NUL byte.
MERIDIAN_API Expected<void, PropertyError> setPropertyText(TranscodeCliArguments& arguments,
                                                           const TranscodeProperty& property, std::string_view input);

/// Sets the property to a typed value, of the type that `propertyValue` returns for it. Fails as `setPropertyText`
/// does.
MERIDIAN_API Expected<void, PropertyError> setPropertyValue(TranscodeCliArguments& arguments,
                                                            const TranscodeProperty& property,
                                                            const PropertyValue& value);

/// Removes the property, so that its default applies.
MERIDIAN_API void removeProperty(TranscodeCliArguments& arguments, const TranscodeProperty& property);

/// Parses the text of a flag as the value of this property, which must not be joint. Absent if the text is not valid.
[[nodiscard]] MERIDIAN_API std::optional<PropertyValue> valueOfText(const TranscodeProperty& property,
                                                                    std::string_view text);

/// Returns whether the text of a flag is "copy" and means "as the source": after "-vcodec", "-vr", "-dims", "-vbr",
/// "-vbd", "-c_space", "-acodec", "-asr", "-abpc", "-acl" and "-abr". Such a text is not valid for the property, which
/// is absent.
[[nodiscard]] MERIDIAN_API bool isCopyOfSource(std::string_view flag, std::string_view text) noexcept;

/// Returns the texts of which a property accepts one, in their order; empty for a property of another kind.
[[nodiscard]] MERIDIAN_API std::vector<std::string_view> allowedTexts(const TranscodeProperty& property);

/// Returns the texts of which a flag accepts one as its value: those of its property, or the presets of "-preset".
/// Empty for a flag that accepts other values or none.
[[nodiscard]] MERIDIAN_API std::vector<std::string_view> allowedTextsOfFlag(std::string_view flag);

/// Returns what a property accepts, for messages: "a size, such as 1920x1080", "an audio format: lpcm, aac,
/// apple_lossless".
[[nodiscard]] MERIDIAN_API std::string expectedForm(const TranscodeProperty& property);

}  // namespace meridian::inline v0_2
