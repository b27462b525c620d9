#include "service/key.h"

#include <limits>

#include "brenmoor/error.h"

namespace brenmoor::service {

std::string nextKey(State& state) {
  const std::string n = std::to_string(state.keyCounter);
  std::string key = state.sessionToken + ":" + n + ":" + state.md5.MD5(n + state.sessionSecret);
  if (state.keyCounter == std::numeric_limits<int16_t>::max()) {
    throw Error(Error::Overflow, "Overflow");
  }
  ++state.keyCounter;
  return key;
}

}  // namespace brenmoor::service
