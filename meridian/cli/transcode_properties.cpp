#include "meridian/cli/transcode_properties.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <type_traits>
#include <utility>

#include "meridian/base/ascii.h"
#include "meridian/base/joined.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/nearest_text.h"
#include "meridian/cli/property_access.h"
#include "meridian/cli/transcode_preset.h"

namespace meridian::inline v0_2 {
namespace {

using Paths = std::vector<std::string>;
using TrackNumbers = std::vector<std::int64_t>;

template <typename Access>
concept HasCases = requires { Access::cases(); };

/// Whether a PropertyValue holds values of this access as texts.
template <typename Access>
constexpr bool isHeldAsText = HasCases<Access> || std::is_same_v<typename Access::Value, std::string_view> ||
                              std::is_same_v<typename Access::Value, Url>;

/// Calls the function with the access of the kind. Kinds that are not the text of one flag are treated as text.
template <typename Function>
auto withAccess(PropertyKind kind, Function&& function) {
  switch (kind) {
    case PropertyKind::onOff:
    case PropertyKind::text:
    case PropertyKind::path:
    case PropertyKind::files:
    case PropertyKind::trackNumbers:
      break;
    case PropertyKind::file:
      return function(PropertyAccess<PropertyKind::file>());
    case PropertyKind::number:
    case PropertyKind::frameRate:
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
    case PropertyKind::timecodeSource:
      return function(PropertyAccess<PropertyKind::timecodeSource>());
  }
  return function(PropertyAccess<PropertyKind::text>());
}

/// The rules of a property that concern more than the text of one flag: of a joint property, and of one that has to do
/// with others.
struct PropertyRules {
  std::string_view name;
  /// Null for a property that is the text of one flag.
  std::optional<PropertyValue> (*get)(const TranscodeCliArguments& arguments);
  /// Null removes the property.
  void (*set)(TranscodeCliArguments& arguments, const PropertyValue* value);
};

template <typename Type>
std::optional<Type> as(const PropertyValue* value) {
  return value != nullptr ? std::optional(std::get<Type>(*value)) : std::nullopt;
}

template <typename Enumerated>
std::optional<Enumerated> oneOf(const PropertyValue* value) {
  return value != nullptr ? EnumeratedTextAccess<Enumerated>::read(std::get<std::string>(*value)) : std::nullopt;
}

using Arguments = TranscodeCliArguments;
using Value = std::optional<PropertyValue>;

constexpr auto propertyRules = std::to_array<PropertyRules>({
    {"inputFiles", [](const Arguments& arguments) -> Value { return arguments.inputFiles(); },
     [](Arguments& arguments, const PropertyValue* value) { arguments.setInputFiles(as<Paths>(value)); }},
    {"includeVideo", [](const Arguments& arguments) -> Value { return arguments.includeVideo(); },
     [](Arguments& arguments, const PropertyValue* value) { arguments.setOmitVideo(!as<bool>(value).value_or(true)); }},
    {"includeAudio", [](const Arguments& arguments) -> Value { return arguments.includeAudio(); },
     [](Arguments& arguments, const PropertyValue* value) {
       arguments.setIncludeAudio(as<bool>(value).value_or(true));
     }},
    {"copyAudio", [](const Arguments& arguments) -> Value { return arguments.copyAudio(); },
     [](Arguments& arguments, const PropertyValue* value) { arguments.setCopyAudio(as<bool>(value).value_or(false)); }},
    {"ignoredAudioFileTracks",
     [](const Arguments& arguments) -> Value {
       TrackNumbers tracks;
       arguments.enumerateIgnoredAudioFileTracks([&tracks](std::int64_t track) { tracks.push_back(track); });
       return tracks.empty() ? Value() : Value(std::move(tracks));
     },
     [](Arguments& arguments, const PropertyValue* value) {
       arguments.setIgnoredAudioFileTracks(as<TrackNumbers>(value).value_or(TrackNumbers()));
     }},
    {"includeTimecode", [](const Arguments& arguments) -> Value { return arguments.includeTimecode(); },
     [](Arguments& arguments, const PropertyValue* value) {
       arguments.setIncludeTimecode(as<bool>(value).value_or(false));
     }},
    {"timecodeSource",
     [](const Arguments& arguments) -> Value {
       const auto source = arguments.timecodeSource();
       return source ? Value(std::string(rawValue(*source))) : Value();
     },
     [](Arguments& arguments, const PropertyValue* value) {
       arguments.setTimecodeSource(oneOf<TimecodeSource>(value));
     }},
    {"timecode", nullptr,
     [](Arguments& arguments, const PropertyValue* value) { arguments.setTimecode(as<TimecodeComponents>(value)); }},
});

constexpr const PropertyRules* rulesOf(const TranscodeProperty& property) noexcept {
  const auto found = std::ranges::find(propertyRules, property.name, &PropertyRules::name);
  return found == propertyRules.end() ? nullptr : &*found;
}

static_assert(std::ranges::all_of(propertyRules,
                                  [](const PropertyRules& rules) {
                                    return detail::transcodePropertyIndex.find(rules.name).has_value();
                                  }),
              "each rule is that of a property");
static_assert(std::ranges::all_of(transcodeProperties,
                                  [](const TranscodeProperty& property) {
                                    const PropertyRules* const rules = rulesOf(property);
                                    return property.isJoint() == (rules != nullptr && rules->get != nullptr);
                                  }),
              "exactly the joint properties have a getter of their own");

std::string textOf(const PropertyValue& value) {
  return std::visit(
      []<typename Type>(const Type& held) -> std::string {
        if constexpr (std::is_same_v<Type, bool>) {
          return held ? "true" : "false";
        } else if constexpr (std::is_same_v<Type, std::int64_t>) {
          return PropertyAccess<PropertyKind::integer>::write(held);
        } else if constexpr (std::is_same_v<Type, float>) {
          return PropertyAccess<PropertyKind::number>::write(held);
        } else if constexpr (std::is_same_v<Type, Size>) {
          return PropertyAccess<PropertyKind::dimensions>::write(held);
        } else if constexpr (std::is_same_v<Type, TimecodeComponents>) {
          return PropertyAccess<PropertyKind::timecode>::write(held);
        } else if constexpr (std::is_same_v<Type, RgbColor>) {
          return PropertyAccess<PropertyKind::color>::write(held);
        } else if constexpr (std::is_same_v<Type, std::string>) {
          return held;
        } else if constexpr (std::is_same_v<Type, Paths>) {
          return joined(held, "\n");
        } else {
          Paths numbers;
          std::ranges::transform(held, std::back_inserter(numbers), PropertyAccess<PropertyKind::integer>::write);
          return joined(numbers, ",");
        }
      },
      value);
}

template <typename Type>
std::size_t alternativeOf() {
  return PropertyValue(std::in_place_type<Type>).index();
}

/// Returns which alternative of a PropertyValue holds properties of the kind.
std::size_t alternativeOf(PropertyKind kind) {
  if (kind == PropertyKind::onOff) return alternativeOf<bool>();
  if (kind == PropertyKind::files) return alternativeOf<Paths>();
  if (kind == PropertyKind::trackNumbers) return alternativeOf<TrackNumbers>();
  return withAccess(kind, []<typename Access>(Access /*access*/) {
    if constexpr (isHeldAsText<Access>) {
      return alternativeOf<std::string>();
    } else {
      return alternativeOf<typename Access::Value>();
    }
  });
}

bool isFinite(const PropertyValue& value) {
  if (const auto* const number = std::get_if<float>(&value)) return std::isfinite(*number);
  const auto* const size = std::get_if<Size>(&value);
  return size == nullptr || (std::isfinite(size->width) && std::isfinite(size->height));
}

std::optional<PropertyValue> switchOfInput(std::string_view input) {
  const auto isAnyOf = [input](std::initializer_list<std::string_view> words) {
    return std::ranges::any_of(words, [input](std::string_view word) { return equalsIgnoringCase(input, word); });
  };
  if (isAnyOf({"true", "on", "yes"})) return true;
  if (isAnyOf({"false", "off", "no"})) return false;
  return std::nullopt;
}

/// Splits the text at each separator.
std::vector<std::string_view> pieces(std::string_view text, char separator) {
  std::vector<std::string_view> result;
  for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
    result.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  result.push_back(text);
  return result;
}

std::optional<PropertyValue> trackNumbersOfInput(std::string_view input) {
  TrackNumbers tracks;
  for (const std::string_view piece : pieces(input, ',')) {
    const std::string_view digits = trimmed(piece);
    const auto track = std::ranges::all_of(digits, detail::isDigit) ? integerFromText(digits) : std::nullopt;
    if (!track) return std::nullopt;
    tracks.push_back(*track);
  }
  return tracks;
}

/// Returns what a text is by the property's kind; absent when it is not valid.
std::optional<PropertyValue> parsedText(const TranscodeProperty& property, std::string_view text) {
  if (property.kind == PropertyKind::onOff) return true;
  return withAccess(property.kind, [text]<typename Access>(Access access) -> std::optional<PropertyValue> {
    auto value = access.read(text);
    if (!value) return std::nullopt;
    if constexpr (isHeldAsText<Access>) {
      return std::string(access.write(*value));
    } else {
      return *std::move(value);
    }
  });
}

/// Text from a file ends with a newline and may have CRLF; an empty line is not a path.
std::optional<PropertyValue> pathsOfInput(std::string_view input) {
  if (input.ends_with('\n')) input.remove_suffix(1);
  Paths paths;
  for (std::string_view piece : pieces(input, '\n')) {
    while (piece.ends_with('\r')) piece.remove_suffix(1);
    if (piece.empty()) return std::nullopt;
    paths.emplace_back(piece);
  }
  return paths;
}

/// Returns what a person's input is as the property; absent when it is not valid.
std::optional<PropertyValue> valueOfInput(const TranscodeProperty& property, std::string_view input) {
  using enum PropertyKind;
  if (property.kind == text || property.kind == path || property.kind == file) return parsedText(property, input);
  if (property.kind == files) {
    return pathsOfInput(input);
  }
  input = trimmed(input);
  if (property.kind == onOff) return switchOfInput(input);
  if (property.kind == trackNumbers) return trackNumbersOfInput(input);
  for (const std::string_view allowed : allowedTexts(property)) {
    if (equalsIgnoringCase(input, allowed)) return std::string(allowed);
  }
  auto value = parsedText(property, input);
  return value && isFinite(*value) ? std::move(value) : std::nullopt;
}

/// Member by member, since GCC 12 destroys what it has not made yet if memory runs out within nested braces.
PropertyError errorOf(PropertyErrorCode code, std::string_view name, std::string detail = {}, std::string advice = {}) {
  PropertyError error;
  error.code = code;
  error.place = name;
  error.detail = std::move(detail);
  error.advice = std::move(advice);
  return error;
}

PropertyError invalidValue(const TranscodeProperty& property, std::string_view input) {
  const auto nearest = nearestText(input, allowedTexts(property));
  return errorOf(
      PropertyErrorCode::invalidValue, property.name,
      inQuotes(input) + " is not " + std::string(description(property.kind)),
      (nearest ? "did you mean " + std::string(*nearest) + "? " : "") + "expected " + expectedForm(property));
}

/// Returns success if an argument may have this text.
Expected<void, PropertyError> checkArgument(const TranscodeProperty& property, std::string_view text) {
  if (text.find('\0') != std::string_view::npos) {
    return Unexpected(errorOf(PropertyErrorCode::containsNul, property.name, inQuotes(text)));
  }
  if (!trimmed(text).starts_with('-')) return {};
  const bool isPath = property.kind == PropertyKind::path || property.kind == PropertyKind::file ||
                      property.kind == PropertyKind::files;
  return Unexpected(errorOf(PropertyErrorCode::beginsWithDash, property.name, inQuotes(text),
                            isPath ? "begin the path with \"./\"" : "use a value that begins with another character"));
}

/// Sets the property to a value that is valid for it.
Expected<void, PropertyError> setValidValue(TranscodeCliArguments& arguments, const TranscodeProperty& property,
                                            const PropertyValue& value) {
  std::string made;
  std::string_view text;
  if (const auto* const paths = std::get_if<Paths>(&value)) {
    for (const std::string& each : *paths) {
      if (auto checked = checkArgument(property, each); !checked) return checked;
    }
  } else if (!std::holds_alternative<bool>(value)) {
    const auto* const held = std::get_if<std::string>(&value);
    if (held == nullptr) made = textOf(value);
    text = held != nullptr ? *held : made;
    if (auto checked = checkArgument(property, text); !checked) return checked;
  }
  if (const PropertyRules* const rules = rulesOf(property)) {
    rules->set(arguments, &value);
  } else if (const auto* const isOn = std::get_if<bool>(&value)) {
    arguments.setArgumentFlagValue(property.flag, *isOn ? std::optional("") : std::nullopt);
  } else {
    arguments.setArgumentFlagValue(property.flag, text);
  }
  return {};
}

/// Returns whether the value is one that the kind has whatever its text, so that its text need not be parsed.
bool isPlainlyValid(PropertyKind kind, const PropertyValue& value) {
  using enum PropertyKind;
  if (kind == number || kind == frameRate) return isFinite(value);
  return kind == onOff || kind == integer || kind == text || kind == path || kind == file || kind == files;
}

/// Returns what a name that no property has is probably meant to be: a flag with or without its dash, a misspelt name,
/// or a misspelt flag. Empty if nothing is near.
std::string adviceOnProperty(std::string_view name) {
  const auto didYouMean = [](std::span<const TranscodeProperty* const> properties) {
    std::vector<std::string_view> names;
    std::ranges::transform(properties, std::back_inserter(names), &TranscodeProperty::name);
    return "did you mean " + joined(names, " or ") + "?";
  };
  std::string flag = normalizedFlag(name);
  if (!flag.starts_with('-')) flag.insert(0, 1, '-');
  if (TranscodeCliArguments::isInputFileFlag(flag)) flag = SAVInputPrefixFlag.rawValue();
  if (TranscodeCliArguments::isIgnoredTrackFlag(flag)) flag = SAVAudioIgnoreTracksPrefixFlag.rawValue();
  if (findFlag(flag) != nullptr) {
    const auto properties = propertiesOfFlag(flag);
    return properties.empty() ? flag + " is a flag without a property; it belongs in the argument vector"
                              : didYouMean(properties);
  }
  std::vector<std::string_view> names;
  std::ranges::transform(transcodeProperties, std::back_inserter(names), &TranscodeProperty::name);
  if (const auto nearest = nearestText(name, names)) return "did you mean " + std::string(*nearest) + "?";
  const auto nearestFlag = nearestText(flag, detail::flagTexts);
  const auto properties = nearestFlag ? propertiesOfFlag(*nearestFlag) : std::vector<const TranscodeProperty*>();
  return properties.empty() ? "" : didYouMean(properties);
}

}  // namespace

Expected<const TranscodeProperty*, PropertyError> transcodePropertyNamed(std::string_view name) {
  if (const TranscodeProperty* const property = findTranscodeProperty(name)) return property;
  return Unexpected(errorOf(PropertyErrorCode::unknownProperty, name, {}, adviceOnProperty(name)));
}

std::vector<const TranscodeProperty*> propertiesOfFlag(std::string_view flag) {
  std::vector<const TranscodeProperty*> own;
  const TranscodeProperty* joint = nullptr;
  for (const TranscodeProperty& property : transcodeProperties) {
    if (std::ranges::find(property.flags(), flag) == property.flags().end()) continue;
    if (property.isJoint()) {
      joint = &property;
    } else {
      own.push_back(&property);
    }
  }
  if (own.empty() && joint != nullptr) own.push_back(joint);
  return own;
}

std::string_view meaningOfFlag(const FlagDescription& flag) {
  if (!flag.meaning.empty()) return flag.meaning;
  const auto properties = propertiesOfFlag(flag.text);
  return properties.empty() ? std::string_view() : properties.front()->meaning;
}

std::optional<PropertyValue> propertyValue(const TranscodeCliArguments& arguments, const TranscodeProperty& property) {
  const PropertyRules* const rules = rulesOf(property);
  if (rules != nullptr && rules->get != nullptr) return rules->get(arguments);
  const auto text = arguments.argumentFlagValue(property.flag);
  if (property.kind == PropertyKind::onOff) return text.has_value();
  return text ? valueOfText(property, *text) : std::nullopt;
}

std::optional<std::string> propertyText(const TranscodeCliArguments& arguments, const TranscodeProperty& property) {
  const auto value = propertyValue(arguments, property);
  if (!value) return std::nullopt;
  if (property.isJoint() || property.kind == PropertyKind::onOff) return textOf(*value);
  return std::string(*arguments.argumentFlagValue(property.flag));
}

Expected<void, PropertyError> setPropertyText(TranscodeCliArguments& arguments, const TranscodeProperty& property,
                                              std::string_view input) {
  if (input.empty()) {
    removeProperty(arguments, property);
    return {};
  }
  const auto value = valueOfInput(property, input);
  if (!value) return Unexpected(invalidValue(property, input));
  return setValidValue(arguments, property, *value);
}

Expected<void, PropertyError> setPropertyValue(TranscodeCliArguments& arguments, const TranscodeProperty& property,
                                               const PropertyValue& value) {
  if (value.index() != alternativeOf(property.kind)) {
    return Unexpected(errorOf(PropertyErrorCode::wrongType, property.name));
  }
  if (isPlainlyValid(property.kind, value)) return setValidValue(arguments, property, value);
  const auto valid = valueOfInput(property, textOf(value));
  if (!valid) return Unexpected(invalidValue(property, textOf(value)));
  return setValidValue(arguments, property, *valid);
}

void removeProperty(TranscodeCliArguments& arguments, const TranscodeProperty& property) {
  if (const PropertyRules* const rules = rulesOf(property)) {
    rules->set(arguments, nullptr);
  } else {
    arguments.setArgumentFlagValue(property.flag, std::nullopt);
  }
}

std::optional<PropertyValue> valueOfText(const TranscodeProperty& property, std::string_view text) {
  if (property.isJoint()) {
    preconditionFailed("valueOfText: no single flag stores the joint property " + inQuotes(property.name));
  }
  return parsedText(property, text);
}

bool isCopyOfSource(std::string_view flag, std::string_view text) noexcept {
  static constexpr auto flags = std::to_array<std::string_view>(
      {SAVVideoFormatFlag.rawValue(), SAVVideoFrameRateFlag.rawValue(), SAVVideoDimensionsFlag.rawValue(),
       SAVVideoBitRateFlag.rawValue(), SAVVideoBitDepthFlag.rawValue(), SAVVideoColorSpaceFlag.rawValue(),
       SAVAudioFormatFlag.rawValue(), SAVAudioSampleRateFlag.rawValue(), SAVAudioBitsPerChannelFlag.rawValue(),
       SAVAudioChannelLayoutFlag.rawValue(), SAVAudioBitRateFlag.rawValue()});
  return text == SAVCopySourceValue && std::ranges::find(flags, flag) != flags.end();
}

std::vector<std::string_view> allowedTexts(const TranscodeProperty& property) {
  return withAccess(property.kind, []<typename Access>(Access access) {
    std::vector<std::string_view> texts;
    if constexpr (HasCases<Access>) {
      for (const auto& each : access.cases()) texts.push_back(access.write(each));
    }
    return texts;
  });
}

std::vector<std::string_view> allowedTextsOfFlag(std::string_view flag) {
  std::vector<std::string_view> texts;
  if (flag == SAVPresetFlag.rawValue()) {
    std::ranges::transform(allCases<TranscodeCliPreset>(), std::back_inserter(texts), preset);
    return texts;
  }
  for (const TranscodeProperty* const property : propertiesOfFlag(flag)) {
    if (!property->isJoint()) std::ranges::copy(allowedTexts(*property), std::back_inserter(texts));
  }
  return texts;
}

std::string expectedForm(const TranscodeProperty& property) {
  if (property.kind == PropertyKind::onOff) return "true or false";
  const std::string form(description(property.kind));
  const auto allowed = allowedTexts(property);
  return allowed.empty() ? form + ", such as " + std::string(property.example) : form + ": " + joined(allowed, ", ");
}

}  // namespace meridian::inline v0_2
