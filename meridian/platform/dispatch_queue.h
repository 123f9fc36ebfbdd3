// Queues that run blocks one after another, or side by side with barriers between them.
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

/// Whether a queue is serial, which is one without attributes, or concurrent.
enum class DispatchQueueAttributes : std::uint8_t { none, concurrent };

template <>
struct EnumerationTable<DispatchQueueAttributes> {
  static constexpr auto rows = std::to_array<EnumerationRow<DispatchQueueAttributes>>({
      {DispatchQueueAttributes::none, "none"},
      {DispatchQueueAttributes::concurrent, "concurrent"},
  });
};

/// When a queue empties pools of released objects. There are none on this platform: it can be asked for and does
/// nothing.
enum class AutoreleaseFrequency : std::uint8_t { inherit };

template <>
struct EnumerationTable<AutoreleaseFrequency> {
  static constexpr auto rows = std::to_array<EnumerationRow<AutoreleaseFrequency>>({
      {AutoreleaseFrequency::inherit, "inherit"},
  });
};

/// Runs blocks on the thread that submits them, which waits for its turn: first in, first out. A serial queue runs one
/// block at a time. A concurrent one runs plain blocks side by side and a barrier block alone: the barrier waits for
/// the blocks before it, and the blocks after it wait for the barrier.
///
/// A block runs on its queue, on that queue's target, and so on: it holds a turn on each of them, so that queues with a
/// serial target run one block at a time between them. On the target it is a plain block, also where it is a barrier on
/// the queue itself.
///
/// A block that submits to a queue on which it is running already, directly, from a block within or through a target,
/// would wait for itself: that stops the process with a message that names the queue. Two threads that each submit to
/// the queue of the other's block still wait for each other for ever.
class MERIDIAN_API DispatchQueue {
 public:
  /// The label is for people and need not be unique. The quality of service can be asked for and changes nothing: a
  /// block has the priority of the thread that runs it. Without a target a queue depends on no other.
  explicit DispatchQueue(std::string label, QualityOfService qualityOfService = QualityOfService::unspecified,
                         DispatchQueueAttributes attributes = DispatchQueueAttributes::none,
                         AutoreleaseFrequency autoreleaseFrequency = AutoreleaseFrequency::inherit,
                         std::shared_ptr<DispatchQueue> target = nullptr) noexcept;

  /// The queue of this class that the whole process shares. It is concurrent and keeps nobody waiting: barriers are
  /// plain blocks on it, and blocks on it may submit to it.
  [[nodiscard]] static const std::shared_ptr<DispatchQueue>& global(QualityOfService qualityOfService);

  DispatchQueue(const DispatchQueue&) = delete;
  DispatchQueue& operator=(const DispatchQueue&) = delete;
  /// Outlives its blocks: destroyed by one of them, or while one runs or waits on another thread, it stops the process.
  ~DispatchQueue();

  [[nodiscard]] const std::string& label() const noexcept { return label_; }
  [[nodiscard]] QualityOfService qualityOfService() const noexcept { return qualityOfService_; }
  [[nodiscard]] DispatchQueueAttributes attributes() const noexcept { return attributes_; }
  [[nodiscard]] AutoreleaseFrequency autoreleaseFrequency() const noexcept { return autoreleaseFrequency_; }
  [[nodiscard]] const std::shared_ptr<DispatchQueue>& target() const noexcept { return target_; }

  /// Runs the block on the calling thread when its turn has come, and returns when it is done. What the block throws
  /// comes out of here and ends its turn.
  void sync(FunctionRef<void()> block) { run(block, plainAccess()); }

  /// The same as a barrier block; on a serial queue every block is one.
  void barrierSync(FunctionRef<void()> block) { run(block, LockAccess::exclusive); }

 private:
  class Turn;

  [[nodiscard]] LockAccess plainAccess() const noexcept {
    return attributes_ == DispatchQueueAttributes::concurrent ? LockAccess::shared : LockAccess::exclusive;
  }
  void run(FunctionRef<void()> block, LockAccess access);

  std::string label_;
  QualityOfService qualityOfService_;
  DispatchQueueAttributes attributes_;
  AutoreleaseFrequency autoreleaseFrequency_;
  bool isGlobal_ = false;
  std::shared_ptr<DispatchQueue> target_;
  FairSharedLock lock_;
};

}  // namespace meridian::inline v0_2
