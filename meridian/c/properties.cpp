// The functions of the typed properties, from the list that the header was made from.
#include "meridian/c/properties.h"

#include <type_traits>

#include "meridian/c/handles.h"
#include "meridian/c/media_values.h"
#include "meridian/cli/property_access.h"

namespace m = meridian;

namespace {

/// Returns a caller's value as the library's; absent for an absent text.
std::optional<m::PropertyValue> valueOf(bool value) { return value; }
std::optional<m::PropertyValue> valueOf(float value) { return value; }
std::optional<m::PropertyValue> valueOf(std::int64_t value) { return value; }
std::optional<m::PropertyValue> valueOf(MeridianSize value) { return m::c::fromC(value); }
std::optional<m::PropertyValue> valueOf(MeridianTimecode value) { return m::c::fromC(value); }
std::optional<m::PropertyValue> valueOf(MeridianColor value) { return m::c::fromC(value); }
std::optional<m::PropertyValue> valueOf(MeridianText value) {
  if (value.data == nullptr) return std::nullopt;
  return std::string(m::c::viewOf(value));
}

bool setProperty(MeridianArguments* arguments, const m::TranscodeProperty& property,
                 const std::optional<m::PropertyValue>& value, MeridianError** error) {
  if (!value) {
    m::removeProperty(arguments->value, property);
    return true;
  }
  const auto set = m::setPropertyValue(arguments->value, property, *value);
  return set ? true : m::c::failed(error, set.error());
}

template <typename Value, typename Result>
bool getValue(const std::optional<Value>& found, Result* result) noexcept {
  if (!found) return false;
  *result = m::c::toC(*found);
  return true;
}

/// Returns whether a property is read in this library, without a call of its getter: where that takes no more than
/// finding the flag, the call would count. The rest is read by code that the core keeps to itself.
consteval bool isReadHere(std::string_view name) {
  using enum m::PropertyKind;
  const m::TranscodeProperty& property = *m::findTranscodeProperty(name);
  switch (property.kind) {
    case number:
    case frameRate:
    case integer:
    case dimensions:
    case color:
      return false;
    default:
      return !property.isJoint();
  }
}

}  // namespace

#define MERIDIAN_C_READ(name)                                \
  [](const auto& store) {                                    \
    if constexpr (isReadHere(#name)) {                       \
      return m::getProperty<#name>(store.flagValueLookup()); \
    } else {                                                 \
      return store.name();                                   \
    }                                                        \
  }(arguments->value)
#define MERIDIAN_C_SETTER(name, function, type)                                                                      \
  bool meridian_arguments_set_##function(MeridianArguments* arguments, type value, MeridianError** error) noexcept { \
    constexpr const m::TranscodeProperty& property = *m::findTranscodeProperty(#name);                               \
    return m::c::done(error, [&] { return setProperty(arguments, property, valueOf(value), error); });               \
  }
#define MERIDIAN_C_PROPERTY_SWITCH(name, function, type)                                                            \
  bool meridian_arguments_##function(const MeridianArguments* arguments) noexcept { return MERIDIAN_C_READ(name); } \
  MERIDIAN_C_SETTER(name, function, type)
#define MERIDIAN_C_PROPERTY_VALUE(name, function, type)                                                             \
  bool meridian_arguments_##function(const MeridianArguments* arguments, std::add_pointer_t<type> value) noexcept { \
    return getValue(MERIDIAN_C_READ(name), value);                                                                  \
  }                                                                                                                 \
  MERIDIAN_C_SETTER(name, function, type)
#define MERIDIAN_C_PROPERTY_TEXT(name, function, type)                                      \
  MeridianText meridian_arguments_##function(const MeridianArguments* arguments) noexcept { \
    return m::c::textOf(MERIDIAN_C_READ(name));                                             \
  }                                                                                         \
  MERIDIAN_C_SETTER(name, function, type)
// The path of a file is the flag's text, which can be viewed where the C++ property is a copy.
#define MERIDIAN_C_PROPERTY_FILE(name, function, type)                                                   \
  MeridianText meridian_arguments_##function(const MeridianArguments* arguments) noexcept {              \
    return m::c::textOf(arguments->value.flagValueLookup().find(m::findTranscodeProperty(#name)->flag)); \
  }                                                                                                      \
  MERIDIAN_C_SETTER(name, function, type)
#include "meridian/c/properties.def"
