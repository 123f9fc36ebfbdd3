#include "meridian/lut/parsed_lut_factory.h"

#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/lut/published_lut.h"
#include "meridian/objc/foundation_values.h"

#import <Meridian/Errors.h>
#import <Meridian/ParsedLutFile.h>

namespace m = meridian;
using m::objc::returned;

NSString* const MeridianLutErrorDomain = @"MeridianLutErrorDomain";
NSString* const MeridianImageErrorDomain = @"MeridianImageErrorDomain";

static_assert(MeridianLutErrorXmlDocument == static_cast<int>(m::LutErrorCode::xmlDocument) &&
              MeridianLutErrorUnsupportedExtension == static_cast<int>(m::LutErrorCode::unsupportedExtension) &&
              MeridianLutErrorNotOpened == static_cast<int>(m::LutErrorCode::notOpened) &&
              MeridianLutErrorNotRegularFile == static_cast<int>(m::LutErrorCode::notRegularFile) &&
              MeridianLutErrorNotRead == static_cast<int>(m::LutErrorCode::notRead) &&
              MeridianLutErrorNoRows == static_cast<int>(m::LutErrorCode::noRows) &&
              MeridianLutErrorUnknownDimensions == static_cast<int>(m::LutErrorCode::unknownDimensions) &&
              MeridianLutErrorUnusableRowCount == static_cast<int>(m::LutErrorCode::unusableRowCount) &&
              MeridianLutErrorTooFewRows == static_cast<int>(m::LutErrorCode::tooFewRows) &&
              MeridianLutErrorOtherPublishedFormat == static_cast<int>(m::LutErrorCode::otherPublishedFormat) &&
              MeridianLutErrorNoPublishedFormat == static_cast<int>(m::LutErrorCode::noPublishedFormat) &&
              MeridianLutErrorNotReadByLibrary == static_cast<int>(m::LutErrorCode::notReadByLibrary) &&
              MeridianLutErrorRefersToOtherFile == static_cast<int>(m::LutErrorCode::refersToOtherFile) &&
              MeridianLutErrorMalformedLine == static_cast<int>(m::LutErrorCode::malformedLine) &&
              MeridianLutErrorUnsupportedSize == static_cast<int>(m::LutErrorCode::unsupportedSize) &&
              MeridianLutErrorInvalidDomain == static_cast<int>(m::LutErrorCode::invalidDomain) &&
              MeridianLutErrorTruncated == static_cast<int>(m::LutErrorCode::truncated) &&
              MeridianLutErrorSurplusRows == static_cast<int>(m::LutErrorCode::surplusRows) &&
              MeridianLutErrorUnknownCubeSize == static_cast<int>(m::LutErrorCode::unknownCubeSize) &&
              MeridianLutErrorImplausibleValues == static_cast<int>(m::LutErrorCode::implausibleValues) &&
              m::EnumerationTable<m::LutErrorCode>::rows.size() == 20);
static_assert(MeridianImageErrorNoSamples == static_cast<int>(m::ImageErrorCode::noSamples) &&
              MeridianImageErrorUnusableStride == static_cast<int>(m::ImageErrorCode::unusableStride) &&
              MeridianImageErrorMisalignedSamples == static_cast<int>(m::ImageErrorCode::misalignedSamples) &&
              MeridianImageErrorUnequalSizes == static_cast<int>(m::ImageErrorCode::unequalSizes) &&
              MeridianImageErrorUnusableBitDepth == static_cast<int>(m::ImageErrorCode::unusableBitDepth) &&
              MeridianImageErrorUnusableRange == static_cast<int>(m::ImageErrorCode::unusableRange) &&
              MeridianImageErrorOtherFormat == static_cast<int>(m::ImageErrorCode::otherFormat) &&
              m::EnumerationTable<m::ImageErrorCode>::rows.size() == 7);
static_assert(MeridianCodeValueRangeFull == static_cast<int>(m::CodeValueRange::full) &&
              MeridianCodeValueRangeLimited == static_cast<int>(m::CodeValueRange::limited) &&
              MeridianLutDimensionsOneD == static_cast<int>(m::LutDimensions::oneD) &&
              MeridianLutDimensionsCube == static_cast<int>(m::LutDimensions::cube));

