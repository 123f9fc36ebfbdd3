#include "meridian/suite/localization.h"

#include <memory>
#include <utility>

#include "meridian/base/no_destructor.h"
#include "meridian/base/shared_slot.h"
#include "meridian/platform/message_catalogue.h"

namespace meridian::inline v0_2 {
namespace {

SharedSlot<const Translator>& translatorSlot() {
  static NoDestructor<SharedSlot<const Translator>> slot(std::make_shared<const Translator>(catalogueText));
  return *slot;
}

}  // namespace

std::string localized(std::string_view text) { return (*translatorSlot().get())(text); }

void setTranslator(Translator translator) {
  if (!translator) translator = catalogueText;
  translatorSlot().set(std::make_shared<const Translator>(std::move(translator)));
}

}  // namespace meridian::inline v0_2
