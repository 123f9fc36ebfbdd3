/// \file
/// A reference to any callable, for callback parameters: nothing is copied or allocated. For example:
///
///     void enumerateFlags(FunctionRef<void(std::string_view flag, bool& stop)> visit);
///     enumerateFlags([&](std::string_view flag, bool& stop) { stop = flag == "-vf"; });
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace meridian::inline v0_2 {

template <typename Signature>
class FunctionRef;

/// Refers to a callable while a call that has it as a parameter lasts. Does not extend the callable's lifetime: never
/// store it.
template <typename Result, typename... Arguments>
class FunctionRef<Result(Arguments...)> {
 public:
  template <typename Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef> &&
             std::is_invocable_r_v<Result, Callable&, Arguments...>)
  // NOLINTNEXTLINE(google-explicit-constructor): a parameter of this type accepts any callable as it is.
  constexpr FunctionRef(Callable&& callable) noexcept {
    using Target = std::remove_reference_t<Callable>;
    if constexpr (std::is_function_v<Target>) {
      referent_.function = reinterpret_cast<void (*)()>(&callable);
    } else {
      referent_.object = const_cast<void*>(static_cast<const void*>(std::addressof(callable)));
    }
    call_ = [](Referent referent, Arguments... arguments) -> Result {
      if constexpr (std::is_function_v<Target>) {
        return reinterpret_cast<Target*>(referent.function)(std::forward<Arguments>(arguments)...);
      } else {
        return std::invoke(*static_cast<Target*>(referent.object), std::forward<Arguments>(arguments)...);
      }
    };
  }

  Result operator()(Arguments... arguments) const { return call_(referent_, std::forward<Arguments>(arguments)...); }

 private:
  // Not every platform can convert a function pointer to an object pointer.
  union Referent {
    void* object;
    void (*function)();
  };

  Referent referent_;
  Result (*call_)(Referent, Arguments...);
};

}  // namespace meridian::inline v0_2
