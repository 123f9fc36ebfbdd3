/**
 * \file
 * What compilers and versions of Foundation have in different forms: nullability, typed texts, element types of
 * collections, blocks. Whatever a compiler lacks becomes nothing, so that all of them read the same headers:
 *
 *     - (NSString* MERIDIAN_NULLABLE)argumentFlagValue:(NSString*)flag;
 */
#ifndef MERIDIAN_DEFINES_H
#define MERIDIAN_DEFINES_H

#import <Foundation/Foundation.h>

#ifdef __has_feature
#define MERIDIAN_HAS_FEATURE(feature) __has_feature(feature)
#else
#define MERIDIAN_HAS_FEATURE(feature) 0
#endif

#if MERIDIAN_HAS_FEATURE(nullability)
#define MERIDIAN_NULLABLE _Nullable
#else
#define MERIDIAN_NULLABLE
#endif

#ifndef NS_ASSUME_NONNULL_BEGIN
#if MERIDIAN_HAS_FEATURE(assume_nonnull)
#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")
#else
#define NS_ASSUME_NONNULL_BEGIN
#define NS_ASSUME_NONNULL_END
#endif
#endif

/* A text whose type says what it means: the constants are the known ones, and any other text is allowed, too. */
#ifndef NS_TYPED_EXTENSIBLE_ENUM
#if MERIDIAN_HAS_FEATURE(attribute_swift_wrapper) || defined(__clang__)
#define NS_TYPED_EXTENSIBLE_ENUM __attribute__((swift_wrapper(struct)))
#else
#define NS_TYPED_EXTENSIBLE_ENUM
#endif
#endif
/* The same for a type with no other texts. */
#ifndef NS_TYPED_ENUM
#if MERIDIAN_HAS_FEATURE(attribute_swift_wrapper) || defined(__clang__)
#define NS_TYPED_ENUM __attribute__((swift_wrapper(enum)))
#else
#define NS_TYPED_ENUM
#endif
#endif

#if MERIDIAN_HAS_FEATURE(objc_generics)
#define MERIDIAN_ARRAY(element) NSArray<element>
#define MERIDIAN_DICTIONARY(key, value) NSDictionary<key, value>
#else
#define MERIDIAN_ARRAY(element) NSArray
#define MERIDIAN_DICTIONARY(key, value) NSDictionary
#endif

#ifndef NS_UNAVAILABLE
#define NS_UNAVAILABLE
#endif
#ifndef NS_DESIGNATED_INITIALIZER
#ifdef __clang__
#define NS_DESIGNATED_INITIALIZER __attribute__((objc_designated_initializer))
#else
#define NS_DESIGNATED_INITIALIZER
#endif
#endif

/* Declares a property of a class: without class properties in the compiler, class methods of the same names. */
#if MERIDIAN_HAS_FEATURE(objc_class_property)
#define MERIDIAN_CLASS_PROPERTY(type, name) @property(class, nonatomic, readonly) type name
#define MERIDIAN_SETTABLE_CLASS_PROPERTY(type, name, setter) @property(class, nonatomic, copy) type name
#else
#define MERIDIAN_CLASS_PROPERTY(type, name) +(type)name
#define MERIDIAN_SETTABLE_CLASS_PROPERTY(type, name, setter) \
  +(type)name;                                               \
  +(void)setter : (type)text
#endif

#ifdef __cplusplus
#define MERIDIAN_EXTERN extern "C" __attribute__((visibility("default")))
#else
#define MERIDIAN_EXTERN extern __attribute__((visibility("default")))
#endif

NS_ASSUME_NONNULL_BEGIN

/* Blocks are called while the method lasts, and are neither copied nor kept. For compilers without blocks each such
   method has a sibling that calls a function with the caller's context. Where there are no blocks, the block's type is
   that of any object, so that a block from elsewhere can be handed on. The behaviour is undefined if the
   object is not a block. */
#ifdef __BLOCKS__
/** Receives a text, and may set `stop` to end the enumeration. */
typedef void (^MeridianTextBlock)(NSString* text, BOOL* stop);
/** Receives a flag and its value, empty for a flag without one. */
typedef void (^MeridianEntryBlock)(NSString* flag, NSString* value);
#else
typedef id MeridianTextBlock;
typedef id MeridianEntryBlock;
#endif
/** Does what the block of the same name does, and receives the context that the caller passed. */
typedef void (*MeridianTextFunction)(NSString* text, BOOL* stop, void* MERIDIAN_NULLABLE context);
typedef void (*MeridianEntryFunction)(NSString* flag, NSString* value, void* MERIDIAN_NULLABLE context);

NS_ASSUME_NONNULL_END

#endif
