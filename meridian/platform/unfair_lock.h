/// \file
/// The platform's plain lock, for critical sections of a few instructions. For example:
///
///     const std::lock_guard guard(lock);
#pragma once

#include <mutex>

namespace meridian::inline v0_2 {

/// A lock without an order among waiters. Here that is the standard mutex: one atomic exchange if it is free, and
/// waiting threads sleep.
using UnfairLock = std::mutex;

}  // namespace meridian::inline v0_2
