#pragma once
// The one exception type of the library. Remote operations never throw it: their failures land
// in ZylService::lastErrID()/lastErrMsg(). It reports the few local misuses a caller can make:
// a collection index out of range, a record form that cannot be read, the request-key counter
// running out.

#include <stdexcept>
#include <string>

namespace brenmoor {

class Error : public std::runtime_error {
 public:
  // The numbers are those of the classic runtime errors that the same faults raise elsewhere.
  enum Number : int {
    InvalidArgument = 5,
    Overflow = 6,
    SubscriptOutOfRange = 9,
    TypeMismatch = 13,
    UnsetObject = 91,
  };

  Error(int number, const std::string& text) : std::runtime_error(text), number_(number) {}

  int number() const noexcept { return number_; }

 private:
  int number_;
};

}  // namespace brenmoor
