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
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "bench/allocations.h"
#include "meridian/base/aligned_allocator.h"
#include "meridian/base/numbers.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/parsed_lut_factory.h"

#ifdef MERIDIAN_BENCH_OPENCOLORIO
#include <OpenColorIO/OpenColorIO.h>
#endif
#ifdef MERIDIAN_BENCH_TIMECUBE
#include <timecube.h>
#endif

namespace meridian::bench {
namespace {

constexpr std::size_t width = 3840;
constexpr std::size_t height = 2160;

/// The cubes that are measured.
enum class Look : std::uint8_t {
  soft,             ///< as colourists make them: more contrast and saturation, a warm cast, black and white clipped
  steep,            ///< from a camera's logarithmic curve to a display, which is steep in the lights
  nearlyIdentical,  ///< compresses the most saturated colours and leaves all others
};

LutColor soft(double red, double green, double blue) {
  const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  const auto graded = [luma](double value, double gain) {
    const double saturated = luma + (value - luma) * 1.15;
    return std::pow(std::clamp(saturated * gain - 0.02, 0.0, 1.0), 0.92);
  };
  return {graded(red, 1.04), graded(green, 1.0), graded(blue, 0.97)};
}

LutColor steep(double red, double green, double blue) {
  // Eight stops below grey to six above it; then a wider gamut's matrix, a shoulder and the display's gamma.
  const auto linear = [](double value) { return 0.18 * std::exp2(value * 14 - 8); };
  const double r = linear(red);
  const double g = linear(green);
  const double b = linear(blue);
  const auto display = [](double value) {
    const double toned = std::max(value, 0.0) * 1.25 / (1 + 0.25 * std::max(value, 0.0));
    return std::pow(std::min(toned, 1.0), 1 / 2.4);
  };
  return {display(1.66 * r - 0.59 * g - 0.07 * b), display(-0.12 * r + 1.13 * g - 0.01 * b),
          display(-0.02 * r - 0.10 * g + 1.12 * b)};
}

LutColor nearlyIdentical(double red, double green, double blue) {
  const double most = std::max({red, green, blue});
  const auto compressed = [most](double value) {
    const double distance = most > 0 ? (most - value) / most : 0;
    constexpr double begins = 0.8;
    return distance <= begins ? value : most * (1 - (begins + (distance - begins) * 0.6));
  };
  return {compressed(red), compressed(green), compressed(blue)};
}

LutColor colorOf(Look look, double red, double green, double blue) {
  switch (look) {
    case Look::soft:
      return soft(red, green, blue);
    case Look::steep:
      return steep(red, green, blue);
    case Look::nearlyIdentical:
      return nearlyIdentical(red, green, blue);
  }
  return {};
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

/// How the numbers of a file are written: with six decimals, or without the zeros at their ends.
enum class Decimals : std::uint8_t { six, trimmed };

std::string numberText(double number, Decimals decimals) {
  std::string text = fixedDecimalText(number, 6);
  if (decimals == Decimals::six) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

/// A cube file.
class CubeFile {
 public:
  CubeFile(Look look, int faceSize, Decimals decimals) {
    std::string text = "TITLE \"look\"\nLUT_3D_SIZE " + std::to_string(faceSize) +
                       "\nDOMAIN_MIN 0.0 0.0 0.0\nDOMAIN_MAX 1.0 1.0 1.0\n";
    const double last = faceSize - 1;
    for (int first = 0; first < faceSize; ++first) {
      for (int second = 0; second < faceSize; ++second) {
        for (int third = 0; third < faceSize; ++third) {
          const LutColor color = colorOf(look, third / last, second / last, first / last);
          text += numberText(color.red, decimals) + ' ' + numberText(color.green, decimals) + ' ' +
                  numberText(color.blue, decimals) + '\n';
        }
      }
    }
    std::ofstream(path()) << text;
  }

  [[nodiscard]] const std::string& path() const { return file_.path(); }

 private:
  TemporaryFile file_{"look.cube"};
};

const std::string& cubePath(Look look, int faceSize, Decimals decimals = Decimals::six) {
  static std::map<std::tuple<Look, int, Decimals>, CubeFile> files;
  return files.try_emplace({look, faceSize, decimals}, look, faceSize, decimals).first->second.path();
}

std::unique_ptr<const ParsedLutFile> cube(Look look, int faceSize) {
  auto file = ParsedLutFactory::parsing(Url::fromFilePath(cubePath(look, faceSize)));
  if (!file) throw std::runtime_error(file.error().message());
  return *std::move(file);
}

/// The published meaning of a file, which is the one that OpenColorIO knows.
constexpr ImageLutOptions published{.axisOrder = LutAxisOrder::redFastest, .domain = LutInputDomain::declared};

/// The images that are measured.
enum class Scene : std::uint8_t {
  shades,      ///< smooth shades with a little grain, and colours up to the ends of the range
  photograph,  ///< detail of all sizes, hard edges, deep shadows and lights, and the grain of a camera
};

/// Noise without a period: random values at whole places, smooth between them.
class SmoothNoise {
 public:
  explicit SmoothNoise(unsigned seed) : values_(std::size_t{1} << 16U) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    for (double& value : values_) value = unit(random);
  }

  [[nodiscard]] double operator()(double x, double y) const {
    const auto value = [this](double column, double row) {
      return values_[(static_cast<std::size_t>(column) + 251 * static_cast<std::size_t>(row)) % values_.size()];
    };
    const double left = std::floor(x);
    const double top = std::floor(y);
    const auto eased = [](double t) { return t * t * (3 - 2 * t); };
    const double u = eased(x - left);
    const double v = eased(y - top);
    return std::lerp(std::lerp(value(left, top), value(left + 1, top), u),
                     std::lerp(value(left, top + 1), value(left + 1, top + 1), u), v);
  }

 private:
  std::vector<double> values_;
};

std::array<double, 3> shadesAt(double u, double v) {
  return {0.45 + 0.4 * std::sin(6 * u + 1), 0.45 + 0.35 * std::sin(5 * v + 3 * u), 0.4 + 0.4 * std::cos(4 * v - u)};
}

std::array<double, 3> photographAt(double u, double v) {
  static const std::array noises{SmoothNoise(1), SmoothNoise(2), SmoothNoise(3)};
  const auto detail = [&](const SmoothNoise& noise) {
    double sum = 0;
    for (double size = 4, share = 0.5; size <= 512; size *= 2, share /= 2) sum += share * noise(u * size, v * size);
    return sum;
  };
  const double light = std::pow(detail(noises[0]), 1.5) * 1.2;
  const bool isObject = std::fmod(u * 7 + v * 2, 1.0) < 0.35;  // with hard edges
  const double shade = isObject ? 0.4 : 1;
  return {light * shade * (0.6 + 0.8 * noises[1](u * 9, v * 9)), light * shade * (0.7 + 0.6 * noises[2](u * 8, v * 8)),
          light * shade * (1.4 - 0.8 * noises[1](u * 9, v * 9))};
}

template <typename Sample>
const std::vector<Sample>& image(Scene scene) {
  static std::map<Scene, std::vector<Sample>> images;
  std::vector<Sample>& made = images[scene];
  if (!made.empty()) return made;
  std::mt19937 random(1);
  std::normal_distribution<double> normal(0, 1);
  const double scale = std::is_same_v<Sample, float> ? 1 : std::pow(2, sizeof(Sample) * 8) - 1;
  const bool isPhotograph = scene == Scene::photograph;
  made.reserve(width * height * 3);
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const double u = static_cast<double>(x) / width;
      const double v = static_cast<double>(y) / height;
      const double common = isPhotograph ? 0 : 0.004 * normal(random);
      const double grain = isPhotograph ? 0.008 : 0.0012;
      for (const double value : isPhotograph ? photographAt(u, v) : shadesAt(u, v)) {
        made.push_back(static_cast<Sample>(std::clamp(value + common + grain * normal(random), 0.0, 1.0) * scale));
      }
    }
  }
  return made;
}

/// Counts pixels a second, and nanoseconds for each.
void setPixelRate(benchmark::State& state) {
  state.counters["pixels"] =
      benchmark::Counter(width * height, benchmark::Counter::kIsIterationInvariantRate, benchmark::Counter::kIs1000);
  state.counters["ns_per_pixel"] = benchmark::Counter(
      width * height * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void parseMeridian(benchmark::State& state, int faceSize, Decimals decimals) {
  const Url url = Url::fromFilePath(cubePath(Look::soft, faceSize, decimals));
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

/// What is applied to which image, and how.
struct ApplyCase {
  int faceSize = 33;
  Look look = Look::soft;
  Scene scene = Scene::shades;
  ImageLutOptions options = published;
  unsigned threads = 1;
  ImageLayout layout = ImageLayout::rgb;
  CodeValueRange range = CodeValueRange::full;
};

template <typename Sample>
void applyMeridian(benchmark::State& state, const ApplyCase& each) {
  const auto file = cube(each.look, each.faceSize);
  const CodeValueFormat format{ImageView<Sample>::sampleBits, each.range};
  const auto source =
      ImageView<const Sample>::packed(each.layout, image<Sample>(each.scene).data(), width, height, format);
  std::vector<Sample> result(width * height * 3);
  const auto destination = ImageView<Sample>::packed(each.layout, result.data(), width, height, format);
  const ImageLut lut = prepared<Sample>(*file, format, each.options);
  for (auto _ : state) benchmark::DoNotOptimize(lut.apply(source, destination, each.threads));
  setPixelRate(state);
}

void prepareMeridian(benchmark::State& state, int faceSize) {
  const auto file = cube(Look::soft, faceSize);
  for (auto _ : state) benchmark::DoNotOptimize(ImageLut::forCodeValues(*file, 16, 16, published));
}

void sampleMeridian(benchmark::State& state) {
  const auto file = cube(Look::soft, 33);
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

void parseOpenColorIO(benchmark::State& state, int faceSize, Decimals decimals) {
  const std::string& path = cubePath(Look::soft, faceSize, decimals);
  for (auto _ : state) {
    ocio::ClearAllCaches();
    benchmark::DoNotOptimize(processorOf(path));
  }
}

template <typename Sample>
void applyOpenColorIO(benchmark::State& state, const ApplyCase& each) {
  constexpr auto depth = std::is_same_v<Sample, float> ? ocio::BIT_DEPTH_F32
                         : sizeof(Sample) == 1         ? ocio::BIT_DEPTH_UINT8
                                                       : ocio::BIT_DEPTH_UINT16;
  const auto processor = processorOf(cubePath(each.look, each.faceSize))
                             ->getOptimizedCPUProcessor(depth, depth, ocio::OPTIMIZATION_DEFAULT);
  std::vector<Sample> source = image<Sample>(each.scene);
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

#ifdef MERIDIAN_BENCH_TIMECUBE
using TimecubeLut = std::unique_ptr<timecube_lut, decltype(&timecube_lut_free)>;
using TimecubeFilter = std::unique_ptr<timecube_filter, decltype(&timecube_filter_free)>;

/// Makes a filter of 16-bit planes by either of the forms that timecube's header has had.
template <typename Params>
TimecubeFilter timecubeFilter(const timecube_lut* lut, Params params) {
  params.src_type = TIMECUBE_PIXEL_WORD;
  params.src_range = TIMECUBE_RANGE_FULL;
  params.src_depth = 16;
  params.dst_type = TIMECUBE_PIXEL_WORD;
  params.dst_range = TIMECUBE_RANGE_FULL;
  params.dst_depth = 16;
  const auto instructions = __builtin_cpu_supports("avx512vl") != 0 ? TIMECUBE_CPU_AVX512 : TIMECUBE_CPU_AVX2;
  timecube_filter* filter = nullptr;
  if constexpr (requires { params.width; }) {
    params.width = width;
    params.height = height;
    params.cpu = instructions;
    filter = timecube_filter_create(lut, &params);
  } else {
    filter = timecube_filter_create(lut, &params, width, height, instructions);
  }
  return {filter, timecube_filter_free};
}

void applyTimecube(benchmark::State& state, const ApplyCase& each) {
  const TimecubeLut lut(timecube_lut_from_file(cubePath(each.look, each.faceSize).c_str()), timecube_lut_free);
  if (lut == nullptr) throw std::runtime_error("timecube cannot read the cube");
  const TimecubeFilter filter = timecubeFilter(lut.get(), timecube_filter_params{});
  if (filter == nullptr) throw std::runtime_error("timecube cannot prepare the cube");
  const std::vector<std::uint16_t>& source = image<std::uint16_t>(each.scene);
  std::vector<std::uint16_t> result(source.size());
  std::array<const void*, 3> from{};
  std::array<void*, 3> into{};
  for (std::size_t channel = 0; channel < 3; ++channel) {
    from[channel] = source.data() + channel * width * height;
    into[channel] = result.data() + channel * width * height;
  }
  constexpr std::ptrdiff_t row = width * sizeof(std::uint16_t);
  const std::array<std::ptrdiff_t, 3> strides{row, row, row};
  std::vector<char, AlignedAllocator<char, 64>> memory(timecube_filter_get_tmp_size(filter.get()));
  for (auto _ : state) {
    timecube_filter_apply(filter.get(), from.data(), strides.data(), into.data(), strides.data(), memory.data());
  }
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

/// Registers a case for this library and, if they can do it too, for its peers.
template <typename Sample>
void registerApply(const std::string& name, const ApplyCase& each, bool hasPeers) {
  const std::string full = "lut_apply_" + name + "/" + std::to_string(each.faceSize);
  registerCase(full + "/meridian", applyMeridian<Sample>, each);
#ifdef MERIDIAN_BENCH_OPENCOLORIO
  if (hasPeers) registerCase(full + "/OpenColorIO", applyOpenColorIO<Sample>, each);
#else
  static_cast<void>(hasPeers);
#endif
#ifdef MERIDIAN_BENCH_TIMECUBE
  // It is a peer for planes of 16 bits, with results in single precision.
  if (std::is_same_v<Sample, std::uint16_t> && each.layout == ImageLayout::planarRgb &&
      each.range == CodeValueRange::full) {
    registerCase(full + "/timecube", applyTimecube, each);
  }
#endif
}

const bool areRegistered = [] {
  ImageLutOptions tetrahedral = published;
  tetrahedral.interpolation = LutInterpolation::tetrahedral;
  ImageLutOptions nearest = published;
  nearest.rounding = LutRounding::nearest;
  for (const int faceSize : {33, 65}) {
    const std::string size = std::to_string(faceSize);
    for (const Decimals decimals : {Decimals::six, Decimals::trimmed}) {
      const std::string name = decimals == Decimals::six ? "lut_parse/" : "lut_parse_trimmed/";
      registerCase(name + size + "/meridian", parseMeridian, faceSize, decimals);
#ifdef MERIDIAN_BENCH_OPENCOLORIO
      registerCase(name + size + "/OpenColorIO", parseOpenColorIO, faceSize, decimals);
#endif
    }
    registerCase("lut_prepare/" + size + "/meridian", prepareMeridian, faceSize);
    using Word = std::uint16_t;
    const ApplyCase plain{.faceSize = faceSize};
    const auto with = [&plain](const auto& change) {
      ApplyCase changed = plain;
      change(changed);
      return changed;
    };
    const auto onPhotograph = [&with](Look look) {
      return with([look](ApplyCase& each) {
        each.look = look;
        each.scene = Scene::photograph;
      });
    };
    registerApply<Word>("u16", plain, true);
    registerApply<std::uint8_t>("u8", plain, true);
    registerApply<float>("f32", plain, true);
    registerApply<Word>("u16_photograph", onPhotograph(Look::soft), true);
    registerApply<Word>("u16_photograph_steep", onPhotograph(Look::steep), true);
    registerApply<Word>("u16_photograph_nearly_identical", onPhotograph(Look::nearlyIdentical), true);
    registerApply<Word>("u16_two_threads", with([](ApplyCase& each) { each.threads = 2; }), false);
    registerApply<Word>("u16_tetrahedral", with([&](ApplyCase& each) { each.options = tetrahedral; }), false);
    registerApply<Word>("u16_nearest", with([&](ApplyCase& each) { each.options = nearest; }), false);
    registerApply<Word>("u16_planar", with([](ApplyCase& each) { each.layout = ImageLayout::planarRgb; }), false);
    registerApply<Word>("u16_planar_photograph_steep", with([](ApplyCase& each) {
                          each.layout = ImageLayout::planarRgb;
                          each.look = Look::steep;
                          each.scene = Scene::photograph;
                        }),
                        false);
    registerApply<Word>("u16_limited", with([](ApplyCase& each) {
                          each.layout = ImageLayout::planarRgb;
                          each.range = CodeValueRange::limited;
                        }),
                        false);
  }
  return true;
}();

}  // namespace
}  // namespace meridian::bench
