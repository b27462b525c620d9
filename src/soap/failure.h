#pragma once
// A failed exchange with the server: a 32-bit error code (HRESULT form) and a description.

#include <cstdint>
#include <stdexcept>
#include <string>

namespace brenmoor::soap {

enum FailureCode : uint32_t {
  kTimedOut = 0x8007274C,      // no byte moved for the time-out
  kPastDeadline = 0x8007274B,  // the whole exchange took longer than its deadline
  kConnectionRefused = 0x8007274D,
  kConnectionReset = 0x80072746,  // reset or closed before a full answer
  kUnusableServer = 0x80044240,   // the server address cannot be used
  // An answer arrived but cannot be used (not a SOAP envelope, malformed, hostile). Not in the
  // reporter's table, so the host reads -1 and this text, never the bad-address text.
  kUnusableAnswer = 0x80044241,
  // The TLS certificate of the server could not be verified; nothing was sent.
  kUnverifiedServer = 0x80044242,
  kUnexpectedStatus = 0x80044309,  // HTTP status outside 2xx and not 500
  kRedirected = 0x8004430A,        // an HTTP redirect, which the library does not follow
  kServerFault = 0x80044201,       // the server answered with a SOAP Fault
  kGeneralFailure = 0x80004005,
};

class Failure : public std::runtime_error {
 public:
  Failure(uint32_t code, const std::string& description)
      : std::runtime_error(description), code_(code) {}
  uint32_t code() const noexcept { return code_; }

 private:
  uint32_t code_;
};

}  // namespace brenmoor::soap
