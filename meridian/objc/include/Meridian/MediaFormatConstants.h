/**
 * \file
 * Media containers with their file extensions, and the list of makers to show. For example:
 *
 *     [MediaFormatConstants enumerateContainersForFileExtension:@"mov"
 *                                                         block:^(NSString* container, BOOL* stop) {
 *                                                           NSLog(@"%@", container);  // QuickTime
 *                                                         }];
 */
#ifndef MERIDIAN_MEDIA_FORMAT_CONSTANTS_H
#define MERIDIAN_MEDIA_FORMAT_CONSTANTS_H

#import <Meridian/Defines.h>

NS_ASSUME_NONNULL_BEGIN

/** The table of containers. Any thread may use it. */
@interface MediaFormatConstants : NSObject {
 @private
  MERIDIAN_DICTIONARY(NSString*, MERIDIAN_ARRAY(NSString*) *) * _cachedContainerFileExtensionLookup;
}

/** Returns the one instance. */
+ (MediaFormatConstants*)sharedInstance;

/**
 * The extensions of each container, keyed by its name; "Image Sequence" has no entry. ".m4a", ".m4p", ".m4b" and ".m4r"
 * deliberately have a leading dot, so that only a query with the dot finds them.
 */
@property(nonatomic, readonly) MERIDIAN_DICTIONARY(NSString*, MERIDIAN_ARRAY(NSString*)*) *
    cachedContainerFileExtensionLookup;

/**
 * Calls the block with each extension of the container, in the table's order. Does nothing for a container without an
 * entry.
 */
+ (void)enumerateValidFileExtensionsForMediaContainer:(NSString*)container block:(MeridianTextBlock)block;
+ (void)enumerateValidFileExtensionsForMediaContainer:(NSString*)container
                                             function:(MeridianTextFunction)function
                                              context:(void* MERIDIAN_NULLABLE)context;

/**
 * Calls the block with each container that has the extension, in the order QuickTime, MXF, MP4, AVI, R3D, BRAW, DPX,
 * HDE, CINE. Ignores case, but not a leading dot.
 */
+ (void)enumerateContainersForFileExtension:(NSString*)fileExtension block:(MeridianTextBlock)block;
+ (void)enumerateContainersForFileExtension:(NSString*)fileExtension
                                   function:(MeridianTextFunction)function
                                    context:(void* MERIDIAN_NULLABLE)context;

/**
 * Calls the block with the names of fifteen makers, in an order that is fixed though not quite alphabetical (Insta360
 * before GoPro). Convergent Design and Nikon are deliberately not listed. Does nothing for nil and for a null function.
 */
+ (void)alphabeticalEnumerationOfCorporations:(MeridianTextBlock MERIDIAN_NULLABLE)block;
+ (void)alphabeticalEnumerationOfCorporationsUsingFunction:(MeridianTextFunction MERIDIAN_NULLABLE)function
                                                   context:(void* MERIDIAN_NULLABLE)context;

@end

NS_ASSUME_NONNULL_END

#endif
