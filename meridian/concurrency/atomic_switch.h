// On/off flags that threads share, each guarded in another way behind one interface.
#pragma once

#include <memory>
#include <string>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/platform/dispatch_queue.h"
#include "meridian/platform/quality_of_service.h"
#include "meridian/platform/unfair_lock.h"

namespace meridian::inline v0_2 {

/// A flag that any thread may read and write; each single get and each single set is atomic. Holders share one,
/// mostly through a `std::shared_ptr`.
class MERIDIAN_API AtomicSwitch {
 public:
  AtomicSwitch(const AtomicSwitch&) = delete;
  AtomicSwitch& operator=(const AtomicSwitch&) = delete;
  AtomicSwitch(AtomicSwitch&&) = delete;
  AtomicSwitch& operator=(AtomicSwitch&&) = delete;
  virtual ~AtomicSwitch();

  [[nodiscard]] virtual bool isOn() const noexcept = 0;
  virtual void setIsOn(bool isOn) noexcept = 0;

  /// Gets the flag, and in a second, separate step sets it to what `change` makes of it. On purpose not atomic, with
  /// every kind of switch: of two threads that toggle at once one toggle may be lost. Who needs test-and-set keeps a
  /// guard of its own around it.
  void getThenSet(FunctionRef<bool(bool isOn)> change) { setIsOn(change(isOn())); }

 protected:
  AtomicSwitch() = default;
};

/// Guarded by an unfair lock: the fastest, for any thread.
class MERIDIAN_API UnfairLockBasedAtomicSwitch final : public AtomicSwitch {
 public:
  explicit UnfairLockBasedAtomicSwitch(bool isOn) noexcept : isOn_(isOn) {}

  [[nodiscard]] bool isOn() const noexcept override;
  void setIsOn(bool isOn) noexcept override;

 private:
  mutable UnfairLock verificationLock_;
  bool isOn_;
};

/// Guarded by a serial queue of its own, so that gets and sets are ordered with everything else that goes through the
/// queue. To use it from a block that is running on that queue stops the process.
class MERIDIAN_API QueueBasedAtomicSwitch final : public AtomicSwitch {
 public:
  /// On a queue of unspecified quality of service, whose target is the global queue of the given class.
  [[nodiscard]] static std::shared_ptr<QueueBasedAtomicSwitch> withTargetQos(bool startingState, std::string label,
                                                                             QualityOfService targetQos);

  /// On a queue of the given quality of service, without a target.
  [[nodiscard]] static std::shared_ptr<QueueBasedAtomicSwitch> withQos(bool startingState, std::string label,
                                                                       QualityOfService qos);

  [[nodiscard]] bool isOn() const noexcept override;
  void setIsOn(bool isOn) noexcept override;

  [[nodiscard]] DispatchQueue& dispatchQueue() const noexcept { return dispatchQueue_; }

 private:
  QueueBasedAtomicSwitch(bool startingState, std::string label, QualityOfService qos,
                         std::shared_ptr<DispatchQueue> target) noexcept;

  mutable DispatchQueue dispatchQueue_;
  bool isOn_;
};

/// Guarded by a concurrent queue of its own: gets run side by side, a set waits for those before it and keeps those
/// after it waiting. To use it from a block that is running on that queue stops the process.
class MERIDIAN_API ConcurrentQueueBasedAtomicSwitch final : public AtomicSwitch {
 public:
  /// On a queue of unspecified quality of service, whose target is the global queue of the given class.
  ConcurrentQueueBasedAtomicSwitch(bool startingState, std::string label, QualityOfService qos);

  [[nodiscard]] bool isOn() const noexcept override;
  void setIsOn(bool isOn) noexcept override;

  [[nodiscard]] DispatchQueue& dispatchQueue() const noexcept { return dispatchQueue_; }

 private:
  mutable DispatchQueue dispatchQueue_;
  bool isOn_;
};

}  // namespace meridian::inline v0_2
