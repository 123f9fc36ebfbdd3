// LUT files and calls for the tests of the lut commands.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian::test {

using Words = std::vector<std::string>;

inline Outcome lut(Words words) {
  words.insert(words.begin(), {MERIDIAN_COMMAND, "lut"});
  return run(words);
}

inline std::string contentsOf(const std::filesystem::path& path) {
  std::ostringstream contents;
  contents << std::ifstream(path, std::ios::binary).rdbuf();
  return contents.str();
}

/// Files in a directory of their own, which is removed with the test.
class LutCommand : public testing::Test {
 protected:
  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }

  std::string write(const std::string& name, const std::string& text) const { return directory_.write(name, text); }

  /// Writes a cube of three points per axis, as published; `change` makes a row of a place from 0 to 2 on each axis.
  std::string writeCube(const std::string& name, const std::function<std::string(int, int, int)>& change) const {
    std::string text = "LUT_3D_SIZE 3\n";
    for (int place = 0; place < 27; ++place) text += change(place % 3, place / 3 % 3, place / 9) + "\n";
    return write(name, text);
  }
  [[nodiscard]] std::string identityCube() const {
    return writeCube("identity.cube", [](int red, int green, int blue) {
      return std::to_string(red / 2.0) + " " + std::to_string(green / 2.0) + " " + std::to_string(blue / 2.0);
    });
  }
  /// Its results are exact for code values: all its numbers are powers of two.
  [[nodiscard]] std::string exactIdentityCube() const {
    return writeCube("exact.cube", [](int red, int green, int blue) {
      return std::to_string(red << 15) + " " + std::to_string(green << 15) + " " + std::to_string(blue << 15);
    });
  }
  [[nodiscard]] std::string inverseCube() const {
    return writeCube("inverse.cube", [](int red, int green, int blue) {
      return std::to_string(1 - red / 2.0) + " " + std::to_string(1 - green / 2.0) + " " +
             std::to_string(1 - blue / 2.0);
    });
  }
  /// 256 rows, red doubled.
  [[nodiscard]] std::string table() const {
    std::string text;
    for (int row = 0; row < 256; ++row) {
      text += std::to_string(std::min(2 * row, 255)) + " " + std::to_string(row) + " " + std::to_string(row) + "\n";
    }
    return write("table.lut", text);
  }

  [[nodiscard]] Words fileNames() const { return directory_.names(); }

 private:
  TemporaryDirectory directory_;
};

}  // namespace meridian::test
