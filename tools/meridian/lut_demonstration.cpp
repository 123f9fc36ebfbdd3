// The demonstration of look-up tables (LUTs): a look made on the spot, and an image before and after it.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/published_lut.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int facePoints = 33;
constexpr std::size_t imageWidth = 3840;
constexpr std::size_t imageHeight = 2160;

/// A directory that is removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() : path_(fs::temp_directory_path() / ("meridian-" + std::to_string(std::random_device{}()))) {
    if (!fs::create_directory(path_)) throw std::runtime_error("cannot create a temporary directory");
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  TemporaryDirectory(TemporaryDirectory&&) = delete;
  TemporaryDirectory& operator=(TemporaryDirectory&&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }

  [[nodiscard]] const fs::path& path() const noexcept { return path_; }

 private:
  fs::path path_;
};

/// A contrasty, warm look: steeper in the middle, highlights towards yellow, shadows towards teal, slightly muted.
LutColor look(const LutColor& color) {
  const auto contrast = [](double value) { return 0.35 * value + 0.65 * value * value * (3 - 2 * value); };
  const double luma = 0.2126 * color.red + 0.7152 * color.green + 0.0722 * color.blue;
  const auto muted = [luma](double value) { return luma + 0.86 * (value - luma); };
  const auto bounded = [](double value) { return std::clamp(value, 0.0, 1.0); };
  const double light = contrast(luma);
  return {bounded(contrast(muted(color.red)) + 0.09 * light - 0.02),
          bounded(contrast(muted(color.green)) + 0.02 * light + 0.005),
          bounded(contrast(muted(color.blue)) - 0.16 * light + 0.045)};
}

/// Writes the look as grading programs do, with red running fastest.
void writeLook(const fs::path& path) {
  std::ofstream file(path);
  file << "TITLE \"Warm contrast\"\nLUT_3D_SIZE " << facePoints << '\n';
  constexpr double last = facePoints - 1;
  for (int blue = 0; blue < facePoints; ++blue) {
    for (int green = 0; green < facePoints; ++green) {
      for (int red = 0; red < facePoints; ++red) {
        const LutColor color = look({red / last, green / last, blue / last});
        file << fixedDecimalText(color.red, 6) << ' ' << fixedDecimalText(color.green, 6) << ' '
             << fixedDecimalText(color.blue, 6) << '\n';
      }
    }
  }
  if (!file.flush()) throw std::runtime_error("cannot write the temporary look");
}

struct Patch {
  std::string_view name;
  std::array<double, 3> color;
};

constexpr auto chart = std::to_array<Patch>({
    {"dark skin", {0.45, 0.32, 0.27}},
    {"light skin", {0.76, 0.58, 0.51}},
    {"blue sky", {0.38, 0.48, 0.61}},
    {"foliage", {0.35, 0.42, 0.26}},
    {"orange", {0.84, 0.49, 0.17}},
    {"purple", {0.37, 0.24, 0.42}},
    {"blue", {0.22, 0.24, 0.59}},
    {"green", {0.27, 0.58, 0.29}},
    {"red", {0.69, 0.19, 0.22}},
    {"yellow", {0.91, 0.78, 0.12}},
    {"magenta", {0.73, 0.34, 0.58}},
    {"cyan", {0.03, 0.52, 0.63}},
    {"white", {0.95, 0.95, 0.94}},
    {"light grey", {0.78, 0.78, 0.78}},
    {"middle grey", {0.47, 0.47, 0.47}},
    {"black", {0.2, 0.2, 0.2}},
});
constexpr std::size_t chartColumns = 8;

/// Returns a colour of the sweep through hues, from black at lightness 0 to white at 1.
std::array<double, 3> sweep(double place, double lightness) {
  std::array<double, 3> color{};
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const double distance = std::abs(place - static_cast<double>(channel) / 3);
    const double pure = std::clamp(2 - 6 * std::min(distance, 1 - distance), 0.0, 1.0);
    color[channel] = lightness < 0.5 ? pure * lightness * 2 : pure + (1 - pure) * (lightness * 2 - 1);
  }
  return color;
}

/// Returns the image's colour at a place from 0 to 1: hues at the top, then greys, then a chart.
std::array<double, 3> imageColor(double x, double y) {
  if (y < 0.4) return sweep(x, 1 - y / 0.4);
  if (y < 0.5) return {x, x, x};
  const std::size_t row = y < 0.75 ? 0 : 1;
  return chart[row * chartColumns + static_cast<std::size_t>(x * chartColumns)].color;
}

using Samples = std::vector<std::uint16_t>;

