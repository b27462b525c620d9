#pragma once

#include <string>
#include <string_view>

namespace sandbox::request_log {

// One line per request on stderr. httplib gives its logger no per-request slot, but each
// request runs start to finish on one pool thread, so the pieces are kept per thread:
// begin() when routing starts, describe() from the handler, finish() from the logger.

void begin();
void describe(std::string_view service, std::string_view operation, std::string_view key_note);
// Writes "Service operation STATUS Nms [key=TOKENPREFIX...:N]", or "METHOD path STATUS Nms"
// for requests that never reached a service.
void finish(std::string_view method, std::string_view path, int status);

}  // namespace sandbox::request_log
