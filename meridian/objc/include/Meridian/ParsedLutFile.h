/**
 * \file
 * LUT files: open one, read its facts, apply it to samples and to whole images. For example, in place:
 *
 *     PublishedLutFile* lut = [ParsedLutFactory publishedLutFileAtURL:url error:&error];
 *     MeridianLutImage image = MeridianLutImageMakePacked(MeridianSampleTypeUInt16, samples, 3, 3840, 2160);
 *     image.bitDepth = 10;
 *     if (lut == nil || ![lut applyToImage:&image destination:&image options:NULL threads:0 error:&error]) ...
 */
#ifndef MERIDIAN_PARSED_LUT_FILE_H
#define MERIDIAN_PARSED_LUT_FILE_H

#import <Meridian/Defines.h>
#include <stddef.h>
#include <stdint.h>

NS_ASSUME_NONNULL_BEGIN

/** What a LUT is indexed by: each channel on its own, or all three together. */
typedef NS_ENUM(NSInteger, MeridianLutDimensions) { MeridianLutDimensionsOneD, MeridianLutDimensionsCube };

/** Three numbers: a row of a LUT, or the ends of a range, for red, green and blue. */
typedef struct MeridianLutColor {
  double red, green, blue;
} MeridianLutColor;

/** The code values of a pixel. */
typedef struct MeridianRGBSample {
  uint64_t red, green, blue;
} MeridianRGBSample;

/** What samples are: code values in 8 or 16 bits, or floating point on the scale from 0 to 1. */
typedef NS_ENUM(NSInteger, MeridianSampleType) {
  MeridianSampleTypeUInt8,
  MeridianSampleTypeUInt16,
  MeridianSampleTypeFloat
};

/** Which code values of n bits are black and white: 0 and 2^n - 1, or 16 * 2^(n-8) and 235 * 2^(n-8). */
typedef NS_ENUM(NSInteger, MeridianCodeValueRange) { MeridianCodeValueRangeFull, MeridianCodeValueRangeLimited };

/** The samples of one channel. */
typedef struct MeridianLutPlane {
  /** The sample of the upper left pixel; NULL if the image does not have the channel. */
  void* MERIDIAN_NULLABLE samples;
  /** From a sample to the one below it, in bytes: at least a row; negative for rows stored bottom up. */
  ptrdiff_t rowStride;
  /** From a sample to its right neighbour, in bytes: larger than a sample where channels are interleaved. */
  ptrdiff_t pixelStride;
} MeridianLutPlane;

/** An image in the caller's memory. */
typedef struct MeridianLutImage {
  /** Red, green, blue and alpha. Alpha may be absent, which means opaque. */
  MeridianLutPlane planes[4];
  /** In pixels. */
  size_t width;
  size_t height;
  MeridianSampleType sampleType;
  /** The bits of a code value, from 1 to those of a sample. Unused for floating point. */
  int bitDepth;
  /** Has to be full for floating point and below 8 bits. Alpha is always full range. */
  MeridianCodeValueRange range;
} MeridianLutImage;

/**
 * Returns an image of interleaved samples without gaps, in full range and the depth of its samples: 3 channels for RGB,
 * 4 for RGBA. For other numbers of channels, for NULL, and if so many samples do not fit into memory, returns an image
 * without samples, to which no LUT can be applied.
 */
MERIDIAN_EXTERN MeridianLutImage MeridianLutImageMakePacked(MeridianSampleType sampleType,
                                                            void* MERIDIAN_NULLABLE samples, NSInteger channels,
                                                            size_t width, size_t height);

/**
 * How a LUT is applied to images. All NO are the defaults, which agree with the sampling of single pixels. A
 * PublishedLutFile ignores all but `tetrahedral`.
 */
typedef struct MeridianLutOptions {
  /** Finds colours between the points of a cube from the four points around them, instead of eight. */
  BOOL tetrahedral;
  /** Uses red as the index that runs fastest through a cube's rows, as the published .cube format says. */
  BOOL redFastest;
  /** Lets the axes cover the domain that the file declares, instead of the range of its data. */
  BOOL declaredDomain;
  /** Rounds to the nearest code value, instead of toward zero. Limited range always does. */
  BOOL nearest;
} MeridianLutOptions;

/**
 * A LUT that was read from a file, of one of the four classes below. It keeps nothing open and never changes: several
 * threads may use it at once.
 */
@interface ParsedLutFile : NSObject {
 @private
  void* _lut;
}

/** LUTs come from ParsedLutFactory; returns nil. */
- (instancetype MERIDIAN_NULLABLE)init NS_UNAVAILABLE;

