#include "meridian/lut/lut_file.h"

namespace meridian::inline v0_2 {

LutFile::~LutFile() = default;

}  // namespace meridian::inline v0_2
