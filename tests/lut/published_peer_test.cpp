// The published formats as OpenColorIO reads them.
#include <OpenColorIO/OpenColorIO.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/published_lut.h"
#include "tests/lut/published_files.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

namespace ocio = OCIO_NAMESPACE;

ocio::ConstCPUProcessorRcPtr peerOf(const std::string& path, LutInterpolation interpolation) {
  const auto file = ocio::FileTransform::Create();
  file->setSrc(path.c_str());
  file->setInterpolation(interpolation == LutInterpolation::tetrahedral ? ocio::INTERP_TETRAHEDRAL
                                                                        : ocio::INTERP_LINEAR);
  return ocio::Config::CreateRaw()->getProcessor(file)->getOptimizedCPUProcessor(ocio::OPTIMIZATION_LOSSLESS);
}

TEST(PublishedLut, AgreesWithOpenColorIO) {
  ocio::SetLoggingLevel(ocio::LOGGING_LEVEL_NONE);  // it warns of tetrahedra in a 1D LUT
  const test::TemporaryDirectory directory;
  std::mt19937 random(5);
  std::uniform_real_distribution<float> wide(-0.7F, 2.2F);
  std::uniform_real_distribution<float> unit(0, 1);
  constexpr std::size_t count = 500;
  for (const test::PublishedFile& made : test::publishedFiles()) {
    SCOPED_TRACE(made.name);
    const std::string path = directory.write(made.name, made.text);
    const auto lut = readPublishedLut(Url::fromFilePath(path));
    ASSERT_TRUE(lut) << lut.error().message();
    for (const auto interpolation : allCases<LutInterpolation>()) {
      const auto peer = peerOf(path, interpolation);
      std::vector<float> source;
      for (std::size_t i = 0; i < count * 3; ++i) source.push_back(i % 2 == 0 ? wide(random) : unit(random));
      std::vector<float> image = source;
      const auto view = ImageView<float>::packed(ImageLayout::rgb, image.data(), count, 1);
      ASSERT_TRUE(applyLut(*lut, view, view, {.interpolation = interpolation}));
      for (std::size_t i = 0; i < source.size(); i += 3) {
        std::array<float, 3> expected{source[i], source[i + 1], source[i + 2]};
        const LutColor actual = applied(*lut, {expected[0], expected[1], expected[2]}, interpolation);
        peer->applyRGB(expected.data());
        ASSERT_NEAR(actual.red, expected[0], 1e-5) << source[i] << ' ' << source[i + 1] << ' ' << source[i + 2];
        ASSERT_NEAR(actual.green, expected[1], 1e-5);
        ASSERT_NEAR(actual.blue, expected[2], 1e-5);
        for (std::size_t channel = 0; channel < 3; ++channel) {
          ASSERT_NEAR(image[i + channel], expected[channel], 1e-5);
        }
      }
    }
  }
}

}  // namespace
}  // namespace meridian