namespace {

/// What an object refers to: a LUT as the suite reads it, or without a file the published one.
struct Lut {
  std::unique_ptr<const m::ParsedLutFile> file;
  m::PublishedLut published;
  m::LutDescription facts;
  std::vector<m::LutWarning> warnings;
};

using Applied = m::Expected<void, m::ImageErrorCode>;

bool hasRange(const MeridianLutImage& image) {
  return image.range == MeridianCodeValueRangeFull || image.range == MeridianCodeValueRangeLimited;
}

m::CodeValueFormat formatOf(const MeridianLutImage& image) {
  return {image.bitDepth,
          image.range == MeridianCodeValueRangeLimited ? m::CodeValueRange::limited : m::CodeValueRange::full};
}

template <typename Sample>
m::ImageView<Sample> viewOf(const MeridianLutImage& image) {
  m::ImageView<Sample> view{.width = image.width, .height = image.height, .format = formatOf(image)};
  for (std::size_t channel = 0; channel < view.planes.size(); ++channel) {
    const MeridianLutPlane& plane = image.planes[channel];
    view.planes[channel] = {static_cast<Sample*>(plane.samples), plane.rowStride, plane.pixelStride};
  }
  return view;
}

m::ImageLutOptions optionsOf(const MeridianLutOptions* options) {
  if (options == nullptr) return {};
  using enum m::LutInterpolation;
  using enum m::LutAxisOrder;
  using enum m::LutInputDomain;
  using enum m::LutRounding;
  return {.interpolation = options->tetrahedral ? tetrahedral : trilinear,
          .axisOrder = options->redFastest ? redFastest : blueFastest,
          .domain = options->declaredDomain ? declared : dataRange,
          .rounding = options->nearest ? nearest : truncate};
}

Applied apply(const Lut& lut, const MeridianLutImage& source, const MeridianLutImage& destination,
              const MeridianLutOptions* options, unsigned threads) {
  const auto applyTo = [&]<typename Sample>(std::type_identity<Sample>) {
    const auto from = viewOf<const Sample>(source);
    const auto to = viewOf<Sample>(destination);
    const m::ImageLutOptions chosen = optionsOf(options);
    if (lut.file) return m::applyLut(*lut.file, from, to, chosen, threads);
    return m::applyLut(lut.published, from, to, chosen, threads);
  };
  if (!hasRange(source) || !hasRange(destination)) return m::Unexpected(m::ImageErrorCode::unusableRange);
  if (source.sampleType == destination.sampleType) {
    switch (source.sampleType) {
      case MeridianSampleTypeUInt8:
        return applyTo(std::type_identity<std::uint8_t>{});
      case MeridianSampleTypeUInt16:
        return applyTo(std::type_identity<std::uint16_t>{});
      case MeridianSampleTypeFloat:
        return applyTo(std::type_identity<float>{});
    }
  }
  return m::Unexpected(m::ImageErrorCode::otherFormat);
}

MeridianLutColor colorOf(const m::LutColor& color) { return {color.red, color.green, color.blue}; }

template <typename Sample>
MeridianLutImage packed(MeridianSampleType sampleType, void* samples, NSInteger channels, std::size_t width,
                        std::size_t height) {
  const auto layout = channels == 3 ? m::ImageLayout::rgb : m::ImageLayout::rgba;
  auto* const first = channels == 3 || channels == 4 ? static_cast<Sample*>(samples) : nullptr;
  const auto view = m::ImageView<Sample>::packed(layout, first, width, height);
  MeridianLutImage image{{}, width, height, sampleType, view.sampleBits, MeridianCodeValueRangeFull};
  for (std::size_t channel = 0; channel < view.planes.size(); ++channel) {
    const auto& plane = view.planes[channel];
    image.planes[channel] = {plane.samples, plane.rowStride, plane.pixelStride};
  }
  return image;
}

}  // namespace

