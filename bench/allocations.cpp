#include "bench/allocations.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> allocations{0};
std::atomic<std::size_t> live{0};
std::atomic<std::size_t> peak{0};

void* counted(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  allocations.fetch_add(1, std::memory_order_relaxed);
  const std::size_t size = malloc_usable_size(memory);
  const std::size_t now = live.fetch_add(size, std::memory_order_relaxed) + size;
  std::size_t before = peak.load(std::memory_order_relaxed);
  while (now > before && !peak.compare_exchange_weak(before, now, std::memory_order_relaxed)) {
  }
  return memory;
}

void release(void* memory) noexcept {
  live.fetch_sub(malloc_usable_size(memory), std::memory_order_relaxed);
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return counted(std::malloc(size == 0 ? 1 : size)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto boundary = static_cast<std::size_t>(alignment);
  return counted(std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary));
}

void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept { release(memory); }
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept { release(memory); }

namespace meridian::bench {

std::size_t allocationCount() noexcept { return allocations.load(std::memory_order_relaxed); }

std::size_t liveBytes() noexcept { return live.load(std::memory_order_relaxed); }

std::size_t peakBytes() noexcept { return peak.load(std::memory_order_relaxed); }

void startPeak() noexcept { peak.store(liveBytes(), std::memory_order_relaxed); }

}  // namespace meridian::bench
