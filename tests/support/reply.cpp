#include "reply.h"

#include <algorithm>
#include <array>

namespace brenmoor::testing {

Reply Reply::xml(std::string body) {
  Reply reply;
  reply.body = std::move(body);
  return reply;
}

Reply Reply::withStatus(int status, std::string body) {
  Reply reply;
  reply.status = status;
  reply.body = std::move(body);
  return reply;
}

Reply Reply::text(int status, std::string body) {
  Reply reply = withStatus(status, std::move(body));
  reply.contentType = "text/plain; charset=utf-8";
  return reply;
}

Reply Reply::drop() {
  Reply reply;
  reply.kind = Kind::Drop;
  return reply;
}

Reply Reply::stall(std::chrono::milliseconds duration) {
  Reply reply = drop();
  reply.delay = duration;
  return reply;
}

Reply Reply::truncated(std::string body) {
  Reply reply = xml(std::move(body));
  reply.kind = Kind::Truncate;
  return reply;
}

Reply Reply::raw(std::string bytes) {
  Reply reply;
  reply.body = std::move(bytes);
  reply.kind = Kind::Raw;
  return reply;
}

namespace {

struct StatusPhrase {
  int status;
  const char* phrase;
};

constexpr std::array kPhrases{
    StatusPhrase{100, "Continue"},
    StatusPhrase{200, "OK"},
    StatusPhrase{201, "Created"},
    StatusPhrase{202, "Accepted"},
    StatusPhrase{204, "No Content"},
    StatusPhrase{301, "Moved Permanently"},
    StatusPhrase{302, "Found"},
    StatusPhrase{304, "Not Modified"},
    StatusPhrase{307, "Temporary Redirect"},
    StatusPhrase{400, "Bad Request"},
    StatusPhrase{401, "Unauthorized"},
    StatusPhrase{403, "Forbidden"},
    StatusPhrase{404, "Not Found"},
    StatusPhrase{405, "Method Not Allowed"},
    StatusPhrase{408, "Request Timeout"},
    StatusPhrase{411, "Length Required"},
    StatusPhrase{413, "Content Too Large"},
    StatusPhrase{415, "Unsupported Media Type"},
    StatusPhrase{429, "Too Many Requests"},
    StatusPhrase{431, "Request Header Fields Too Large"},
    StatusPhrase{500, "Internal Server Error"},
    StatusPhrase{501, "Not Implemented"},
    StatusPhrase{502, "Bad Gateway"},
    StatusPhrase{503, "Service Unavailable"},
    StatusPhrase{504, "Gateway Timeout"},
};

}  // namespace

const char* reasonPhrase(int status) {
  const auto* found = std::find_if(kPhrases.begin(), kPhrases.end(),
                                   [status](const StatusPhrase& p) { return p.status == status; });
  return found == kPhrases.end() ? "Unknown" : found->phrase;
}

}  // namespace brenmoor::testing
