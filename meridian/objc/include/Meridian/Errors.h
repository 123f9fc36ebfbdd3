/**
 * \file
 * Errors that Meridian returns. For example, of a file that does not exist:
 *
 *     error.domain                       MeridianLutErrorDomain
 *     error.code                         MeridianLutErrorNotOpened
 *     error.localizedDescription         "/looks/show.cube": cannot be opened: No such file or directory
 *     error.localizedFailureReason       cannot be opened
 *     error.localizedRecoverySuggestion  check the spelling and that you may read it
 *
 * The user info also has NSFilePathErrorKey where the error is about a file, NSUnderlyingErrorKey with the operating
 * system's error where there is one, and MeridianErrorNameKey. Texts of an error are English, with control characters
 * escaped. Lack of memory is ENOMEM of NSPOSIXErrorDomain.
 */
#ifndef MERIDIAN_ERRORS_H
#define MERIDIAN_ERRORS_H

#import <Meridian/Defines.h>

NS_ASSUME_NONNULL_BEGIN

/** The key of the code's name in the user info, such as "notOpened". */
MERIDIAN_EXTERN NSString* const MeridianErrorNameKey;

/** Why a file cannot be read as a LUT. */
MERIDIAN_EXTERN NSString* const MeridianLutErrorDomain;
typedef NS_ENUM(NSInteger, MeridianLutError) {
  MeridianLutErrorXmlDocument,
  MeridianLutErrorUnsupportedExtension,
  MeridianLutErrorNotOpened,
  MeridianLutErrorNotRegularFile,
  MeridianLutErrorNotRead,
  MeridianLutErrorNoRows,
  MeridianLutErrorUnknownDimensions,
  MeridianLutErrorUnusableRowCount,
  MeridianLutErrorTooFewRows,
  MeridianLutErrorOtherPublishedFormat,
  MeridianLutErrorNoPublishedFormat,
  MeridianLutErrorNotReadByLibrary,
  MeridianLutErrorRefersToOtherFile,
  MeridianLutErrorMalformedLine,
  MeridianLutErrorUnsupportedSize,
  MeridianLutErrorInvalidDomain,
  MeridianLutErrorTruncated,
  MeridianLutErrorSurplusRows,
  MeridianLutErrorUnknownCubeSize,
  MeridianLutErrorImplausibleValues
};

/** Why a LUT cannot be applied to an image. */
MERIDIAN_EXTERN NSString* const MeridianImageErrorDomain;
typedef NS_ENUM(NSInteger, MeridianImageError) {
  MeridianImageErrorNoSamples,
  MeridianImageErrorUnusableStride,
  MeridianImageErrorMisalignedSamples,
  MeridianImageErrorUnequalSizes,
  MeridianImageErrorUnusableBitDepth,
  MeridianImageErrorUnusableRange,
  MeridianImageErrorOtherFormat
};

/** Why a property cannot be set. */
MERIDIAN_EXTERN NSString* const MeridianPropertyErrorDomain;
typedef NS_ENUM(NSInteger, MeridianPropertyError) {
  MeridianPropertyErrorUnknownProperty,
  MeridianPropertyErrorInvalidValue,
  MeridianPropertyErrorWrongType,
  MeridianPropertyErrorBeginsWithDash,
  MeridianPropertyErrorContainsNul
};

NS_ASSUME_NONNULL_END

#endif
