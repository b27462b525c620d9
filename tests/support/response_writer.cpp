#include "response_writer.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "ascii.h"
#include "socket_io.h"

namespace brenmoor::testing {

namespace {

bool namesHeader(const Reply& reply, std::string_view name) {
  return std::any_of(reply.headers.begin(), reply.headers.end(), [name](const auto& header) {
    return ascii::equalsIgnoreCase(header.first, name);
  });
}

bool asksToClose(const Reply& reply) {
  return std::any_of(reply.headers.begin(), reply.headers.end(), [](const auto& header) {
    return ascii::equalsIgnoreCase(header.first, "Connection") &&
           ascii::listsToken(header.second, "close");
  });
}

void appendHeader(std::string& out, std::string_view name, std::string_view value) {
  out.append(name).append(": ").append(value).append("\r\n");
}

// Status line and headers, blank line included.
std::string responseHead(const Reply& reply, bool closeAfter) {
  std::string head = "HTTP/1.1 " + std::to_string(reply.status) + ' ' +
                     (reply.reason.empty() ? reasonPhrase(reply.status) : reply.reason) + "\r\n";
  if (!reply.contentType.empty() && !namesHeader(reply, "Content-Type")) {
    appendHeader(head, "Content-Type", reply.contentType);
  }
  if (!namesHeader(reply, "Content-Length") && !namesHeader(reply, "Transfer-Encoding")) {
    appendHeader(head, "Content-Length", std::to_string(reply.body.size()));
  }
  if (closeAfter && !namesHeader(reply, "Connection")) appendHeader(head, "Connection", "close");
  for (const auto& [name, value] : reply.headers) appendHeader(head, name, value);
  head += "\r\n";
  return head;
}

}  // namespace

bool sendReply(int fd, const Reply& reply, bool clientKeepsAlive) {
  switch (reply.kind) {
    case Reply::Kind::Drop: return false;
    case Reply::Kind::Raw: sendAll(fd, reply.body); return false;
    case Reply::Kind::Truncate:
      if (sendAll(fd, responseHead(reply, false))) {
        sendAll(fd, std::string_view(reply.body).substr(0, reply.body.size() / 2));
      }
      return false;
    case Reply::Kind::Normal: break;
  }
  const bool closeAfter = !clientKeepsAlive || asksToClose(reply);
  return sendAll(fd, responseHead(reply, closeAfter) + reply.body) && !closeAfter;
}

}  // namespace brenmoor::testing
