#pragma once

#include <type_traits>

namespace qx {

/// A callable without arguments that is handed over for the time of a call; it is referred to, not copied.
class TAction {
public:
  template <class TCallable>
  requires std::is_invocable_v<const TCallable&> TAction(const TCallable& Callable)
      : FCallable(&Callable), FCall([](const void* Object) { (*static_cast<const TCallable*>(Object))(); }) {}
  void operator()() const { FCall(FCallable); }

private:
  const void* FCallable;
  void (*FCall)(const void*);
};

} // namespace qx