MeridianLutImage MeridianLutImageMakePacked(MeridianSampleType sampleType, void* samples, NSInteger channels,
                                            size_t width, size_t height) {
  if (sampleType == MeridianSampleTypeUInt8) return packed<std::uint8_t>(sampleType, samples, channels, width, height);
  if (sampleType == MeridianSampleTypeUInt16) {
    return packed<std::uint16_t>(sampleType, samples, channels, width, height);
  }
  return packed<float>(sampleType, samples, channels, width, height);
}

@interface ParsedLutFile (MeridianInternals)
- (id)initWithoutLut;
@end

@implementation ParsedLutFile

/// Key-value coding goes by the methods alone.
+ (BOOL)accessInstanceVariablesDirectly {
  return NO;
}

static const Lut& lutOf(ParsedLutFile* file) { return *static_cast<const Lut*>(file->_lut); }

/// Makes an object that owns the LUT.
static ParsedLutFile* objectOwning(std::unique_ptr<const Lut> lut) {
  Class type = [ParsedThreeDimensionalFloatingPointFile class];
  if (!lut->file) {
    type = [PublishedLutFile class];
  } else if (lut->facts.dimensions == m::LutDimensions::oneD) {
    type = [ParsedOneDimensionLutFile class];
  } else if (lut->facts.valueType == m::LutValueType::integer) {
    type = [ParsedThreeDimensionalIntegerFile class];
  }
  ParsedLutFile* const object = [[type alloc] initWithoutLut];
  object->_lut = const_cast<Lut*>(lut.release());
  return [object autorelease];
}

- (id)init {
  [self release];
  return nil;
}

- (id)initWithoutLut {
  return [super init];
}

- (void)dealloc {
  delete static_cast<const Lut*>(_lut);
  [super dealloc];
}

- (NSURL*)file {
  return returned([&] {
    const Lut& lut = lutOf(self);
    return m::objc::urlOf(lut.file ? lut.file->file().path() : lut.published.path);
  });
}

- (MeridianLutDimensions)dimensions {
  return static_cast<MeridianLutDimensions>(lutOf(self).facts.dimensions);
}

- (BOOL)hasCodeValues {
  return lutOf(self).facts.valueType == m::LutValueType::integer;
}

- (int64_t)size {
  return lutOf(self).facts.size;
}

- (NSNumber*)inputBitDepth {
  const auto depth = lutOf(self).facts.inputBitDepth;
  return depth ? [NSNumber numberWithLongLong:*depth] : nil;
}

- (NSNumber*)valueBitDepth {
  const auto depth = lutOf(self).facts.valueBitDepth;
  return depth ? [NSNumber numberWithLongLong:*depth] : nil;
}

- (double)lowValue {
  return lutOf(self).facts.lowValue;
}

- (double)highValue {
  return lutOf(self).facts.highValue;
}

- (BOOL)declaresDomain {
  return lutOf(self).facts.declaredDomain.isDeclared;
}

- (MeridianLutColor)domainMinimum {
  return colorOf(lutOf(self).facts.declaredDomain.minimum);
}

- (MeridianLutColor)domainMaximum {
  return colorOf(lutOf(self).facts.declaredDomain.maximum);
}

- (NSArray*)warnings {
  return returned([&] {
    NSMutableArray* const messages = [NSMutableArray array];
    for (const m::LutWarning& warning : lutOf(self).warnings) {
      [messages addObject:m::objc::stringOf(warning.message())];
    }
    return messages;
  });
}

- (NSUInteger)rowCount {
  return lutOf(self).facts.rows;
}

- (MeridianLutColor)rowAtIndex:(NSUInteger)index {
  const Lut& lut = lutOf(self);
  const auto rows = lut.file ? lut.file->orderedValues().colors() : std::span<const m::LutColor>();
  if (index >= rows.size()) {
    [NSException raise:NSRangeException
                format:@"row %llu of a LUT of %llu rows", static_cast<unsigned long long>(index),
                       static_cast<unsigned long long>(rows.size())];
  }
  return colorOf(rows[index]);
}

