// LUTs of every kind, and the instruction sets on which they are applied.
#pragma once

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "meridian/lut/image_lut.h"
#include "tests/lut/lut_files.h"

namespace meridian::test {

/// Calls the function once for each instruction set that this machine has.
template <typename Function>
void onEveryInstructionSet(const Function& function) {
  hwy::SetSupportedTargetsForTest(0);
  std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
  targets.push_back(HWY_STATIC_TARGET);
  for (const std::int64_t target : targets) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    SCOPED_TRACE(hwy::TargetName(target));
    function();
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

inline std::vector<ImageLutOptions> allOptions() {
  std::vector<ImageLutOptions> options;
  for (const auto interpolation : allCases<LutInterpolation>()) {
    for (const auto order : allCases<LutAxisOrder>()) {
      for (const auto domain : allCases<LutInputDomain>()) {
        for (const auto rounding : allCases<LutRounding>()) options.push_back({interpolation, order, domain, rounding});
      }
    }
  }
  return options;
}

struct NamedLut {
  std::string name;
  std::unique_ptr<const ParsedLutFile> file;
};

/// Returns cubes of every kind and 1D LUTs: smooth, random, clipped, flat, negative, tiny, deep, and odd.
inline std::vector<NamedLut> manyLuts() {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> unit(0, 1);
  const auto noise = [&](double low, double high) {
    return [&random, &unit, low, high](double, double, double) {
      const auto value = [&] { return low + (high - low) * unit(random); };
      return LutColor{value(), value(), value()};
    };
  };
  const auto identity = [](double r, double g, double b) { return LutColor{r, g, b}; };
  const auto look = [](double r, double g, double b) {
    const auto curve = [](double x) { return std::clamp(1.3 * x * x * (3 - 2 * x) - 0.1, 0.0, 1.0); };
    return LutColor{curve(0.9 * r + 0.1 * g), curve(g), curve(0.8 * b + 0.2 * r)};
  };
  const auto scaled = [](const auto& function, double scale, bool rounded) {
    return [function, scale, rounded](double r, double g, double b) {
      const LutColor color = function(r, g, b);
      const auto value = [&](double x) { return rounded ? std::round(x * scale) : x * scale; };
      return LutColor{value(color.red), value(color.green), value(color.blue)};
    };
  };
  const auto constant = [](double value) {
    return [value](double, double, double) { return LutColor{value, value, value}; };
  };
  const auto row = [](double value) { return std::vector<LutColor>(8, LutColor{value, value, value}); };
  std::vector<NamedLut> luts;
  const auto add = [&](std::string name, std::unique_ptr<const ParsedLutFile> file) {
    luts.push_back({std::move(name), std::move(file)});
  };
  add("identity 17", cubeFile(cubeColors(17, identity)));
  add("identity 33", cubeFile(cubeColors(33, identity)));
  add("look 33", cubeFile(cubeColors(33, look)));
  add("noise 5", cubeFile(cubeColors(5, noise(0, 1))));
  add("noise 65", cubeFile(cubeColors(65, noise(0, 1))));
  add("noise above 0", cubeFile(cubeColors(6, noise(0.3, 0.987654321))));
  add("noise below 0", cubeFile(cubeColors(6, noise(-0.4, 1.7))));
  add("all negative", cubeFile(cubeColors(3, noise(-2, -1))));
  add("two points", cubeFile(cubeColors(2, noise(0, 1))));
  add("one point", cubeFile({{0.25, 0.5, 0.75}}));
  add("white", cubeFile(cubeColors(9, constant(1))));
  add("grey", cubeFile(cubeColors(9, constant(0.7))));
  add("black", cubeFile(row(0)));
  add("tiny values", cubeFile(cubeColors(4, noise(0, 1e-300))));
  add("huge values", cubeFile(cubeColors(4, noise(0, 1e30))));
  for (const int depth : {1, 5, 8, 10, 12, 16, 20, 40, 63}) {
    const double most = std::ldexp(1.0, depth) - 1;
    add("integers " + std::to_string(depth), cubeFile(cubeColors(9, scaled(look, most, true)), depth));
    add("integer noise " + std::to_string(depth), cubeFile(cubeColors(4, noise(0, most)), depth));
  }
  add("integers up to a power of two", cubeFile(cubeColors(9, scaled(identity, 1024, true)), 10));
  add("integers up to nearly 2", cubeFile(cubeColors(5, noise(0, 1.99999999)), 0));
  add("flat integers", cubeFile(cubeColors(5, constant(1023)), 10));
  LutDeclaredDomain domain{{-0.25, 0, 0.1}, {1.5, 0.5, 1.0}, true};
  add("with a domain", cubeFile(cubeColors(17, look), {}, domain));
  domain = {{0, 16, 64}, {1023, 900, 940}, true};
  add("integers with a domain", cubeFile(cubeColors(9, scaled(look, 1023, true)), 10, domain));

  const Url url = Url::fromFilePath("/made.lut");
  std::vector<LutColor> curve;
  for (int i = 0; i < 1024; ++i) curve.push_back({std::sqrt(i / 1023.0), i / 1023.0 - 0.01, 1 - i / 1023.0});
  const auto oneD = [&](std::unique_ptr<const OneDimensionConverter> converter, const LutDeclaredDomain& declared) {
    return std::make_unique<ParsedLutFactory::ParsedOneDimensionLutFile>(url, declared, std::move(converter));
  };
  add("curve", oneD(std::make_unique<OneDimensionFloatingPointConverter>(rowsOf(curve), -0.01, 1), {}));
  add("curve with a domain", oneD(std::make_unique<OneDimensionFloatingPointConverter>(rowsOf(curve), -0.01, 1),
                                  {{0.1, 0, -1}, {0.9, 1, 2}, true}));
  for (LutColor& color : curve) color = {std::floor(color.red * 4095), std::floor(color.green * 4095), 4095};
  add("integer curve", oneD(std::make_unique<OneDimensionsUnsignedIntegerConverter>(rowsOf(curve)), {}));
  add("integer curve with a domain", oneD(std::make_unique<OneDimensionsUnsignedIntegerConverter>(rowsOf(curve)),
                                          {{64, 64, 64}, {940, 940, 940}, true}));
  return luts;
}

}  // namespace meridian::test
