// ZylService against a scripted loopback server: how it posts, and what each kind of failure
// leaves in lastErrID/lastErrMsg.

#include <chrono>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;

constexpr const char* kContact = "Could not contact the Telvane service.";
const std::string kMaintenance = std::string(kContact) +
                                 "\r\nThe service is currently undergoing a maintenance "
                                 "upgrade.\r\nService should be restored in less than 10 minutes.";
const std::string kInvalidUrl =
    std::string(kContact) + "\r\nProbable cause is an invalid Telvane URL.";

class ServiceWire : public testing::WireTest {};

TEST_F(ServiceWire, PostsTheEnvelopeWithItsHeadersAndReusesTheConnection) {
  server.enqueue(Reply::xml(testing::scalarAnswer("getGuid", "g-1")));
  server.enqueue(Reply::xml(testing::scalarAnswer("getFixedUrl", "http://fixed")));
  EXPECT_EQ(service.getGuid(), "g-1");
  EXPECT_EQ(service.getFixedUrl(), "http://fixed");

  const auto r = server.lastRequest();
  EXPECT_EQ(r.method, "POST");
  EXPECT_EQ(r.header("Content-Type"), "text/xml; charset=UTF-8");
  EXPECT_EQ(r.header("User-Agent"), std::string("Brenmoor/") + kVersionString);
  EXPECT_NE(r.header("Accept-Encoding").find("gzip"), std::string::npos);
  EXPECT_EQ(r.body.rfind("<S:Envelope\r\n\txmlns:S=", 0), 0u);
  EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(ServiceWire, HandsEachExchangeToTheTraceHandler) {
  struct Seen {
    std::string url, action, request, answer, failure;
    long status;
  };
  std::vector<Seen> seen;
  service.setTraceHandler([&](const Exchange& x) {
    EXPECT_EQ(x.method, "POST");
    seen.push_back({std::string(x.url), std::string(x.soapAction), std::string(x.request),
                    std::string(x.answer), std::string(x.failure), x.status});
  });
  const std::string answer = testing::scalarAnswer("getGuid", "g-1");
  server.enqueue(Reply::xml(answer));
  server.enqueue(Reply::text(503, "down"));
  EXPECT_EQ(service.getGuid(), "g-1");
  EXPECT_EQ(service.getGuid(), "");
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].url, service.telvaneUrl());
  EXPECT_EQ(seen[0].action, "urn:telvane-main");
  EXPECT_EQ(seen[0].request, server.requests().at(0).body);
  EXPECT_EQ(seen[0].answer, answer);
  EXPECT_EQ(seen[0].status, 200);
  EXPECT_EQ(seen[0].failure, "");
  EXPECT_EQ(seen[1].status, 503);
  EXPECT_EQ(seen[1].failure, "Unexpected HTTP Status code of 503");

  service.setTraceHandler(nullptr);
  server.enqueue(Reply::xml(answer));
  service.getGuid();
  EXPECT_EQ(seen.size(), 2u);
}

TEST_F(ServiceWire, EndsACallThatTricklesPastItsDeadline) {
  service.setCallDeadline(600);
  server.enqueue(
      Reply::drip(testing::scalarAnswer("getGuid", "g-1"), std::chrono::milliseconds(50)));
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(service.getGuid(), "");
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
  EXPECT_EQ(service.lastErrID(), 1);
  EXPECT_EQ(service.lastErrMsg(), std::string(kContact) + "\r\nThe whole answer from " +
                                      service.telvaneUrl() + " took longer than 600 ms");
}

TEST_F(ServiceWire, ShowsAnApplicationFaultWithoutTouchingTheErrorPair) {
  service.setLastErrID(1);
  service.setLastErrMsg("earlier");
  // As a Body entry, and as the first child of the response wrapper.
  server.enqueue(Reply::xml(testing::applicationFault("tv:Refused", "not today", "7")));
  server.enqueue(Reply::xml(testing::wrappedFault("getGuid", "tv:Refused", "not today", "7")));
  EXPECT_EQ(service.getGuid(), "");
  EXPECT_EQ(service.getGuid(), "");
  ASSERT_EQ(host->boxes.size(), 2u);
  for (const auto& box : host->boxes) {
    EXPECT_EQ(box.text, "Fault:Refused urn:telvane-faults not today 7 ");
    EXPECT_EQ(box.title, "");
  }
  EXPECT_EQ(service.lastErrID(), 1);
  EXPECT_EQ(service.lastErrMsg(), "earlier");
}

