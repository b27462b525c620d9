#pragma once
// The one pipeline of every remote operation. An operation states its name, service, whether it
// sends a key, its time-out, its elements and how its answer maps to a result; the pipeline
// writes the envelope, sends it, checks for a fault and reports failures.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "service/state.h"
#include "soap/answer.h"
#include "soap/request.h"

namespace brenmoor::service {

enum class Key { Sent, None };

inline constexpr int32_t kDefaultTimeout = 0;  // the transport's own, 15 s
inline constexpr int32_t kPingTimeoutMs = 4000;
inline constexpr int32_t kLongTimeoutMs = 32000;

struct Operation {
  std::string_view name;
  soap::Service service;
  Key key = Key::Sent;
  int32_t timeoutMs = kDefaultTimeout;
  // When set, the endpoint is the one this one-letter service code names (see
  // serviceUrlForCode) instead of the service's own.
  const char* serviceCode = nullptr;
};

using Elements = std::vector<soap::Element>;
using ElementsFn = std::function<Elements()>;
using FaultAlert = std::function<std::string(const soap::Node& fault)>;

// "Fault:" then the code's local name, its namespace, the fault string and the detail, each
// followed by one space.
std::string genericFaultAlert(const soap::Node& fault);
// Shows nothing: an alert text that is empty is not shown.
inline std::string silentFault(const soap::Node&) {
  return {};
}

enum class Outcome { Answered, Faulted, Failed };

// Runs one operation. `elements` (after the key) and `read` run inside the error path: what
// they throw is reported like a transport failure. A fault is shown through the host with the
// text `alert` makes. Never throws.
Outcome run(ZylService::State& state, const Operation& op, const ElementsFn& elements,
            const std::function<void(const soap::Answer&)>& read,
            const FaultAlert& alert = genericFaultAlert);

// The same for an operation with one result: `failure` unless the answer maps to one.
template <class Result, class Read>
Result call(ZylService::State& state, const Operation& op, const ElementsFn& elements,
            Result failure, Read&& read, const FaultAlert& alert = genericFaultAlert) {
  Result result = std::move(failure);
  run(
      state, op, elements, [&](const soap::Answer& answer) { result = read(answer); }, alert);
  return result;
}

// For operations that fill an object made before the call and return it even after a fault
// (as it was then); after a failure, null. `fill` gets the return node and the object.
template <class T, class Fill>
std::shared_ptr<T> fillNew(ZylService::State& state, const Operation& op,
                           const ElementsFn& elements, Fill&& fill, const FaultAlert& alert) {
  auto object = std::make_shared<T>();
  auto outcome = run(
      state, op, elements, [&](const soap::Answer& answer) { fill(answer.returnNode(), *object); },
      alert);
  return outcome == Outcome::Failed ? nullptr : object;
}

inline Elements noElements() {
  return {};
}

// Answer readers for simple results: the return element's value.
std::string returnText(const soap::Answer& answer);
bool returnBool(const soap::Answer& answer);
// For operations whose success is the absence of a fault: the answer itself is not read.
inline bool trueWhenAnswered(const soap::Answer&) {
  return true;
}

}  // namespace brenmoor::service
