#pragma once
// Turns a failed operation into lastErrID/lastErrMsg and, with alerts on, a message box.

#include <cstdint>
#include <exception>
#include <string>

#include "service/state.h"

namespace brenmoor::service {

// Codes outside the transport's are reported by their description alone.
void reportError(State& state, uint32_t code, const std::string& description);

// Reports whatever `failure` holds: a soap::Failure, an Error or any other exception.
void reportError(State& state, const std::exception_ptr& failure);

}  // namespace brenmoor::service
