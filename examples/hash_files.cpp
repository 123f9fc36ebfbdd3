// Hashes files, at most LIMIT at a time: hash_files LIMIT FILE...
#include <meridian/concurrency/task_semaphore.h>

#include <algorithm>
#include <charconv>
#include <condition_variable>
#include <coroutine>
#include <cstdint>
#include <deque>
#include <exception>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <latch>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

/// Threads that resume coroutines.
class Pool {
 public:
  explicit Pool(std::size_t threads) {
    for (std::size_t i = 0; i < threads; ++i) {
      threads_.emplace_back([this](const std::stop_token& stop) {
        while (const auto coroutine = next(stop)) coroutine.resume();
      });
    }
  }

  /// `co_await pool.thread()` continues on one of the pool's threads.
  auto thread() {
    struct Move {
      Pool& pool;
      bool await_ready() const noexcept { return false; }
      void await_suspend(std::coroutine_handle<> coroutine) { pool.add(coroutine); }
      void await_resume() const noexcept {}
    };
    return Move{*this};
  }

 private:
  void add(std::coroutine_handle<> coroutine) {
    const std::lock_guard guard(mutex_);
    ready_.push_back(coroutine);
    someAreReady_.notify_one();
  }

  /// Returns the next coroutine to resume; null once the pool is being destroyed.
  std::coroutine_handle<> next(const std::stop_token& stop) {
    std::unique_lock guard(mutex_);
    if (!someAreReady_.wait(guard, stop, [this] { return !ready_.empty(); })) return nullptr;
    const auto coroutine = ready_.front();
    ready_.pop_front();
    return coroutine;
  }

  std::mutex mutex_;
  std::condition_variable_any someAreReady_;
  std::deque<std::coroutine_handle<>> ready_;
  std::vector<std::jthread> threads_;
};

/// A detached coroutine: begins at once, and is destroyed at its end.
struct Task {
  struct promise_type {
    Task get_return_object() { return {}; }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };
};

/// Returns the 64-bit FNV-1a hash of a file's bytes; absent if it cannot be read.
std::optional<std::uint64_t> hashOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::uint64_t hash = 0xcbf29ce484222325;
  std::vector<char> buffer(std::size_t{1} << 16);
  while (file) {
    file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    for (std::streamsize i = 0; i < file.gcount(); ++i) {
      hash = (hash ^ static_cast<unsigned char>(buffer[static_cast<std::size_t>(i)])) * 0x100000001b3;
    }
  }
  if (!file.eof()) return std::nullopt;
  return hash;
}

struct Hashing {
  std::string path;
  std::optional<std::uint64_t> hash;
};

Task run(Hashing& hashing, meridian::TaskSemaphore& semaphore, Pool& pool, std::latch& done) {
  co_await semaphore.wait();
  {
    const meridian::SignalAtScopeEnd slot(semaphore);
    co_await pool.thread();
    hashing.hash = hashOf(hashing.path);
  }
  done.count_down();
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  int limit = 0;
  const std::string text = words.empty() ? "" : words[0];
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
  if (error != std::errc() || end != text.data() + text.size() || limit < 1 || limit > 64) {
    std::cerr << "usage: hash_files LIMIT FILE..., with a limit from 1 to 64\n";
    return 2;
  }
  std::vector<Hashing> hashings;
  for (std::size_t i = 1; i < words.size(); ++i) hashings.push_back({words[i], {}});

  meridian::TaskSemaphore semaphore(limit);
  std::latch done(static_cast<std::ptrdiff_t>(hashings.size()));
  Pool pool(std::min<std::size_t>(static_cast<std::size_t>(limit), hashings.size()));
  for (Hashing& hashing : hashings) run(hashing, semaphore, pool, done);
  done.wait();

  int status = 0;
  for (const Hashing& hashing : hashings) {
    if (hashing.hash) {
      std::cout << std::hex << std::setw(16) << std::setfill('0') << *hashing.hash << "  " << hashing.path << '\n';
    } else {
      std::cerr << hashing.path << ": cannot be read\n";
      status = 1;
    }
  }
  return status;
}
