// Signing in, keys, accounts and version checks, as they go over the wire.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <memory>

#include "brenmoor/brenmoor.h"
#include "recording_host.h"
#include "scripted_server.h"
#include "soap_answers.h"

namespace brenmoor {
namespace {

using testing::Reply;
using testing::scalarAnswer;

// An independent MD5, so these tests do not check the library against itself.
std::string md5(const std::string& text) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  EVP_Digest(text.data(), text.size(), digest, &size, EVP_md5(), nullptr);
  static const char* hex = "0123456789abcdef";
  std::string out;
  for (unsigned i = 0; i < size; ++i) {
    out += hex[digest[i] >> 4];
    out += hex[digest[i] & 15];
  }
  return out;
}

std::string element(const std::string& body, const std::string& name) {
  auto open = body.find("<" + name + " ");
  if (open == std::string::npos) return "<missing>";
  auto start = body.find('>', open) + 1;
  return body.substr(start, body.find("</" + name + ">", start) - start);
}

std::string loginAnswer(const std::string& token) {
  return scalarAnswer("userLogin", token, "string", "urn:telvane-login");
}

class LoginWire : public ::testing::Test {
 protected:
  void SetUp() override {
    host = std::make_shared<testing::RecordingHost>();
    service.setHost(host);
    service.ShowAlerts(false);
    service.SetServiceBaseUrl(server.baseUrl());
  }

  void scriptLogin(const std::string& challenge, const std::string& token) {
    server.enqueue(
        Reply::xml(scalarAnswer("getChallenge", challenge, "string", "urn:telvane-login")));
    server.enqueue(Reply::xml(loginAnswer(token)));
    server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.60")));
  }

  testing::ScriptedServer server;
  std::shared_ptr<testing::RecordingHost> host;
  ZylService service;
};

TEST_F(LoginWire, AnswersTheChallengeAndCountsKeysFromOne) {
  const std::string digest = md5("secret");
  scriptLogin("abc", "tok");
  EXPECT_EQ(service.login("ann", digest), "tok");
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");

  auto requests = server.requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[0].target, "/services/Login");
  EXPECT_NE(requests[0].body.find("<a:getChallenge></a:getChallenge>"), std::string::npos);
  const std::string& userLogin = requests[1].body;
  EXPECT_EQ(element(userLogin, "challenge"), "abc");
  EXPECT_EQ(element(userLogin, "response"), md5("0" + md5("abc" + digest)));
  EXPECT_EQ(element(userLogin, "username"), "ann");
  EXPECT_LT(userLogin.find("<challenge "), userLogin.find("<response "));
  EXPECT_LT(userLogin.find("<response "), userLogin.find("<username "));
  EXPECT_EQ(requests[2].target, "/services/Telvane");
  EXPECT_EQ(requests[2].header("SOAPAction"), "\"urn:telvane-main\"");

  const std::string secret = md5("abc" + digest);
  EXPECT_EQ(service.key(), "tok:1:" + md5("1" + secret));
  EXPECT_EQ(service.key(), "tok:2:" + md5("2" + secret));
  EXPECT_EQ(service.keyCounter(), 3);
}

TEST_F(LoginWire, ClearPasswordSendsWhatTheDigestSends) {
  scriptLogin("c1", "t1");
  service.loginUnencryptedPassword("u", "p");
  scriptLogin("c1", "t1");
  service.login("u", md5("p"));
  auto r = server.requests();
  ASSERT_EQ(r.size(), 6u);
  EXPECT_EQ(r[1].body, r[4].body);
  EXPECT_EQ(r[1].body.find("<password"), std::string::npos);
}

TEST_F(LoginWire, KeepsThePreviousTokenAfterAFaultAndNothingAfterAFailure) {
  scriptLogin("c1", "first");
  ASSERT_EQ(service.login("u", md5("p")), "first");

  server.enqueue(Reply::xml(scalarAnswer("getChallenge", "c2", "string", "urn:telvane-login")));
  server.enqueue(Reply::xml(testing::applicationFault("tv:Locked", "locked", "0")));
  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.61")));
  EXPECT_EQ(service.login("u", md5("p")), "first");
  EXPECT_EQ(service.serverVersion(), "3.2.4.61");  // asked even after the fault
  EXPECT_EQ(host->boxes.size(), 1u);

  // A failed version request does not take the new token back.
  server.enqueue(Reply::xml(scalarAnswer("getChallenge", "c3", "string", "urn:telvane-login")));
  server.enqueue(Reply::xml(loginAnswer("second")));
  server.enqueue(Reply::text(503, "down"));
  EXPECT_EQ(service.login("u", md5("p")), "second");
  EXPECT_EQ(service.lastErrID(), 3);

  // A rejected sign-in returns nothing and sends no version request.
  const size_t before = server.requests().size();
  server.enqueue(Reply::xml(scalarAnswer("getChallenge", "c4", "string", "urn:telvane-login")));
  server.enqueue(Reply::withStatus(
      500, testing::serverFault("java.lang.Exception: The user id or password you have "
                                "entered is invalid.")));
  EXPECT_EQ(service.login("u", md5("wrong")), "");
  EXPECT_EQ(service.lastErrID(), 4);
  EXPECT_EQ(service.lastErrMsg(), "The user id or password you have entered is invalid.");
  EXPECT_EQ(server.requests().size(), before + 2);

  // No challenge, no change.
  server.enqueue(Reply::text(503, "down"));
  EXPECT_EQ(service.login("u", md5("p")), "");
  EXPECT_EQ(service.sessionToken(), "second");
}

TEST_F(LoginWire, LogoutBeforeAnyLoginSendsTheSecondKey) {
  server.enqueue(Reply::xml(scalarAnswer("userLogout", "true", "boolean", "urn:telvane-login")));
  EXPECT_TRUE(service.logout());
  auto body = server.lastRequest().body;
  EXPECT_NE(body.find("<a:userLogout><key "), std::string::npos);
  EXPECT_EQ(element(body, "key"), ":1:" + md5("1"));
  EXPECT_EQ(service.keyCounter(), 2);
}

TEST_F(LoginWire, TheKeyCounterStopsAt32767) {
  for (int i = 0; i < 32767; ++i) service.key();
  EXPECT_EQ(service.keyCounter(), 32767);
  try {
    service.key();
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), Error::Overflow);
  }
  // An operation that needs a key reports the overflow instead of throwing.
  EXPECT_FALSE(service.selectAccountByGuid("g"));
  EXPECT_EQ(service.lastErrID(), -1);
  EXPECT_EQ(service.lastErrMsg(), "Overflow");
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(LoginWire, ListsAndSelectsAccounts) {
  server.enqueue(Reply::xml(
      testing::soapEnvelope("<ns1:getUserAccountsResponse xmlns:ns1=\"urn:telvane-login\">"
                            "<getUserAccountsReturn soapenc:arrayType=\"ns2:UserAccountInfo[2]\">"
                            "<item href=\"#id0\"/><item href=\"#id1\"/></getUserAccountsReturn>"
                            "</ns1:getUserAccountsResponse>"
                            "<multiRef id=\"id1\" soapenc:root=\"0\"><accountID>1002</accountID>"
                            "<accountName>Two</accountName></multiRef>"
                            "<multiRef id=\"id0\" soapenc:root=\"0\"><accountName>One</accountName>"
                            "<accountID>1001</accountID></multiRef>")));
  auto accounts = service.getAccounts();
  ASSERT_TRUE(accounts);
  ASSERT_EQ(accounts->Count(), 2);
  EXPECT_EQ(accounts->Item(1)->accountID(), 1001);
  EXPECT_EQ(accounts->Item(2)->accountName(), "Two");
  EXPECT_TRUE(accounts->Item(1)->accountName.occurs());
  EXPECT_FALSE(accounts->Item(1)->trialAccount());

  server.enqueue(Reply::xml(testing::soapEnvelope(
      "<ns1:getUserAccountsResponse xmlns:ns1=\"urn:telvane-login\"><getUserAccountsReturn "
      "soapenc:arrayType=\"ns2:UserAccountInfo[0]\"/></ns1:getUserAccountsResponse>")));
  accounts = service.getAccounts();
  ASSERT_TRUE(accounts);
  EXPECT_EQ(accounts->Count(), 0);

  server.enqueue(Reply::drop());
  server.setDefault(Reply::drop());
  EXPECT_EQ(service.getAccounts(), nullptr);
  server.setDefault(Reply::text(500, "no scripted reply"));

  server.enqueue(Reply::xml(scalarAnswer("selectAccount", "true", "boolean", "urn:telvane-login")));
  EXPECT_TRUE(service.selectAccount("42"));
  EXPECT_NE(server.lastRequest().body.find("<account_id XI:type=\"XS:int\">42</account_id>"),
            std::string::npos);

  const size_t sent = server.requests().size();
  const int16_t counter = service.keyCounter();
  EXPECT_FALSE(service.selectAccount("abc"));
  EXPECT_EQ(server.requests().size(), sent);
  EXPECT_EQ(service.keyCounter(), counter);
  EXPECT_EQ(service.lastErrID(), -1);
  EXPECT_NE(service.lastErrMsg().find("Type mismatch"), std::string::npos);

  server.enqueue(
      Reply::xml(scalarAnswer("selectAccountByGuid", "false", "boolean", "urn:telvane-login")));
  EXPECT_FALSE(service.selectAccountByGuid("g-1"));
  EXPECT_NE(server.lastRequest().body.find("<account_guid XI:type=\"XS:string\">g-1<"),
            std::string::npos);
}

TEST_F(LoginWire, ComparesVersionsWithTheServers) {
  EXPECT_FALSE(service.validVersion("1.0.0.0"));  // no server version yet
  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.59")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  EXPECT_TRUE(service.validVersion("3.2.4.59"));
  EXPECT_FALSE(service.validVersion("3.2.4.60"));
  EXPECT_FALSE(service.validVersion("3.2.10.0"));
  EXPECT_TRUE(service.validVersion("2.9.9.99"));
  EXPECT_TRUE(service.validVersion("3.2.4.59.7"));
  EXPECT_FALSE(service.validVersion("3.2"));
  EXPECT_FALSE(service.validVersion("3.2.x.1"));
  EXPECT_FALSE(service.validVersion("3.2.4.40000"));

  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.1.0")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  EXPECT_TRUE(service.validVersion("9.9.9.9"));
}

TEST_F(LoginWire, IsCompatibleSendsOurVersionAndTellsRefusalFromFailure) {
  server.enqueue(Reply::xml(scalarAnswer("isCompatible", "true", "boolean", "urn:telvane-login")));
  EXPECT_TRUE(service.isCompatible());
  auto body = server.lastRequest().body;
  EXPECT_NE(body.find("<a:isCompatible><clientCode XI:type=\"XS:string\">KWRB</clientCode>"
                      "<major XI:type=\"XS:int\">4</major><minor XI:type=\"XS:int\">0</minor>"
                      "<revision XI:type=\"XS:int\">289</revision></a:isCompatible>"),
            std::string::npos);

  server.enqueue(Reply::xml(scalarAnswer("isCompatible", "false", "boolean", "urn:telvane-login")));
  EXPECT_FALSE(service.isCompatible());
  EXPECT_EQ(service.lastErrID(), 5);
  EXPECT_EQ(service.lastErrMsg(),
            "The version of the Telvane Services Client library that you are using is "
            "incompatable with the Telvane service you are trying to access");

  server.enqueue(Reply::text(503, "down"));
  EXPECT_FALSE(service.isCompatible());
  EXPECT_EQ(service.lastErrID(), 3);
}

TEST_F(LoginWire, SendsDebugInfoOnlyToNewEnoughServers) {
  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.58")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  service.sendDebugInfo("trace");
  EXPECT_EQ(server.requests().size(), 1u);

  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.59")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  server.enqueue(Reply::xml(
      testing::soapEnvelope("<ns1:sendClientDebugInfoResponse xmlns:ns1=\"urn:telvane-main\"/>")));
  service.sendDebugInfo("a<b");
  auto body = server.lastRequest().body;
  EXPECT_NE(body.find("</key><debugInfo XI:type=\"XS:string\">a&lt;b</debugInfo>"),
            std::string::npos);
}

}  // namespace
}  // namespace brenmoor
