// The C interface beside the C++ calls that it makes: a property read, a vector parsed, a LUT applied to an image.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

#include "bench/allocations.h"
#include "bench/argument_vectors.h"
#include "meridian/c/meridian.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/parsed_lut_factory.h"

namespace meridian::bench {
namespace {

template <std::size_t count>
constexpr std::array<MeridianText, count> textsOf(const std::array<std::string_view, count>& words) {
  std::array<MeridianText, count> texts{};
  for (std::size_t index = 0; index < count; ++index) texts[index] = {words[index].data(), words[index].size()};
  return texts;
}

constexpr auto cWords = textsOf(words);
constexpr auto cPropertyWords = textsOf(propertyWords);

MeridianArguments* filledStore() {
  return meridian_arguments_create(cPropertyWords.data(), cPropertyWords.size(), false, nullptr);
}

template <auto getter>
void readByCpp(benchmark::State& state) {
  const TranscodeCliArguments arguments(propertyWords);
  for (auto _ : state) benchmark::DoNotOptimize((arguments.*getter)());
}

/// Reads by a function that returns the value, or one that stores it.
template <auto getter>
void readByC(benchmark::State& state) {
  MeridianArguments* const arguments = filledStore();
  for (auto _ : state) benchmark::DoNotOptimize(getter(arguments));
  meridian_arguments_destroy(arguments);
}
template <auto getter, typename Value>
void readIntoByC(benchmark::State& state) {
  MeridianArguments* const arguments = filledStore();
  Value value{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(getter(arguments, &value));
    benchmark::DoNotOptimize(value);
  }
  meridian_arguments_destroy(arguments);
}

using Arguments = TranscodeCliArguments;
BENCHMARK(readByCpp<&Arguments::gpuDecode>)->Name("c_read_switch/meridian");
BENCHMARK(readByC<meridian_arguments_gpu_decode>)->Name("c_read_switch/c");
BENCHMARK(readByCpp<&Arguments::videoFormat>)->Name("c_read_enumerated/meridian");
BENCHMARK(readByC<meridian_arguments_video_format>)->Name("c_read_enumerated/c");
BENCHMARK(readByCpp<&Arguments::videoProfile>)->Name("c_read_text/meridian");
BENCHMARK(readByC<meridian_arguments_video_profile>)->Name("c_read_text/c");
BENCHMARK(readByCpp<&Arguments::lutFile>)->Name("c_read_file/meridian");
BENCHMARK(readByC<meridian_arguments_lut_file>)->Name("c_read_file/c");
BENCHMARK(readByCpp<&Arguments::videoFrameRate>)->Name("c_read_float/meridian");
BENCHMARK(readIntoByC<meridian_arguments_video_frame_rate, float>)->Name("c_read_float/c");
BENCHMARK(readByCpp<&Arguments::videoBitDepth>)->Name("c_read_integer/meridian");
BENCHMARK(readIntoByC<meridian_arguments_video_bit_depth, std::int64_t>)->Name("c_read_integer/c");
BENCHMARK(readByCpp<&Arguments::videoDimensions>)->Name("c_read_dimensions/meridian");
BENCHMARK(readIntoByC<meridian_arguments_video_dimensions, MeridianSize>)->Name("c_read_dimensions/c");
BENCHMARK(readByCpp<&Arguments::timecode>)->Name("c_read_timecode/meridian");
BENCHMARK(readIntoByC<meridian_arguments_timecode, MeridianTimecode>)->Name("c_read_timecode/c");

template <auto setter, auto... value>
void setByCpp(benchmark::State& state) {
  TranscodeCliArguments arguments(propertyWords);
  for (auto _ : state) (arguments.*setter)(value...);
}

template <auto setter, auto... value>
void setByC(benchmark::State& state) {
  MeridianArguments* const arguments = filledStore();
  for (auto _ : state) benchmark::DoNotOptimize(setter(arguments, value..., nullptr));
  meridian_arguments_destroy(arguments);
}

BENCHMARK(setByCpp<&Arguments::setGpuDecode, true>)->Name("c_set_switch/meridian");
BENCHMARK(setByC<meridian_arguments_set_gpu_decode, true>)->Name("c_set_switch/c");
BENCHMARK(setByCpp<&Arguments::setVideoFrameRate, 23.976F>)->Name("c_set_float/meridian");
BENCHMARK(setByC<meridian_arguments_set_video_frame_rate, 23.976F>)->Name("c_set_float/c");

void parseByCpp(benchmark::State& state) {
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(TranscodeCliArguments(words));
}
void parseByC(benchmark::State& state) {
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    MeridianArguments* const arguments = meridian_arguments_create(cWords.data(), cWords.size(), false, nullptr);
    benchmark::DoNotOptimize(arguments);
    meridian_arguments_destroy(arguments);
  }
}
BENCHMARK(parseByCpp)->Name("c_parse/meridian");
BENCHMARK(parseByC)->Name("c_parse/c");

/// A cube of 33 points per axis in a file of its own, and an image of 10 bits to apply it to.
class Image {
 public:
  Image() : samples_(width * height * 3) {
    path_ = std::filesystem::temp_directory_path() / "meridian_bench_c_face.cube";
    std::ofstream file(path_);
    file << "LUT_3D_SIZE 33\n";
    for (int row = 0; row < 33 * 33 * 33; ++row) {
      file << row / 1089 / 40.0 + 0.1 << ' ' << row / 33 % 33 / 32.0 << ' ' << row % 33 / 32.0 << '\n';
    }
    for (std::size_t place = 0; place < samples_.size(); ++place) {
      samples_[place] = static_cast<std::uint16_t>(place * 7 % 1024);
    }
  }
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image() { std::filesystem::remove(path_); }

