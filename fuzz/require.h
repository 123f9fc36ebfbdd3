// How a fuzz target says that a property is broken.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace meridian::fuzz {

/// Stops the run, so that the fuzzer keeps the input, unless the property holds.
inline void require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", property);
  std::abort();
}

}  // namespace meridian::fuzz
