// A row binds a method: the host's method, the format, the keywords, and what else the call is
// to do. docs/bindings.md is the guide.
//
//   static PyMethodDef methods[] = {
//       Method<&BaseList2D::GetName>("GetName", "GetName() -> str\n..."),
//       Method<&QLXAtom::IsInstanceOf, "i", "id">("IsInstanceOf", "..."),
//       Method<Row<Gives>, &BaseBitmap::GetClone>("GetClone", "..."),
//       {}};
//
// In place of a host's method a row takes a function whose first parameter is the object: the host
// object, a value, or the wrapper's record. One that returns PyObject* has a result of its own.
#ifndef KIT_I_ROW_H
#define KIT_I_ROW_H

#include <exception>
#include <new>

#include "interpreter/lib_python_lock.h"
#include "kelvar/general.h"
#include "kit/i_arguments.h"
#include "kit/i_errors.h"
#include "kit/i_type.h"

namespace qlx {

// What a row does beside the call.

struct Waits {};           // frees the lock around the host's method; the objects stay meanwhile
struct MainThreadOnly {};  // raises RuntimeError on another thread
struct Gives {};           // the script owns the result
struct GivesSelf {};       // the script owns the object after a success
struct TakesSelf {};       // the host owns the object after a success
struct PartOfSelf {};      // the result lives in the object
struct WhileAlive {};      // a function that takes an AtomWrapper is called for one that is alive only
template <FixedString Keyword>
struct Takes {};  // the host owns that argument after a success
// Raises IndexError "<What> out of range" unless 0 <= argument < Count of the object.
template <FixedString Keyword, auto Count, FixedString What = Keyword>
struct InRange {};

template <class Policy>
inline constexpr bool kIsInRange = false;
template <FixedString Keyword, auto Count, FixedString What>
inline constexpr bool kIsInRange<InRange<Keyword, Count, What>> = true;

template <class... Policies>
struct Row {
  template <class Policy>
  static constexpr bool kHas = (std::same_as<Policy, Policies> || ...);
};

// Faults of a row, declared only, as those of the arguments are.
template <auto HostMethod, FixedString Keyword>
struct RowNamesNoSuchKeyword;
template <auto HostMethod, FixedString Keyword>
struct RowTakesWhatHasNoOwner;
template <auto HostMethod, class Self>
struct RowOwnsWhatHasNoOwner;
template <auto HostMethod, class Parameter>
struct WaitingRowCantHoldParameter;
template <auto HostMethod, class Result>
struct WaitingRowCantLendResult;
template <auto HostMethod>
struct WaitingRowCantCheckRange;
template <auto HostMethod, class Result>
struct ResultHasNoPythonForm;
template <auto HostMethod, class Result>
struct ResultHasNoOwner;  // neither Gives nor PartOfSelf

template <class Function>
struct Signature;
template <class R, class T, class... A>
struct Signature<R (T::*)(A...)> {
  using Result = R;
  using Self = T*;
  using Parameters = TypeList<A...>;
  using All = TypeList<A...>;
};
template <class R, class T, class... A>
struct Signature<R (T::*)(A...) const> : Signature<R (T::*)(A...)> {};
template <class R, class T, class... A>
struct Signature<R (T::*)(A...) noexcept> : Signature<R (T::*)(A...)> {};
template <class R, class T, class... A>
struct Signature<R (T::*)(A...) const noexcept> : Signature<R (T::*)(A...)> {};
template <class R, class... A>
struct Signature<R (*)(A...) noexcept> : Signature<R (*)(A...)> {};
template <class R, class... A>
struct Signature<R (*)(A...)> {
  using Result = R;
  using All = TypeList<A...>;
};
template <class R, class S, class... A>
struct Signature<R (*)(S, A...)> {
  using Result = R;
  using Self = S;
  using Parameters = TypeList<A...>;
  using All = TypeList<S, A...>;
};

template <class T>
using HostOf = std::remove_cv_t<std::remove_pointer_t<std::remove_cvref_t<T>>>;

// The object that a row is called on.
template <class Self>
struct SelfArgument {
  using Host = HostOf<Self>;
  Host* host = nullptr;

