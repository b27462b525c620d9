#include "dispatch/dispatcher.h"

#include <algorithm>

#include "dispatch/request_shape.h"
#include "dispatch/session_cookie.h"
#include "dispatch/session_key.h"
#include "soap/clip.h"
#include "soap/faults.h"
#include "soap/request.h"

namespace sandbox {
namespace {

const Operation* find_operation(const Service& service, std::string_view name) {
  const auto found = std::find_if(service.operations.begin(), service.operations.end(),
                                  [&](const Operation& op) { return op.name == name; });
  return found == service.operations.end() ? nullptr : &*found;
}

std::string describe_key(const Session& session) {
  return "key=" + session.token.substr(0, 8) + "...:" + std::to_string(session.counter);
}

std::string describe_cookie(const Session& session) {
  return "cookie=" + session.token.substr(0, 8) + "...";
}

}  // namespace

std::string collapse_slashes(std::string_view path) {
  std::string collapsed;
  for (char c : path) {
    if (c != '/' || collapsed.empty() || collapsed.back() != '/') collapsed += c;
  }
  return collapsed;
}

const Service* Dispatcher::find_service(std::string_view path) const {
  std::string normalised = collapse_slashes(path);
  // The fixed URL is the server's canonical address: its services answer there as well.
  if (normalised.starts_with(std::string(kFixedUrlPrefix) + "/")) {
    normalised.erase(0, kFixedUrlPrefix.size());
  }
  for (const Service* service : services_) {
    if (service->path == normalised) return service;
  }
  return nullptr;
}

Outcome Dispatcher::handle(const Service& service, std::string_view body,
                           std::string_view cookie_header) {
  Outcome outcome;
  try {
    if (auto problem = request_shape_problem(body)) {
      throw ServerException("Request refused: it holds " + *problem);
    }
    const SoapRequest request = SoapRequest::parse(body, service.ns, service.name);
    outcome.operation = clip(request.operation_name(), 64);
    const Operation* operation = find_operation(service, request.operation_name());
    if (!operation) {
      throw ServerException("No such operation '" + outcome.operation + "' on service " +
                            std::string(service.name));
    }

    const Arguments args(request.operation(), operation->name);
    Reply reply;
    {
      const std::lock_guard lock(store_mutex_);
      std::optional<Session> session;
      if (operation->access == Access::keyed) {
        session = verify_session_key(db_, args);
        outcome.key_note = describe_key(*session);
      } else if (operation->access == Access::cookie) {
        session = session_from_cookie(db_, cookie_header);
        outcome.key_note = describe_cookie(*session);
      }
      Call call(db_, processes_, server_, args, reply, session ? &*session : nullptr);
      operation->handler(call);
      outcome.set_cookie = std::move(call.new_session_cookie);
    }
    outcome.body = reply.render(operation->name, service.ns);
  } catch (const ApplicationFault& fault) {
    outcome.body = application_fault_envelope(fault, service.ns);
  } catch (const ServerException& error) {
    outcome.status = 500;
    outcome.body = server_fault_envelope(error);
  } catch (const std::exception& error) {
    outcome.status = 500;
    outcome.body = server_fault_envelope(std::string("Internal error: ") + error.what());
  }
  return outcome;
}

}  // namespace sandbox