- (BOOL)convertSample:(MeridianRGBSample)sample
        inputBitDepth:(int64_t)inputBitDepth
       outputBitDepth:(int64_t)outputBitDepth
               result:(MeridianRGBSample*)result {
  if (result == nullptr) m::objc::raiseInvalidArgument("the result is NULL");
  const Lut& lut = lutOf(self);
  if (!lut.file) {
    const auto isDepth = [](int64_t depth) { return depth >= 1 && depth <= 63; };
    if (!isDepth(inputBitDepth) || !isDepth(outputBitDepth)) return NO;
    const auto codes =
        m::appliedToCodeValues(lut.published, {sample.red, sample.green, sample.blue}, inputBitDepth, outputBitDepth);
    *result = {codes[0], codes[1], codes[2]};
    return YES;
  }
  const auto converted = lut.file->inputConverter().convertIfPossible(sample.red, sample.green, sample.blue,
                                                                      inputBitDepth, outputBitDepth);
  if (!converted) return NO;
  *result = {converted->red, converted->green, converted->blue};
  return YES;
}

- (BOOL)applyToImage:(const MeridianLutImage*)source
         destination:(const MeridianLutImage*)destination
             options:(const MeridianLutOptions*)options
             threads:(NSUInteger)threads
               error:(NSError**)error {
  if (source == nullptr || destination == nullptr) m::objc::raiseInvalidArgument("the image is NULL");
  BOOL isDone = NO;
  const auto thrown = m::objc::guarded([&] {
    const auto most = static_cast<NSUInteger>(std::numeric_limits<unsigned>::max());
    const Applied applied =
        apply(lutOf(self), *source, *destination, options, static_cast<unsigned>(threads < most ? threads : most));
    isDone =
        applied ? YES : m::objc::failed(error, MeridianImageErrorDomain, m::Error<m::ImageErrorCode>{applied.error()});
  });
  if (thrown) m::objc::storeThrown(error, *thrown);
  return isDone;
}

@end

@implementation ParsedOneDimensionLutFile
@end

@implementation ParsedThreeDimensionalIntegerFile

- (int64_t)bitDepth {
  return [[self valueBitDepth] longLongValue];
}

@end

@implementation ParsedThreeDimensionalFloatingPointFile
@end

@implementation PublishedLutFile

- (NSString*)format {
  return returned([&] { return m::objc::stringOf(m::rawValue(lutOf(self).published.format)); });
}

@end

@implementation ParsedLutFactory

+ (ParsedLutFile*)parsedLutFileAtURL:(NSURL*)url {
  return [self parsedLutFileAtURL:url error:nullptr];
}

+ (ParsedLutFile*)parsedLutFileAtURL:(NSURL*)url error:(NSError**)error {
  ParsedLutFile* object = nil;
  const auto thrown = m::objc::guarded([&] {
    auto file = m::ParsedLutFactory::parsing(m::Url::fromFilePath(m::objc::pathOf(url, "the URL")));
    if (!file) {
      m::objc::failed(error, MeridianLutErrorDomain, file.error(), true);
      return;
    }
    auto lut = std::make_unique<Lut>();
    lut->file = *std::move(file);
    lut->facts = m::describe(*lut->file);
    lut->warnings = m::warningsOf(*lut->file);
    object = objectOwning(std::move(lut));
  });
  if (thrown) m::objc::storeThrown(error, *thrown);
  return object;
}

+ (PublishedLutFile*)publishedLutFileAtURL:(NSURL*)url error:(NSError**)error {
  PublishedLutFile* object = nil;
  const auto thrown = m::objc::guarded([&] {
    auto published = m::readPublishedLut(m::Url::fromFilePath(m::objc::pathOf(url, "the URL")));
    if (!published) {
      m::objc::failed(error, MeridianLutErrorDomain, published.error(), true);
      return;
    }
    auto lut = std::make_unique<Lut>();
    lut->published = *std::move(published);
    lut->facts = m::describe(lut->published);
    lut->warnings = lut->published.warnings;
    object = static_cast<PublishedLutFile*>(objectOwning(std::move(lut)));
  });
  if (thrown) m::objc::storeThrown(error, *thrown);
  return object;
}

@end
