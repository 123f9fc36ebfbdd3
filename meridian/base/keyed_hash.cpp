#include "meridian/base/keyed_hash.h"

#include <array>
#include <bit>
#include <chrono>
#include <cstring>
#include <exception>
#include <random>

namespace meridian::inline v0_2 {
namespace {

using Key = std::array<std::uint64_t, 2>;

Key drawKey() noexcept {
  try {
    std::random_device device;
    const auto word = [&device] { return std::uint64_t{device()} << 32 | device(); };
    return {word(), word()};
  } catch (const std::exception&) {
    // Without a source of randomness the clock and an address still differ from run to run.
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return {static_cast<std::uint64_t>(now), std::bit_cast<std::uintptr_t>(&now)};
  }
}

class SipState {
 public:
  explicit SipState(const Key& key) noexcept
      : v0_(key[0] ^ 0x736f6d6570736575),
        v1_(key[1] ^ 0x646f72616e646f6d),
        v2_(key[0] ^ 0x6c7967656e657261),
        v3_(key[1] ^ 0x7465646279746573) {}

  void add(std::uint64_t word) noexcept {
    v3_ ^= word;
    round();
    v0_ ^= word;
  }

  std::uint64_t finish() noexcept {
    v2_ ^= 0xff;
    round();
    round();
    round();
    return v0_ ^ v1_ ^ v2_ ^ v3_;
  }

 private:
  void round() noexcept {
    v0_ += v1_;
    v2_ += v3_;
    v1_ = std::rotl(v1_, 13) ^ v0_;
    v3_ = std::rotl(v3_, 16) ^ v2_;
    v0_ = std::rotl(v0_, 32);
    v2_ += v1_;
    v0_ += v3_;
    v1_ = std::rotl(v1_, 17) ^ v2_;
    v3_ = std::rotl(v3_, 21) ^ v0_;
    v2_ = std::rotl(v2_, 32);
  }

  std::uint64_t v0_, v1_, v2_, v3_;
};

}  // namespace

std::uint64_t keyedHash(std::string_view text) noexcept {
  static const Key key = drawKey();
  SipState state(key);
  const std::uint64_t length = text.size();
  std::uint64_t word = 0;
  while (text.size() >= sizeof word) {
    std::memcpy(&word, text.data(), sizeof word);
    state.add(word);
    text.remove_prefix(sizeof word);
  }
  word = 0;
  if (!text.empty()) std::memcpy(&word, text.data(), text.size());
  state.add(word | length << 56);
  return state.finish();
}

}  // namespace meridian::inline v0_2
