// The plain lock of the platform, for sections of a few instructions.
#pragma once

#include <mutex>

namespace meridian::inline v0_2 {

/// Whoever comes first when it is released gets it, in no order. Here the standard mutex is that lock: one atomic
/// exchange while it is free, and a thread that has to wait sleeps.
using UnfairLock = std::mutex;

}  // namespace meridian::inline v0_2
