// Signing in, keys, accounts and version checks, as they go over the wire.

#include "brenmoor/brenmoor.h"
#include "independent_md5.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::md5;
using testing::Reply;
using testing::scalarAnswer;

std::string element(const std::string& body, const std::string& name) {
  auto open = body.find("<" + name + " ");
  if (open == std::string::npos) return "<missing>";
  auto start = body.find('>', open) + 1;
  return body.substr(start, body.find("</" + name + ">", start) - start);
}

Reply loginAnswer(const std::string& op, const std::string& value,
                  const std::string& type = "string") {
  return Reply::xml(scalarAnswer(op, value, type, "urn:telvane-login"));
}

class LoginWire : public testing::WireTest {
 protected:
  void scriptLogin(const std::string& challenge, const std::string& token) {
    server.enqueue(loginAnswer("getChallenge", challenge));
    server.enqueue(loginAnswer("userLogin", token));
    server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.60")));
  }
};

TEST_F(LoginWire, AnswersTheChallengeAndCountsKeysFromOne) {
  const std::string digest = md5("secret");
  scriptLogin("abc", "tok");
  EXPECT_EQ(service.login("ann", digest), "tok");
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");
  const std::string userLogin = server.requests().at(1).body;
  EXPECT_EQ(element(userLogin, "response"), md5("0" + md5("abc" + digest)));

  const std::string secret = md5("abc" + digest);
  EXPECT_EQ(service.key(), "tok:1:" + md5("1" + secret));
  EXPECT_EQ(service.key(), "tok:2:" + md5("2" + secret));
  EXPECT_EQ(service.keyCounter(), 3);

  // The clear password is digested here and never sent.
  scriptLogin("abc", "tok");
  service.loginUnencryptedPassword("ann", "secret");
  EXPECT_EQ(server.lastRequest().body.find("secret"), std::string::npos);
  EXPECT_EQ(server.requests().at(4).body, userLogin);
}

TEST_F(LoginWire, KeepsThePreviousTokenAfterAFaultAndNothingAfterAFailure) {
  scriptLogin("c1", "first");
  ASSERT_EQ(service.login("u", md5("p")), "first");

  server.enqueue(loginAnswer("getChallenge", "c2"));
  server.enqueue(Reply::xml(testing::applicationFault("tv:Locked", "locked", "0")));
  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.61")));
  EXPECT_EQ(service.login("u", md5("p")), "first");
  EXPECT_EQ(service.serverVersion(), "3.2.4.61");  // asked even after the fault
  EXPECT_EQ(host->boxes.size(), 1u);

  // A failed version request does not take the new token back.
  server.enqueue(loginAnswer("getChallenge", "c3"));
  server.enqueue(loginAnswer("userLogin", "second"));
  server.enqueue(Reply::text(503, "down"));
  EXPECT_EQ(service.login("u", md5("p")), "second");
  EXPECT_EQ(service.lastErrID(), 3);

  // A rejected sign-in returns nothing and sends no version request.
  const size_t before = server.requests().size();
  server.enqueue(loginAnswer("getChallenge", "c4"));
  server.enqueue(Reply::withStatus(
      500, testing::serverFault("java.lang.Exception: The user id or password you have "
                                "entered is invalid.")));
  EXPECT_EQ(service.login("u", md5("wrong")), "");
  EXPECT_EQ(service.lastErrID(), 4);
  EXPECT_EQ(server.requests().size(), before + 2);

  // No challenge, no change.
  server.enqueue(Reply::text(503, "down"));
  EXPECT_EQ(service.login("u", md5("p")), "");
  EXPECT_EQ(service.sessionToken(), "second");
}

TEST_F(LoginWire, SpendsKeysAsItAlwaysHasAndStopsAt32767) {
  // Logout spends one key before the one it sends.
  server.enqueue(loginAnswer("userLogout", "true", "boolean"));
  EXPECT_TRUE(service.logout());
  EXPECT_EQ(element(server.lastRequest().body, "key"), ":1:" + md5("1"));
  EXPECT_EQ(service.keyCounter(), 2);

  while (service.keyCounter() < 32767) service.key();
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
  EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(LoginWire, ListsNoAccountsAsEmptyAndRefusesAnIdThatIsNoNumber) {
  server.enqueue(Reply::xml(testing::soapEnvelope(
      "<ns1:getUserAccountsResponse xmlns:ns1=\"urn:telvane-login\"><getUserAccountsReturn "
      "soapenc:arrayType=\"ns2:UserAccountInfo[0]\"/></ns1:getUserAccountsResponse>")));
  auto accounts = service.getAccounts();
  ASSERT_TRUE(accounts);
  EXPECT_EQ(accounts->Count(), 0);

  // A dropped kept-alive connection is retried once on a new one: drop that too.
  server.setDefault(Reply::drop());
  EXPECT_EQ(service.getAccounts(), nullptr);

  // An account id that is not a number is refused before a key is spent.
  const size_t sent = server.requests().size();
  const int16_t counter = service.keyCounter();
  EXPECT_FALSE(service.selectAccount("abc"));
  EXPECT_EQ(server.requests().size(), sent);
  EXPECT_EQ(service.keyCounter(), counter);
  EXPECT_EQ(service.lastErrID(), -1);
  EXPECT_NE(service.lastErrMsg().find("Type mismatch"), std::string::npos);
}

TEST_F(LoginWire, ComparesVersionsWithTheServersAndGatesDebugInfo) {
  EXPECT_FALSE(service.validVersion("1.0.0.0"));  // no server version yet
  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.58")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  service.sendDebugInfo("trace");
  EXPECT_EQ(server.requests().size(), 1u);

  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.4.59")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  for (const char* older : {"3.2.4.59", "2.9.9.99", "3.2.4.59.7"}) {
    EXPECT_TRUE(service.validVersion(older)) << older;
  }
  for (const char* newer : {"3.2.4.60", "3.2.10.0", "3.2", "3.2.x.1", "3.2.4.40000"}) {
    EXPECT_FALSE(service.validVersion(newer)) << newer;
  }
  server.enqueue(Reply::xml(scalarAnswer("sendClientDebugInfo", "")));
  service.sendDebugInfo("trace");
  EXPECT_EQ(server.requests().size(), 3u);

  server.enqueue(Reply::xml(scalarAnswer("getVersion", "3.2.1.0")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  EXPECT_TRUE(service.validVersion("9.9.9.9"));
}

TEST_F(LoginWire, IsCompatibleTellsRefusalFromFailure) {
  server.enqueue(loginAnswer("isCompatible", "true", "boolean"));
  EXPECT_TRUE(service.isCompatible());
  server.enqueue(loginAnswer("isCompatible", "false", "boolean"));
  EXPECT_FALSE(service.isCompatible());
  EXPECT_EQ(service.lastErrID(), 5);
  EXPECT_EQ(service.lastErrMsg(),
            "The version of the Telvane Services Client library that you are using is "
            "incompatable with the Telvane service you are trying to access");

  server.enqueue(Reply::text(503, "down"));
  EXPECT_FALSE(service.isCompatible());
  EXPECT_EQ(service.lastErrID(), 3);
}

}  // namespace
}  // namespace brenmoor
