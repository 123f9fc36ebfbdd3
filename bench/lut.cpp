// LUTs: reading files, single samples and whole images, beside OpenColorIO where that is present.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/allocations.h"
#include "meridian/base/numbers.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/parsed_lut_factory.h"

#ifdef MERIDIAN_BENCH_OPENCOLORIO
#include <OpenColorIO/OpenColorIO.h>
#endif

namespace meridian::bench {
namespace {

constexpr std::size_t width = 3840;
constexpr std::size_t height = 2160;

/// A look as colourists make them: more contrast and saturation, a warm cast, black and white clipped.
LutColor look(double red, double green, double blue) {
  const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  const auto graded = [luma](double value, double gain) {
    const double saturated = luma + (value - luma) * 1.15;
    return std::pow(std::clamp(saturated * gain - 0.02, 0.0, 1.0), 0.92);
  };
  return {graded(red, 1.04), graded(green, 1.0), graded(blue, 0.97)};
}

/// A file in a directory of its own, which is removed with it.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& name) {
    std::string pattern = (std::filesystem::temp_directory_path() / "meridian-bench-XXXXXX").string();
    directory_ = mkdtemp(pattern.data());
    path_ = (directory_ / name).string();
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::filesystem::path directory_;
  std::string path_;
};

/// A cube file with six decimals.
class CubeFile {
 public:
  explicit CubeFile(int faceSize) {
    std::string text = "TITLE \"look\"\nLUT_3D_SIZE " + std::to_string(faceSize) +
                       "\nDOMAIN_MIN 0.0 0.0 0.0\nDOMAIN_MAX 1.0 1.0 1.0\n";
    const double last = faceSize - 1;
    for (int first = 0; first < faceSize; ++first) {
      for (int second = 0; second < faceSize; ++second) {
        for (int third = 0; third < faceSize; ++third) {
          const LutColor color = look(third / last, second / last, first / last);
          text += fixedDecimalText(color.red, 6) + ' ' + fixedDecimalText(color.green, 6) + ' ' +
                  fixedDecimalText(color.blue, 6) + '\n';
        }
      }
    }
    std::ofstream(path()) << text;
  }

  [[nodiscard]] const std::string& path() const { return file_.path(); }

 private:
  TemporaryFile file_{"look.cube"};
};

const std::string& cubePath(int faceSize) {
  static std::map<int, CubeFile> files;
  return files.try_emplace(faceSize, faceSize).first->second.path();
}

std::unique_ptr<const ParsedLutFile> cube(int faceSize) {
  auto file = ParsedLutFactory::parsing(Url::fromFilePath(cubePath(faceSize)));
  if (!file) throw std::runtime_error(file.error().message());
  return *std::move(file);
}

/// The published meaning of a file, which is the one that OpenColorIO knows.
constexpr ImageLutOptions published{.axisOrder = LutAxisOrder::redFastest, .domain = LutInputDomain::declared};

/// Returns an image with smooth shades, a little grain, and colours up to the ends of the range, as a camera records.
template <typename Sample>
const std::vector<Sample>& image() {
  static const std::vector<Sample> samples = [] {
    std::mt19937 random(1);
    std::normal_distribution<double> grain(0, 0.004);
    const double scale = std::is_same_v<Sample, float> ? 1 : std::pow(2, sizeof(Sample) * 8) - 1;
    std::vector<Sample> made;
    made.reserve(width * height * 3);
    for (std::size_t y = 0; y < height; ++y) {
      for (std::size_t x = 0; x < width; ++x) {
        const double u = static_cast<double>(x) / width;
        const double v = static_cast<double>(y) / height;
        const std::array color{0.45 + 0.4 * std::sin(6 * u + 1), 0.45 + 0.35 * std::sin(5 * v + 3 * u),
                               0.4 + 0.4 * std::cos(4 * v - u)};
        const double common = grain(random);
        for (const double value : color) {
          made.push_back(static_cast<Sample>(std::clamp(value + common + 0.3 * grain(random), 0.0, 1.0) * scale));
        }
      }
    }
    return made;
  }();
  return samples;
}

void setPixelRate(benchmark::State& state) {
  state.counters["pixels"] =
      benchmark::Counter(width * height, benchmark::Counter::kIsIterationInvariantRate, benchmark::Counter::kIs1000);
}

void parseMeridian(benchmark::State& state, int faceSize) {
  const Url url = Url::fromFilePath(cubePath(faceSize));
  const std::size_t before = liveBytes();
  startPeak();
  for (auto _ : state) benchmark::DoNotOptimize(ParsedLutFactory::parsed(url));
  const auto points = static_cast<double>(faceSize * faceSize * faceSize);
  state.counters["peak_bytes"] = static_cast<double>(peakBytes() - before);
  state.counters["lattice_bytes"] = points * sizeof(LutColor);
}

/// Reads a 1D LUT of this many rows with six decimals; the time for a row must not depend on their number.
void parseRows(benchmark::State& state) {
  const auto rows = static_cast<std::size_t>(state.range(0));
  const TemporaryFile file("rows.cube");
  std::string text = "LUT_1D_SIZE " + std::to_string(rows) + "\n";
  for (std::size_t row = 0; row < rows; ++row) {
    const std::string number = fixedDecimalText(static_cast<double>(row) / static_cast<double>(rows), 6);
    text += number + ' ' + number + ' ' + number + '\n';
  }
  std::ofstream(file.path()) << text;
  text = {};
  const std::size_t before = liveBytes();
  startPeak();
  for (auto _ : state) benchmark::DoNotOptimize(ParsedLutFactory::parsed(Url::fromFilePath(file.path())));
  state.counters["rows"] = benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kIsIterationInvariantRate,
                                              benchmark::Counter::kIs1000);
  state.counters["peak_bytes_per_row"] = static_cast<double>(peakBytes() - before) / static_cast<double>(rows);
}
BENCHMARK(parseRows)
    ->Name("lut_parse_rows/meridian")
    ->Arg(1 << 20)
    ->Arg(1 << 22)
    ->Arg(1 << 24)
    ->Unit(benchmark::kMillisecond);

template <typename Sample>
ImageLut prepared(const ParsedLutFile& file, CodeValueFormat format, const ImageLutOptions& options) {
  if constexpr (std::is_same_v<Sample, float>) {
    return ImageLut::forFloats(file, options);
  } else {
    return *ImageLut::forCodeValues(file, format, format, options);
  }
}

template <typename Sample>
void applyMeridian(benchmark::State& state, int faceSize, unsigned threads, const ImageLutOptions& options,
                   ImageLayout layout, CodeValueRange range) {
  const auto file = cube(faceSize);
  const CodeValueFormat format{ImageView<Sample>::sampleBits, range};
  const auto source = ImageView<const Sample>::packed(layout, image<Sample>().data(), width, height, format);
  std::vector<Sample> result(width * height * 3);
  const auto destination = ImageView<Sample>::packed(layout, result.data(), width, height, format);
  const ImageLut lut = prepared<Sample>(*file, format, options);
  for (auto _ : state) benchmark::DoNotOptimize(lut.apply(source, destination, threads));
  setPixelRate(state);
}

void prepareMeridian(benchmark::State& state, int faceSize) {
  const auto file = cube(faceSize);
  for (auto _ : state) benchmark::DoNotOptimize(ImageLut::forCodeValues(*file, 16, 16, published));
}

void sampleMeridian(benchmark::State& state) {
  const auto file = cube(33);
  const RGBSampleConverter& converter = file->inputConverter();
  const AllocationsPerIteration allocations(state);
  std::uint64_t code = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(converter.convertIfPossible(code, 1023 - code, code / 2, 10));
    code = (code + 389) % 1024;
  }
}
BENCHMARK(sampleMeridian)->Name("lut_sample/33/meridian");

#ifdef MERIDIAN_BENCH_OPENCOLORIO
namespace ocio = OCIO_NAMESPACE;

ocio::ConstProcessorRcPtr processorOf(const std::string& path) {
  const auto transform = ocio::FileTransform::Create();
  transform->setSrc(path.c_str());
  transform->setInterpolation(ocio::INTERP_LINEAR);
  return ocio::Config::CreateRaw()->getProcessor(transform);
}

void parseOpenColorIO(benchmark::State& state, int faceSize) {
  for (auto _ : state) {
    ocio::ClearAllCaches();
    benchmark::DoNotOptimize(processorOf(cubePath(faceSize)));
  }
}

template <typename Sample>
void applyOpenColorIO(benchmark::State& state, int faceSize) {
  constexpr auto depth = std::is_same_v<Sample, float> ? ocio::BIT_DEPTH_F32
                         : sizeof(Sample) == 1         ? ocio::BIT_DEPTH_UINT8
                                                       : ocio::BIT_DEPTH_UINT16;
  const auto processor =
      processorOf(cubePath(faceSize))->getOptimizedCPUProcessor(depth, depth, ocio::OPTIMIZATION_DEFAULT);
  std::vector<Sample> source = image<Sample>();
  std::vector<Sample> result(source.size());
  const auto described = [&](std::vector<Sample>& samples) {
    return ocio::PackedImageDesc(samples.data(), width, height, ocio::CHANNEL_ORDERING_RGB, depth, ocio::AutoStride,
                                 ocio::AutoStride, ocio::AutoStride);
  };
  const auto from = described(source);
  auto into = described(result);
  for (auto _ : state) processor->apply(from, into);
  setPixelRate(state);
}
#endif

template <typename Function, typename... Arguments>
void registerCase(const std::string& name, Function function, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { function(state, arguments...); })
      ->Unit(benchmark::kMillisecond)
      ->MeasureProcessCPUTime()
      ->UseRealTime();
}

const bool areRegistered = [] {
  constexpr ImageLutOptions tetrahedral{
      .interpolation = LutInterpolation::tetrahedral, .axisOrder = published.axisOrder, .domain = published.domain};
  constexpr ImageLutOptions nearest{
      .axisOrder = published.axisOrder, .domain = published.domain, .rounding = LutRounding::nearest};
  for (const int faceSize : {33, 65}) {
    const std::string size = std::to_string(faceSize);
    registerCase("lut_parse/" + size + "/meridian", parseMeridian, faceSize);
    registerCase("lut_prepare/" + size + "/meridian", prepareMeridian, faceSize);
    registerCase("lut_apply_u16/" + size + "/meridian", applyMeridian<std::uint16_t>, faceSize, 1U, published,
                 ImageLayout::rgb, CodeValueRange::full);
    registerCase("lut_apply_u8/" + size + "/meridian", applyMeridian<std::uint8_t>, faceSize, 1U, published,
                 ImageLayout::rgb, CodeValueRange::full);
    registerCase("lut_apply_f32/" + size + "/meridian", applyMeridian<float>, faceSize, 1U, published, ImageLayout::rgb,
                 CodeValueRange::full);
    registerCase("lut_apply_u16_two_threads/" + size + "/meridian", applyMeridian<std::uint16_t>, faceSize, 2U,
                 published, ImageLayout::rgb, CodeValueRange::full);
    registerCase("lut_apply_u16_tetrahedral/" + size + "/meridian", applyMeridian<std::uint16_t>, faceSize, 1U,
                 tetrahedral, ImageLayout::rgb, CodeValueRange::full);
    registerCase("lut_apply_u16_nearest/" + size + "/meridian", applyMeridian<std::uint16_t>, faceSize, 1U, nearest,
                 ImageLayout::rgb, CodeValueRange::full);
    registerCase("lut_apply_u16_planar/" + size + "/meridian", applyMeridian<std::uint16_t>, faceSize, 1U, published,
                 ImageLayout::planarRgb, CodeValueRange::full);
    registerCase("lut_apply_u16_limited/" + size + "/meridian", applyMeridian<std::uint16_t>, faceSize, 1U, published,
                 ImageLayout::planarRgb, CodeValueRange::limited);
#ifdef MERIDIAN_BENCH_OPENCOLORIO
    registerCase("lut_parse/" + size + "/OpenColorIO", parseOpenColorIO, faceSize);
    registerCase("lut_apply_u16/" + size + "/OpenColorIO", applyOpenColorIO<std::uint16_t>, faceSize);
    registerCase("lut_apply_u8/" + size + "/OpenColorIO", applyOpenColorIO<std::uint8_t>, faceSize);
    registerCase("lut_apply_f32/" + size + "/OpenColorIO", applyOpenColorIO<float>, faceSize);
#endif
  }
  return true;
}();

}  // namespace
}  // namespace meridian::bench
