#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace qx {

template <class TSignature>
class TQXEvent;

/// Handlers, of whatever kind, that were replaced while they ran.
using TRetiredHandlers = std::vector<std::shared_ptr<void>>;

/// A callable that may be empty, as function pointers and std::function may; a function itself never is.
template <class TCallable>
concept Nullable =
    !std::is_function_v<std::remove_reference_t<TCallable>> &&
    std::is_constructible_v<std::decay_t<TCallable>, std::nullptr_t> && requires(const TCallable& Callable) {
  static_cast<bool>(Callable == nullptr);
};

/// A slot for one handler: assign any callable of matching parameters, test the slot, call it, clear it with
/// nullptr.
///
///     ga.OnEvolve = [&](auto& sender) { ... };
///     ga.OnEvolve = nullptr;
///
/// Calling an empty slot does nothing and costs one branch. A handler may replace or clear its own slot while
/// it runs; it lives until it returns. Assigning a slot to another shares the handler. An exception of a
/// handler reaches the caller.
template <class... TArguments>
class TQXEvent<void(TArguments...)> {
public:
  using TSignature = void(TArguments...);

  TQXEvent() = default;
  TQXEvent(const TQXEvent& Source) : FHandler(Source.FHandler) {}
  virtual ~TQXEvent() = default;

  TQXEvent& operator=(const TQXEvent& Source) {
    if (&Source != this) {
      Store(Source.FHandler);
    }
    return *this;
  }
  TQXEvent& operator=(std::nullptr_t) {
    Store(nullptr);
    return *this;
  }
  template <class TCallable>
  requires(!std::derived_from<std::remove_cvref_t<TCallable>, TQXEvent>) TQXEvent&
  operator=(TCallable&& Callable) {
    if constexpr (requires {
                    { Callable.Slot() } -> std::convertible_to<const TQXEvent&>;
                  }) { // a view through derived types
      Store(static_cast<const TQXEvent&>(Callable.Slot()).FHandler);
    } else {
      Store(Wrap(std::forward<TCallable>(Callable)));
    }
    return *this;
  }

  /// The handler, when it is of that type, or nullptr.
  template <class TCallable>
  const TCallable* Target() const {
    const auto* const Handler = dynamic_cast<const TCallableHandler<TCallable>*>(FHandler.get());
    return Handler != nullptr ? &Handler->Held() : nullptr;
  }

  explicit operator bool() const { return FHandler != nullptr; }
  friend bool operator==(const TQXEvent& Event, std::nullptr_t) { return Event.FHandler == nullptr; }

  void operator()(TArguments... Arguments) const {
    if (FHandler == nullptr) {
      return;
    }
    const TCall Call(*this);
    FHandler->Invoke(static_cast<TArguments>(Arguments)...);
  }

protected:
  /// Called after a host has assigned or cleared the slot.
  virtual void HandlerChanged(bool /*WasAssigned*/) {}

  /// Stores a handler without a call of `HandlerChanged`.
  template <class TCallable>
  void Bind(TCallable&& Callable) {
    Replace(Wrap(std::forward<TCallable>(Callable)));
  }
  void Unbind() { Replace(nullptr); }
  void BindTo(const TQXEvent& Source) { Replace(Source.FHandler); }

private:
  class THandler {
  public:
    virtual ~THandler() = default;
    virtual void Invoke(TArguments... Arguments) = 0;
  };
  using THandlerPointer = std::shared_ptr<THandler>;

  template <class TCallable>
  class TCallableHandler final : public THandler {
  public:
    explicit TCallableHandler(TCallable Callable) : FCallable(std::move(Callable)) {}
    void Invoke(TArguments... Arguments) override { FCallable(static_cast<TArguments>(Arguments)...); }
    const TCallable& Held() const { return FCallable; }

  private:
    TCallable FCallable;
  };

  // Counts the calls that are under way; a handler that is replaced meanwhile is kept until the last returns.
  class TCall {
  public:
    explicit TCall(const TQXEvent& Event) : FEvent(Event) { ++FEvent.FCalls; }
    TCall(const TCall&) = delete;
    TCall& operator=(const TCall&) = delete;
    ~TCall() {
      if (--FEvent.FCalls == 0 && FEvent.FRetired != nullptr) [[unlikely]] {
        const auto Done = std::move(FEvent.FRetired);
      }
    }

  private:
    const TQXEvent& FEvent;
  };

  template <class TCallable>
  static THandlerPointer Wrap(TCallable&& Callable) {
    using TStored = std::decay_t<TCallable>;
    static_assert(std::is_invocable_v<TStored&, TArguments...>,
                  "the handler's parameters do not match the event's");
    if constexpr (Nullable<TCallable>) {
      if (Callable == nullptr) {
        return nullptr;
      }
    }
    return std::make_shared<TCallableHandler<TStored>>(std::forward<TCallable>(Callable));
  }

  void Store(THandlerPointer Handler) {
    const bool WasAssigned = FHandler != nullptr;
    Replace(std::move(Handler));
    HandlerChanged(WasAssigned);
  }

