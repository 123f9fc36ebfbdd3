// The suite's localization, as seen from here: how display texts are translated.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Gives the translation of a display text, or the text itself. May be called from any thread.
using Translator = std::function<std::string(std::string_view text)>;

/// The display text in the user's language, by the translator in use. At first that is the C library's message
/// catalogue "meridian", in the language that the application chose with `setlocale`; a text that the catalogue does
/// not hold comes back as it is.
[[nodiscard]] MERIDIAN_API std::string localized(std::string_view text);

/// The display text of an enumeration's case in the user's language.
template <TabledEnumeration Enumeration>
[[nodiscard]] std::string localizedString(Enumeration value) {
  return localized(description(value));
}

/// The tooltip of an enumeration's case in the user's language, where the enumeration's table has tooltips.
template <TabledEnumeration Enumeration>
  requires requires(Enumeration value) { tableRow(value).tooltip; }
[[nodiscard]] std::string localizedTooltip(Enumeration value) {
  return localized(tableRow(value).tooltip);
}

/// Replaces the translator, from any thread; an empty one brings the message catalogue back.
MERIDIAN_API void setTranslator(Translator translator);

}  // namespace meridian::inline v0_2
