// LUT files: facts, samples and images, as in C++.
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/published_lut.h"
#include "pool.h"

#import <Meridian/Meridian.h>

namespace {

namespace m = meridian;

class ObjectiveCLut : public ObjectiveC {
 protected:
  ObjectiveCLut() { std::filesystem::create_directories(directory_); }
  ~ObjectiveCLut() override { std::filesystem::remove_all(directory_); }

  /// Writes a file and returns its path.
  std::string written(const std::string& name, const std::string& header, int rows, double scale) const {
    const std::string path = directory_ / name;
    std::ofstream file(path);
    file << header;
    for (int row = 0; row < rows; ++row) {
      const double value = scale * row / (rows - 1);
      if (scale > 1) {
        file << static_cast<int>(value) << ' ' << static_cast<int>(scale - value) << ' ' << static_cast<int>(value)
             << '\n';
      } else {
        file << value << ' ' << 1 - value << ' ' << value * value << '\n';
      }
    }
    return path;
  }

 private:
  std::filesystem::path directory_ =
      std::filesystem::temp_directory_path() / ("meridian_objc_lut_" + std::to_string(::getpid()));
};

NSURL* urlOf(const std::string& path) { return [NSURL fileURLWithPath:[NSString stringWithUTF8String:path.c_str()]]; }

TEST_F(ObjectiveCLut, IsWhatItIsInCpp) {
  struct Case {
    std::string path;
    Class type;
  };
  const std::vector<Case> cases = {
      {written("one.cube", "", 256, 1), [ParsedOneDimensionLutFile class]},
      {written("one int.cube", "", 1024, 4095), [ParsedOneDimensionLutFile class]},
      {written("float.cube", "LUT_3D_SIZE 17\nDOMAIN_MAX 2 2 2\n", 4913, 1),
       [ParsedThreeDimensionalFloatingPointFile class]},
      {written("integer.cube", "", 4913, 1023), [ParsedThreeDimensionalIntegerFile class]},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.path);
    NSError* error = nil;
    ParsedLutFile* const lut = [ParsedLutFactory parsedLutFileAtURL:urlOf(each.path) error:&error];
    ASSERT_TRUE([lut isKindOfClass:each.type]) << textOf([error localizedDescription]);
    const auto file = m::ParsedLutFactory::parsed(m::Url::fromFilePath(each.path));
    const m::LutDescription facts = m::describe(*file);
    EXPECT_EQ(textOf([[lut file] path]), each.path);
    EXPECT_EQ([lut dimensions] == MeridianLutDimensionsCube, facts.dimensions == m::LutDimensions::cube);
    EXPECT_EQ([lut hasCodeValues] != NO, facts.valueType == m::LutValueType::integer);
    EXPECT_EQ([lut size], facts.size);
    EXPECT_EQ([lut rowCount], facts.rows);
    EXPECT_EQ([lut inputBitDepth] != nil, facts.inputBitDepth.has_value());
    EXPECT_EQ([[lut inputBitDepth] longLongValue], facts.inputBitDepth.value_or(0));
    EXPECT_EQ([[lut valueBitDepth] longLongValue], facts.valueBitDepth.value_or(0));
    if (each.type == [ParsedThreeDimensionalIntegerFile class]) {
      EXPECT_EQ([static_cast<ParsedThreeDimensionalIntegerFile*>(lut) bitDepth], 10);
    }
    EXPECT_EQ([lut lowValue], facts.lowValue);
    EXPECT_EQ([lut highValue], facts.highValue);
    EXPECT_EQ([lut declaresDomain] != NO, facts.declaredDomain.isDeclared);
    EXPECT_EQ([lut domainMaximum].blue, facts.declaredDomain.maximum.blue);
    EXPECT_EQ([lut domainMinimum].red, facts.declaredDomain.minimum.red);
    EXPECT_EQ([lut rowAtIndex:1].green, file->orderedValues().colors()[1].green);
    EXPECT_EQ([[lut valueForKey:@"size"] longLongValue], facts.size);
    for (const std::uint64_t code : {0U, 100U, 511U, 1023U}) {
      MeridianRGBSample result = {};
      const MeridianRGBSample sample = {code, 1023 - code, 64};
      ASSERT_TRUE([lut convertSample:sample inputBitDepth:10 outputBitDepth:12 result:&result]);
      const auto expected = file->inputConverter().convert(code, 1023 - code, 64, 10, 12);
      EXPECT_EQ((m::RGBSample{result.red, result.green, result.blue}), expected);
    }
  }
}

