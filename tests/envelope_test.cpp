#include <gtest/gtest.h>

#include "soap/request.h"

namespace brenmoor::soap {
namespace {

std::string withBreaks(std::string text) {
  // The expected texts below write each namespace break as "|".
  std::string out;
  for (char c : text) out += c == '|' ? std::string("\r\n\t") : std::string(1, c);
  return out;
}

TEST(Envelope, WritesRequestsByteForByteDeclaringOnlyTheNamespacesUsed) {
  EXPECT_EQ(writeEnvelope("urn:telvane-main", "getGuid", {}),
            withBreaks("<S:Envelope|xmlns:S=\"http://schemas.xmlsoap.org/soap/envelope/\""
                       "|xmlns:a=\"urn:telvane-main\"><S:Body><a:getGuid></a:getGuid></S:Body>"
                       "</S:Envelope>"));
  // An array brings the encoding namespace, which sorts first.
  auto text = writeEnvelope("urn:telvane-main", "getDeploymentStatusList_Array",
                            {{"deploymentGuidList", StringArray{"g1", "a<b"}}});
  EXPECT_EQ(text,
            withBreaks("<S:Envelope|xmlns:Enc=\"http://schemas.xmlsoap.org/soap/encoding/\""
                       "|xmlns:S=\"http://schemas.xmlsoap.org/soap/envelope/\""
                       "|xmlns:XS=\"http://www.w3.org/2001/XMLSchema\""
                       "|xmlns:XI=\"http://www.w3.org/2001/XMLSchema-instance\""
                       "|xmlns:a=\"urn:telvane-main\"><S:Body><a:getDeploymentStatusList_Array>"
                       "<deploymentGuidList XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[2]\">"
                       "<i XI:type=\"XS:string\">g1</i><i XI:type=\"XS:string\">a&lt;b</i>"
                       "</deploymentGuidList></a:getDeploymentStatusList_Array></S:Body>"
                       "</S:Envelope>"));
}

TEST(Envelope, WritesEveryValueType) {
  auto text = writeEnvelope(
      "urn:telvane-reports", "op",
      {{"s", std::string()},
       {"t", std::string("R&D <beta> \"x\" 'y'")},
       {"i", int32_t{-2147483647 - 1}},
       {"h", int16_t{90}},
       {"yes", true},
       {"no", false},
       {"d", 0.1},
       {"whole", 3.0},
       {"at", Date::fromParts(2024, 2, 29, 23, 5, 9)},
       {"atMs", Date::fromParts(2024, 2, 29, 23, 5, 9, 7)},
       {"empty", StringArray{}},
       {"outer", Structure{{{"inner", Structure{{{"n", int32_t{1}}}}}, {"t", std::string("x")}}}}});
  auto body = text.substr(text.find("<a:op>"));
  EXPECT_EQ(body,
            "<a:op><s XI:type=\"XS:string\"></s>"
            "<t XI:type=\"XS:string\">R&amp;D &lt;beta&gt; &quot;x&quot; 'y'</t>"
            "<i XI:type=\"XS:int\">-2147483648</i>"
            "<h XI:type=\"XS:short\">90</h>"
            "<yes XI:type=\"XS:boolean\">true</yes><no XI:type=\"XS:boolean\">false</no>"
            "<d XI:type=\"XS:double\">0.1</d><whole XI:type=\"XS:double\">3</whole>"
            "<at XI:type=\"XS:dateTime\">2024-02-29T23:05:09Z</at>"
            "<atMs XI:type=\"XS:dateTime\">2024-02-29T23:05:09.007Z</atMs>"
            "<empty XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[0]\"></empty>"
            "<outer><inner><n XI:type=\"XS:int\">1</n></inner><t XI:type=\"XS:string\">x</t>"
            "</outer></a:op></S:Body></S:Envelope>");
  EXPECT_NE(text.find("xmlns:a=\"urn:telvane-reports\""), std::string::npos);
}

}  // namespace
}  // namespace brenmoor::soap
