#include "scripted_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace brenmoor::testing {
namespace {

using namespace std::chrono_literals;

struct RawResponse {
  std::string head;  // status line and headers, up to and including the blank line
  std::string body;
  bool complete = false;  // the whole Content-Length arrived
};

// Speaks bytes to the server directly, so tests see exactly what went over the wire.
class RawClient {
 public:
  explicit RawClient(uint16_t port) : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {
    // A broken server makes reads fail after a while instead of hanging the test.
    const timeval timeout{10, 0};
    ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    connected_ = ::connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    connectError_ = connected_ ? 0 : errno;
  }
  ~RawClient() { ::close(fd_); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  bool connected() const { return connected_; }
  int connectError() const { return connectError_; }

  // Byte by byte, so the server sees every line split at every possible point.
  void trickle(std::string_view bytes) {
    const int noDelay = 1;
    ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    for (size_t i = 0; i < bytes.size(); ++i) {
      send(bytes.substr(i, 1));
      std::this_thread::sleep_for(1ms);
    }
  }

  void send(std::string_view bytes) {
    ASSERT_EQ(::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }

  // One response framed by Content-Length, or whatever arrived before the server closed.
  RawResponse readResponse() {
    RawResponse response;
    size_t headEnd;
    while ((headEnd = pending_.find("\r\n\r\n")) == std::string::npos) {
      if (!fill()) {
        response.head = std::exchange(pending_, {});
        return response;
      }
    }
    response.head = pending_.substr(0, headEnd + 4);
    pending_.erase(0, headEnd + 4);
    const size_t length = contentLength(response.head);
    while (pending_.size() < length && fill()) {
    }
    response.complete = pending_.size() >= length;
    response.body = pending_.substr(0, length);
    pending_.erase(0, response.body.size());
    return response;
  }

  // Everything until the server closes the connection.
  std::string readUntilClose() {
    while (fill()) {
    }
    return std::exchange(pending_, {});
  }

 private:
  bool fill() {
    char chunk[4096];
    const ssize_t received = ::recv(fd_, chunk, sizeof chunk, 0);
    if (received <= 0) return false;
    pending_.append(chunk, static_cast<size_t>(received));
    return true;
  }

  static size_t contentLength(const std::string& head) {
    const auto at = head.find("Content-Length: ");
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + 16));
  }

