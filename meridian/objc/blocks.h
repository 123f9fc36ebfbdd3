/// \file
/// Calls blocks from sources that no compiler has to read as ones with blocks. A block is a structure with a function
/// (the block ABI of Clang and GCC's peers); calling it needs no runtime, as long as it is neither copied nor kept.
///
///     callBlock(block, @"mov", &stop);
#pragma once

#import <Foundation/Foundation.h>

namespace meridian::inline v0_2::objc {

/// Calls a block that returns nothing.
template <typename... Arguments>
#if defined(__clang__)
__attribute__((no_sanitize("function")))
#endif
void callBlock(id block, Arguments... arguments) {
  struct Layout {
    void* isa;
    int flags;
    int reserved;
    void (*invoke)(id block, Arguments... arguments);
  };
  reinterpret_cast<const Layout*>(block)->invoke(block, arguments...);
}

}  // namespace meridian::inline v0_2::objc
