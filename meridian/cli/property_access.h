/// \file
/// How a property of each kind is read from a flag's text and written to it, each kind once. A property is addressed by
/// its name at compile time:
///
///     setProperty<"videoFrameRate">(lookup, 25.0F);  // stores "-vr" with "25.0"
///     getProperty<"videoFrameRate">(lookup);         // 25.0F
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/base/numbers.h"
#include "meridian/base/precondition.h"
#include "meridian/base/text_dictionary.h"
#include "meridian/cli/dimensions_text.h"
#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_property_list.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/size.h"
#include "meridian/media/timecode_components.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Specialised for each kind that one flag stores, but `onOff`: `Value`, `read(text)`, and `write(value)`, whose result
/// is or becomes a text.
template <PropertyKind kind>
struct PropertyAccess;

template <>
struct PropertyAccess<PropertyKind::text> {
  using Value = std::string_view;
  static std::optional<Value> read(std::string_view text) noexcept { return text; }
  static std::string_view write(Value value) noexcept { return value; }
};

template <>
struct PropertyAccess<PropertyKind::path> : PropertyAccess<PropertyKind::text> {};

template <>
struct PropertyAccess<PropertyKind::file> {
  using Value = Url;
  static std::optional<Value> read(std::string_view text) { return Url::fromFilePath(std::string(text)); }
  static std::string_view write(const Value& value) noexcept { return value.path(); }
};

template <>
struct PropertyAccess<PropertyKind::number> {
  using Value = float;
  static std::optional<Value> read(std::string_view text) noexcept { return floatFromText(text); }
  static std::string write(Value value) { return shortestDecimalText(value); }
};

template <>
struct PropertyAccess<PropertyKind::frameRate> : PropertyAccess<PropertyKind::number> {};

template <>
struct PropertyAccess<PropertyKind::integer> {
  using Value = std::int64_t;
  static std::optional<Value> read(std::string_view text) noexcept { return integerFromText(text); }
  static std::string write(Value value) { return std::to_string(value); }
};

template <>
struct PropertyAccess<PropertyKind::dimensions> {
  using Value = Size;
  static std::optional<Value> read(std::string_view text) noexcept { return sizeFromDimensionsText(text); }
  static std::string write(const Value& value) { return dimensionsTextOfSize(value); }
};

template <>
struct PropertyAccess<PropertyKind::timecode> {
  using Value = TimecodeComponents;
  static std::optional<Value> read(std::string_view text) noexcept { return TimecodeComponents::fromTimecode(text); }
  static std::string write(const Value& value) { return value.timecodeString(); }
};

template <>
struct PropertyAccess<PropertyKind::color> {
  using Value = RgbColor;
  static std::optional<Value> read(std::string_view text) noexcept { return RgbColor::fromText(text); }
  static std::string write(const Value& value) { return value.text(); }
};

/// One of the cases of a value type, by its exact text.
template <typename ValueType>
struct EnumeratedTextAccess {
  using Value = ValueType;
  static std::optional<Value> read(std::string_view text) noexcept { return Value::fromRawValue(text); }
  static std::string_view write(Value value) noexcept { return value.rawValue(); }
  static auto cases() noexcept { return Value::allCases(); }
};

/// One of an enumeration's cases, by its exact raw value.
template <TabledEnumeration Enumeration>
struct EnumeratedTextAccess<Enumeration> {
  using Value = Enumeration;
  static std::optional<Value> read(std::string_view text) noexcept { return fromRawValue<Value>(text); }
  static std::string_view write(Value value) noexcept { return rawValue(value); }
  static const auto& cases() noexcept { return allCases<Value>(); }
};

template <>
struct PropertyAccess<PropertyKind::fileFormat> : EnumeratedTextAccess<SAVTranscodeArgumentFileFormatValue> {};
template <>
struct PropertyAccess<PropertyKind::videoCodec> : EnumeratedTextAccess<SAVTranscodeArgumentVideoCodecValue> {};
template <>
struct PropertyAccess<PropertyKind::aspectRatio> : EnumeratedTextAccess<SAVTranscodeArgumentAspectRatioValue> {};
template <>
struct PropertyAccess<PropertyKind::cropAnchor> : EnumeratedTextAccess<VideoCropAnchor> {};
template <>
struct PropertyAccess<PropertyKind::overlayAnchor> : EnumeratedTextAccess<SAVTranscodeArgumentOverlayAnchorValue> {};
template <>
struct PropertyAccess<PropertyKind::colorSpace> : EnumeratedTextAccess<SAVTranscodeArgumentColorSpaceValue> {};
template <>
struct PropertyAccess<PropertyKind::audioFormat> : EnumeratedTextAccess<SAVTranscodeArgumentAudioFormatValue> {};
template <>
struct PropertyAccess<PropertyKind::audioQuality> : EnumeratedTextAccess<TranscodeAudioQuality> {};
template <>
struct PropertyAccess<PropertyKind::channelLayout> : EnumeratedTextAccess<SAVTranscodeArgumentAudioChannelLayoutValue> {
};
template <>
struct PropertyAccess<PropertyKind::timecodeSource> : EnumeratedTextAccess<TimecodeSource> {};

/// A property's name as a template argument.
template <std::size_t size>
struct PropertyName {
  // NOLINTNEXTLINE(google-explicit-constructor,modernize-avoid-c-arrays): a name is written as the text that it is.
  consteval PropertyName(const char (&name)[size]) { std::copy_n(name, size, text.begin()); }
  std::array<char, size> text{};
};

/// The property of this name, which must be stored by a flag of its own.
template <PropertyName name>
inline constexpr TranscodeProperty propertyNamed = [] {
  // By its place: GCC 12 does not compare addresses in constant expressions under the undefined-behaviour sanitizer.
  const auto place = detail::transcodePropertyIndex.find(name.text.data());
  if (!place || transcodeProperties[*place].isJoint()) {
    preconditionFailed("propertyNamed: no flag stores a property of this name");
  }
  return transcodeProperties[*place];
}();

template <PropertyName name>
using AccessOf = PropertyAccess<propertyNamed<name>.kind>;

/// Returns the property: true or false, or a value that is absent when the flag is not stored or its text is not valid.
template <PropertyName name>
auto getProperty(const TextDictionary& store) {
  constexpr TranscodeProperty property = propertyNamed<name>;
  const std::string* const text = store.find(property.flag);
  if constexpr (property.kind == PropertyKind::onOff) {
    return text != nullptr;
  } else {
    return text == nullptr ? std::optional<typename AccessOf<name>::Value>() : AccessOf<name>::read(*text);
  }
}

/// Stores the property; false or absent removes its flag.
template <PropertyName name>
  requires(propertyNamed<name>.kind == PropertyKind::onOff)
void setProperty(TextDictionary& store, bool isOn) {
  if (isOn) {
    store.set(propertyNamed<name>.flag, "");
  } else {
    store.erase(propertyNamed<name>.flag);
  }
}

template <PropertyName name>
  requires(propertyNamed<name>.kind != PropertyKind::onOff)
void setProperty(TextDictionary& store, const std::optional<typename AccessOf<name>::Value>& value) {
  if (value) {
    store.set(propertyNamed<name>.flag, AccessOf<name>::write(*value));
  } else {
    store.erase(propertyNamed<name>.flag);
  }
}

}  // namespace meridian::inline v0_2