  static constexpr bool kResolvedFirst = [] {
    if constexpr (WrapperRecord<Host> || std::same_as<Host, PyObject>)
      return false;
    else
      return Present<Host>::kResolvedFirst;
  }();

  bool Get(PyObject* object) {
    if constexpr (WrapperRecord<Host> || std::same_as<Host, PyObject>) {
      host = reinterpret_cast<Host*>(object);
      return true;
    } else {
      return Present<Host>::Get(object, host);
    }
  }

  decltype(auto) Pass() {
    if constexpr (std::is_pointer_v<std::remove_reference_t<Self>>)
      return host;
    else
      return static_cast<Host&>(*host);
  }
};

// Keeps a host object's memory while the lock is free. An object that died meanwhile is told by `held`.
template <class Host>
class Pin {
  HostLink link_{};  // ahead of what is made with it

 public:
  explicit Pin(Host* host)
      : held(!host || (host->SetLink(&link_) && kelvar::PinLink(link_))), pinned_(host && held) {}
  ~Pin() {
    if (pinned_) kelvar::UnpinLink(link_);
    kelvar::FreeLink(&link_);
  }
  Pin(const Pin&) = delete;
  Pin& operator=(const Pin&) = delete;

  const bool held;

 private:
  const bool pinned_;
};

template <class T>
concept Linkable = requires(T* host, HostLink* link) {
  host->SetLink(link);
};

// C++ exceptions end here. In place, since every bound call passes here.
template <class Body>
[[gnu::always_inline]] inline PyObject* Guarded(Body&& body) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return PyErr_NoMemory();
  } catch (const std::exception& error) {
    return RaiseFormatted(PyExc_RuntimeError, "%s", error.what());
  }
}

template <class Policies, auto HostMethod, FixedString Format, FixedString... Keywords>
struct BoundRow;

template <class... Policies, auto HostMethod, FixedString Format, FixedString... Keywords>
struct BoundRow<Row<Policies...>, HostMethod, Format, Keywords...> {
  using Signature = qlx::Signature<decltype(HostMethod)>;
  using Result = typename Signature::Result;
  using Options = Row<Policies...>;

  // METH_NOARGS
  static PyObject* CallPlain(PyObject* object, PyObject*) {
    return Guarded([&]() -> PyObject* {
      SelfArgument<typename Signature::Self> self;
      if (!self.Get(object) || !CheckWrapper(object)) return nullptr;
      Arguments<HostMethod, typename Signature::Parameters, ""> none;
      return Finish(object, self, none, nullptr);
    });
  }

  // METH_VARARGS | METH_KEYWORDS
  static PyObject* Call(PyObject* object, PyObject* args, PyObject* keywords) {
    return Guarded([&]() -> PyObject* {
      SelfArgument<typename Signature::Self> self;
      Arguments<HostMethod, typename Signature::Parameters, Format, Keywords...> arguments;
      constexpr bool first = decltype(self)::kResolvedFirst;
      if ((first && !self.Get(object)) || !CheckWrapper(object)) return nullptr;
      if (!arguments.Parse(args, keywords)) return nullptr;
      // The arguments may have run Python, which may have destroyed the object.
      if (!self.Get(object) || !CheckWrapper(object)) return nullptr;
      return Finish(object, self, arguments, args);
    });
  }

  // METH_NOARGS | METH_STATIC
  static PyObject* CallPlainStatic(PyObject*, PyObject*) {
    return Guarded([&]() -> PyObject* {
      Arguments<HostMethod, typename Signature::All, ""> none;
      NoSelf self;
      return Finish(nullptr, self, none, nullptr);
    });
  }

  // METH_STATIC
  static PyObject* CallStatic(PyObject*, PyObject* args, PyObject* keywords) {
    return Guarded([&]() -> PyObject* {
      Arguments<HostMethod, typename Signature::All, Format, Keywords...> arguments;
      if (!arguments.Parse(args, keywords)) return nullptr;
      NoSelf self;
      return Finish(nullptr, self, arguments, args);
    });
  }

 private:
  struct NoSelf {};

