#pragma once
// The one pipeline of every remote operation, and the declaration that feeds it. An operation
// is declared once, beside the methods of its subsystem:
//
//   constexpr auto kCreateProject = Operation<std::string>("createProject", Service::Main)
//                                       .sends("name", "description")
//                                       .reads(asText)
//                                       .alerts(FaultAlert::duplicateName(0));
//
// and its public method hands it the values, one per element (the compiler counts them):
//
//   return kCreateProject(*state_, projectName, projectDesc);
//
// The pipeline makes the elements, spends a key, writes the envelope, sends it, shows a fault,
// reads the answer and reports failures; it never throws.

#include <array>
#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "service/catalog.h"
#include "service/fields.h"
#include "service/state.h"
#include "soap/request.h"
#include "util/time_zone.h"

namespace brenmoor::service {

enum class Key { Sent, None };

inline constexpr int32_t kDefaultTimeout = 0;  // the transport's own, 15 s
inline constexpr int32_t kPingTimeoutMs = 4000;
inline constexpr int32_t kLongTimeoutMs = 32000;

// What a fault answered by the service shows.
struct FaultAlert {
  enum Kind { Generic, Silent, DuplicateName };
  Kind kind = Generic;
  int argument = 0;  // DuplicateName: the argument that stands where the text names a project

  // "Fault:" and the fault's parts.
  static constexpr FaultAlert generic() { return {}; }
  static constexpr FaultAlert silent() { return {Silent}; }
  // A fault whose detail holds <id>1</id> says the name is taken; other faults are generic.
  static constexpr FaultAlert duplicateName(int argument) { return {DuplicateName, argument}; }
};

// What an operation returns when it has no answer to read.
enum class Fallback {
  FailureValue,  // false, 0, empty, or null
  EmptyObject,   // a new, empty record or list
};

// Everything about an operation but its element names and its reader.
struct Settings {
  std::string_view name;
  Service service = Service::Main;
  Key key = Key::Sent;
  int32_t timeoutMs = kDefaultTimeout;
  FaultAlert alert;
  Fallback afterFault = Fallback::FailureValue;
  Fallback afterFailure = Fallback::FailureValue;
  // The last value is a procGuid ("id;code"): only its id is sent, to the service of
  // `processService` (a service code), and one without ";" is refused unsent, without an alert
  // or an error.
  bool processHandle = false;
  std::string_view processService = "M";
  std::string_view sinceVersion;  // not sent to servers older than this
};

enum class Outcome { Answered, Faulted, Failed, NotSent };

template <class Result>
struct Reply {
  Outcome outcome;
  Result value;
  bool answered() const { return outcome == Outcome::Answered; }
  bool failed() const { return outcome == Outcome::Failed; }
};

// A non-owning reference to a callable, for the pipeline's two callbacks.
template <class Signature>
class FunctionRef;
template <class R, class... A>
class FunctionRef<R(A...)> {
 public:
  template <class F>
  FunctionRef(F&& f)  // NOLINT: converts implicitly, like a function pointer
      : object_(const_cast<void*>(static_cast<const void*>(&f))), call_([](void* o, A... a) -> R {
          return (*static_cast<std::remove_reference_t<F>*>(o))(a...);
        }) {}
  R operator()(A... a) const { return call_(object_, a...); }

 private:
  void* object_;
  R (*call_)(void*, A...);
};

// Runs one operation: `makeElements` (before the key is spent) and `read` run inside the error
// path, so what they throw is reported like a transport failure. `alertName` is what a
// duplicate-name alert names.
Outcome run(State& state, const Settings& settings,
            FunctionRef<void(std::vector<soap::Element>&)> makeElements,
            FunctionRef<void(const soap::Answer&)> read, std::string_view alertName,
            std::string_view baseUrl = {});

// The text of the generic alert: "Fault:" then the code's local name, its namespace, the fault
// string and the detail, each followed by one space.
std::string genericFaultAlert(const soap::Node& fault);

// How a value of the C++ argument list goes on the wire. Dates are local and go as UTC; an
// absent optional date goes as the current time. A callable is called inside the pipeline, so a
// value that cannot be made is reported like any failure, before a key is spent.
inline soap::Value wireValue(const std::string& v) {
  return v;
}
inline soap::Value wireValue(int16_t v) {
  return v;
}
inline soap::Value wireValue(int32_t v) {
  return v;
}
inline soap::Value wireValue(bool v) {
  return v;
}
inline soap::Value wireValue(double v) {
  return v;
}
inline soap::Value wireValue(const Date& v) {
  return util::localToUtc(v);
}
inline soap::Value wireValue(const std::optional<Date>& v) {
  return v ? util::localToUtc(*v) : util::localToUtc();
}
inline soap::Value wireValue(const std::vector<std::string>& v) {
  return v;
}
inline soap::Value wireValue(soap::Structure v) {
  return v;
}
template <std::invocable F>
soap::Value wireValue(const F& make) {
  return wireValue(make());
}

template <class Result, size_t N = 0>
class Operation {
 public:
  using Reader = Result (*)(const Fields& returned);

  constexpr Operation(std::string_view name, Service service) {
    settings_.name = name;
    settings_.service = service;
  }

