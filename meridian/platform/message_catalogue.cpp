#include "meridian/platform/message_catalogue.h"

#include <libintl.h>

namespace meridian::inline v0_2 {

std::string catalogueText(std::string_view text) {
  // The empty text is the catalogue's own header, and one with a NUL inside could only be found in part.
  if (text.empty() || text.find('\0') != std::string_view::npos) return std::string(text);
  return dgettext("meridian", std::string(text).c_str());
}

}  // namespace meridian::inline v0_2
