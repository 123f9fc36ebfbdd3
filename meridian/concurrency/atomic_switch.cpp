#include "meridian/concurrency/atomic_switch.h"

#include <mutex>
#include <utility>

namespace meridian::inline v0_2 {

AtomicSwitch::~AtomicSwitch() = default;

bool UnfairLockBasedAtomicSwitch::isOn() const noexcept {
  const std::lock_guard guard(verificationLock_);
  return isOn_;
}

void UnfairLockBasedAtomicSwitch::setIsOn(bool isOn) noexcept {
  const std::lock_guard guard(verificationLock_);
  isOn_ = isOn;
}

QueueBasedAtomicSwitch::QueueBasedAtomicSwitch(bool startingState, std::string label, QualityOfService qos,
                                               std::shared_ptr<DispatchQueue> target) noexcept
    : dispatchQueue_(std::move(label), qos, DispatchQueueAttributes::none, AutoreleaseFrequency::inherit,
                     std::move(target)),
      isOn_(startingState) {}

std::shared_ptr<QueueBasedAtomicSwitch> QueueBasedAtomicSwitch::withTargetQos(bool startingState, std::string label,
                                                                              QualityOfService targetQos) {
  return std::shared_ptr<QueueBasedAtomicSwitch>(new QueueBasedAtomicSwitch(
      startingState, std::move(label), QualityOfService::unspecified, DispatchQueue::global(targetQos)));
}

std::shared_ptr<QueueBasedAtomicSwitch> QueueBasedAtomicSwitch::withQos(bool startingState, std::string label,
                                                                        QualityOfService qos) {
  return std::shared_ptr<QueueBasedAtomicSwitch>(
      new QueueBasedAtomicSwitch(startingState, std::move(label), qos, nullptr));
}

bool QueueBasedAtomicSwitch::isOn() const noexcept {
  bool result = false;
  dispatchQueue_.sync([&] { result = isOn_; });
  return result;
}

void QueueBasedAtomicSwitch::setIsOn(bool isOn) noexcept {
  dispatchQueue_.sync([&] { isOn_ = isOn; });
}

ConcurrentQueueBasedAtomicSwitch::ConcurrentQueueBasedAtomicSwitch(bool startingState, std::string label,
                                                                   QualityOfService qos)
    : dispatchQueue_(std::move(label), QualityOfService::unspecified, DispatchQueueAttributes::concurrent,
                     AutoreleaseFrequency::inherit, DispatchQueue::global(qos)),
      isOn_(startingState) {}

bool ConcurrentQueueBasedAtomicSwitch::isOn() const noexcept {
  bool result = false;
  dispatchQueue_.sync([&] { result = isOn_; });
  return result;
}

void ConcurrentQueueBasedAtomicSwitch::setIsOn(bool isOn) noexcept {
  dispatchQueue_.barrierSync([&] { isOn_ = isOn; });
}

}  // namespace meridian::inline v0_2
