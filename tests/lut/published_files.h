// LUT files in published formats, made for tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/lut/lut_values.h"

namespace meridian::test {

/// Returns this many lines of three random numbers.
inline std::string randomRows(std::mt19937& random, std::size_t count, double low, double high,
                              std::string_view blank = " ") {
  std::uniform_real_distribution<double> number(low, high);
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    for (int channel = 0; channel < 3; ++channel) text.append(blank).append(fixedDecimalText(number(random), 6));
    text += '\n';
  }
  return text;
}

/// Returns this many lines of three random code values, of which the first is the largest.
inline std::string randomCodes(std::mt19937& random, std::size_t count, unsigned largest,
                               std::string_view blank = " ") {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    for (int channel = 0; channel < 3; ++channel) {
      text.append(blank).append(std::to_string(i == 0 ? largest : random() % (largest + 1)));
    }
    text += '\n';
  }
  return text;
}

/// Returns a line of mesh values from 0 to the largest, along a straight line or a curve.
inline std::string meshValues(std::size_t count, double largest, bool isCurved) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    const double place = static_cast<double>(i) / static_cast<double>(count - 1);
    text += std::to_string(std::lround((isCurved ? place * place : place) * largest)) + ' ';
  }
  return text + '\n';
}

struct PublishedFile {
  std::string name;
  std::string text;
};

/// Returns files of every kind that a published format allows.
inline std::vector<PublishedFile> publishedFiles() {
  std::mt19937 random(2013);
  const auto cubed = [](std::size_t face) { return face * face * face; };
  return {
      {"cube of 2.cube", "LUT_3D_SIZE 2\n" + randomRows(random, 8, 0, 1)},
      {"cube of 17.cube", "# look\nTITLE \"a 1D look\"\nLUT_3D_SIZE 17\n\n" + randomRows(random, cubed(17), -0.5, 2)},
      {"cube with tabs.cube", "lut_3d_size\t\t5\r\n" + randomRows(random, cubed(5), 0, 1, " \t ")},
      {"cube with a domain.cube",
       "DOMAIN_MIN -0.25 0 0.1\nDOMAIN_MAX 1.5 0.5 1\nLUT_3D_SIZE 9\n" + randomRows(random, cubed(9), 0, 1)},
      {"curve of 2.cube", "LUT_1D_SIZE 2\n" + randomRows(random, 2, -1, 3)},
      {"curve of 300.cube", "LUT_1D_SIZE 300\n" + randomRows(random, 300, -0.1, 0.1)},
      {"curve with a domain.cube",
       "LUT_1D_SIZE 64\nDOMAIN_MIN -1 0 0.25\nDOMAIN_MAX 2 4 0.75\n" + randomRows(random, 64, 0, 1)},
      {"cube with a range.cube", "LUT_3D_SIZE 7\nLUT_3D_INPUT_RANGE -0.5 1.5\n" + randomRows(random, cubed(7), 0, 1)},
      {"curve with a range.cube", "LUT_1D_SIZE 33\nLUT_1D_INPUT_RANGE 0 2\n" + randomRows(random, 33, 0, 1)},
      {"curve and cube.cube", "LUT_1D_SIZE 33\nLUT_1D_INPUT_RANGE -1 2\nLUT_3D_SIZE 4\nLUT_3D_INPUT_RANGE 0.25 0.75\n" +
                                  randomRows(random, 33, 0.2, 0.8) + randomRows(random, cubed(4), 0.6, 1.2)},
      {"curve and cube without ranges.cube",
       "LUT_1D_SIZE 16\nLUT_3D_SIZE 3\n" + randomRows(random, 16, 0, 1) + randomRows(random, cubed(3), 0, 1)},
      {"flame.3dl", "# flame\n" + meshValues(17, 1023, false) + "\n" + randomCodes(random, cubed(17), 1023)},
      {"lustre.3dl", "3DMESH\nMesh 4 12\n" + meshValues(17, 1023, false) +
                         randomCodes(random, cubed(17), 4095, "    ") + "\nLUT8\ngamma 1.0\n"},
      {"sixteen points.3dl", meshValues(16, 1023, false) + randomCodes(random, cubed(16), 65535)},
      {"thirty-two points.3dl", meshValues(32, 4095, false) + randomCodes(random, cubed(32), 4095, "\t")},
      {"shaper.3dl", meshValues(17, 1023, true) + randomCodes(random, cubed(17), 4095)},
      {"long shaper.3dl", meshValues(256, 65535, true) + randomCodes(random, cubed(5), 255)},
      {"no shaper.3dl", randomCodes(random, cubed(6), 700)},
      {"overshoot.3dl", randomCodes(random, cubed(3), 2000)},
      {"fourteen bits.3dl", randomCodes(random, cubed(3), 16383)},
  };
}

}  // namespace meridian::test
