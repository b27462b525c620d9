#include "sandbox_fixture.h"

namespace sandbox::testing {
namespace {

using RequestHandlingTest = SandboxTest;

TEST_F(RequestHandlingTest, MalformedRequestsGetServerFaultsWithClearTexts) {
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

  EXPECT_TRUE(contains(fault_of("/services/Login", "not xml <"), "not XML"));
  EXPECT_TRUE(contains(fault_of("/services/Login", ""), "not XML"));
  EXPECT_TRUE(contains(fault_of("/services/Login", "<Envelope/>"), "not a SOAP 1.1 Envelope"));
  EXPECT_TRUE(
      contains(fault_of("/services/Login",
                        "<e:Envelope xmlns:e=\"http://schemas.xmlsoap.org/soap/envelope/\"/>"),
               "has no Body"));
  EXPECT_TRUE(contains(fault_of("/services/Login",
                                "<e:Envelope xmlns:e=\"http://schemas.xmlsoap.org/soap/envelope/\">"
                                "<e:Body><q:op/></e:Body></e:Envelope>"),
                       "undeclared namespace prefix"));

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

TEST_F(RequestHandlingTest, NamespacesDecideNotPrefixes) {
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

TEST_F(RequestHandlingTest, HttpLevelRefusals) {
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
