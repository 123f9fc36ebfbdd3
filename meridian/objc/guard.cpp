#include "meridian/objc/guard.h"

#include <exception>
#include <new>
#include <stdexcept>

namespace meridian::inline v0_2::objc {

std::optional<Thrown> guarded(FunctionRef<void()> work) {
  // By their types: "..." would catch exceptions of Objective-C, too.
  try {
    work();
    return std::nullopt;
  } catch (const std::bad_alloc&) {
    return Thrown::outOfMemory;
  } catch (const std::length_error&) {
    return Thrown::outOfMemory;
  } catch (const std::exception&) {
    return Thrown::anythingElse;
  }
}

}  // namespace meridian::inline v0_2::objc
