#include "request_reader.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include "ascii.h"
#include "socket_io.h"

namespace brenmoor::testing {

namespace {

constexpr int kBadRequest = 400;
constexpr int kTooLarge = 413;
constexpr int kHeadTooLarge = 431;
constexpr int kNotImplemented = 501;
constexpr size_t kMaxChunkSizeLine = 1024;

// Thrown inside the reader to abandon a request; next() turns them into its outcome.
struct Rejection {
  int status;
};
struct PeerGone {};

bool isTokenChar(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

bool isToken(std::string_view s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), isTokenChar);
}

// A size written in `base`, rejected with 413 when it exceeds what we accept at all.
size_t parseSize(std::string_view digits, int base) {
  std::uint64_t value = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  if (error == std::errc::result_out_of_range) throw Rejection{kTooLarge};
  if (error != std::errc{} || end != digits.data() + digits.size()) throw Rejection{kBadRequest};
  if (value > kMaxRequestBody) throw Rejection{kTooLarge};
  return static_cast<size_t>(value);
}

// Every Content-Length header must agree; none means an empty body.
size_t contentLength(const RecordedRequest& head) {
  std::optional<size_t> length;
  for (const auto& [name, value] : head.headers) {
    if (!ascii::equalsIgnoreCase(name, "Content-Length")) continue;
    const size_t parsed = parseSize(value, 10);
    if (length && *length != parsed) throw Rejection{kBadRequest};
    length = parsed;
  }
  return length.value_or(0);
}

}  // namespace

ReadResult RequestReader::next() {
  buffer_.erase(0, position_);
  position_ = 0;
  headBudget_ = kMaxRequestHead;
  ReadResult result;
  try {
    result.request = readHead(result.keepAlive);
    result.request.body = readBody(result.request);
    result.outcome = ReadResult::Outcome::Request;
  } catch (const Rejection& rejection) {
    result.outcome = ReadResult::Outcome::Rejected;
    result.rejection = rejection.status;
    result.keepAlive = false;
  } catch (const PeerGone&) {
    result.outcome = ReadResult::Outcome::Closed;
    result.keepAlive = false;
  }
  return result;
}

RecordedRequest RequestReader::readHead(bool& keepAlive) {
  std::string requestLine = readHeadLine();
  // Clients may send a stray empty line between requests.
  if (requestLine.empty()) requestLine = readHeadLine();

  const std::string_view line = requestLine;
  const auto firstSpace = line.find(' ');
  const auto lastSpace = line.rfind(' ');
  if (firstSpace == std::string_view::npos || firstSpace == lastSpace) throw Rejection{kBadRequest};
  RecordedRequest head;
  head.method = line.substr(0, firstSpace);
  head.target = line.substr(firstSpace + 1, lastSpace - firstSpace - 1);
  const std::string_view version = line.substr(lastSpace + 1);
  if (!isToken(head.method) || head.target.empty() ||
      head.target.find_first_of(" \t") != std::string::npos ||
      (version != "HTTP/1.1" && version != "HTTP/1.0")) {
    throw Rejection{kBadRequest};
  }

  for (std::string field = readHeadLine(); !field.empty(); field = readHeadLine()) {
    const auto colon = field.find(':');
    if (colon == std::string::npos || !isToken(std::string_view(field).substr(0, colon))) {
      throw Rejection{kBadRequest};
    }
    head.headers.emplace_back(field.substr(0, colon),
                              ascii::trim(std::string_view(field).substr(colon + 1)));
  }

  const std::string connection = head.header("Connection");
  keepAlive = version == "HTTP/1.1" ? !ascii::listsToken(connection, "close")
                                    : ascii::listsToken(connection, "keep-alive");
  return head;
}

std::string RequestReader::readBody(const RecordedRequest& head) {
  const std::string transferEncoding = head.header("Transfer-Encoding");
  if (!transferEncoding.empty()) {
    if (!ascii::equalsIgnoreCase(transferEncoding, "chunked")) throw Rejection{kNotImplemented};
    acceptExpectation(head);
    return readChunkedBody();
  }
  const size_t length = contentLength(head);
  if (length > 0) acceptExpectation(head);
  std::string body;
  appendExactly(body, length);
  return body;
}

std::string RequestReader::readChunkedBody() {
  std::string body;
  for (;;) {
    const std::string sizeLine = readLine(kMaxChunkSizeLine, kBadRequest);
    // Chunk extensions after ';' carry nothing we need.
    const std::string_view digits =
        ascii::trim(std::string_view(sizeLine).substr(0, sizeLine.find(';')));
    const size_t size = parseSize(digits, 16);
    if (size == 0) break;
    if (size > kMaxRequestBody - body.size()) throw Rejection{kTooLarge};
    appendExactly(body, size);
    if (!readLine(0, kBadRequest).empty()) throw Rejection{kBadRequest};
  }
  readTrailers();
  return body;
}

void RequestReader::readTrailers() {
  while (!readHeadLine().empty()) {
  }
}

void RequestReader::acceptExpectation(const RecordedRequest& head) {
  if (ascii::equalsIgnoreCase(head.header("Expect"), "100-continue")) {
    if (!sendAll(fd_, "HTTP/1.1 100 Continue\r\n\r\n")) throw PeerGone{};
  }
}

std::string RequestReader::readHeadLine() {
  std::string line = readLine(headBudget_, kHeadTooLarge);
  headBudget_ -= std::min(headBudget_, line.size() + 2);
  return line;
}

std::string RequestReader::readLine(size_t limit, int statusWhenLonger) {
  size_t searchFrom = position_;
  for (;;) {
    const auto end = buffer_.find("\r\n", searchFrom);
    if (end != std::string::npos) {
      if (end - position_ > limit) throw Rejection{statusWhenLonger};
      std::string line = buffer_.substr(position_, end - position_);
      position_ = end + 2;
      return line;
    }
    // The last byte may be the CR of a terminator still on its way.
    if (buffer_.size() - position_ > limit + 1) throw Rejection{statusWhenLonger};
    searchFrom = buffer_.size() > position_ ? buffer_.size() - 1 : position_;
    if (!fill()) throw PeerGone{};
  }
}

void RequestReader::appendExactly(std::string& out, size_t count) {
  while (buffer_.size() - position_ < count) {
    if (!fill()) throw PeerGone{};
  }
  out.append(buffer_, position_, count);
  position_ += count;
}

bool RequestReader::fill() {
  std::array<char, 64 * 1024> chunk;
  for (;;) {
    const ssize_t received = ::recv(fd_, chunk.data(), chunk.size(), 0);
    if (received < 0 && errno == EINTR) continue;
    if (received <= 0) return false;
    buffer_.append(chunk.data(), static_cast<size_t>(received));
    return true;
  }
}

}  // namespace brenmoor::testing
