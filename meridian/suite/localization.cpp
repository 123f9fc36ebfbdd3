#include "meridian/suite/localization.h"

#include <memory>
#include <utility>

#include "meridian/base/shared_slot.h"
#include "meridian/platform/message_catalogue.h"

namespace meridian {
namespace {

SharedSlot<const Translator>& translatorInUse() {
  // Never destroyed, so that static objects may still ask for texts in their destructors.
  static auto* const slot = new SharedSlot<const Translator>(std::make_shared<const Translator>(catalogueText));
  return *slot;
}

}  // namespace

std::string localized(std::string_view text) { return (*translatorInUse().get())(text); }

void setTranslator(Translator translator) {
  if (!translator) translator = catalogueText;
  translatorInUse().set(std::make_shared<const Translator>(std::move(translator)));
}

}  // namespace meridian
