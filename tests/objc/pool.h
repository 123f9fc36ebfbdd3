/// \file
/// A test whose autoreleased objects are freed at its end.
#pragma once

#include <gtest/gtest.h>

#import <Foundation/Foundation.h>

class ObjectiveC : public testing::Test {
 protected:
  ObjectiveC() : pool_([[NSAutoreleasePool alloc] init]) {}
  ~ObjectiveC() override { [pool_ release]; }

 private:
  NSAutoreleasePool* pool_;
};

inline std::string textOf(NSString* string) { return string == nil ? "(nil)" : [string UTF8String]; }

/// Returns whether two objects are equal; both may be nil.
inline bool isEqual(id left, id right) { return left == right || [left isEqual:right]; }
