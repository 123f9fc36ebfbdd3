/// \file
/// Translate display texts into the user's language. For example:
///
///     localized("Half Step");                    // "Halbe Rate" in a German locale
///     localizedString(MediaCorporation::canon);  // the same for an enumeration's case
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Returns the translation of a display text, or the text itself. Called from any thread.
using Translator = std::function<std::string(std::string_view text)>;

/// Returns the display text in the user's language, from the current translator. The default translator reads the C
/// library's message catalogue "meridian" in the locale that the application chose with `setlocale`, and returns texts
/// without a translation unchanged.
[[nodiscard]] MERIDIAN_API std::string localized(std::string_view text);

/// Returns the display text of an enumeration's case in the user's language.
template <TabledEnumeration Enumeration>
[[nodiscard]] std::string localizedString(Enumeration value) {
  return localized(description(value));
}

/// Returns the tooltip of an enumeration's case in the user's language, for enumerations whose table has tooltips.
template <TabledEnumeration Enumeration>
  requires requires(Enumeration value) { tableRow(value).tooltip; }
[[nodiscard]] std::string localizedTooltip(Enumeration value) {
  return localized(tableRow(value).tooltip);
}

/// Replaces the translator, from any thread; an empty one restores the default.
MERIDIAN_API void setTranslator(Translator translator);

}  // namespace meridian::inline v0_2
