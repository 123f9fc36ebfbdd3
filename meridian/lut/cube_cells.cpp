#include "meridian/lut/cube_cells.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <new>

#include "meridian/lut/cube_error_bounds.h"
#include "meridian/lut/cube_kernel.h"

namespace meridian::inline v0_2::detail {
namespace {

/// A number for each channel of a point, and an unused one.
using Channels = std::array<double, 4>;

/// The steps of a cell in the order of `CubeCells::data`, with which bits 1, 2 and 4 mean blue, red and green.
using Steps = std::array<Channels, 8>;

/// Makes steps of the values at a cell's corners, in place.
void makeSteps(Steps& corners) noexcept {
  for (std::size_t axis = 1; axis < 8; axis *= 2) {
    for (std::size_t corner = 0; corner < 8; ++corner) {
      if ((corner & axis) == 0) continue;
      for (std::size_t channel = 0; channel < 4; ++channel) corners[corner][channel] -= corners[corner - axis][channel];
    }
  }
}

/// Returns a bound on what single precision rounds in a channel of a cell, without the final integers. A result is
///
///     low = f_g * g + f_r * (r + f_g * rg)
///     high = (b + f_g * gb) + f_r * (rb + f_g * rgb)
///     low + f_b * high
///
/// in which every product and every sum is rounded once at most, and every step when it is stored. AVX2 adds b last in
/// `high`; it fuses products and sums there, so that its roundings stay below those counted here. `fraction` is the
/// error of a fraction, which counts with the largest slope along its axis.
double boundOf(const Steps& steps, std::size_t channel, double fraction) noexcept {
  const auto size = [&](std::size_t step) { return std::fabs(steps[step][channel]); };
  const double b = size(1);
  const double r = size(2);
  const double rb = size(3);
  const double g = size(4);
  const double gb = size(5);
  const double rg = size(6);
  const double rgb = size(7);
  const double stored = b + r + rb + g + gb + rg + rgb;
  const double low = g + (rg + (r + rg)) + (r + rg) + (g + r + rg);
  const double high = (gb + (b + gb)) + (rgb + (rb + rgb)) + (rb + rgb) + (b + gb + rb + rgb);
  const double sums = (b + gb + rb + rgb) + stored;
  const double slopes = b + r + g + 2 * (rb + gb + rg) + 3 * rgb;
  return (stored + low + high + sums) * roundingError + slopes * fraction;
}

/// Returns whether a cube may have cells. On axes of AxisForm::any a place may be in the neighbour of the definition's
/// cell; the bounds of the points cover neighbours, those of the cells do not.
bool suitsCells(const CubeKernel& kernel) noexcept {
  return kernel.filterApplies && kernel.axisForm != AxisForm::any &&
         kernel.definition.faceSize <= CubeCells::mostPoints &&
         kernel.definition.interpolation == LutInterpolation::trilinear;
}

/// Returns a bound on the errors of all channels of a cell, as CubeCells stores it.
double boundOf(const CubeKernel& kernel, const Steps& steps) noexcept {
  double bound = 0;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    bound = std::max(bound, boundOf(steps, channel, kernel.fractionError()));
  }
  return std::ceil(bound * 1.01 + kernel.definitionError() * CubeCells::one + 2);  // and the roundings to integers
}

float asFloat(double wholeNumber) noexcept { return std::bit_cast<float>(static_cast<std::int32_t>(wholeNumber)); }

}  // namespace

