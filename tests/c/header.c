#include <meridian/c/meridian.h>
