// The library and the CLI against a real sandbox process.

#include <gtest/gtest.h>

#include <memory>
#include <regex>

#include "brenmoor/brenmoor.h"
#include "sandbox_test.h"
#include "soap/answer.h"
#include "soap/failure.h"
#include "soap/request.h"
#include "soap/transport.h"

namespace brenmoor {
namespace {

using testing::kDemoPassword;
using testing::kDemoUser;

class EndToEnd : public testing::SandboxTest {
 protected:
  // Sends selectAccount with a key of the caller's choosing, as a replaying client would.
  std::string selectAccountWithKey(const std::string& key) {
    soap::ConnectionPool pool;
    soap::HttpTransport transport(pool, soap::AnswerLimits{});
    transport.setSoapAction("urn:telvane-login");
    auto text = soap::writeEnvelope("urn:telvane-login", "selectAccount",
                                    {{"key", key}, {"account_id", int32_t{1001}}});
    try {
      return std::string(transport.send(service.loginUrl(), text).returnNode().text());
    } catch (const soap::Failure& f) {
      return f.what();
    }
  }
};

TEST_F(EndToEnd, PingsAndReadsTheServersValues) {
  ASSERT_TRUE(service.Ping(sandbox->baseUrl()));
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");
  EXPECT_TRUE(
      std::regex_match(service.getGuid(),
                       std::regex("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}")));
  EXPECT_NE(service.getGuid(), service.getGuid());
  EXPECT_EQ(service.getFixedUrl(), sandbox->baseUrl());
  EXPECT_TRUE(service.isCompatible());
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(EndToEnd, SignsInListsAndSelectsAccountsAndSignsOut) {
  const std::string token = service.loginUnencryptedPassword(kDemoUser, kDemoPassword);
  ASSERT_FALSE(token.empty()) << service.lastErrMsg();
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");

  auto accounts = service.getAccounts();
  ASSERT_TRUE(accounts) << service.lastErrMsg();
  ASSERT_EQ(accounts->Count(), 2);
  EXPECT_EQ(accounts->Item(1)->accountID(), 1001);
  EXPECT_EQ(accounts->Item(1)->accountName(), "Demo Productions");
  EXPECT_EQ(accounts->Item(2)->accountName(), "Demo Training");

  EXPECT_TRUE(service.selectAccount("1002"));
  EXPECT_FALSE(service.selectAccount("4242"));
  EXPECT_TRUE(service.selectAccountByGuid("acct-1001-guid"));
  auto deployment = service.getDeploymentInfo("no-such-template");
  ASSERT_TRUE(deployment) << service.lastErrMsg();
  EXPECT_FALSE(deployment->deployed());
  service.sendDebugInfo("end-to-end test");
  EXPECT_TRUE(host->boxes.empty());

  EXPECT_TRUE(service.logout());
  EXPECT_EQ(service.getAccounts(), nullptr);
  EXPECT_EQ(service.lastErrMsg(), "Session has ended");
  EXPECT_EQ(service.lastErrID(), 0);  // server texts after "Exception:" leave the number alone
}

TEST_F(EndToEnd, RefusesAWrongPasswordAndStaleKeys) {
  EXPECT_EQ(service.loginUnencryptedPassword(kDemoUser, "not the password"), "");
  EXPECT_EQ(service.lastErrID(), 4);
  EXPECT_EQ(service.lastErrMsg(), "The user id or password you have entered is invalid.");

  ASSERT_FALSE(service.loginUnencryptedPassword(kDemoUser, kDemoPassword).empty());
  const std::string older = service.key();
  const std::string newer = service.key();
  EXPECT_EQ(selectAccountWithKey(newer), "true");
  EXPECT_NE(selectAccountWithKey(newer).find("Stale or replayed"), std::string::npos);
  EXPECT_NE(selectAccountWithKey(older).find("Stale or replayed"), std::string::npos);
  std::string forged = service.key();
  forged.back() = forged.back() == '0' ? '1' : '0';
  EXPECT_NE(selectAccountWithKey(forged).find("Invalid session key"), std::string::npos);
  // The library itself carries on with fresh keys.
  EXPECT_TRUE(service.selectAccount("1001"));
}

TEST_F(EndToEnd, TheCommandLineToolPrintsDataAndFailsWithAStatus) {
  auto ping = testing::runProgram({BRENMOOR_CLI_PATH, "--url", sandbox->baseUrl(), "ping"});
  EXPECT_EQ(ping.status, 0);
  EXPECT_EQ(ping.out, "3.2.4.60\n");

  auto accounts = testing::runProgram({BRENMOOR_CLI_PATH, "--url", sandbox->baseUrl(), "--user",
                                       kDemoUser, "--password", kDemoPassword, "accounts"});
  EXPECT_EQ(accounts.status, 0);
  EXPECT_EQ(accounts.out, "1001\tDemo Productions\n1002\tDemo Training\n");

  auto wrong = testing::runProgram({BRENMOOR_CLI_PATH, "--url", sandbox->baseUrl(), "--user",
                                    kDemoUser, "--password", "nope", "accounts"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.out, "");

  auto unreachable = testing::runProgram({BRENMOOR_CLI_PATH, "--url", "ftp://127.0.0.1:1", "guid"});
  EXPECT_EQ(unreachable.status, 1);
}

}  // namespace
}  // namespace brenmoor
