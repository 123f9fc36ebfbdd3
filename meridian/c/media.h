/**
 * \file
 * Containers and makers, frame rates, timecode and frame numbers. For example:
 *
 *     MeridianFrameRate rate;
 *     MeridianTimecode label;
 *     meridian_frame_rate_matching((MeridianRational){30000, 1001}, &rate);
 *     meridian_timecode_of_frame(1800, rate, true, &label, &error);  // 00:01:00;02
 */
#ifndef MERIDIAN_C_MEDIA_H
#define MERIDIAN_C_MEDIA_H

#include <meridian/c/error.h>
#include <meridian/c/text.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A width and a height in pixels. */
typedef struct MeridianSize {
  double width;
  double height;
} MeridianSize;

/** A colour as three code values. */
typedef struct MeridianColor {
  uint8_t red;
  uint8_t green;
  uint8_t blue;
} MeridianColor;

/** A ratio, as given and not reduced. */
typedef struct MeridianRational {
  int64_t numerator;
  int64_t denominator;
} MeridianRational;

/**
 * Passes each file extension of a container, such as SLVMediaFileContainerMXF; none for an unknown one. The table is
 * made when it is first used; without memory for it nothing is passed.
 */
MERIDIAN_C_API void meridian_enumerate_container_extensions(const char* container, MeridianTextVisitor visit,
                                                            void* context) MERIDIAN_NOTHROW;
/** Passes each container that has the extension. Ignores case, but not a leading dot. */
MERIDIAN_C_API void meridian_enumerate_containers_of_extension(const char* extension, MeridianTextVisitor visit,
                                                               void* context) MERIDIAN_NOTHROW;
/** Passes the names of the makers to show, in their fixed order. */
MERIDIAN_C_API void meridian_enumerate_makers(MeridianTextVisitor visit, void* context) MERIDIAN_NOTHROW;

/** The value of `standard` of a frame rate that is not one of the standard ones. */
#define MERIDIAN_CUSTOM_FRAME_RATE (-1)

/** A video frame rate: one of the standard ones, or any other as a ratio. */
typedef struct MeridianFrameRate {
  /** The frames per second. */
  MeridianRational rational;
  /** The place among the standard rates, which alone then counts, or MERIDIAN_CUSTOM_FRAME_RATE. */
  int standard;
} MeridianFrameRate;

/** Returns the number of standard rates. */
MERIDIAN_C_API size_t meridian_standard_frame_rate_count(void) MERIDIAN_NOTHROW;
/** Returns the standard rate at an index below meridian_standard_frame_rate_count(), slow ones first. */
MERIDIAN_C_API MeridianFrameRate meridian_standard_frame_rate_at(size_t index) MERIDIAN_NOTHROW;
/** Returns the name of a rate: "ntsc24p", "pal25p", "custom". */
MERIDIAN_C_API MeridianText meridian_frame_rate_name(MeridianFrameRate rate) MERIDIAN_NOTHROW;
/**
 * Gets the standard rate that a ratio matches, to four decimals of the quotient, else the ratio as a custom rate.
 * Returns false for a denominator of 0 and for a quotient beyond 64 bits.
 */
MERIDIAN_C_API bool meridian_frame_rate_matching(MeridianRational rational, MeridianFrameRate* rate) MERIDIAN_NOTHROW;
/** Returns a ratio as a custom rate without matching it. */
MERIDIAN_C_API MeridianFrameRate meridian_frame_rate_custom(MeridianRational rational) MERIDIAN_NOTHROW;
/** Returns the rate for display: "25 FPS", "29.97 FPS". */
MERIDIAN_C_API MeridianString* meridian_frame_rate_string_create(MeridianFrameRate rate,
                                                                 MeridianError** error) MERIDIAN_NOTHROW;
/** Describes a number of frames per second with the standard rate that it matches: "23.976 fps = 24000/1001". */
MERIDIAN_C_API MeridianString* meridian_frame_rate_description_create(double frames_per_second,
                                                                      MeridianError** error) MERIDIAN_NOTHROW;

/** A timecode: the label of a frame. The components may be any numbers; `frames` counts within the second. */
typedef struct MeridianTimecode {
  int64_t hours;
  int64_t minutes;
  int64_t seconds;
  int64_t frames;
  /** True for drop-frame timecode, which has a ";" before the frames. */
  bool is_drop_frame;
} MeridianTimecode;

/**
 * Gets the components of a text such as "01:02:03;04": four, of at least two digits each, minutes and seconds up to 60.
 * Returns false for any other text.
 */
MERIDIAN_C_API bool meridian_timecode_parse(MeridianText text, MeridianTimecode* timecode) MERIDIAN_NOTHROW;
/** Returns the components of any text, with 0 for those that are missing or not numbers. */
MERIDIAN_C_API MeridianTimecode meridian_timecode_sanitized(MeridianText text) MERIDIAN_NOTHROW;
/** Returns the text of a timecode. */
MERIDIAN_C_API MeridianString* meridian_timecode_string_create(MeridianTimecode timecode,
                                                               MeridianError** error) MERIDIAN_NOTHROW;

/** Gets how many frames timecode counts in a second; returns false for a rate that timecode has no meaning at. */
MERIDIAN_C_API bool meridian_timecode_frames_per_second(MeridianFrameRate rate, int64_t* frames) MERIDIAN_NOTHROW;
/** Gets how many labels drop-frame timecode skips in a minute; returns false for rates other than 29.97 and 59.94. */
MERIDIAN_C_API bool meridian_timecode_dropped_labels_per_minute(MeridianFrameRate rate,
                                                                int64_t* labels) MERIDIAN_NOTHROW;
/**
 * Gets the number of the frame that a timecode labels, from 0 at 00:00:00:00. Fails with an error of the area
 * "timecode" for a label that does not exist at the rate.
 */
MERIDIAN_C_API bool meridian_frame_number(MeridianTimecode timecode, MeridianFrameRate rate, int64_t* number,
                                          MeridianError** error) MERIDIAN_NOTHROW;
/** Gets the timecode of a frame; fails for a negative number and for a rate without such a timecode. */
MERIDIAN_C_API bool meridian_timecode_of_frame(int64_t number, MeridianFrameRate rate, bool is_drop_frame,
                                               MeridianTimecode* timecode, MeridianError** error) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif
