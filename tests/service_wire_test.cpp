// ZylService against a scripted loopback server: what goes on the wire, and what each kind of
// failure leaves in lastErrID/lastErrMsg.

#include <gtest/gtest.h>

#include <memory>
#include <system_error>

#include "brenmoor/brenmoor.h"
#include "recording_host.h"
#include "scripted_server.h"
#include "soap_answers.h"

namespace brenmoor {
namespace {

using testing::Reply;

constexpr const char* kContact = "Could not contact the Telvane service.";
constexpr const char* kMaintenance =
    "Could not contact the Telvane service.\r\nThe service is currently undergoing a maintenance "
    "upgrade.\r\nService should be restored in less than 10 minutes.";

class ServiceWire : public ::testing::Test {
 protected:
  void SetUp() override {
    host = std::make_shared<testing::RecordingHost>();
    service.setHost(host);
    service.SetServiceBaseUrl(server.baseUrl());
  }

  testing::ScriptedServer server;
  std::shared_ptr<testing::RecordingHost> host;
  ZylService service;
};

TEST_F(ServiceWire, PostsTheEnvelopeWithItsHeadersAndReusesTheConnection) {
  server.enqueue(Reply::xml(testing::scalarAnswer("getGuid", "g-1")));
  server.enqueue(Reply::xml(testing::scalarAnswer("getFixedUrl", "http://fixed")));
  EXPECT_EQ(service.getGuid(), "g-1");
  EXPECT_EQ(service.getFixedUrl(), "http://fixed");

  auto requests = server.requests();
  ASSERT_EQ(requests.size(), 2u);
  const auto& r = requests[0];
  EXPECT_EQ(r.method, "POST");
  EXPECT_EQ(r.target, "/services/Telvane");
  EXPECT_EQ(r.header("SOAPAction"), "\"urn:telvane-main\"");
  EXPECT_EQ(r.header("Content-Type"), "text/xml; charset=UTF-8");
  EXPECT_EQ(r.header("User-Agent"), std::string("Brenmoor/") + kVersionString);
  EXPECT_NE(r.header("Accept-Encoding").find("gzip"), std::string::npos);
  EXPECT_EQ(r.body.rfind("<S:Envelope\r\n\txmlns:S=", 0), 0u);
  EXPECT_NE(r.body.find("<S:Body><a:getGuid></a:getGuid></S:Body>"), std::string::npos);
  EXPECT_EQ(server.connectionCount(), 1);
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ServiceWire, ShowsAnApplicationFaultWithoutTouchingTheErrorPair) {
  service.ShowAlerts(false);
  service.setLastErrID(1);
  service.setLastErrMsg("earlier");
  server.enqueue(Reply::xml(testing::applicationFault("tv:Refused", "not today", "7")));
  EXPECT_EQ(service.getGuid(), "");
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text, "Fault:Refused urn:telvane-faults not today 7 ");
  EXPECT_EQ(host->boxes[0].title, "");
  EXPECT_EQ(service.lastErrID(), 1);
  EXPECT_EQ(service.lastErrMsg(), "earlier");
}

TEST_F(ServiceWire, ReportsEachTransportFailureByItsRow) {
  struct Row {
    const char* what;
    Reply reply;
    int16_t id;
    std::string message;
  };
  const std::vector<Row> rows = {
      {"dropped", Reply::drop(), 3, kMaintenance},
      {"truncated", Reply::truncated(testing::scalarAnswer("getGuid", "g")), 3, kMaintenance},
      {"503", Reply::text(503, "busy"), 3, kMaintenance},
      {"404", Reply::text(404, "no"), 3, kMaintenance},
      {"html", Reply::withStatus(200, "<html><body>Sign in</body></html>"), 2,
       std::string(kContact) + "\r\nProbable cause is an invalid Telvane URL."},
      {"malformed", Reply::xml("<soapenv:Envelope"), 2,
       std::string(kContact) + "\r\nProbable cause is an invalid Telvane URL."},
      {"empty body", Reply::xml(""), 2,
       std::string(kContact) + "\r\nProbable cause is an invalid Telvane URL."},
      {"no return value",
       Reply::xml(testing::soapEnvelope("<ns1:getGuidResponse "
                                        "xmlns:ns1=\"urn:telvane-main\"/>")),
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

TEST(ServiceAddress, ReportsRefusedAndUnusableAddresses) {
  auto host = std::make_shared<testing::RecordingHost>();
  ZylService service;
  service.setHost(host);
  service.ShowAlerts(false);

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
  }
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ServiceWire, ServerExceptionsKeepTheTextAfterException) {
  service.setLastErrID(1);
  server.enqueue(Reply::withStatus(500, testing::serverFault("java.lang.Exception: Disk full")));
  EXPECT_EQ(service.getGuid(), "");
  EXPECT_EQ(service.lastErrMsg(), "Disk full");
  EXPECT_EQ(service.lastErrID(), 1);  // the number is left as it was

  server.enqueue(Reply::withStatus(
      500, testing::serverFault("java.lang.Exception: The user id or password you have entered "
                                "is invalid.")));
  EXPECT_EQ(service.getGuid(), "");
  EXPECT_EQ(service.lastErrID(), 4);
  EXPECT_EQ(service.lastErrMsg(), "The user id or password you have entered is invalid.");

  server.enqueue(Reply::withStatus(500, testing::serverFault("User Name cannot be empty")));
  EXPECT_EQ(service.getGuid(), "");
  EXPECT_EQ(service.lastErrID(), -1);
  EXPECT_EQ(service.lastErrMsg(), "Server.userException : User Name cannot be empty");

  // Nothing after "Exception:": nothing to show, the number stays.
  service.setLastErrID(3);
  host->boxes.clear();
  server.enqueue(Reply::withStatus(500, testing::serverFault("java.lang.Exception:")));
  EXPECT_EQ(service.getGuid(), "");
  EXPECT_EQ(service.lastErrMsg(), "");
  EXPECT_EQ(service.lastErrID(), 3);
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ServiceWire, PingLearnsTheVersionAndReportsSilently) {
  server.enqueue(Reply::xml(testing::scalarAnswer("getVersion", "3.2.4.60")));
  EXPECT_TRUE(service.Ping(server.baseUrl()));
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");
  EXPECT_FALSE(service.useProxy());

  service.ShowAlerts(false);
  // A dropped kept-alive connection is retried once on a new one: drop that too.
  server.setDefault(Reply::drop());
  EXPECT_FALSE(service.Ping(server.baseUrl()));
  EXPECT_EQ(service.lastErrID(), 3);
  EXPECT_TRUE(host->boxes.empty());
  EXPECT_TRUE(service.showAlerts());  // turned on again
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");
}

TEST_F(ServiceWire, PingGivesUpOnASilentServerAfterItsShortTimeout) {
  server.enqueue(Reply::stall(std::chrono::seconds(30)));
  EXPECT_FALSE(service.Ping(server.baseUrl()));
  EXPECT_EQ(service.lastErrID(), 1);
  EXPECT_EQ(service.lastErrMsg(), kContact);
}

TEST_F(ServiceWire, IgnoresProxyVariablesOfTheEnvironment) {
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
  EXPECT_EQ(service.serverVersion(), "1.2.3.4");
  EXPECT_EQ(proxy->lastRequest().target, "http://127.0.0.1:9/services/Telvane");
}

}  // namespace
}  // namespace brenmoor
