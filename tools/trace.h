#pragma once
// --trace: each HTTP exchange on standard error, its XML indented, with every secret masked.

#include "brenmoor/trace.h"

namespace brenmoor::cli {

// A handler for ZylService::setTraceHandler. Masked ("…"): passwords, challenges, responses,
// digests (any element value of 32 hexadecimal digits), the session token wherever it shows,
// and all of each request key but its counter ("…:n:…").
TraceHandler makeTraceHandler();

}  // namespace brenmoor::cli
