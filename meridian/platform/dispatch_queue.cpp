#include "meridian/platform/dispatch_queue.h"

#include <string_view>
#include <utility>

#include "meridian/base/no_destructor.h"
#include "meridian/base/precondition.h"
#include "meridian/base/printable.h"

namespace meridian::inline v0_2 {

/// A block's turn on one queue: waits for it, and ends it. The turns of a thread are a list, the innermost first.
class DispatchQueue::Turn {
 public:
  Turn(DispatchQueue& queue, LockAccess access) : queue_(queue), access_(access), outer_(innermost) {
    if (isOnThisThread(queue)) fail(queue, "submits to it and would wait for itself");
    queue.lock_.lock(access);
    innermost = this;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    innermost = outer_;
    queue_.lock_.unlock(access_);
  }

  /// Whether a block on the queue is running on this thread.
  static bool isOnThisThread(const DispatchQueue& queue) noexcept {
    for (const Turn* turn = innermost; turn != nullptr; turn = turn->outer_) {
      if (&turn->queue_ == &queue) return true;
    }
    return false;
  }

  [[noreturn]] static void fail(const DispatchQueue& queue, std::string_view what) {
    preconditionFailed("DispatchQueue " + inQuotes(queue.label_) + ": a block that is running on the queue " +
                       std::string(what));
  }

 private:
  static constinit thread_local const Turn* innermost;

  DispatchQueue& queue_;
  LockAccess access_;
  const Turn* outer_;
};

constinit thread_local const DispatchQueue::Turn* DispatchQueue::Turn::innermost = nullptr;

DispatchQueue::DispatchQueue(std::string label, QualityOfService qualityOfService, DispatchQueueAttributes attributes,
                             AutoreleaseFrequency autoreleaseFrequency, std::shared_ptr<DispatchQueue> target) noexcept
    : label_(std::move(label)),
      qualityOfService_(qualityOfService),
      attributes_(attributes),
      autoreleaseFrequency_(autoreleaseFrequency),
      target_(std::move(target)) {}

DispatchQueue::~DispatchQueue() {
  if (Turn::isOnThisThread(*this)) Turn::fail(*this, "destroys it");
  if (!lock_.isFree())
    preconditionFailed("DispatchQueue " + inQuotes(label_) + " destroyed while a block is running or waiting");
}

const std::shared_ptr<DispatchQueue>& DispatchQueue::global(QualityOfService qualityOfService) {
  using Queues = std::array<std::shared_ptr<DispatchQueue>, allCases<QualityOfService>().size()>;
  static const NoDestructor<Queues> queues([] {
    Queues created;
    for (const QualityOfService each : allCases<QualityOfService>()) {
      auto queue = std::make_shared<DispatchQueue>("meridian.global." + std::string(rawValue(each)), each,
                                                   DispatchQueueAttributes::concurrent);
      queue->isGlobal_ = true;
      created[static_cast<std::size_t>(each)] = std::move(queue);
    }
    return created;
  }());
  return (*queues)[static_cast<std::size_t>(qualityOfService)];
}

void DispatchQueue::run(FunctionRef<void()> block, LockAccess access) {
  if (isGlobal_) {
    block();
    return;
  }
  const Turn turn(*this, access);
  if (target_) {
    target_->run(block, target_->plainAccess());
  } else {
    block();
  }
}

}  // namespace meridian::inline v0_2
