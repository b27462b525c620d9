#include "crypto/digest.h"
#include "sandbox_fixture.h"

namespace sandbox::testing {
namespace {

constexpr std::string_view kBadCredentials =
    "java.lang.Exception: The user id or password you have entered is invalid.";

// Signing in, keys, and how any request is refused.
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

TEST_F(LoginTest, MalformedRequestsGetServerFaultsWithClearTexts) {
  const auto fault_of = [&](std::string_view path, std::string_view body) {
    const Answer answer = post(path, body);
    EXPECT_EQ(answer.status, 500) << body;
    EXPECT_STREQ(answer.document.document_element()
                     .first_child()
                     .first_child()
                     .child("faultcode")
                     .text()
                     .get(),
                 "soapenv:Server.userException");
    return answer.fault_string();
  };
  const auto contains = [](const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
  };

  const std::string envelope = "<e:Envelope xmlns:e=\"http://schemas.xmlsoap.org/soap/envelope/\"";
  const std::pair<std::string, std::string_view> malformed[] = {
      {"not xml <", "not XML"},
      {"", "not XML"},
      {"<Envelope/>", "not a SOAP 1.1 Envelope"},
      {envelope + "/>", "has no Body"},
      {envelope + "><e:Body><q:op/></e:Body></e:Envelope>", "undeclared namespace prefix"},
  };
  for (const auto& [body, text] : malformed) {
    EXPECT_TRUE(contains(fault_of("/services/Login", body), text)) << body;
  }

  EXPECT_EQ(call("Login", kLoginNs, "foo").fault_string(),
            "java.lang.Exception: No such operation 'foo' on service Login");
  EXPECT_EQ(call("Assets", "urn:telvane-assets", "anything").fault_string(),
            "java.lang.Exception: No such operation 'anything' on service Assets");
  EXPECT_TRUE(contains(call("Login", kMainNs, "getChallenge").fault_string(),
                       "service Login expects 'urn:telvane-login'"));

  const auto compatibility_fault = [&](const std::string& arguments) {
    const Answer answer = call("Login", kLoginNs, "isCompatible", arguments);
    EXPECT_EQ(answer.status, 500);
    return answer.fault_string();
  };
  const std::string code = arg("clientCode", "string", "KWRB");
  const std::string rest = arg("minor", "int", "0") + arg("revision", "int", "1");
  EXPECT_EQ(compatibility_fault(code + rest),
            "java.lang.Exception: Missing argument 'major' of operation 'isCompatible'");
  EXPECT_TRUE(contains(compatibility_fault(code + arg("major", "string", "4") + rest),
                       "has type 'XS:string', expected xsd:int"));
  EXPECT_TRUE(contains(compatibility_fault(code + "<major XI:nil=\"true\"/>" + rest), "is nil"));
  EXPECT_TRUE(contains(compatibility_fault(code + "<major XI:type=\"Q:int\">4</major>" + rest),
                       "undeclared prefix"));
}

TEST_F(LoginTest, NamespacesDecideNotPrefixes) {
  const std::string envelope =
      "<?xml version=\"1.0\"?><soap:Envelope "
      "xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Header/><soap:Body>"
      "<isCompatible xmlns=\"urn:telvane-login\" "
      "xmlns:t=\"http://www.w3.org/2001/XMLSchema-instance\" "
      "xmlns:s=\"http://www.w3.org/2001/XMLSchema\">"
      "<clientCode xmlns=\"\" t:type=\"s:string\">KWRB</clientCode>"
      "<major xmlns=\"\" t:type=\"s:short\"> 4 </major><minor>0</minor>"
      "<revision><![CDATA[289]]></revision></isCompatible></soap:Body></soap:Envelope>";
  const Answer answer = post("/services/Login", envelope);
  EXPECT_EQ(answer.status, 200) << answer.body;
  EXPECT_EQ(answer.value(), "true");
}

TEST_F(LoginTest, HttpLevelRefusals) {
  EXPECT_EQ(post("/services/Nowhere", "<x/>").status, 404);
  EXPECT_EQ(post("/", "<x/>").status, 404);
  // The client appends paths to the base URL as given, so a trailing slash doubles one.
  EXPECT_EQ(post("//services/Telvane", envelope(kMainNs, "getVersion", "")).value(), "9.8.7.6");

  const auto get = client_->Get("/services/Login");
  ASSERT_TRUE(get);
  EXPECT_EQ(get->status, 405);
  EXPECT_EQ(get->get_header_value("Allow"), "POST");

  const std::string huge(16 * 1024 * 1024 + 1, ' ');
  EXPECT_EQ(post("/services/Login", huge).status, 413);
  // The server still answers afterwards.
  EXPECT_EQ(call("Telvane", kMainNs, "getVersion").status, 200);
}

}  // namespace
}  // namespace sandbox::testing
