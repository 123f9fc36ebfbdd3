/// \file
/// The operating system's catalogues of translated texts. For example:
///
///     catalogueText("Half Step");  // "Halbe Rate" in a German locale
#pragma once

#include <string>
#include <string_view>

namespace meridian::inline v0_2 {

/// Returns the text's translation from the catalogue "meridian" in the process's language; the text itself if there is
/// no catalogue or no translation.
[[nodiscard]] std::string catalogueText(std::string_view text);

}  // namespace meridian::inline v0_2
