/// \file
/// Notices that another process has ended. For example:
///
///     std::stop_source work;
///     const ProcessWatch parent(parentPid, [&work] { work.request_stop(); });
///     carryOut(work.get_token());
#pragma once

#include <cstdint>
#include <functional>
#include <thread>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Calls a function once when a process ends, on a thread of its own, as long as this object exists. The process is
/// held on to by a descriptor, so that another one that gets its number later is not taken for it. Where the system has
/// no such descriptors (Linux before 5.3), its number is looked up four times a second.
class ProcessWatch {
 public:
  /// Begins to watch. A process that is not there, or has ended and only waits to be collected, has ended: the function
  /// is called before the constructor returns. Throws std::system_error if there is no room for another thread or
  /// descriptor.
  MERIDIAN_API ProcessWatch(std::int32_t process, std::function<void()> ended);
  ProcessWatch(const ProcessWatch&) = delete;
  ProcessWatch& operator=(const ProcessWatch&) = delete;
  ProcessWatch(ProcessWatch&&) = delete;
  ProcessWatch& operator=(ProcessWatch&&) = delete;
  /// Stops watching. A call that has begun is waited for.
  MERIDIAN_API ~ProcessWatch();

 private:
  void closeDescriptors() const noexcept;

  std::function<void()> ended_;
  int descriptor_ = -1;
  int ending_ = -1;
  std::thread thread_;
};

}  // namespace meridian::inline v0_2
