// The library and the CLI against a real sandbox process.

#include <gtest/gtest.h>

#include <memory>
#include <regex>

#include "brenmoor/brenmoor.h"
#include "sandbox_test.h"

namespace brenmoor {
namespace {

using testing::kDemoPassword;
using testing::kDemoUser;

using EndToEnd = testing::SandboxTest;

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
  EXPECT_EQ(service.loginUnencryptedPassword(kDemoUser, "not the password"), "");
  EXPECT_EQ(service.lastErrID(), 4);
  EXPECT_EQ(service.lastErrMsg(), "The user id or password you have entered is invalid.");

  service.setLastErrID(0);
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
