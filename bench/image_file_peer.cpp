// The peer of `meridian lut apply`: reads an image by OpenImageIO, applies a LUT by OpenColorIO, and writes the image
// by OpenImageIO, in 32-bit float as OpenColorIO's own converter does. It prints the seconds that each step takes. It
// also makes the images that are measured. `image_files.py` runs it:
//
//     image-file-peer make IMAGE        a photograph-like image of 3840 x 2160, kind and depth by the extension
//     image-file-peer apply LUT IN OUT
#include <OpenColorIO/OpenColorIO.h>
#include <OpenImageIO/imageio.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace OCIO = OCIO_NAMESPACE;

constexpr int width = 3840;
constexpr int height = 2160;

/// Waves for shapes and edges, and grain.
std::vector<float> photograph() {
  std::vector<float> samples(std::size_t{3} * width * height);
  std::minstd_rand random(1);
  std::size_t next = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double u = static_cast<double>(x) / width;
      const double v = static_cast<double>(y) / height;
      const double light = 0.45 + 0.3 * std::sin(9 * u + 5 * std::sin(4 * v)) + 0.15 * std::cos(23 * v * u);
      for (const double tint : {1.0, 0.85, 0.7}) {
        const double grain = 0.02 * (static_cast<double>(random() % 1024) / 1024 - 0.5);
        const double sample = light * tint + 0.05 * std::sin(40 * u * tint) + grain;
        samples[next++] = static_cast<float>(std::min(std::max(sample, 0.0), 1.0));
      }
    }
  }
  return samples;
}

void write(const std::string& path, const OIIO::ImageSpec& spec, const std::vector<float>& samples) {
  const auto output = OIIO::ImageOutput::create(path);
  if (!output || !output->open(path, spec) || !output->write_image(OIIO::TypeDesc::FLOAT, samples.data()) ||
      !output->close()) {
    throw std::runtime_error(path + ": " + (output ? output->geterror() : OIIO::geterror()));
  }
}

void make(const std::string& path) {
  const bool isExr = path.ends_with(".exr");
  OIIO::ImageSpec spec(width, height, 3, isExr ? OIIO::TypeDesc::HALF : OIIO::TypeDesc::UINT16);
  if (path.ends_with(".dpx")) spec.attribute("oiio:BitsPerSample", 10);
  write(path, spec, photograph());
}

/// Prints the seconds since the last call.
class Steps {
 public:
  void done(std::string_view step) {
    const auto now = Clock::now();
    std::cout << step << ' ' << std::chrono::duration<double>(now - last_).count() << '\n';
    last_ = now;
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point last_ = Clock::now();
};

void apply(const std::string& lut, const std::string& from, const std::string& to) {
  Steps steps;
  const auto transform = OCIO::FileTransform::Create();
  transform->setSrc(lut.c_str());
  transform->setInterpolation(OCIO::INTERP_LINEAR);
  const auto processor = OCIO::Config::CreateRaw()->getProcessor(transform)->getDefaultCPUProcessor();
  steps.done("lut");

  const auto input = OIIO::ImageInput::open(from);
  if (!input) throw std::runtime_error(from + ": " + OIIO::geterror());
  const OIIO::ImageSpec spec = input->spec();
  std::vector<float> samples(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
  if (!input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT, samples.data())) {
    throw std::runtime_error(from + ": " + input->geterror());
  }
  steps.done("read");

  OCIO::PackedImageDesc image(samples.data(), spec.width, spec.height, spec.nchannels);
  processor->apply(image);
  steps.done("apply");

  write(to, spec, samples);
  steps.done("write");
}

}  // namespace

int main(int count, char** words) {
  const std::vector<std::string> arguments(words, words + count);
  try {
    if (count == 3 && arguments[1] == "make") {
      make(arguments[2]);
    } else if (count == 5 && arguments[1] == "apply") {
      apply(arguments[2], arguments[3], arguments[4]);
    } else {
      std::cerr << "image-file-peer: expected make IMAGE, or apply LUT IN OUT\n";
      return 2;
    }
  } catch (const std::exception& error) {
    std::cerr << "image-file-peer: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
