// LUT files and LUTs made for tests.
#pragma once

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/suite/logger.h"
#include "tests/support/temporary_directory.h"

namespace meridian::test {

/// Keeps what is logged while it lives.
class LogKeeper {
 public:
  LogKeeper() { setLogger(kept_); }
  LogKeeper(const LogKeeper&) = delete;
  LogKeeper& operator=(const LogKeeper&) = delete;
  ~LogKeeper() { setLogger(nullptr); }

  [[nodiscard]] const std::vector<std::string>& messages() const { return kept_->messages; }

 private:
  struct Keeper final : Logger {
    void log(LogLevel level, std::string_view message) override {
      messages.push_back(std::string(rawValue(level)) + " " + std::string(message));
    }
    std::vector<std::string> messages;
  };
  std::shared_ptr<Keeper> kept_ = std::make_shared<Keeper>();
};

inline std::shared_ptr<const LutValueTriplets> rowsOf(const std::vector<LutColor>& colors) {
  auto rows = std::make_shared<LutValueTriplets>();
  for (const LutColor& color : colors) rows->append(color);
  return rows;
}

inline std::shared_ptr<const LutCube> cubeOf(const std::vector<LutColor>& colors) {
  return std::make_shared<const LutCube>(rowsOf(colors));
}

/// Returns the colours of a cube in file order, from a function of red, green and blue on the scale from 0 to 1.
template <typename Function>
std::vector<LutColor> cubeColors(int faceSize, const Function& function) {
  std::vector<LutColor> colors;
  const double last = faceSize > 1 ? faceSize - 1 : 1;
  for (int red = 0; red < faceSize; ++red) {
    for (int green = 0; green < faceSize; ++green) {
      for (int blue = 0; blue < faceSize; ++blue) colors.push_back(function(red / last, green / last, blue / last));
    }
  }
  return colors;
}

/// Returns a file of a cube: of code values if a depth is given.
inline std::unique_ptr<const ParsedLutFile> cubeFile(const std::vector<LutColor>& colors,
                                                     std::optional<int> integerDepth = {},
                                                     const LutDeclaredDomain& domain = {}) {
  const Url url = Url::fromFilePath("/made.cube");
  if (integerDepth) {
    return std::make_unique<ParsedLutFactory::ParsedThreeDimensionalIntegerFile>(url, domain, rowsOf(colors),
                                                                                 cubeOf(colors), *integerDepth);
  }
  return std::make_unique<ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile>(url, domain, rowsOf(colors),
                                                                                     cubeOf(colors));
}

}  // namespace meridian::test
