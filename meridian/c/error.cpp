#include "meridian/c/error.h"

#include <exception>
#include <new>
#include <stdexcept>

#include "meridian/base/no_destructor.h"
#include "meridian/c/handles.h"
#include "meridian/serialization/coding_error.h"

namespace meridian::inline v0_2::c {
namespace {

// Made when the library is loaded, so that storing it needs no memory.
NoDestructor<MeridianError> outOfMemory(errorOf(CallErrorCode::outOfMemory));

void storeCallError(MeridianError** destination, CallErrorCode code, std::string place, std::string detail) {
  store(destination, errorOf(CallError{code, std::move(place), std::move(detail)}));
}

void storeHandled(MeridianError** destination) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    *destination = &*outOfMemory;
  } catch (const std::length_error&) {
    *destination = &*outOfMemory;
  } catch (const DecodingError& error) {
    storeCallError(destination, CallErrorCode::notDecoded, error.path(), error.message());
  } catch (const EncodingError& error) {
    storeCallError(destination, CallErrorCode::notEncoded, error.path(), error.message());
  } catch (const std::exception& error) {
    storeCallError(destination, CallErrorCode::unexpected, {}, error.what());
  } catch (...) {
    storeCallError(destination, CallErrorCode::unexpected, {}, {});
  }
}

}  // namespace

void store(MeridianError** destination, MeridianError&& error) {
  if (destination != nullptr) *destination = new MeridianError(std::move(error));
}

void storeException(MeridianError** destination) noexcept {
  if (destination == nullptr) return;
  try {
    storeHandled(destination);
  } catch (...) {
    *destination = &*outOfMemory;
  }
}

}  // namespace meridian::inline v0_2::c

using meridian::c::textOf;

MeridianText meridian_error_area(const MeridianError* error) noexcept { return textOf(error->area); }
int meridian_error_code(const MeridianError* error) noexcept { return error->code; }
MeridianText meridian_error_code_name(const MeridianError* error) noexcept { return textOf(error->codeName); }
MeridianText meridian_error_place(const MeridianError* error) noexcept { return textOf(&error->place); }
MeridianText meridian_error_text(const MeridianError* error) noexcept { return textOf(error->text); }
MeridianText meridian_error_detail(const MeridianError* error) noexcept { return textOf(&error->detail); }
MeridianText meridian_error_remedy(const MeridianError* error) noexcept { return textOf(&error->remedy); }
MeridianText meridian_error_message(const MeridianError* error) noexcept { return textOf(&error->message); }
void meridian_error_destroy(MeridianError* error) noexcept {
  if (error != &*meridian::c::outOfMemory) delete error;
}

size_t meridian_errors_count(const MeridianErrors* errors) noexcept { return errors->values.size(); }
const MeridianError* meridian_errors_at(const MeridianErrors* errors, size_t index) noexcept {
  return index < errors->values.size() ? &errors->values[index] : nullptr;
}
void meridian_errors_destroy(MeridianErrors* errors) noexcept { delete errors; }