  static bool CheckWrapper(PyObject* object) {
    QLXAtom* host;
    return !Options::template kHas<WhileAlive> || ResolveAtom(reinterpret_cast<AtomWrapper*>(object), host);
  }

  template <class Self, class Args>
  static PyObject* Finish(PyObject* object, Self& self, Args& arguments, PyObject* args) {
    constexpr bool settlesSelf = Options::template kHas<TakesSelf> || Options::template kHas<GivesSelf>;
    if constexpr (settlesSelf && !HasOwner<Self>()) (void)sizeof(RowOwnsWhatHasNoOwner<HostMethod, Self>);
    if constexpr (Options::template kHas<PartOfSelf> && !IsAtom<Self>())
      (void)sizeof(RowOwnsWhatHasNoOwner<HostMethod, Self>);
    if (Options::template kHas<MainThreadOnly> && !kelvar::GeIsMainThread()) return RaiseMainThreadOnly();
    if (!(InRangeOf(Policies{}, self, arguments) && ...)) return nullptr;
    if constexpr (Options::template kHas<Waits>) {
      return CallWaiting(object, self, arguments, args);
    } else {
      return Convert(object, args, arguments, [&]() -> Result { return Invoke(self, arguments); });
    }
  }

  template <class Self, class Args>
  static Result Invoke(Self& self, Args& arguments) {
    return arguments.Apply([&](auto&&... values) -> Result {
      if constexpr (std::same_as<Self, NoSelf>)
        return HostMethod(values...);
      else if constexpr (std::is_member_function_pointer_v<decltype(HostMethod)>)
        return (self.Pass()->*HostMethod)(values...);
      else
        return HostMethod(self.Pass(), values...);
    });
  }

  // Whether the object's record has an owner's flag.
  template <class Self>
  static constexpr bool HasOwner() {
    if constexpr (requires { typename Self::Host; })
      return Linkable<typename Self::Host> || std::same_as<typename Self::Host, AtomWrapper>;
    else
      return false;
  }

  template <class Self>
  static constexpr bool IsAtom() {
    if constexpr (requires { typename Self::Host; })
      return std::derived_from<typename Self::Host, QLXAtom>;
    else
      return false;
  }

  template <class Self>
  static constexpr bool CanBePinned() {
    if constexpr (requires { typename Self::Host; })
      return Linkable<typename Self::Host>;
    else
      return true;  // there is none
  }

  // Keeps every host object of the call, then frees the lock around the host's method.
  template <class Self, class Args>
  static PyObject* CallWaiting(PyObject* object, Self& self, Args& arguments, PyObject* args) {
    if constexpr (!CanBePinned<Self>()) (void)sizeof(WaitingRowCantHoldParameter<HostMethod, Self>);
    // The host could free what it only lends before the lock is back; a count could change.
    if constexpr (std::is_pointer_v<Result> && !Options::template kHas<Gives>)
      (void)sizeof(WaitingRowCantLendResult<HostMethod, Result>);
    if constexpr ((kIsInRange<Policies> || ...)) (void)sizeof(WaitingRowCantCheckRange<HostMethod>);
    const auto run = [&](const auto&... pins) -> PyObject* {
      if (!(pins.held && ...)) return ReportUnheld(object, self, arguments, args);
      return Convert(object, args, arguments, [&]() -> Result {
        HostBlockingScope blocking;
        return Invoke(self, arguments);
      });
    };
    return std::apply(
        [&](auto&... argument) {
          if constexpr (requires { self.host; })
            return run(PinOf(self.host), PinOf(HeldBy(argument))...);
          else
            return run(PinOf(HeldBy(argument))...);
        },
        arguments.All());
  }

  // What has gone says so itself; otherwise memory lacked for a link.
  template <class Self, class Args>
  static PyObject* ReportUnheld(PyObject* object, Self& self, Args& arguments, PyObject* args) {
    if constexpr (!std::same_as<Self, NoSelf>)
      if (!self.Get(object)) return nullptr;
    if (!arguments.CheckAlive(args)) return nullptr;
    return PyErr_NoMemory();
  }

  struct NoPin {
    static constexpr bool held = true;
  };

