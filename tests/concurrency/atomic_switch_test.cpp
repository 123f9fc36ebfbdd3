#include "meridian/concurrency/atomic_switch.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace meridian {
namespace {

using Qos = QualityOfService;

std::vector<std::shared_ptr<AtomicSwitch>> switches(bool isOn) {
  return {std::make_shared<UnfairLockBasedAtomicSwitch>(isOn),
          QueueBasedAtomicSwitch::withTargetQos(isOn, "a", Qos::utility),
          QueueBasedAtomicSwitch::withQos(isOn, "b", Qos::userInitiated),
          std::make_shared<ConcurrentQueueBasedAtomicSwitch>(isOn, "c", Qos::background)};
}

TEST(AtomicSwitch, ReturnsTheValueSetLast) {
  for (const bool start : {false, true}) {
    for (const auto& each : switches(start)) {
      EXPECT_EQ(each->isOn(), start);
      for (const bool isOn : {start, !start, !start, start}) {
        each->setIsOn(isOn);
        EXPECT_EQ(each->isOn(), isOn);
      }
      each->getThenSet([](bool isOn) { return !isOn; });
      EXPECT_EQ(each->isOn(), !start);
    }
  }
}

TEST(AtomicSwitch, GetThenSetLosesAToggleBetweenItsTwoSteps) {
  for (const auto& each : switches(false)) {
    each->getThenSet([&](bool isOn) {
      each->getThenSet([](bool inner) { return !inner; });
      EXPECT_TRUE(each->isOn());
      return !isOn;
    });
    EXPECT_TRUE(each->isOn());
  }
}

TEST(AtomicSwitch, PublishesWhatWasWrittenBeforeASet) {
  for (const auto& each : switches(false)) {
    std::vector<int> found(2);
    int written = 0;
    {
      std::vector<std::jthread> threads;
      for (int& number : found) {
        threads.emplace_back([&] {
          while (!each->isOn()) {
          }
          number = written;
          each->setIsOn(true);
        });
      }
      written = 7;
      each->setIsOn(true);
    }
    EXPECT_EQ(found, (std::vector{7, 7}));
  }
}

TEST(AtomicSwitch, QueuesHaveTheRequestedSettings) {
  const auto targeted = QueueBasedAtomicSwitch::withTargetQos(true, "copying", Qos::utility);
  const auto plain = QueueBasedAtomicSwitch::withQos(true, "verifying", Qos::userInitiated);
  const ConcurrentQueueBasedAtomicSwitch concurrent(true, "reading", Qos::background);
  struct Case {
    const DispatchQueue& queue;
    std::string_view label;
    Qos qos;
    DispatchQueueAttributes attributes;
    std::shared_ptr<DispatchQueue> target;
  };
  const Case cases[] = {
      {targeted->dispatchQueue(), "copying", Qos::unspecified, DispatchQueueAttributes::none,
       DispatchQueue::global(Qos::utility)},
      {plain->dispatchQueue(), "verifying", Qos::userInitiated, DispatchQueueAttributes::none, nullptr},
      {concurrent.dispatchQueue(), "reading", Qos::unspecified, DispatchQueueAttributes::concurrent,
       DispatchQueue::global(Qos::background)},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(each.queue.label(), each.label);
    EXPECT_EQ(each.queue.qualityOfService(), each.qos);
    EXPECT_EQ(each.queue.attributes(), each.attributes);
    EXPECT_EQ(each.queue.autoreleaseFrequency(), AutoreleaseFrequency::inherit);
    EXPECT_EQ(each.queue.target(), each.target);
  }
}

TEST(AtomicSwitchDeathTest, TerminatesIfUsedFromItsOwnQueue) {
  const auto serial = QueueBasedAtomicSwitch::withQos(true, "copying", Qos::utility);
  const ConcurrentQueueBasedAtomicSwitch concurrent(true, "reading", Qos::utility);
  EXPECT_DEATH(serial->dispatchQueue().sync([&] { static_cast<void>(serial->isOn()); }), "\"copying\"");
  EXPECT_DEATH(concurrent.dispatchQueue().sync([&] { static_cast<void>(concurrent.isOn()); }), "\"reading\"");
  // Other switches may be used there.
  bool isOn = false;
  serial->dispatchQueue().sync([&] { isOn = concurrent.isOn(); });
  EXPECT_TRUE(isOn);
}

}  // namespace
}  // namespace meridian
