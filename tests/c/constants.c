/* Lists the constants that the C header declares, for constants_test.cpp. */
#include <meridian/c/constants.h>

typedef struct Constant {
  const char* name;
  const char* const* text;
} Constant;

extern const Constant cConstants[];
extern const size_t cConstantCount;

const Constant cConstants[] = {
#define C_CONSTANT(name) {#name, &name},
#include "c_constants.def"
};
const size_t cConstantCount = sizeof(cConstants) / sizeof(cConstants[0]);