  template <class Host>
  static auto PinOf(Host* host) {
    if constexpr (Linkable<Host>)
      return Pin<Host>(host);
    else
      return NoPin{};
  }

  // The host object that an argument stands for; values are the call's own copies.
  template <FormatItem Item, class Parameter, FixedString Keyword>
  static auto* HeldBy(Argument<Item, Parameter, Keyword>& argument) {
    if constexpr (Item.letter == 'A' || Item.letter == 'P')
      return argument.value;
    else if constexpr (std::string_view("COX#").find(Item.letter) != std::string_view::npos) {
      (void)sizeof(WaitingRowCantHoldParameter<HostMethod, Parameter>);
      return &argument.value;
    } else {
      return &argument.value;
    }
  }

  template <class Policy, class Self, class Args>
  static bool InRangeOf(Policy, Self&, Args&) {
    return true;
  }
  template <FixedString Keyword, auto Count, FixedString What, class Self, class Args>
  static bool InRangeOf(InRange<Keyword, Count, What>, Self& self, Args& arguments) {
    CheckNamed<Keyword, Args>();
    const auto index = arguments.template At<Keyword>().value;
    const auto count = (self.Pass()->*Count)();
    if (index >= 0 && index < count) return true;
    RaiseOutOfRange(What.text);
    return false;
  }

  template <FixedString Keyword, class Args>
  static constexpr void CheckNamed() {
    if constexpr (Args::template PlaceOf<Keyword>() == Args::kFormat.targets)
      (void)sizeof(RowNamesNoSuchKeyword<HostMethod, Keyword>);
  }

  // The owner flags follow the success: a false or null result changes none.
  template <class Args, class Body>
  static PyObject* Convert(PyObject* object, PyObject* args, Args& arguments, Body&& body) {
    if constexpr (std::is_void_v<Result>) {
      body();
      (Settle(Policies{}, object, arguments, args), ...);
      return NewNone();
    } else {
      decltype(auto) result = body();
      bool success = true;
      if constexpr (std::same_as<std::remove_cvref_t<Result>, bool> ||
                    std::is_pointer_v<std::remove_cvref_t<Result>>)
        success = bool(result);
      if (success) (Settle(Policies{}, object, arguments, args), ...);
      return ResultOf(object, std::forward<decltype(result)>(result));
    }
  }

  template <class R>
  static PyObject* ResultOf(PyObject* object, R&& result) {
    using Plain = std::remove_cvref_t<R>;
    using Host = HostOf<Plain>;
    constexpr bool owned = Options::template kHas<Gives>;
    if constexpr (requires { ToPython(result); } &&
                  !(std::is_pointer_v<Plain> && !std::same_as<Plain, PyObject*>)) {
      return ToPython(result);
    } else if constexpr (std::is_pointer_v<Plain>) {
      if (!result) return NewNone();
      auto* host = const_cast<Host*>(result);
      constexpr bool needsOwner = requires { &Present<Host>::WrapPart; };
      if constexpr (needsOwner && !owned && !Options::template kHas<PartOfSelf>)
        (void)sizeof(ResultHasNoOwner<HostMethod, R>);
      if constexpr (Options::template kHas<PartOfSelf>)
        return Present<Host>::WrapPart(host, object);
      else
        return Present<Host>::Wrap(host, owned);
    } else if constexpr (requires { Present<Plain>::Wrap(result); }) {
      return Present<Plain>::Wrap(result);
    } else {
      (void)sizeof(ResultHasNoPythonForm<HostMethod, R>);
      return nullptr;
    }
  }

