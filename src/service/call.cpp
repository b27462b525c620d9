#include "service/call.h"

#include "service/endpoints.h"
#include "service/error_reporter.h"
#include "service/key.h"
#include "soap/failure.h"
#include "soap/transport.h"
#include "util/convert.h"

namespace brenmoor::service {

std::string genericFaultAlert(const soap::Node& fault) {
  auto part = [&](size_t i) -> const soap::Node& {
    if (i >= fault.children().size()) {
      throw soap::Failure(soap::kGeneralFailure,
                          "The fault answer lacks its part " + std::to_string(i + 1));
    }
    return *fault.children()[i];
  };
  const soap::Node& code = part(0);
  return "Fault:" + std::string(code.valueLocalName()) + " " + code.valueNamespace() + " " +
         part(1).textContent() + " " + part(2).textContent() + " ";
}

Outcome run(ZylService::State& state, const Operation& op, const ElementsFn& elements,
            const std::function<void(const soap::Answer&)>& read, const FaultAlert& alert) {
  try {
    // The operation's own values are made first: one that cannot be converted stops the call
    // before a key is spent.
    Elements request = elements();
    if (op.key == Key::Sent) request.insert(request.begin(), {"key", nextKey(state)});
    const auto service = soap::serviceInfo(op.service);
    const std::string text =
        soap::writeEnvelope(service.namespaceUri, op.name, request, state.envelopeOption);

    soap::HttpTransport transport(state.connections);
    if (op.timeoutMs != kDefaultTimeout) transport.setTimeout(op.timeoutMs);
    transport.setSoapAction(std::string(service.namespaceUri));
    if (state.useProxy) transport.setProxy("localhost", 8080);

    const std::string url = op.serviceCode ? serviceUrlForCode(state.baseUrl, op.serviceCode)
                                           : state.endpoint(op.service);
    const auto reply = transport.send(url, text);
    const auto answer = soap::Answer::parse(reply.body, reply.charset, url);
    if (answer.isFault()) {
      if (auto text = alert(answer.firstParameter()); !text.empty()) {
        state.host->messageBox(text, "");
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

std::string returnText(const soap::Answer& answer) {
  return answer.returnNode().text();
}

bool returnBool(const soap::Answer& answer) {
  return util::toBool(answer.returnNode());
}

}  // namespace brenmoor::service
