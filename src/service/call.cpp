#include "service/call.h"

#include "service/error_reporter.h"
#include "service/key.h"
#include "soap/failure.h"
#include "soap/transport.h"

namespace brenmoor::service {
namespace {

// The id of a procGuid; nothing for one without ";".
std::optional<std::string> processId(const soap::Value& procGuid) {
  const auto* text = std::get_if<std::string>(&procGuid);
  if (!text) return std::nullopt;
  auto separator = text->find(';');
  if (separator == std::string::npos) return std::nullopt;
  return text->substr(0, separator);
}

std::string duplicateNameAlert(const soap::Node& fault, std::string_view name) {
  const soap::Node detail = fault.child("detail");
  const soap::Node id = detail ? detail.child("id") : soap::Node();
  if (id && id.textContent() == "1") {
    return "A project named " + std::string(name) +
           " already exists. Please select another name for the project";
  }
  return genericFaultAlert(fault);
}

std::string alertText(const FaultAlert& alert, const soap::Node& fault, std::string_view name) {
  switch (alert.kind) {
    case FaultAlert::Silent: return {};
    case FaultAlert::DuplicateName: return duplicateNameAlert(fault, name);
    case FaultAlert::Generic: break;
  }
  return genericFaultAlert(fault);
}

}  // namespace

std::string genericFaultAlert(const soap::Node& fault) {
  std::array<soap::Node, 3> parts;
  size_t count = 0;
  for (soap::Node part : fault.children()) {
    parts[count++] = part;
    if (count == parts.size()) break;
  }
  if (count < parts.size()) {
    throw soap::Failure(soap::kGeneralFailure,
                        "The fault answer lacks its part " + std::to_string(count + 1));
  }
  return "Fault:" + std::string(parts[0].valueLocalName()) + " " +
         std::string(parts[0].valueNamespace()) + " " + parts[1].textContent() + " " +
         parts[2].textContent() + " ";
}

Outcome run(State& state, const Settings& settings,
            FunctionRef<void(std::vector<soap::Element>&)> makeElements,
            FunctionRef<void(const soap::Answer&)> read, std::string_view alertName,
            std::string_view baseUrl) {
  if (!settings.sinceVersion.empty() &&
      !serverIsAtLeast(state, std::string(settings.sinceVersion))) {
    return Outcome::NotSent;
  }
  try {
    // The operation's own values are made first: one that cannot be made stops the call before
    // a key is spent.
    std::vector<soap::Element> request;
    request.reserve(8);
    if (settings.key == Key::Sent) request.push_back({"key", std::string()});
    makeElements(request);
    if (settings.processHandle) {
      auto id = processId(request.back().value);
      if (!id) return Outcome::NotSent;
      request.back().value = std::move(*id);
    }
    if (settings.key == Key::Sent) request.front().value = nextKey(state);

    const auto service = serviceInfo(settings.service);
    const std::string text =
        soap::writeEnvelope(service.namespaceUri, settings.name, request, state.envelopeOption);

    soap::HttpTransport transport(state.connections, state.answerLimits);
    if (settings.timeoutMs != kDefaultTimeout) transport.setTimeout(settings.timeoutMs);
    transport.setDeadline(state.callDeadlineMs);
    transport.setSoapAction(service.namespaceUri);
    if (state.useProxy) transport.setProxy("localhost", 8080);
    if (state.trace) transport.setTrace(&state.trace);

    const std::string url = settings.processHandle
                                ? serviceUrlForCode(state.baseUrl, settings.processService)
                            : baseUrl.empty() ? state.endpoint(settings.service)
                                              : std::string(baseUrl) + std::string(service.path);
    const soap::Answer answer = transport.send(url, text);
    if (const soap::Node fault = answer.fault()) {
      if (auto shown = alertText(settings.alert, fault, alertName); !shown.empty()) {
        state.host->messageBox(shown, "");
      }
      return Outcome::Faulted;
    }
    read(answer);
    return Outcome::Answered;
  } catch (...) {
    reportError(state, std::current_exception());
    return Outcome::Failed;
  }
}

}  // namespace brenmoor::service
