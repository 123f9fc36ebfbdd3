/**
 * \file
 * LUT files: open one, ask what it holds, apply it to samples and to whole images. For example, in place:
 *
 *     MeridianLut* lut = meridian_lut_open_published(meridian_text("/looks/show.cube"), &error);
 *     MeridianImage image = meridian_image_packed(MERIDIAN_SAMPLES_UINT16, samples, 3, 3840, 2160);
 *     image.bit_depth = 10;
 *     image.range = MERIDIAN_RANGE_LIMITED;
 *     meridian_lut_apply(lut, &image, &image, NULL, 0, &error);
 */
#ifndef MERIDIAN_C_LUT_H
#define MERIDIAN_C_LUT_H

#include <meridian/c/error.h>
#include <meridian/c/text.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A LUT that was read from a file. It keeps nothing open. */
typedef struct MeridianLut MeridianLut;

/**
 * Reads the LUT in a file as the suite does. Fails with an error of the area "lut" that says why the file is not one.
 */
MERIDIAN_C_API MeridianLut* meridian_lut_open(MeridianText path, MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Reads the LUT in a .cube or .3dl file as its format publishes it, so that images look as in other programs: the axis
 * order and the domain are the file's, and code values are rounded to the nearest. Of the options, `tetrahedral` alone
 * counts. Fails as meridian_lut_open() does; the codes "otherPublishedFormat" (.csp, .spi3d,
 * CLF and so on) and "noPublishedFormat" mean that the file may be a LUT for another reader: for the latter
 * meridian_lut_open(), for the former a library such as OpenColorIO.
 */
MERIDIAN_C_API MeridianLut* meridian_lut_open_published(MeridianText path, MeridianError** error) MERIDIAN_NOTHROW;
/** Frees the LUT. */
MERIDIAN_C_API void meridian_lut_destroy(MeridianLut* lut) MERIDIAN_NOTHROW;

/** Returns the published format that the file was read in: "cube" or "3dl"; absent for a LUT read as the suite does. */
MERIDIAN_C_API MeridianText meridian_lut_format(const MeridianLut* lut) MERIDIAN_NOTHROW;
/** Returns how many warnings say what may surprise about the LUT, in the way that it was read. */
MERIDIAN_C_API size_t meridian_lut_warning_count(const MeridianLut* lut) MERIDIAN_NOTHROW;
/** Returns a warning of the area "lutWarning", at an index below the count. */
MERIDIAN_C_API const MeridianError* meridian_lut_warning_at(const MeridianLut* lut, size_t index) MERIDIAN_NOTHROW;

/** What a LUT holds. Read as published, it has floating-point values, those of its last 1D LUT or cube, and no rows. */
typedef struct MeridianLutFacts {
  /** True for a cube, false for a 1D LUT. */
  bool is_cube;
  /** True for code values, false for floating point on the scale from 0 to 1. */
  bool has_code_values;
  /** The points per axis of a cube, or the rows of a 1D LUT. */
  int64_t size;
  /** The rows of the file; a cube may have more or fewer than it has points. */
  size_t rows;
  /** The depth in bits of the code values that are looked up, and of those returned; 0 for floating point. */
  int64_t input_bit_depth;
  int64_t value_bit_depth;
  /** The smallest and the largest of the LUT's values. */
  double low_value;
  double high_value;
  /** The range of input values that the file declares for red, green and blue; 0 to 1 where it declares none. */
  double domain_minimum[3];
  double domain_maximum[3];
  bool declares_domain;
} MeridianLutFacts;

/** Returns what a LUT holds. */
MERIDIAN_C_API MeridianLutFacts meridian_lut_facts(const MeridianLut* lut) MERIDIAN_NOTHROW;
/** Returns the rows of the file as numbers: 3 for each of the `rows` of its facts; NULL if there are none. */
MERIDIAN_C_API const double* meridian_lut_rows(const MeridianLut* lut) MERIDIAN_NOTHROW;

/**
 * Gets what the LUT makes of a pixel of code values, from `input_bit_depth` to `output_bit_depth` bits. Returns false
 * if it has no result, such as a negative one, or a depth that is not 1 to 63. Read as published, it gives the nearest
 * code value, and thus always one. `sample` and `result` may be the same.
 */
MERIDIAN_C_API bool meridian_lut_sample(const MeridianLut* lut, const uint64_t sample[3], int64_t input_bit_depth,
                                        int64_t output_bit_depth, uint64_t result[3]) MERIDIAN_NOTHROW;

/** What samples are: code values in 8 or 16 bits, or floating point on the scale from 0 to 1. Others are an error. */
typedef enum MeridianSamples {
  MERIDIAN_SAMPLES_UINT8,
  MERIDIAN_SAMPLES_UINT16,
  MERIDIAN_SAMPLES_FLOAT
} MeridianSamples;

/** Which code values of n bits are black and white. Any other number is an error. */
typedef enum MeridianRange {
  /** Black is 0, white is 2^n - 1. */
  MERIDIAN_RANGE_FULL,
  /** "Video" or "legal" range: black is 16 * 2^(n-8), white is 235 * 2^(n-8). */
  MERIDIAN_RANGE_LIMITED
} MeridianRange;

/** The samples of one channel. */
typedef struct MeridianPlane {
  /** The sample of the upper left pixel, aligned as its type needs it; NULL if the image does not have the channel. */
  void* samples;
  /** From a sample to the one below it, in bytes: at least a row; negative for rows stored bottom up. */
  ptrdiff_t row_stride;
  /**
   * From a sample to its right neighbour, in bytes: positive, and larger than a sample where channels are interleaved.
   * Both strides are multiples of a sample's size.
   */
  ptrdiff_t pixel_stride;
} MeridianPlane;

/** An image in the caller's memory. */
typedef struct MeridianImage {
  /** Red, green, blue and alpha. Alpha may be absent, which means opaque. */
  MeridianPlane planes[4];
  /** In pixels. */
  size_t width;
  size_t height;
  /** One of MeridianSamples. */
  int samples;
  /** The bits of a code value, from 1 to those of a sample. Unused for floating point. */
  int bit_depth;
  /** One of MeridianRange; full for floating point and below 8 bits. Alpha is always full range. */
  int range;
} MeridianImage;

/**
 * Returns an image of interleaved samples without gaps, in full range and the depth of its samples: 3 channels for RGB,
 * 4 for RGBA. An image without samples, which nothing can be applied to, for other numbers of channels, for NULL and if
 * so many samples do not fit into memory.
 */
MERIDIAN_C_API MeridianImage meridian_image_packed(MeridianSamples samples, void* data, int channels, size_t width,
                                                   size_t height) MERIDIAN_NOTHROW;

/**
 * How a LUT is applied to images. All zero are the defaults, which agree with meridian_lut_sample(). A LUT read as
 * published ignores all but `tetrahedral`.
 */
typedef struct MeridianLutOptions {
  /** Finds colours between the points of a cube from the four points around them, instead of eight. */
  bool tetrahedral;
  /** Uses red as the index that runs fastest through a cube's rows, as the published .cube format says. */
  bool red_fastest;
  /** Lets the axes cover the domain that the file declares, instead of the range of its data. */
  bool declared_domain;
  /** Rounds to the nearest code value, instead of toward zero. Limited range always does. */
  bool nearest;
} MeridianLutOptions;

/**
 * Applies a LUT to every pixel of `source` and stores the results in `destination`, which have the same size and kind
 * of samples. The two may be the same samples with the same strides, but must not overlap otherwise. `options` may be
 * NULL for the defaults. `threads` work on bands of rows: 0 means as many as the machine runs at once. Fails with an
 * error of the area "image" for an image that cannot be used; nothing is written then.
 */
MERIDIAN_C_API bool meridian_lut_apply(const MeridianLut* lut, const MeridianImage* source,
                                       const MeridianImage* destination, const MeridianLutOptions* options,
                                       unsigned threads, MeridianError** error) MERIDIAN_NOTHROW;

/** A LUT prepared for images of one kind, for callers that apply it to many. Several threads may use it at once. */
typedef struct MeridianImageLut MeridianImageLut;

/** Prepares a LUT for sources and destinations like these, of which the samples' kinds, depths and ranges count. */
MERIDIAN_C_API MeridianImageLut* meridian_image_lut_create(const MeridianLut* lut, const MeridianImage* source,
                                                           const MeridianImage* destination,
                                                           const MeridianLutOptions* options,
                                                           MeridianError** error) MERIDIAN_NOTHROW;
/** Applies it as meridian_lut_apply() does. Fails for images of another kind than it was prepared for. */
MERIDIAN_C_API bool meridian_image_lut_apply(const MeridianImageLut* lut, const MeridianImage* source,
                                             const MeridianImage* destination, unsigned threads,
                                             MeridianError** error) MERIDIAN_NOTHROW;
/** Frees the prepared LUT. */
MERIDIAN_C_API void meridian_image_lut_destroy(MeridianImageLut* lut) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif
