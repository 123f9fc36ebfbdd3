/// \file
/// Queues that run blocks one after another, or concurrently with barriers between them. For example:
///
///     DispatchQueue queue("cards");
///     queue.sync([&] { cards.push_back(card); });
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "meridian/base/enumeration.h"
#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/platform/fair_shared_lock.h"
#include "meridian/platform/quality_of_service.h"

namespace meridian::inline v0_2 {

/// Without attributes a queue is serial.
enum class DispatchQueueAttributes : std::uint8_t { none, concurrent };

template <>
struct EnumerationTable<DispatchQueueAttributes> {
  static constexpr auto rows = std::to_array<EnumerationRow<DispatchQueueAttributes>>({
      {DispatchQueueAttributes::none, "none"},
      {DispatchQueueAttributes::concurrent, "concurrent"},
  });
};

/// When a queue drains its autorelease pools. This platform has no such pools, so the setting has no effect.
enum class AutoreleaseFrequency : std::uint8_t { inherit };

template <>
struct EnumerationTable<AutoreleaseFrequency> {
  static constexpr auto rows = std::to_array<EnumerationRow<AutoreleaseFrequency>>({
      {AutoreleaseFrequency::inherit, "inherit"},
  });
};

/// Runs blocks on the submitting thread, which waits for its turn in FIFO order. A serial queue runs one block at a
/// time. A concurrent queue runs plain blocks concurrently and a barrier block alone: the barrier waits for the blocks
/// before it, and the blocks after it wait for the barrier.
///
/// A block holds a turn on its queue, on that queue's target, and so on. Queues that share a serial target therefore
/// run one block at a time between them. On a target every block is a plain block, even a barrier of the queue itself.
///
/// A block that submits to a queue on which it is already running, directly, from a nested block or through a target,
/// would deadlock: this terminates the process with a message that names the queue. Deadlocks between two threads, each
/// with a block that submits to the other's queue, are not detected.
class DispatchQueue {
 public:
  /// The label is for people and need not be unique. The quality of service is stored but has no effect: a block has
  /// the priority of the thread that submits it. A queue without a target is independent of all others.
  MERIDIAN_API explicit DispatchQueue(std::string label,
                                      QualityOfService qualityOfService = QualityOfService::unspecified,
                                      DispatchQueueAttributes attributes = DispatchQueueAttributes::none,
                                      AutoreleaseFrequency autoreleaseFrequency = AutoreleaseFrequency::inherit,
                                      std::shared_ptr<DispatchQueue> target = nullptr) noexcept;

  /// Returns the process-wide queue of this class. It is concurrent and no block ever waits on it: its barriers are
  /// plain blocks, and its blocks may submit to it.
  [[nodiscard]] MERIDIAN_API static const std::shared_ptr<DispatchQueue>& global(QualityOfService qualityOfService);

  DispatchQueue(const DispatchQueue&) = delete;
  DispatchQueue& operator=(const DispatchQueue&) = delete;
  /// Terminates the process if a block is still running or waiting, or if a block of the queue destroys it.
  MERIDIAN_API ~DispatchQueue();

  [[nodiscard]] const std::string& label() const noexcept { return label_; }
  [[nodiscard]] QualityOfService qualityOfService() const noexcept { return qualityOfService_; }
  [[nodiscard]] DispatchQueueAttributes attributes() const noexcept { return attributes_; }
  [[nodiscard]] AutoreleaseFrequency autoreleaseFrequency() const noexcept { return autoreleaseFrequency_; }
  [[nodiscard]] const std::shared_ptr<DispatchQueue>& target() const noexcept { return target_; }

  /// Runs the block on the calling thread in its turn, and returns when it is done. An exception that the block throws
  /// ends its turn and is passed on.
  void sync(FunctionRef<void()> block) { run(block, plainAccess()); }

  /// Runs the block as a barrier; on a serial queue every block is one.
  void barrierSync(FunctionRef<void()> block) { run(block, LockAccess::exclusive); }

 private:
  class Turn;

  [[nodiscard]] LockAccess plainAccess() const noexcept {
    return attributes_ == DispatchQueueAttributes::concurrent ? LockAccess::shared : LockAccess::exclusive;
  }
  MERIDIAN_API void run(FunctionRef<void()> block, LockAccess access);

  std::string label_;
  QualityOfService qualityOfService_;
  DispatchQueueAttributes attributes_;
  AutoreleaseFrequency autoreleaseFrequency_;
  bool isGlobal_ = false;
  std::shared_ptr<DispatchQueue> target_;
  FairSharedLock lock_;
};

}  // namespace meridian::inline v0_2
