// The operating system's catalogues of translated texts.
#pragma once

#include <string>
#include <string_view>

namespace meridian::inline v0_2 {

/// The text in the catalogue "meridian" of the process's language; the text itself when there is no catalogue or it
/// does not hold the text.
[[nodiscard]] std::string catalogueText(std::string_view text);

}  // namespace meridian::inline v0_2