TEST_F(ObjectiveCLut, IsAppliedToImagesAsInCpp) {
  const std::string path = written("look.cube", "", 4913, 1);
  ParsedLutFile* const lut = [ParsedLutFactory parsedLutFileAtURL:urlOf(path)];
  const auto file = m::ParsedLutFactory::parsed(m::Url::fromFilePath(path));
  const auto check = [&]<typename Sample>(MeridianSampleType type, int channels, Sample largest) {
    std::vector<Sample> samples;
    for (int place = 0; place < 5 * 4 * channels; ++place) {
      samples.push_back(static_cast<Sample>(static_cast<double>(largest) * place / (5 * 4 * channels)));
    }
    std::vector<Sample> expected = samples;
    const auto layout = channels == 3 ? m::ImageLayout::rgb : m::ImageLayout::rgba;
    const auto view = m::ImageView<Sample>::packed(layout, expected.data(), 5, 4);
    ASSERT_TRUE(m::applyLut(*file, view, view));
    const MeridianLutImage image = MeridianLutImageMakePacked(type, samples.data(), channels, 5, 4);
    NSError* error = nil;
    ASSERT_TRUE([lut applyToImage:&image destination:&image options:nullptr threads:2 error:&error]);
    EXPECT_EQ(samples, expected);
  };
  check(MeridianSampleTypeUInt8, 3, std::uint8_t{255});
  check(MeridianSampleTypeUInt16, 4, std::uint16_t{65535});
  check(MeridianSampleTypeFloat, 3, 1.0F);

  // Planes with rows stored bottom up, in limited range, with every option.
  std::array<std::uint16_t, 24> planes{};
  for (std::size_t place = 0; place < planes.size(); ++place)
    planes[place] = static_cast<std::uint16_t>(64 + 30 * place);
  std::array<std::uint16_t, 24> expected = planes;
  MeridianLutImage image = {{}, 4, 2, MeridianSampleTypeUInt16, 10, MeridianCodeValueRangeLimited};
  m::ImageView<std::uint16_t> view{.width = 4, .height = 2, .format = {10, m::CodeValueRange::limited}};
  for (std::size_t channel = 0; channel < 3; ++channel) {
    image.planes[channel] = {&planes[8 * channel + 4], -8, 2};
    view.planes[channel] = {&expected[8 * channel + 4], -8, 2};
  }
  const MeridianLutOptions options = {YES, YES, YES, YES};
  ASSERT_TRUE([lut applyToImage:&image destination:&image options:&options threads:1 error:nullptr]);
  ASSERT_TRUE(m::applyLut(*file, view, view,
                          {m::LutInterpolation::tetrahedral, m::LutAxisOrder::redFastest, m::LutInputDomain::declared,
                           m::LutRounding::nearest}));
  EXPECT_EQ(planes, expected);
}

TEST_F(ObjectiveCLut, IsReadAsPublishedAsInCpp) {
  const std::string path = written("look.cube", "LUT_3D_SIZE 17\nDOMAIN_MAX 2 1 1\n", 4913, 1);
  NSError* error = nil;
  PublishedLutFile* const lut = [ParsedLutFactory publishedLutFileAtURL:urlOf(path) error:&error];
  ASSERT_TRUE([lut isKindOfClass:[PublishedLutFile class]]) << textOf([error localizedDescription]);
  EXPECT_EQ(textOf([lut format]), "cube");
  EXPECT_EQ(textOf([[lut file] path]), path);
  EXPECT_EQ([[lut warnings] count], 0U);
  EXPECT_EQ([[[ParsedLutFactory parsedLutFileAtURL:urlOf(path)] warnings] count], 2U);
  EXPECT_EQ([lut size], 17);
  EXPECT_EQ([lut rowCount], 0U);
  EXPECT_EQ([lut domainMaximum].red, 2);
  std::vector<std::uint16_t> samples;
  for (int place = 0; place < 60; ++place) samples.push_back(static_cast<std::uint16_t>(place * 1000));
  std::vector<std::uint16_t> expected = samples;
  const auto published = m::readPublishedLut(m::Url::fromFilePath(path));
  const auto view = m::ImageView<std::uint16_t>::packed(m::ImageLayout::rgb, expected.data(), 5, 4);
  ASSERT_TRUE(m::applyLut(*published, view, view));
  MeridianRGBSample result = {};
  const MeridianRGBSample sample = {samples[30], samples[31], samples[32]};
  ASSERT_TRUE([lut convertSample:sample inputBitDepth:16 outputBitDepth:16 result:&result]);
  EXPECT_EQ(result.red, expected[30]);
  EXPECT_EQ(result.blue, expected[32]);
  const MeridianLutImage image = MeridianLutImageMakePacked(MeridianSampleTypeUInt16, samples.data(), 3, 5, 4);
  ASSERT_TRUE([lut applyToImage:&image destination:&image options:nullptr threads:1 error:nullptr]);
  EXPECT_EQ(samples, expected);
  EXPECT_EQ([ParsedLutFactory publishedLutFileAtURL:urlOf(written("rows.txt", "", 256, 1)) error:&error], nil);
  EXPECT_EQ([error code], MeridianLutErrorNoPublishedFormat);
}

