#pragma once

#include <string>

#include "service/state.h"

namespace brenmoor::service {

// The next request key: token ":" n ":" MD5(n + secret), n the counter, which then advances.
// Throws Error::Overflow once the counter has reached 32767 (that key is never handed out).
std::string nextKey(State& state);

}  // namespace brenmoor::service
