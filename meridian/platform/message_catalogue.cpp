#include "meridian/platform/message_catalogue.h"

#include <libintl.h>

namespace meridian::inline v0_2 {

std::string catalogueText(std::string_view text) {
  // The empty text would return the catalogue's header, and gettext would cut a text off at a NUL.
  if (text.empty() || text.find('\0') != std::string_view::npos) return std::string(text);
  return dgettext("meridian", std::string(text).c_str());
}

}  // namespace meridian::inline v0_2
