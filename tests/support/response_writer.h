#pragma once

#include "reply.h"

namespace brenmoor::testing {

// Sends `reply` as scripted, its delay already served. Returns whether the connection may carry
// another request; the caller closes it otherwise.
bool sendReply(int fd, const Reply& reply, bool clientKeepsAlive);

}  // namespace brenmoor::testing