TEST_F(ServiceWire, ReportsEachTransportFailureByItsRow) {
  service.ShowAlerts(true);
  Reply redirect = Reply::text(301, "moved");
  redirect.headers.push_back("Location: http://127.0.0.1:1/moved");
  const struct {
    const char* what;
    Reply reply;
    int16_t id;
    std::string message;
  } rows[] = {
      {"dropped", Reply::drop(), 3, kMaintenance},
      {"truncated", Reply::truncated(testing::scalarAnswer("getGuid", "g")), 3, kMaintenance},
      {"503", Reply::text(503, "busy"), 3, kMaintenance},
      {"404", Reply::text(404, "no"), 3, kMaintenance},
      {"html", Reply::withStatus(200, "<html><body>Sign in</body></html>"), -1, ""},
      {"redirect", redirect, 3,
       std::string(kContact) + "\r\nThe server answered HTTP 301 and sends the request to "
                               "http://127.0.0.1:1/moved: the Telvane URL may have moved."},
      {"malformed", Reply::xml("<soapenv:Envelope"), -1, ""},
      {"empty body", Reply::xml(""), -1, ""},
      {"no return value",
       Reply::xml(testing::soapEnvelope("<ns1:getGuidResponse xmlns:ns1=\"urn:telvane-main\"/>")),
       -1, ""},
  };
  for (const auto& row : rows) {
    server.enqueue(row.reply);
    host->boxes.clear();
    EXPECT_EQ(service.getGuid(), "") << row.what;
    EXPECT_EQ(service.lastErrID(), row.id) << row.what;
    if (!row.message.empty()) {
      EXPECT_EQ(service.lastErrMsg(), row.message) << row.what;
    }
    ASSERT_EQ(host->boxes.size(), 1u) << row.what;
    EXPECT_EQ(host->boxes[0].title, "Telvane");
    EXPECT_EQ(host->boxes[0].text, service.lastErrMsg());
  }
  EXPECT_NE(service.lastErrMsg().find("no return value"), std::string::npos);
}

TEST_F(ServiceWire, ReportsRefusedAndUnusableAddresses) {
  service.SetServiceBaseUrl("http://127.0.0.1:" + std::to_string(testing::closedPort()));
  EXPECT_EQ(service.getGuid(), "");
  EXPECT_EQ(service.lastErrID(), 3);
  EXPECT_EQ(service.lastErrMsg(),
            std::string(kContact) + "\r\nThe service may be temporarily unavailable.");

  for (const char* bad : {"", "ftp://127.0.0.1:1", "http://[::1", "gopher:nothing"}) {
    service.setLastErrID(0);
    service.SetServiceBaseUrl(bad);
    EXPECT_EQ(service.getFixedUrl(), "") << bad;
    EXPECT_EQ(service.lastErrID(), 2) << bad;
    EXPECT_EQ(service.lastErrMsg(), kInvalidUrl) << bad;
  }
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ServiceWire, ServerExceptionsKeepTheTextAfterException) {
  const struct {
    std::string fault;
    int16_t id;  // 1: left as it was
    std::string message;
  } rows[] = {
      {"java.lang.Exception: Disk full", 1, "Disk full"},
      {"java.lang.Exception: The user id or password you have entered is invalid.", 4,
       "The user id or password you have entered is invalid."},
      {"User Name cannot be empty", -1, "Server.userException : User Name cannot be empty"},
      {"java.lang.Exception:", -1, "Server.userException : java.lang.Exception:"},
  };
  for (const auto& row : rows) {
    service.setLastErrID(1);
    server.enqueue(Reply::withStatus(500, testing::serverFault(row.fault)));
    EXPECT_EQ(service.getGuid(), "");
    EXPECT_EQ(service.lastErrID(), row.id) << row.fault;
    EXPECT_EQ(service.lastErrMsg(), row.message) << row.fault;
  }
}

TEST_F(ServiceWire, PingLearnsTheVersionReportsSilentlyAndGivesUpOnSilence) {
  server.enqueue(Reply::xml(testing::scalarAnswer("getVersion", "3.2.4.60")));
  EXPECT_TRUE(service.Ping(server.baseUrl()));
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");
  EXPECT_FALSE(service.useProxy());
  EXPECT_FALSE(service.showAlerts());

  server.enqueue(Reply::stall(std::chrono::seconds(30)));
  EXPECT_FALSE(service.Ping(server.baseUrl()));
  EXPECT_EQ(service.lastErrID(), 1);
  EXPECT_EQ(service.lastErrMsg(), kContact);
  EXPECT_TRUE(host->boxes.empty());
  EXPECT_TRUE(service.showAlerts());  // turned on again
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");

  // Proxy variables of the environment are not followed.
  setenv("http_proxy", "http://127.0.0.1:9", 1);
  server.enqueue(Reply::xml(testing::scalarAnswer("getVersion", "1.0.0.0")));
  EXPECT_TRUE(service.Ping(server.baseUrl(), false));
  unsetenv("http_proxy");
}

TEST(ServiceProxy, SendsThroughTheProxyAtLocalhost8080WhenAsked) {
  std::unique_ptr<testing::ScriptedServer> proxy;
  try {
    proxy = std::make_unique<testing::ScriptedServer>(8080);
  } catch (const std::system_error&) {
    GTEST_SKIP() << "port 8080 is taken on this machine";
  }
  proxy->enqueue(Reply::xml(testing::scalarAnswer("getVersion", "1.2.3.4")));
  ZylService service;
  service.ShowAlerts(false);
  // Nothing listens on port 9: only the proxy can answer.
  EXPECT_TRUE(service.Ping("http://127.0.0.1:9", true)) << service.lastErrMsg();
  EXPECT_TRUE(service.useProxy());
  EXPECT_EQ(proxy->lastRequest().target, "http://127.0.0.1:9/services/Telvane");
}

}  // namespace
}  // namespace brenmoor