  static constexpr std::size_t width = 3840;
  static constexpr std::size_t height = 2160;
  [[nodiscard]] const std::string& path() const { return path_.native(); }
  [[nodiscard]] std::uint16_t* samples() { return samples_.data(); }

 private:
  std::filesystem::path path_;
  std::vector<std::uint16_t> samples_;
};

void applyByCpp(benchmark::State& state) {
  Image image;
  std::vector<std::uint16_t> results(Image::width * Image::height * 3);
  const auto file = ParsedLutFactory::parsing(Url::fromFilePath(image.path()));
  const auto source =
      ImageView<std::uint16_t>::packed(ImageLayout::rgb, image.samples(), Image::width, Image::height, 10);
  const auto destination =
      ImageView<std::uint16_t>::packed(ImageLayout::rgb, results.data(), Image::width, Image::height, 10);
  for (auto _ : state) {
    if (!applyLut(**file, source, destination)) state.SkipWithError("not applied");
  }
}
void applyByC(benchmark::State& state) {
  Image image;
  std::vector<std::uint16_t> results(Image::width * Image::height * 3);
  MeridianLut* const lut = meridian_lut_open(meridian_text(image.path().c_str()), nullptr);
  MeridianImage source =
      meridian_image_packed(MERIDIAN_SAMPLES_UINT16, image.samples(), 3, Image::width, Image::height);
  MeridianImage destination =
      meridian_image_packed(MERIDIAN_SAMPLES_UINT16, results.data(), 3, Image::width, Image::height);
  source.bit_depth = destination.bit_depth = 10;
  for (auto _ : state) {
    if (!meridian_lut_apply(lut, &source, &destination, nullptr, 1, nullptr)) state.SkipWithError("not applied");
  }
  meridian_lut_destroy(lut);
}
BENCHMARK(applyByCpp)->Name("c_apply_lut/meridian")->Unit(benchmark::kMillisecond);
BENCHMARK(applyByC)->Name("c_apply_lut/c")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace meridian::bench