  void Replace(THandlerPointer Handler) {
    if (FCalls > 0 && FHandler != nullptr) {
      if (FRetired == nullptr) {
        FRetired = std::make_unique<TRetiredHandlers>();
      }
      FRetired->push_back(FHandler);
    }
    FHandler = std::move(Handler);
  }

  THandlerPointer FHandler;
  mutable std::unique_ptr<TRetiredHandlers> FRetired;
  mutable int FCalls = 0;
};

/// How a handler's wish for a derived class is met from the argument that an event passes.
template <class TWanted, class TGiven>
class TNarrowed {
  static_assert(std::is_same_v<TWanted, TGiven>, "only class references and pointers are narrowed");

public:
  explicit TNarrowed(TGiven Given) : FGiven(static_cast<TGiven>(Given)) {}
  TWanted Get() { return static_cast<TWanted>(FGiven); }

private:
  TGiven FGiven;
};

template <class TWanted, class TGiven>
requires(std::is_base_of_v<TGiven, TWanted> &&
         !std::is_same_v<TWanted, TGiven>) class TNarrowed<TWanted&, TGiven&> {
public:
  explicit TNarrowed(TGiven& Given) : FGiven(Given) {}
  TWanted& Get() { return static_cast<TWanted&>(FGiven); }

private:
  TGiven& FGiven;
};

// A pointer that the handler may set: it sees a pointer of its own class, whose value is carried back.
template <class TWanted, class TGiven>
requires(std::is_base_of_v<TGiven, TWanted> &&
         !std::is_same_v<TWanted, TGiven>) class TNarrowed<TWanted*&, TGiven*&> {
public:
  explicit TNarrowed(TGiven*& Given) : FGiven(Given), FWanted(static_cast<TWanted*>(Given)) {}
  TNarrowed(const TNarrowed&) = delete;
  TNarrowed& operator=(const TNarrowed&) = delete;
  ~TNarrowed() { FGiven = FWanted; }
  TWanted*& Get() { return FWanted; }

private:
  TGiven*& FGiven;
  TWanted* FWanted;
};

template <class TSignature, class TBaseSignature>
class TQXTypedEvent;

/// A view of another slot through derived types: what is assigned here is stored there, and its handler gets
/// its arguments as the derived types. Both views share one handler; to copy it from a view of another
/// object, assign the view.
template <class... TTyped, class... TBase>
class TQXTypedEvent<void(TTyped...), void(TBase...)> {
public:
  using TSignature = void(TTyped...);
  using TBaseEvent = TQXEvent<void(TBase...)>;

  explicit TQXTypedEvent(TBaseEvent& Slot) : FSlot(Slot) {}
  TQXTypedEvent(const TQXTypedEvent&) = delete;

  TQXTypedEvent& operator=(const TQXTypedEvent& Source) {
    FSlot = Source.FSlot;
    return *this;
  }
  TQXTypedEvent& operator=(std::nullptr_t) {
    FSlot = nullptr;
    return *this;
  }
  template <class TCallable>
  requires(!std::derived_from<std::remove_cvref_t<TCallable>, TQXTypedEvent>) TQXTypedEvent&
  operator=(TCallable&& Callable) {
    using TStored = std::decay_t<TCallable>;
    if constexpr (std::derived_from<TStored, TBaseEvent>) {
      FSlot = Callable;
    } else if constexpr (requires {
                           { Callable.Slot() } -> std::same_as<TBaseEvent&>;
                         }) {
      FSlot = Callable.Slot();
    } else {
      if constexpr (Nullable<TCallable>) {
        if (Callable == nullptr) {
          FSlot = nullptr;
          return *this;
        }
      }
      Store(std::forward<TCallable>(Callable));
    }
    return *this;
  }

  explicit operator bool() const { return static_cast<bool>(FSlot); }
  friend bool operator==(const TQXTypedEvent& Event, std::nullptr_t) { return Event.FSlot == nullptr; }

  /// Calls the handler with the arguments as the event's own types.
  void operator()(TBase... Arguments) const { FSlot(static_cast<TBase>(Arguments)...); }

  /// The slot behind the view.
  TBaseEvent& Slot() const { return FSlot; }

private:
  template <class TCallable>
  void Store(TCallable&& Callable) {
    using TStored = std::decay_t<TCallable>;
    constexpr bool IsForSlot = requires { // it says that it is made for the slot, and is stored as it is
      requires std::same_as<typename TStored::TSignature, typename TBaseEvent::TSignature>;
    };
    if constexpr (!IsForSlot && std::is_invocable_v<TStored&, TTyped...>) {
      FSlot = [Handler = TStored(std::forward<TCallable>(Callable))](TBase... Arguments) mutable {
        Handler(TNarrowed<TTyped, TBase>(static_cast<TBase>(Arguments)).Get()...);
      };
    } else { // a handler of the slot's own types, or a mismatch that the slot names
      FSlot = std::forward<TCallable>(Callable);
    }
  }

  TBaseEvent& FSlot;
};

} // namespace qx
