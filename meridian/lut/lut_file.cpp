#include "meridian/lut/lut_file.h"

#include "meridian/lut/lut_refusal.h"

namespace meridian::inline v0_2 {

LutFile::~LutFile() = default;

std::string LutRefusal::message() const {
  std::string text(description(reason));
  if (systemError) text += ": " + systemError.message();
  if (rows > 0) text += " (rows read: " + std::to_string(rows) + ")";
  return text;
}

}  // namespace meridian::inline v0_2
