/// \file
/// Values of the library as objects of Foundation and back, and the exceptions and errors of Objective-C. For example:
///
///     - (NSArray *)commandLine {
///       return returned([&] { return arrayOf(store(self).commandLine()); });
///     }
///
/// Objects are autoreleased. A caller's object of another class, or nil where it has to be one, raises
/// NSInvalidArgumentException.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "meridian/base/error.h"
#include "meridian/base/text_dictionary.h"
#include "meridian/objc/guard.h"
#include "meridian/platform/url.h"

#import <Foundation/Foundation.h>

namespace meridian::inline v0_2::objc {

/// Raises the exception of Objective-C for one of C++.
[[noreturn]] void raise(Thrown thrown);
/// Raises NSInvalidArgumentException.
[[noreturn]] void raiseInvalidArgument(std::string_view reason);

/// Does the work of a method and returns its result; raises an exception of Objective-C if it throws one of C++.
template <typename Work>
auto returned(Work&& work) -> decltype(work()) {
  using Result = decltype(work());
  if constexpr (std::is_void_v<Result>) {
    if (const auto thrown = guarded(work)) raise(*thrown);
  } else {
    Result result{};
    if (const auto thrown = guarded([&] { result = work(); })) raise(*thrown);
    return result;
  }
}

/// Returns the object if it is one of the class; raises NSInvalidArgumentException otherwise, for nil too.
id required(id object, Class type, std::string_view name);

/// Returns a number without its fraction; raises NSInvalidArgumentException for one beyond 64 bits, NaN included.
[[nodiscard]] std::int64_t wholeNumberOf(id number, std::string_view name);

[[nodiscard]] NSString* stringOf(std::string_view text);
/// Returns the text of a string, which may contain NULs.
[[nodiscard]] std::string textOf(id string, std::string_view name);
/// Returns whether UTF-8 can carry the object, which has to be a string, and stores its text.
[[nodiscard]] bool getText(id object, std::string& text);

[[nodiscard]] NSArray* arrayOf(const std::vector<std::string>& texts);
[[nodiscard]] std::vector<std::string> textsOf(id array, std::string_view name);

[[nodiscard]] NSDictionary* dictionaryOf(const TextDictionary& dictionary);
/// Returns the entries in the order of their keys' bytes.
[[nodiscard]] TextDictionary textDictionaryOf(id dictionary, std::string_view name);
/// Returns whether the object is a dictionary from strings to strings, and stores its entries in that order.
[[nodiscard]] bool getDictionary(id object, TextDictionary& dictionary);

/// Returns a URL of a path; nil for an empty path, which no NSURL has.
[[nodiscard]] NSURL* urlOf(const std::string& path);
/// Returns the path of a URL, which has to be that of a file.
[[nodiscard]] std::string pathOf(id url, std::string_view name);

/// Stores an error for the caller, if one is wanted.
void storeError(NSError** destination, NSString* domain, NSInteger code, std::string_view name, std::string_view place,
                std::string_view text, std::string_view detail, std::error_code systemError, std::string_view remedy,
                bool isFile);
/// Stores the error for an exception of C++ that was thrown; raises it if it is not lack of memory.
void storeThrown(NSError** destination, Thrown thrown);

/// Stores an error of the library and returns NO. `isFile` says that its place is a path.
template <typename LibraryError>
BOOL failed(NSError** destination, NSString* domain, const LibraryError& error, bool isFile = false) {
  storeError(destination, domain, static_cast<NSInteger>(error.code), rawValue(error.code), error.place, error.text(),
             error.detail, error.systemError, error.remedy(), isFile);
  return NO;
}

}  // namespace meridian::inline v0_2::objc