  // The element names, in order, after the key.
  template <class... Names>
  constexpr Operation<Result, sizeof...(Names)> sends(Names... names) const {
    Operation<Result, sizeof...(Names)> next(settings_, read_, trueWhenAnswered_);
    next.elements_ = {std::string_view(names)...};
    return next;
  }
  constexpr Operation keyless() const {
    return with([](auto& o) { o.settings_.key = Key::None; });
  }
  constexpr Operation timeout(int32_t ms) const {
    return with([ms](auto& o) { o.settings_.timeoutMs = ms; });
  }
  // The result read from the answer's return element.
  constexpr Operation reads(Reader read) const {
    return with([read](auto& o) { o.read_ = read; });
  }
  // True once the service answers without a fault; the answer is not read.
  constexpr Operation trueWhenAnswered() const {
    static_assert(std::is_same_v<Result, bool>);
    return with([](auto& o) { o.trueWhenAnswered_ = true; });
  }
  constexpr Operation alerts(FaultAlert alert) const {
    return with([alert](auto& o) { o.settings_.alert = alert; });
  }
  constexpr Operation emptyAfterFault() const {
    return with([](auto& o) { o.settings_.afterFault = Fallback::EmptyObject; });
  }
  constexpr Operation emptyAfterFailure() const {
    return with([](auto& o) { o.settings_.afterFailure = Fallback::EmptyObject; });
  }
  // The procGuid goes last; its answer comes from the service with code `service`.
  constexpr Operation forProcess(std::string_view service = "M") const {
    static_assert(N >= 1, "a process operation sends a procGuid");
    return with([service](auto& o) {
      o.settings_.processHandle = true;
      o.settings_.processService = service;
    });
  }
  constexpr Operation since(std::string_view version) const {
    return with([version](auto& o) { o.settings_.sinceVersion = version; });
  }
  // The same operation under a name given at run time (the service's list operations are named
  // by the caller).
  constexpr Operation named(std::string_view name) const {
    return with([name](auto& o) { o.settings_.name = name; });
  }

  template <class... Args>
  requires(sizeof...(Args) == N) Reply<Result> run(State& state, const Args&... args)
  const { return runAt(state, std::string_view(), args...); }
  // The same, sent to this operation's service under another base URL (empty: the usual one).
  template <class... Args>
  requires(sizeof...(Args) == N) Reply<Result> runAt(State& state, std::string_view baseUrl,
                                                     const Args&... args)
  const {
    Reply<Result> reply{Outcome::NotSent, Result{}};
    reply.outcome = service::run(
        state, settings_,
        [&](std::vector<soap::Element>& out) {
          size_t i = 0;
          (out.push_back({elements_[i++], wireValue(args)}), ...);
        },
        [&](const soap::Answer& answer) { reply.value = read(answer); }, alertName(args...),
        baseUrl);
    const auto fallback = reply.outcome == Outcome::Faulted  ? settings_.afterFault
                          : reply.outcome == Outcome::Failed ? settings_.afterFailure
                                                             : Fallback::FailureValue;
    if (!reply.answered() && fallback == Fallback::EmptyObject) reply.value = emptyObject();
    return reply;
  }

  template <class... Args>
  requires(sizeof...(Args) == N) Result operator()(State& state, const Args&... args) const {
    return run(state, args...).value;
  }

  // For tests that walk every declaration.
  const Settings& settings() const { return settings_; }
  const std::array<std::string_view, N>& elements() const { return elements_; }

 private:
  template <class, size_t>
  friend class Operation;

  constexpr Operation(const Settings& settings, Reader read, bool trueWhenAnswered)
      : settings_(settings), read_(read), trueWhenAnswered_(trueWhenAnswered) {}

  template <class Change>
  constexpr Operation with(Change change) const {
    Operation next = *this;
    change(next);
    return next;
  }

  Result read(const soap::Answer& answer) const {
    if constexpr (std::is_same_v<Result, bool>) {
      if (trueWhenAnswered_) return true;
    }
    const util::PinnedOffset oneOffsetPerAnswer;
    return read_(Fields(answer.returnNode()));
  }

  static Result emptyObject() {
    if constexpr (requires { typename Result::element_type; }) {
      return std::make_shared<typename Result::element_type>();
    } else {
      return Result{};
    }
  }

  template <class... Args>
  std::string_view alertName(const Args&... args) const {
    std::string_view name;
    int i = 0;
    auto pick = [&](const auto& arg) {
      if constexpr (std::is_convertible_v<decltype(arg), std::string_view>) {
        if (i == settings_.alert.argument) name = arg;
      }
      ++i;
    };
    (pick(args), ...);
    (void)pick;  // unused when there are no arguments
    return name;
  }

  Settings settings_;
  std::array<std::string_view, N> elements_{};
  Reader read_ = nullptr;
  bool trueWhenAnswered_ = false;
};

// Readers of simple results: the return element's own value.
inline std::string asText(const Fields& returned) {
  return returned.as<std::string>();
}
inline bool asBool(const Fields& returned) {
  return returned.as<bool>();
}
inline int16_t asInt16(const Fields& returned) {
  return returned.as<int16_t>();
}

// Readers of records and lists, from a function that fills one record.
template <class T, void (*Fill)(const Fields&, T&)>
std::shared_ptr<T> record(const Fields& returned) {
  auto r = std::make_shared<T>();
  Fill(returned, *r);
  return r;
}
template <class T, void (*Fill)(const Fields&, T&)>
std::shared_ptr<Collection<T>> listOf(const Fields& returned) {
  return readList<T>(returned, Fill);
}

}  // namespace brenmoor::service
