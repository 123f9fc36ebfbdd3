/// \file
/// Media that a test makes with the ffmpeg command.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "meridian/engine/describe_media.h"
#include "tests/support/temporary_directory.h"

namespace meridian::test {

/// Names a file, and says how ffmpeg writes it, as on its command line, separated by blanks.
struct Recipe {
  std::string name;
  std::string options;
};

/// Returns true if the program is installed.
bool isInstalled(const std::string& program);

/// Media in a directory of their own. Input 0 of ffmpeg has moving images of 64 x 36 pixels, 60 a second, input 1 has a
/// tone; both last 0.25 s.
class MadeMedia : public testing::Test {
 protected:
  void SetUp() override {
    if (!isInstalled("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  }

  /// Makes all the files by one command.
  void make(const std::vector<Recipe>& recipes);

  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }
  [[nodiscard]] const TemporaryDirectory& directory() const { return directory_; }

  /// Returns the whole content of a file.
  [[nodiscard]] std::string content(const std::string& name) const;

  /// Describes a file that must be described.
  [[nodiscard]] MediaDescription described(const std::string& name) const;

 private:
  TemporaryDirectory directory_;
};

/// Writes a big-endian number of four bytes.
void putBigEndian(std::string& bytes, std::size_t place, std::uint32_t number);

}  // namespace meridian::test
