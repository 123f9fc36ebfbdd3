#include "meridian/cli/transcode_properties.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "meridian/base/text.h"
#include "meridian/cli/property_access.h"

namespace meridian::inline v0_2 {
namespace {

template <typename Access>
concept HasCases = requires { Access::cases(); };

bool isFinite(float number) { return std::isfinite(number); }
bool isFinite(const Size& size) { return std::isfinite(size.width) && std::isfinite(size.height); }
bool isFinite(const auto& /*value*/) { return true; }

/// Calls the function with the access of the kind; an `onOff` property is treated as a text.
template <typename Function>
auto withAccess(PropertyKind kind, Function&& function) {
  switch (kind) {
    case PropertyKind::onOff:
    case PropertyKind::text:
      break;
    case PropertyKind::file:
      return function(PropertyAccess<PropertyKind::file>());
    case PropertyKind::number:
      return function(PropertyAccess<PropertyKind::number>());
    case PropertyKind::integer:
      return function(PropertyAccess<PropertyKind::integer>());
    case PropertyKind::dimensions:
      return function(PropertyAccess<PropertyKind::dimensions>());
    case PropertyKind::timecode:
      return function(PropertyAccess<PropertyKind::timecode>());
    case PropertyKind::color:
      return function(PropertyAccess<PropertyKind::color>());
    case PropertyKind::fileFormat:
      return function(PropertyAccess<PropertyKind::fileFormat>());
    case PropertyKind::videoCodec:
      return function(PropertyAccess<PropertyKind::videoCodec>());
    case PropertyKind::aspectRatio:
      return function(PropertyAccess<PropertyKind::aspectRatio>());
    case PropertyKind::cropAnchor:
      return function(PropertyAccess<PropertyKind::cropAnchor>());
    case PropertyKind::overlayAnchor:
      return function(PropertyAccess<PropertyKind::overlayAnchor>());
    case PropertyKind::colorSpace:
      return function(PropertyAccess<PropertyKind::colorSpace>());
    case PropertyKind::audioFormat:
      return function(PropertyAccess<PropertyKind::audioFormat>());
    case PropertyKind::audioQuality:
      return function(PropertyAccess<PropertyKind::audioQuality>());
    case PropertyKind::channelLayout:
      return function(PropertyAccess<PropertyKind::channelLayout>());
  }
  return function(PropertyAccess<PropertyKind::text>());
}

}  // namespace

std::optional<PropertyValue> valueOfText(const TranscodeProperty& property, std::string_view text) {
  if (property.kind == PropertyKind::onOff) return true;
  return withAccess(property.kind, [text](auto access) -> std::optional<PropertyValue> {
    auto value = access.read(text);
    if (!value) return std::nullopt;
    if constexpr (std::is_constructible_v<PropertyValue, decltype(*value)> &&
                  !std::is_same_v<decltype(value), std::optional<std::string_view>>) {
      return PropertyValue(*std::move(value));
    } else {
      return std::string(access.write(*value));
    }
  });
}

std::vector<std::string_view> allowedTexts(const TranscodeProperty& property) {
  return withAccess(property.kind, [](auto access) {
    std::vector<std::string_view> texts;
    if constexpr (HasCases<decltype(access)>) {
      for (const auto& each : access.cases()) texts.push_back(access.write(each));
    }
    return texts;
  });
}

std::optional<PropertyInput> readInput(const TranscodeProperty& property, std::string_view input) {
  if (input.empty()) return PropertyInput{};
  if (property.kind != PropertyKind::text && property.kind != PropertyKind::file) input = trimmed(input);
  if (property.kind == PropertyKind::onOff) {
    for (const std::string_view yes : {"true", "on", "yes"}) {
      if (equalsIgnoringCase(input, yes)) return PropertyInput{""};
    }
    for (const std::string_view no : {"false", "off", "no"}) {
      if (equalsIgnoringCase(input, no)) return PropertyInput{};
    }
    return std::nullopt;
  }
  for (const std::string_view text : allowedTexts(property)) {
    if (equalsIgnoringCase(input, text)) return PropertyInput{std::string(text)};
  }
  return withAccess(property.kind, [input](auto access) -> std::optional<PropertyInput> {
    const auto value = access.read(input);
    if (!value || !isFinite(*value)) return std::nullopt;
    return PropertyInput{std::string(access.write(*value))};
  });
}

std::string expectedForm(const TranscodeProperty& property) {
  if (property.kind == PropertyKind::onOff) return "true or false";
  const PropertyKindRow& kind = tableRow(property.kind);
  std::string form(kind.description);
  if (!kind.example.empty()) return form + ", such as " + std::string(kind.example);
  std::string_view separator = ": ";
  for (const std::string_view text : allowedTexts(property)) {
    form += std::string(separator) + std::string(text);
    separator = ", ";
  }
  return form;
}

std::string expectedFormOfFlag(std::string_view flag) {
  std::string forms;
  for (const TranscodeProperty& property : transcodeProperties) {
    if (property.flag == flag) forms += (forms.empty() ? "" : ", or ") + expectedForm(property);
  }
  return forms;
}

}  // namespace meridian::inline v0_2
