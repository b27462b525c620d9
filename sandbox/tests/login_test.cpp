#include "crypto/digest.h"
#include "sandbox_fixture.h"

namespace sandbox::testing {
namespace {

constexpr std::string_view kBadCredentials =
    "java.lang.Exception: The user id or password you have entered is invalid.";

using LoginTest = SandboxTest;

TEST_F(LoginTest, RefusesReplayedForgedAndMalformedKeys) {
  login();
  const std::string fresh = key();
  ASSERT_EQ(call("Login", kLoginNs, "getUserAccounts", fresh).status, 200);

  const auto refusal = [&](const std::string& key_element) {
    const Answer answer = call("Login", kLoginNs, "getUserAccounts", key_element);
    EXPECT_EQ(answer.status, 500);
    return answer.fault_string();
  };
  EXPECT_EQ(refusal(fresh), "java.lang.Exception: Stale or replayed session key");
  EXPECT_EQ(refusal(key_with(0)), "java.lang.Exception: Stale or replayed session key");
  // A counter may skip ahead; only going back is refused.
  EXPECT_EQ(call("Login", kLoginNs, "getUserAccounts", key_with(10)).status, 200);
  EXPECT_EQ(refusal(key_with(9)), "java.lang.Exception: Stale or replayed session key");

  const std::string forged = arg("key", "string", token_ + ":11:" + md5_hex("11wrong"));
  EXPECT_EQ(refusal(forged), "java.lang.Exception: Invalid session key");
  const std::string unknown_token =
      arg("key", "string", "0123456789abcdef0123456789abcdef:11:" + md5_hex("11" + secret_));
  EXPECT_EQ(refusal(unknown_token), "java.lang.Exception: Invalid session key");
  for (const char* malformed : {"", "::", "x:-3:abc", "x:1e3:abc"}) {
    EXPECT_EQ(refusal(arg("key", "string", malformed)), "java.lang.Exception: Invalid session key")
        << malformed;
  }
  EXPECT_NE(refusal(arg("account_id", "int", "1") + key_with(12)).find("Missing session key"),
            std::string::npos);
  // The refused attempts did not move the counter: 11 is still fresh.
  EXPECT_EQ(call("Login", kLoginNs, "getUserAccounts", key_with(11)).status, 200);
}

TEST_F(LoginTest, RefusesWrongCredentialsAndSpentChallenges) {
  const auto attempt = [&](const std::string& challenge, const std::string& password,
                           const std::string& user) {
    const std::string response = md5_hex("0" + md5_hex(challenge + md5_hex(password)));
    return call("Login", kLoginNs, "userLogin",
                arg("challenge", "string", challenge) + arg("response", "string", response) +
                    arg("username", "string", user));
  };

  const std::string challenge = call("Login", kLoginNs, "getChallenge").value();
  EXPECT_EQ(challenge.size(), 32u);
  const Answer wrong_password = attempt(challenge, "nope", "demo@example.com");
  EXPECT_EQ(wrong_password.status, 500);
  EXPECT_EQ(wrong_password.fault_string(), kBadCredentials);
  // The challenge was spent by the failed attempt.
  EXPECT_EQ(attempt(challenge, "demo", "demo@example.com").fault_string(), kBadCredentials);

  EXPECT_EQ(attempt(call("Login", kLoginNs, "getChallenge").value(), "demo", "nobody@example.com")
                .fault_string(),
            kBadCredentials);

  const std::string third = call("Login", kLoginNs, "getChallenge").value();
  EXPECT_EQ(attempt(third, "demo", "demo@example.com").status, 200);
  EXPECT_EQ(attempt(third, "demo", "demo@example.com").fault_string(), kBadCredentials);
}

TEST_F(LoginTest, JudgesClientCompatibility) {
  const auto compatible = [&](std::string_view code, std::string_view major) {
    return call("Login", kLoginNs, "isCompatible",
                arg("clientCode", "string", code) + arg("major", "int", major) +
                    arg("minor", "int", "0") + arg("revision", "int", "289"))
        .value();
  };
  EXPECT_EQ(compatible("KWRB", "4"), "true");
  EXPECT_EQ(compatible("KWRB", "3"), "false");
  EXPECT_EQ(compatible("ABCD", "4"), "false");
}

TEST_F(LoginTest, SessionsOutliveARestart) {
  login();
  ASSERT_EQ(call("Login", kLoginNs, "getUserAccounts", key()).status, 200);
  stop_server();
  start_server();
  EXPECT_EQ(call("Login", kLoginNs, "getUserAccounts", key_with(1)).status, 500);
  EXPECT_EQ(call("Login", kLoginNs, "getUserAccounts", key()).status, 200);
}

}  // namespace
}  // namespace sandbox::testing