CubeCells::CubeCells(const CubeKernel& kernel) {
  const CubeDefinition& definition = kernel.definition;
  const auto face = static_cast<std::size_t>(definition.faceSize);
  const std::size_t count = face - 1;
  const LutColor* const colors = definition.cube->lattice().data();
  const double scale = kernel.storedScale(one);
  const double offset = kernel.storedOffset(one);
  // Results and their distances from a cell's first point are blends of what the corners have. As code values they have
  // to fit into 32 bits with their errors, and larger bounds would not fit into 16 bits; floats must not overflow.
  const bool areCodeValues = kernel.formats.has_value();
  const double mostResult = areCodeValues ? 0x1.Fp30 : 0x1p120;
  constexpr double mostBound = 0.25 * one;

  std::vector<Channels> lines(4 * face);  // of points along blue: at both reds and, after them, at the next green
  const auto readLine = [&](std::size_t red, std::size_t green, std::size_t line) {
    const LutColor* const first = colors + red * definition.strides.red + green * definition.strides.green;
    for (std::size_t blue = 0; blue < face; ++blue) {
      const LutColor& point = first[blue * definition.strides.blue];
      lines[line * face + blue] = {point.red * scale + offset, point.green * scale + offset,
                                   point.blue * scale + offset, 0};
    }
  };
  floats_.resize(count * count * count * floatsPerCell);
  for (std::size_t red = 0; red < count; ++red) {
    readLine(red, 0, 0);
    readLine(red + 1, 0, 1);
    for (std::size_t green = 0; green < count; ++green) {
      readLine(red, green + 1, 2);
      readLine(red + 1, green + 1, 3);
      float* cell = floats_.data() + (red * count + green) * count * floatsPerCell;
      for (std::size_t blue = 0; blue < count; ++blue, cell += floatsPerCell) {
        Steps steps;
        for (std::size_t line = 0; line < 4; ++line) {
          steps[line * 2] = lines[line * face + blue];
          steps[line * 2 + 1] = lines[line * face + blue + 1];
        }
        const Channels point = steps[0];
        for (const Channels& corner : steps) {
          for (std::size_t channel = 0; channel < 3; ++channel) {
            areUsable_ = areUsable_ && std::fabs(corner[channel]) < mostResult &&
                         std::fabs(corner[channel] - point[channel]) < mostResult;
          }
        }
        makeSteps(steps);
        const double bound = areCodeValues ? boundOf(kernel, steps) : 0;
        areUsable_ = areUsable_ && bound < mostBound;
        if (!areUsable_) return;
        const unsigned flat = kernel.codesAvoidPoints ? kernel.flatChannelsOfCell(red, green, blue) : 0;
        for (std::size_t channel = 0; channel < 3; ++channel) {
          double stored = std::floor(point[channel] + 0.5);
          // In the middle between two integers flat channels are certain, and truncating yields the same.
          if ((flat & (1U << (2 * channel))) != 0) stored = (std::floor(stored / one) + 0.5) * one;
          cell[channel] = areCodeValues ? asFloat(stored) : static_cast<float>(point[channel]);
        }
        cell[3] = asFloat(bound);
        for (std::size_t step = 1; step < 8; ++step) {
          for (std::size_t channel = 0; channel < 4; ++channel) {
            cell[step * 4 + channel] = static_cast<float>(steps[step][channel]);
          }
        }
      }
      std::copy_n(lines.begin() + static_cast<std::ptrdiff_t>(2 * face), 2 * face, lines.begin());
    }
  }
}

void CubeCellsOnDemand::make(const CubeKernel& kernel) {
  try {
    owned_ = std::make_unique<const CubeCells>(kernel);
    if (!owned_->areUsable()) owned_.reset();
  } catch (const std::bad_alloc&) {
    owned_.reset();  // the points serve as well
  }
  cells_.store(owned_.get(), std::memory_order_release);
}

void CubeCellsOnDemand::prepare(const CubeKernel& kernel) {
  if (!kernel.formats && suitsCells(kernel)) make(kernel);
}

const CubeCells* CubeCellsOnDemand::forPixels(const CubeKernel& kernel, std::uint64_t count) {
  if (kernel.formats && suitsCells(kernel)) {
    // A cell takes about 50 ns to prepare, and a pixel gains about half a nanosecond.
    constexpr std::uint64_t pixelsPerCell = 100;
    const auto cellsOnAxis = static_cast<std::uint64_t>(kernel.definition.faceSize - 1);
    const std::uint64_t enough = cellsOnAxis * cellsOnAxis * cellsOnAxis * pixelsPerCell;
    const std::uint64_t before =
        pixels_.load(std::memory_order_relaxed) < enough ? pixels_.fetch_add(count, std::memory_order_relaxed) : enough;
    if (before < enough && before + count >= enough) make(kernel);  // true of one thread alone
  }
  return cells_.load(std::memory_order_acquire);
}

}  // namespace meridian::inline v0_2::detail