TEST_F(ObjectiveCLut, SaysWhyAnImageCannotBeUsed) {
  ParsedLutFile* const lut = [ParsedLutFactory parsedLutFileAtURL:urlOf(written("look.cube", "", 4913, 1))];
  std::array<std::uint16_t, 12> samples{};
  const MeridianLutImage usable = MeridianLutImageMakePacked(MeridianSampleTypeUInt16, samples.data(), 3, 2, 2);
  std::array<MeridianLutImage, 7> images;
  images.fill(usable);
  images[MeridianImageErrorNoSamples] = MeridianLutImageMakePacked(MeridianSampleTypeUInt16, samples.data(), 5, 2, 2);
  images[MeridianImageErrorUnusableStride].planes[1].rowStride = 3;
  images[MeridianImageErrorMisalignedSamples].planes[2].samples = reinterpret_cast<char*>(samples.data()) + 1;
  images[MeridianImageErrorUnequalSizes].height = 1;
  images[MeridianImageErrorUnusableBitDepth].bitDepth = 17;
  images[MeridianImageErrorUnusableRange].bitDepth = 7;
  images[MeridianImageErrorUnusableRange].range = MeridianCodeValueRangeLimited;
  images[MeridianImageErrorOtherFormat].sampleType = MeridianSampleTypeFloat;
  MeridianLutImage unknownRange = usable;
  unknownRange.range = static_cast<MeridianCodeValueRange>(256);
  EXPECT_FALSE([lut applyToImage:&usable destination:&unknownRange options:nullptr threads:1 error:nullptr]);
  for (std::size_t code = 0; code < images.size(); ++code) {
    NSError* error = nil;
    EXPECT_FALSE([lut applyToImage:&usable destination:&images[code] options:nullptr threads:1 error:&error]);
    EXPECT_EQ(textOf([error domain]), "MeridianImageErrorDomain");
    EXPECT_EQ([error code], static_cast<NSInteger>(code));
    EXPECT_NE([error localizedRecoverySuggestion], nil);
  }
}

TEST_F(ObjectiveCLut, SaysWhyAFileIsNotOne) {
  NSError* error = nil;
  EXPECT_EQ([ParsedLutFactory parsedLutFileAtURL:urlOf("/nowhere/a.cube") error:&error], nil);
  EXPECT_EQ(textOf([error domain]), "MeridianLutErrorDomain");
  EXPECT_EQ([error code], MeridianLutErrorNotOpened);
  EXPECT_EQ(textOf([error localizedDescription]), "\"/nowhere/a.cube\": cannot be opened: No such file or directory");
  EXPECT_EQ(textOf([error localizedFailureReason]), "cannot be opened");
  EXPECT_EQ(textOf([error localizedRecoverySuggestion]), "check the spelling and that you may read it");
  EXPECT_EQ(textOf([[error userInfo] objectForKey:NSFilePathErrorKey]), "/nowhere/a.cube");
  EXPECT_EQ([static_cast<NSError*>([[error userInfo] objectForKey:NSUnderlyingErrorKey]) code], ENOENT);
  EXPECT_EQ([ParsedLutFactory parsedLutFileAtURL:urlOf(written("short.cube", "", 128, 1)) error:&error], nil);
  EXPECT_EQ([error code], MeridianLutErrorTooFewRows);
  EXPECT_EQ([ParsedLutFactory parsedLutFileAtURL:urlOf("/nowhere/a.cube")], nil);
  EXPECT_EQ([[ParsedLutFile alloc] init], nil);
}

}  // namespace