  template <class Policy, class Args>
  static void Settle(Policy, PyObject* object, Args& arguments, PyObject* args) {
    if constexpr (std::same_as<Policy, TakesSelf>)
      reinterpret_cast<AtomWrapper*>(object)->owned = false;  // the host's
    else if constexpr (std::same_as<Policy, GivesSelf>)
      reinterpret_cast<AtomWrapper*>(object)->owned = true;  // the script's
    else
      SettleArgument(Policy{}, arguments, args);
  }
  template <class Policy, class Args>
  static void SettleArgument(Policy, Args&, PyObject*) {}
  template <FixedString Keyword, class Args>
  static void SettleArgument(Takes<Keyword>, Args& arguments, PyObject* args) {
    CheckNamed<Keyword, Args>();
    constexpr FormatItem item = Args::kFormat.items[Args::template PlaceOf<Keyword>()];
    if constexpr (item.letter != 'A' && item.letter != 'P')
      (void)sizeof(RowTakesWhatHasNoOwner<HostMethod, Keyword>);
    PyObject* given = arguments.template Given<size_t(item.keyword)>(args);
    if (given && given != Py_None)
      reinterpret_cast<AtomWrapper*>(given)->owned = false;  // the host's from here
  }
};

// The rows. Without a format the method takes no arguments.

template <class Options, auto HostMethod, FixedString Format, FixedString... Keywords>
PyMethodDef Method(const char* name, const char* doc) {
  return {name, AsMethod(BoundRow<Options, HostMethod, Format, Keywords...>::Call),
          METH_VARARGS | METH_KEYWORDS, doc};
}
template <class Options, auto HostMethod>
PyMethodDef Method(const char* name, const char* doc) {
  return {name, BoundRow<Options, HostMethod, "">::CallPlain, METH_NOARGS, doc};
}
template <class Options, auto HostMethod, FixedString Format, FixedString... Keywords>
PyMethodDef StaticMethod(const char* name, const char* doc) {
  return {name, AsMethod(BoundRow<Options, HostMethod, Format, Keywords...>::CallStatic),
          METH_VARARGS | METH_KEYWORDS | METH_STATIC, doc};
}

template <auto HostMethod, FixedString Format, FixedString... Keywords>
PyMethodDef Method(const char* name, const char* doc) {
  return Method<Row<>, HostMethod, Format, Keywords...>(name, doc);
}
template <auto HostMethod>
PyMethodDef Method(const char* name, const char* doc) {
  return Method<Row<>, HostMethod>(name, doc);
}
template <class Options, auto HostMethod>
PyMethodDef StaticMethod(const char* name, const char* doc) {
  return {name, BoundRow<Options, HostMethod, "">::CallPlainStatic, METH_NOARGS | METH_STATIC, doc};
}
template <auto HostMethod>
PyMethodDef StaticMethod(const char* name, const char* doc) {
  return StaticMethod<Row<>, HostMethod>(name, doc);
}
template <auto HostMethod, FixedString Format, FixedString... Keywords>
PyMethodDef StaticMethod(const char* name, const char* doc) {
  return StaticMethod<Row<>, HostMethod, Format, Keywords...>(name, doc);
}

// A function of a module.
template <auto HostFunction>
PyMethodDef Function(const char* name, const char* doc) {
  return {name, BoundRow<Row<>, HostFunction, "">::CallPlainStatic, METH_NOARGS, doc};
}

// A constructor: the `create` of a type whose instances stand for a new host object, which the
// script owns. Raises by ReportAllocFailed when the host gives none; what was wanted has the id `kId`.
template <auto HostMethod, int32_t kId, FixedString Format, FixedString... Keywords>
PyObject* CreateKind(PyTypeObject* type, PyObject* args, PyObject* keywords) {
  return Guarded([&]() -> PyObject* {
    using Signature = qlx::Signature<decltype(HostMethod)>;
    Arguments<HostMethod, typename Signature::All, Format, Keywords...> arguments;
    if (!arguments.Parse(args, keywords)) return nullptr;
    auto* host = arguments.Apply([](auto&&... values) { return HostMethod(values...); });
    if (host) return Present<HostOf<decltype(host)>>::Wrap(host, true);
    int32_t id = kId;
    if constexpr (decltype(arguments)::StartsWithTypeId()) id = std::get<0>(arguments.All()).value;
    return ReportAllocFailed(type, id);
  });
}

// The same where an argument "type" ahead of all others is that id, or nothing is.
template <auto HostMethod, FixedString Format, FixedString... Keywords>
PyObject* Create(PyTypeObject* type, PyObject* args, PyObject* keywords) {
  return CreateKind<HostMethod, 0, Format, Keywords...>(type, args, keywords);
}

}  // namespace qlx

#endif
