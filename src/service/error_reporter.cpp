#include "service/error_reporter.h"

#include "brenmoor/error.h"
#include "soap/failure.h"

namespace brenmoor::service {
namespace {

constexpr const char* kCouldNotContact = "Could not contact the Telvane service.";
constexpr const char* kInvalidUrl = "Probable cause is an invalid Telvane URL.";
constexpr const char* kUnavailable = "The service may be temporarily unavailable.";
constexpr const char* kMaintenance =
    "The service is currently undergoing a maintenance upgrade.\r\n"
    "Service should be restored in less than 10 minutes.";

// Runtime errors of the library carry their number in the classic HRESULT form.
constexpr uint32_t kRuntimeErrorBase = 0x800A0000;

void applyDescription(State& state, const std::string& description) {
  auto at = description.find("Exception:");
  // Everything after "Exception:" and the one character that follows it (normally a space);
  // a text that ends there has no cause of its own, so it is shown whole.
  const size_t from = at == std::string::npos ? at : at + 11;
  if (from == std::string::npos || from > description.size()) {
    state.lastErrID = -1;
    state.lastErrMsg = description;
    return;
  }
  state.lastErrMsg = description.substr(from);
  if (state.lastErrMsg.find("User Name cannot be") != std::string::npos ||
      state.lastErrMsg.find("The user id or password you have entered is invalid") !=
          std::string::npos) {
    state.lastErrID = 4;
  }
}

}  // namespace

void reportError(State& state, uint32_t code, const std::string& description) {
  auto set = [&](int16_t id, std::string message) {
    state.lastErrID = id;
    state.lastErrMsg = std::move(message);
  };
  const std::string contact = std::string(kCouldNotContact) + "\r\n";
  switch (code) {
    case soap::kTimedOut: set(1, kCouldNotContact); break;
    case soap::kPastDeadline: set(1, contact + description); break;
    case soap::kUnusableServer: set(2, contact + kInvalidUrl); break;
    case soap::kConnectionRefused: set(3, contact + kUnavailable); break;
    case soap::kUnexpectedStatus:
    case soap::kConnectionReset: set(3, contact + kMaintenance); break;
    case soap::kRedirected:
      set(3, contact + description + ": the Telvane URL may have moved.");
      break;
    default: applyDescription(state, description);
  }
  if (state.showAlerts) state.host->messageBox(state.lastErrMsg, "Telvane");
}

void reportError(State& state, const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const soap::Failure& f) {
    reportError(state, f.code(), f.what());
  } catch (const Error& e) {
    reportError(state, kRuntimeErrorBase | static_cast<uint32_t>(e.number()), e.what());
  } catch (const std::exception& e) {
    reportError(state, soap::kGeneralFailure, e.what());
  } catch (...) {
    reportError(state, soap::kGeneralFailure, "Unknown failure");
  }
}

}  // namespace brenmoor::service