/** The file that it was read from. */
@property(nonatomic, readonly) NSURL* file;
@property(nonatomic, readonly) MeridianLutDimensions dimensions;
/** Whether it holds code values, instead of floating point on the scale from 0 to 1. */
@property(nonatomic, readonly) BOOL hasCodeValues;
/** The points per axis of a cube, or the rows of a 1D LUT. */
@property(nonatomic, readonly) int64_t size;
/** The depth in bits of the code values that are looked up, and of those returned; nil for floating point. */
@property(nonatomic, readonly) NSNumber* MERIDIAN_NULLABLE inputBitDepth;
@property(nonatomic, readonly) NSNumber* MERIDIAN_NULLABLE valueBitDepth;
/** The smallest and the largest of the LUT's values. */
@property(nonatomic, readonly) double lowValue;
@property(nonatomic, readonly) double highValue;
/** The range of input values that the file declares; 0 to 1 where it declares none. */
@property(nonatomic, readonly) BOOL declaresDomain;
@property(nonatomic, readonly) MeridianLutColor domainMinimum;
@property(nonatomic, readonly) MeridianLutColor domainMaximum;
/** Texts that say what may surprise about the LUT, in the way that it was read, each with a remedy. */
@property(nonatomic, readonly) NSArray* warnings;
/** The number of rows of the file; a cube may have more or fewer than it has points. */
@property(nonatomic, readonly) NSUInteger rowCount;

/** Returns a row of the file. Raises NSRangeException for an index that is not below `rowCount`. */
- (MeridianLutColor)rowAtIndex:(NSUInteger)index;

/**
 * Stores what the LUT makes of a pixel of code values, from one depth in bits to another, in `result`. Returns NO if it
 * has no result, such as a negative one.
 */
- (BOOL)convertSample:(MeridianRGBSample)sample
        inputBitDepth:(int64_t)inputBitDepth
       outputBitDepth:(int64_t)outputBitDepth
               result:(MeridianRGBSample*)result;

/**
 * Applies the LUT to every pixel of an image and stores the results in `destination`, which has the same size and kind
 * of samples. The two may be the same samples with the same strides, but must not overlap otherwise. NULL options are
 * the defaults. `threads` work on bands of rows: 0 means as many as the machine runs at once. Fails with an error of
 * MeridianImageErrorDomain for an image that cannot be used; nothing is written then.
 */
- (BOOL)applyToImage:(const MeridianLutImage*)source
         destination:(const MeridianLutImage*)destination
             options:(const MeridianLutOptions* MERIDIAN_NULLABLE)options
             threads:(NSUInteger)threads
               error:(NSError* MERIDIAN_NULLABLE* MERIDIAN_NULLABLE)error;

@end

/** A 1D LUT, of code values or floating point. */
@interface ParsedOneDimensionLutFile : ParsedLutFile
@end

/** A cube of code values. */
@interface ParsedThreeDimensionalIntegerFile : ParsedLutFile
/** The depth of the cube's code values in bits. */
@property(nonatomic, readonly) int64_t bitDepth;
@end

/** A cube of floating-point values. */
@interface ParsedThreeDimensionalFloatingPointFile : ParsedLutFile
@end

/**
 * A LUT as its file's format publishes it, so that images look as in other programs: the axis order and the domain are
 * the file's, and code values are rounded to the nearest, so that each sample has a result. It has floating-point
 * values, those of its last 1D LUT or cube, and no rows.
 */
@interface PublishedLutFile : ParsedLutFile
/** The published format: "cube" or "3dl". */
@property(nonatomic, readonly) NSString* format;
@end

/** Reads LUT files written as text. */
@interface ParsedLutFactory : NSObject

/** Returns the LUT in a file; nil for every failure. */
+ (ParsedLutFile* MERIDIAN_NULLABLE)parsedLutFileAtURL:(NSURL*)url;
/** Returns the LUT in a file, or nil and an error of MeridianLutErrorDomain that says why there is none. */
+ (ParsedLutFile* MERIDIAN_NULLABLE)parsedLutFileAtURL:(NSURL*)url
                                                 error:(NSError* MERIDIAN_NULLABLE* MERIDIAN_NULLABLE)error;
/**
 * Returns the LUT in a .cube or .3dl file as its format publishes it, or nil and an error.
 * MeridianLutErrorOtherPublishedFormat (.csp, .spi3d, CLF and so on) and MeridianLutErrorNoPublishedFormat mean that
 * the file may be a LUT for another reader: for the latter parsedLutFileAtURL:error:, for the former a library such as
 * OpenColorIO.
 */
+ (PublishedLutFile* MERIDIAN_NULLABLE)publishedLutFileAtURL:(NSURL*)url
                                                       error:(NSError* MERIDIAN_NULLABLE* MERIDIAN_NULLABLE)error;

@end

NS_ASSUME_NONNULL_END

#endif
