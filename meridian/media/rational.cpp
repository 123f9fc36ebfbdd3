#include "meridian/media/rational.h"

#include "meridian/base/numbers.h"
#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {
namespace {

std::string textOf(const NumericRational& ratio) {
  return std::to_string(ratio.numerator) + "/" + std::to_string(ratio.denominator);
}

}  // namespace

namespace detail {

void rationalOverflow(const char* operation, const NumericRational& left, const NumericRational& right) {
  preconditionFailed("NumericRational " + std::string(operation) + " of " + textOf(left) + " and " + textOf(right) +
                     " leaves the signed 64-bit range");
}

void sizeOutOfRange(const Size& size) {
  preconditionFailed("NumericRational of the size " + shortestDecimalText(size.width) + " x " +
                     shortestDecimalText(size.height) + ": not finite, or outside the signed 64-bit range");
}

}  // namespace detail

std::string MediaRational::roundedDecimalString() const { return fixedDecimalText(rawValue(), 2); }

}  // namespace meridian::inline v0_2