Samples makeImage() {
  Samples samples;
  samples.reserve(imageWidth * imageHeight * 3);
  for (std::size_t row = 0; row < imageHeight; ++row) {
    for (std::size_t column = 0; column < imageWidth; ++column) {
      for (const double value :
           imageColor(static_cast<double>(column) / imageWidth, static_cast<double>(row) / imageHeight)) {
        samples.push_back(static_cast<std::uint16_t>(std::lround(value * 65535)));
      }
    }
  }
  return samples;
}

const std::uint16_t* sampleAt(const Samples& samples, double x, double y) {
  const auto column = static_cast<std::size_t>(x * imageWidth);
  const auto row = static_cast<std::size_t>(y * imageHeight);
  return samples.data() + (row * imageWidth + column) * 3;
}

std::string colorSequence(std::string_view kind, const std::uint16_t* sample) {
  std::string text = "\x1b[" + std::string(kind) + ";2";
  for (std::size_t channel = 0; channel < 3; ++channel) text += ";" + std::to_string(sample[channel] >> 8);
  return text + "m";
}

/// Returns a line of two rows of the image: the upper one in the half blocks, the lower one as their background.
std::string imageLine(const Samples& samples, std::size_t line, std::size_t lines, std::size_t columns) {
  std::string text;
  for (std::size_t column = 0; column < columns; ++column) {
    const double x = (static_cast<double>(column) + 0.5) / static_cast<double>(columns);
    const double y = (static_cast<double>(line) + 0.25) / static_cast<double>(lines);
    text += colorSequence("38", sampleAt(samples, x, y)) +
            colorSequence("48", sampleAt(samples, x, y + 0.5 / static_cast<double>(lines))) + "\u2580";
  }
  return text + "\x1b[0m";
}

void showInColours(const Samples& before, const Samples& after) {
  constexpr std::size_t lines = 10;
  constexpr std::size_t columns = 36;
  std::cout << "  before" << std::string(columns - 4, ' ') << "after\n";
  for (std::size_t line = 0; line < lines; ++line) {
    std::cout << "  " << imageLine(before, line, lines, columns) << "  " << imageLine(after, line, lines, columns)
              << '\n';
  }
}

void showAsTable(const Samples& before, const Samples& after) {
  std::vector<std::vector<Cell>> rows{{{"COLOUR"}, {"BEFORE"}, {"AFTER"}}};
  const auto text = [](const std::uint16_t* sample) {
    return std::to_string(sample[0]) + " " + std::to_string(sample[1]) + " " + std::to_string(sample[2]);
  };
  for (std::size_t place = 0; place < chart.size(); place += 2) {
    const double x = (static_cast<double>(place % chartColumns) + 0.5) / chartColumns;
    const double y = place < chartColumns ? 0.6 : 0.9;
    rows.push_back({{std::string(chart[place].name)}, {text(sampleAt(before, x, y))}, {text(sampleAt(after, x, y))}});
  }
  printTable(rows);
}

std::string milliseconds(Clock::duration duration) {
  return fixedDecimalText(std::chrono::duration<double, std::milli>(duration).count(), 1) + " ms";
}

}  // namespace

void demonstrateLut() {
  std::cout << styled(Style::heading, "A look from a .cube file, on an image") << "\n\n";
  const TemporaryDirectory directory;
  const std::string path = (directory.path() / "warm_contrast.cube").string();
  writeLook(path);

  const auto beginning = Clock::now();
  const auto file = readPublishedLut(Url::fromFilePath(path));
  if (!file) throw std::runtime_error(file.error().message());
  const auto afterParsing = Clock::now();
  const auto lut = ImageLut::forCodeValues(*file, 16, 16, {.rounding = LutRounding::nearest});

  const Samples before = makeImage();
  Samples after(before.size());
  const auto source = ImageView<const std::uint16_t>::packed(ImageLayout::rgb, before.data(), imageWidth, imageHeight);
  const auto destination = ImageView<std::uint16_t>::packed(ImageLayout::rgb, after.data(), imageWidth, imageHeight);
  const auto beforeApplying = Clock::now();
  if (const auto applied = lut->apply(source, destination, 0); !applied) {
    throw std::runtime_error(std::string(description(applied.error())));
  }
  const auto applying = Clock::now() - beforeApplying;

  showsColour() ? showInColours(before, after) : showAsTable(before, after);
  const double pixelsPerSecond =
      static_cast<double>(imageWidth * imageHeight) / std::chrono::duration<double>(applying).count();
  std::cout << "\n  read: a cube of " << facePoints << " points per axis, " << facePoints * facePoints * facePoints
            << " rows, in " << milliseconds(afterParsing - beginning) << "\n  applied: to " << imageWidth << " x "
            << imageHeight << " pixels of 16 bits in " << milliseconds(applying) << ", "
            << fixedDecimalText(pixelsPerSecond / 1e6, 0) << " million pixels a second\n";
}

}  // namespace meridian::command