  int fd_;
  bool connected_ = false;
  int connectError_ = 0;
  std::string pending_;
};

std::string post(std::string_view body, std::string_view extraHeaders = "") {
  return "POST /services/Telvane HTTP/1.1\r\nHost: 127.0.0.1\r\n" + std::string(extraHeaders) +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

// Bounded in count and time so a broken server fails the test instead of hanging it.
void waitForRequests(const ScriptedServer& server, size_t count) {
  for (int i = 0; i < 2000 && server.requests().size() < count; ++i) {
    std::this_thread::sleep_for(5ms);
  }
  ASSERT_EQ(server.requests().size(), count);
}

TEST(ScriptedServer, RecordsRequestsFramedByLengthOrChunks) {
  ScriptedServer server;
  server.enqueue(Reply::xml("<first/>"));
  server.enqueue(Reply::xml("<second/>"));
  RawClient client(server.port());
  ASSERT_TRUE(client.connected());

  client.send(
      "POST /services/Telvane HTTP/1.1\r\nHost: 127.0.0.1\r\nSOAPAction:  \"urn:Login\" \r\n"
      "X-Twice: a\r\nx-twice: b\r\nExpect: 100-continue\r\nContent-Length: 10\r\n\r\n");
  EXPECT_EQ(client.readResponse().head, "HTTP/1.1 100 Continue\r\n\r\n");
  client.send("<a>b\r\n</a>");
  RawResponse response = client.readResponse();
  EXPECT_EQ(response.head.rfind("HTTP/1.1 200 OK\r\n", 0), 0u) << response.head;
  EXPECT_NE(response.head.find("Content-Type: text/xml; charset=utf-8\r\n"), std::string::npos);
  EXPECT_EQ(response.body, "<first/>");

  RecordedRequest recorded = server.lastRequest();
  EXPECT_EQ(recorded.method, "POST");
  EXPECT_EQ(recorded.target, "/services/Telvane");
  EXPECT_EQ(recorded.body, "<a>b\r\n</a>");
  EXPECT_EQ(recorded.header("soapaction"), "\"urn:Login\"");
  EXPECT_EQ(recorded.header("X-TWICE"), "a");
  EXPECT_EQ(recorded.header("Missing"), "");
  ASSERT_EQ(recorded.headers.size(), 6u);
  EXPECT_EQ(recorded.headers[3].first, "x-twice");
  EXPECT_EQ(recorded.headers[3].second, "b");

  client.send(
      "POST /chunked HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"
      "4;name=value\r\n<a>x\r\n0A\r\n</a><b></b\r\n1\r\n>\r\n0\r\nX-Trailer: t\r\n\r\n");
  EXPECT_EQ(client.readResponse().body, "<second/>");
  recorded = server.lastRequest();
  EXPECT_EQ(recorded.target, "/chunked");
  EXPECT_EQ(recorded.body, "<a>x</a><b></b>");
  EXPECT_EQ(recorded.header("X-Trailer"), "");

  client.trickle(
      "POST /trickled HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n0\r\n\r\n");
  EXPECT_EQ(client.readResponse().body, "no scripted reply");
  EXPECT_EQ(server.lastRequest().body, "ab");
}

TEST(ScriptedServer, CountsConnectionsNotRequests) {
  ScriptedServer server;
  RawClient first(server.port());
  RawClient second(server.port());
  ASSERT_TRUE(first.connected());
  ASSERT_TRUE(second.connected());

  // Interleaved, so the two connections are served at the same time.
  first.send(post("1"));
  EXPECT_TRUE(first.readResponse().complete);
  second.send(post("2"));
  EXPECT_TRUE(second.readResponse().complete);
  first.send(post("3", "Connection: close\r\n"));
  const RawResponse closing = first.readResponse();
  EXPECT_NE(closing.head.find("Connection: close\r\n"), std::string::npos);
  EXPECT_EQ(first.readUntilClose(), "");

  EXPECT_EQ(server.connectionCount(), 2);
  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[0].body, "1");
  EXPECT_EQ(requests[2].body, "3");
  EXPECT_EQ(requests[0].connection, requests[2].connection);
  EXPECT_NE(requests[0].connection, requests[1].connection);
}

TEST(ScriptedServer, UsesQueueInOrderThenDefault) {
  ScriptedServer server;
  server.enqueue(Reply::withStatus(404));
  Reply custom = Reply::xml("<fault/>");
  custom.status = 500;
  custom.reason = "Server Fault";
  custom.headers = {{"Set-Cookie", "session=1"}};
  server.enqueue(custom);
  RawClient client(server.port());

  client.send(post("a"));
  EXPECT_EQ(client.readResponse().head.rfind("HTTP/1.1 404 Not Found\r\n", 0), 0u);
  client.send(post("b"));
  RawResponse response = client.readResponse();
  EXPECT_EQ(response.head.rfind("HTTP/1.1 500 Server Fault\r\n", 0), 0u);
  EXPECT_NE(response.head.find("Set-Cookie: session=1\r\n"), std::string::npos);
  EXPECT_EQ(response.body, "<fault/>");
  client.send(post("c"));
  response = client.readResponse();
  EXPECT_EQ(response.head.rfind("HTTP/1.1 500 Internal Server Error\r\n", 0), 0u);
  EXPECT_EQ(response.body, "no scripted reply");

  server.setDefault(Reply::xml("<ok/>"));
  client.send(post("d"));
  EXPECT_EQ(client.readResponse().body, "<ok/>");
  EXPECT_EQ(server.requests().size(), 4u);
}

TEST(ScriptedServer, MisbehavesAsScripted) {
  ScriptedServer server;
  server.enqueue(Reply::drop());
  server.enqueue(Reply::truncated("0123456789"));
  server.enqueue(Reply::raw("HTTP/1.1 200 OK\r\nbroken"));

  RawClient dropped(server.port());
  dropped.send(post("x"));
  EXPECT_EQ(dropped.readUntilClose(), "");

  RawClient truncated(server.port());
  truncated.send(post("x"));
  const RawResponse half = truncated.readResponse();
  EXPECT_NE(half.head.find("Content-Length: 10\r\n"), std::string::npos);
  EXPECT_FALSE(half.complete);
  EXPECT_EQ(half.body, "01234");

  RawClient raw(server.port());
  raw.send(post("x"));
  EXPECT_EQ(raw.readUntilClose(), "HTTP/1.1 200 OK\r\nbroken");
  EXPECT_EQ(server.requests().size(), 3u);
}

TEST(ScriptedServer, RejectsMalformedAndOversizedRequests) {
  ScriptedServer server;
  server.setDefault(Reply::xml("<ok/>"));
  const struct {
    std::string request;
    std::string status;
  } cases[] = {
      {"NONSENSE\r\n\r\n", "400"},
      {"GET / HTTP/2.0\r\n\r\n", "400"},
      {"POST / HTTP/1.1\r\nNo colon here\r\n\r\n", "400"},
      {"POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n", "400"},
      {"POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab", "400"},
      {"POST / HTTP/1.1\r\nContent-Length: 67108865\r\n\r\n", "413"},
      {"POST / HTTP/1.1\r\nContent-Length: 99999999999999999999999\r\n\r\n", "413"},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n", "400"},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n4000001\r\n", "413"},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n1\r\nab\r\n", "400"},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: gzip\r\n\r\n", "501"},
      {"POST / HTTP/1.1\r\nX-Huge: " + std::string(70000, 'h') + "\r\n\r\n", "431"},
  };
  for (const auto& [request, status] : cases) {
    RawClient client(server.port());
    client.send(request);
    const std::string answer = client.readUntilClose();
    EXPECT_EQ(answer.rfind("HTTP/1.1 " + status + ' ', 0), 0u) << request.substr(0, 80);
    EXPECT_NE(answer.find("Connection: close\r\n"), std::string::npos);
  }
  EXPECT_TRUE(server.requests().empty());

  RawClient healthy(server.port());
  healthy.send(post("fine"));
  EXPECT_EQ(healthy.readResponse().body, "<ok/>");
}

TEST(ScriptedServer, SurvivesClientsThatGiveUpDuringDelay) {
  std::optional<ScriptedServer> server(std::in_place);
  Reply late = Reply::xml(std::string(1 << 20, 'x'));
  late.delay = 20ms;
  server->enqueue(late);
  server->enqueue(Reply::stall(10min));
  {
    RawClient impatient(server->port());
    impatient.send(post("x"));
    waitForRequests(*server, 1);
  }
  RawClient waiting(server->port());
  waiting.send(post("y"));
  waitForRequests(*server, 2);
  // Stopping must cut the ten-minute stall short.
  server.reset();
  EXPECT_EQ(waiting.readUntilClose(), "");
}

TEST(ScriptedServer, ClosedPortRefusesConnections) {
  RawClient client(closedPort());
  EXPECT_FALSE(client.connected());
  EXPECT_EQ(client.connectError(), ECONNREFUSED);
}

}  // namespace
}  // namespace brenmoor::testing
