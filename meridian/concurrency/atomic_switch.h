/// \file
/// On/off flags that threads share, guarded in different ways with one interface. For example:
///
///     const auto isPaused = QueueBasedAtomicSwitch::withQos(false, "copy", QualityOfService::utility);
///     isPaused->setIsOn(true);
#pragma once

#include <memory>
#include <string>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/platform/dispatch_queue.h"
#include "meridian/platform/quality_of_service.h"
#include "meridian/platform/unfair_lock.h"

namespace meridian::inline v0_2 {

/// A flag that any thread may read and write; each get and each set is atomic. Usually shared through a
/// `std::shared_ptr`.
class MERIDIAN_API AtomicSwitch {
 public:
  AtomicSwitch(const AtomicSwitch&) = delete;
  AtomicSwitch& operator=(const AtomicSwitch&) = delete;
  AtomicSwitch(AtomicSwitch&&) = delete;
  AtomicSwitch& operator=(AtomicSwitch&&) = delete;
  virtual ~AtomicSwitch();

  /// Return and set the flag.
  [[nodiscard]] virtual bool isOn() const noexcept = 0;
  virtual void setIsOn(bool isOn) noexcept = 0;

  /// Gets the flag, and sets it to what `change` returns in a second step. Deliberately not atomic, for every kind of
  /// switch: if two threads toggle at once, one toggle may be lost. Callers that need test-and-set must lock
  /// externally.
  void getThenSet(FunctionRef<bool(bool isOn)> change) { setIsOn(change(isOn())); }

 protected:
  AtomicSwitch() = default;
};

/// Guarded by an unfair lock: the fastest.
class MERIDIAN_API UnfairLockBasedAtomicSwitch final : public AtomicSwitch {
 public:
  explicit UnfairLockBasedAtomicSwitch(bool isOn) noexcept : isOn_(isOn) {}

  [[nodiscard]] bool isOn() const noexcept override;
  void setIsOn(bool isOn) noexcept override;

 private:
  mutable UnfairLock verificationLock_;
  bool isOn_;
};

/// Guarded by its own serial queue, which orders gets and sets with all other blocks on the queue. Using it from a
/// block on that queue terminates the process.
class MERIDIAN_API QueueBasedAtomicSwitch final : public AtomicSwitch {
 public:
  /// Makes a switch on a queue of unspecified quality of service that targets the global queue of the given class.
  [[nodiscard]] static std::shared_ptr<QueueBasedAtomicSwitch> withTargetQos(bool startingState, std::string label,
                                                                             QualityOfService targetQos);

  /// Makes a switch on a queue of the given quality of service without a target.
  [[nodiscard]] static std::shared_ptr<QueueBasedAtomicSwitch> withQos(bool startingState, std::string label,
                                                                       QualityOfService qos);

  [[nodiscard]] bool isOn() const noexcept override;
  void setIsOn(bool isOn) noexcept override;

  /// Returns the queue that guards the switch, valid as long as the switch.
  [[nodiscard]] DispatchQueue& dispatchQueue() const noexcept { return dispatchQueue_; }

 private:
  QueueBasedAtomicSwitch(bool startingState, std::string label, QualityOfService qos,
                         std::shared_ptr<DispatchQueue> target) noexcept;

  mutable DispatchQueue dispatchQueue_;
  bool isOn_;
};

/// Guarded by its own concurrent queue: gets run concurrently, sets are barriers. Using it from a block on that queue
/// terminates the process.
class MERIDIAN_API ConcurrentQueueBasedAtomicSwitch final : public AtomicSwitch {
 public:
  /// Uses a queue of unspecified quality of service that targets the global queue of the given class.
  ConcurrentQueueBasedAtomicSwitch(bool startingState, std::string label, QualityOfService qos);

  [[nodiscard]] bool isOn() const noexcept override;
  void setIsOn(bool isOn) noexcept override;

  /// Returns the queue that guards the switch, valid as long as the switch.
  [[nodiscard]] DispatchQueue& dispatchQueue() const noexcept { return dispatchQueue_; }

 private:
  mutable DispatchQueue dispatchQueue_;
  bool isOn_;
};

}  // namespace meridian::inline v0_2
