#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace sandbox {

// The request cannot be served (malformed, unknown operation, refused key, bad argument).
// Answered with HTTP 500 and a SOAP Server.userException fault carrying the text.
class ServerException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A message this SOAP 1.1 node refuses before reading it as a call: answered with HTTP 500
// and the envelope-level fault `code` ("MustUnderstand", "VersionMismatch") and the text alone.
class EnvelopeFault : public ServerException {
 public:
  EnvelopeFault(std::string code, const std::string& text)
      : ServerException(text), code_(std::move(code)) {}

  const std::string& code() const { return code_; }

 private:
  std::string code_;
};

// A refusal the service gives as a regular answer: a "Fault" entry in the service's own
// namespace, HTTP 200. `code` is a local name in the fault-code namespace.
class ApplicationFault : public std::runtime_error {
 public:
  ApplicationFault(std::string code, const std::string& text,
                   std::optional<int> detail_id = std::nullopt)
      : std::runtime_error(text), code_(std::move(code)), detail_id_(detail_id) {}

  const std::string& code() const { return code_; }
  std::optional<int> detail_id() const { return detail_id_; }

 private:
  std::string code_;
  std::optional<int> detail_id_;
};

std::string server_fault_envelope(std::string_view text);
// The fault for `error`: an EnvelopeFault keeps its own code, any other is a user exception.
std::string server_fault_envelope(const ServerException& error);
std::string application_fault_envelope(const ApplicationFault& fault, std::string_view service_ns);

}  // namespace sandbox
