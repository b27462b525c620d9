// Registrants and quotas as the service answers them, and the checks made before sending.

#include <string>

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;

class UsersWire : public testing::WireTest {};

std::string registrant(const std::string& guid, const std::string& extra) {
  return "<item><email>a@x</email><firstName>A</firstName><lastName>B</lastName><guid>" + guid +
         "</guid><password/><customXML>&lt;c/&gt;</customXML><userHostName>h</userHostName>"
         "<userIP>10.0.0.1</userIP><modified xsi:nil=\"true\"/><registered>true</registered>" +
         extra + "</item>";
}

TEST_F(UsersWire, ReadsRegistrantsWithAndWithoutDetails) {
  answer("getRegistrationList_Array",
         "<getRegistrationList_ArrayReturn soapenc:arrayType=\"ns2:Client[3]\">" +
             registrant("r-1",
                        "<created>2024-01-15T09:00:00Z</created><details><browserType>"
                        "Firefox</browserType><browserVersion>120</browserVersion>"
                        "<country>NZ</country><guid>d-1</guid><hasCookies>true"
                        "</hasCookies><hasFlash>false</hasFlash><hasJava>false</hasJava>"
                        "<hasWM>false</hasWM><hasReal>false</hasReal><ipAddress>10.0.0.1"
                        "</ipAddress><jsVersionMajor>1</jsVersionMajor><jsVersionMinor>8"
                        "</jsVersionMinor><language>en</language><operatingSystem>Linux"
                        "</operatingSystem><screenDepth>24</screenDepth><screenHeight>"
                        "1080</screenHeight><screenWidth>1920</screenWidth><bandwidth>0"
                        "</bandwidth><firstAccessed xsi:nil=\"true\"/></details>") +
             registrant("r-2", "<created xsi:nil=\"true\"/><details xsi:nil=\"true\"/>") +
             registrant("r-3", "<created xsi:nil=\"true\"/>") +
             "</getRegistrationList_ArrayReturn>");
  auto clients = service.getRegistrationList("p-1");
  ASSERT_TRUE(clients) << service.lastErrMsg();
  ASSERT_EQ(clients->Count(), 3);
  const auto& first = *clients->Item(1);
  EXPECT_EQ(first.customXML(), "<c/>");
  EXPECT_TRUE(first.created.occurs());
  EXPECT_FALSE(first.modified.occurs());
  ASSERT_TRUE(first.details());
  EXPECT_EQ(first.details()->browserType(), "Firefox");
  EXPECT_EQ(first.details()->screenWidth(), 1920);
  EXPECT_FALSE(first.details()->firstAccessed.occurs());
  for (int i : {2, 3}) {
    EXPECT_FALSE(clients->Item(i)->details());
    EXPECT_FALSE(clients->Item(i)->created.occurs());
  }

  // A registrant without its e-mail fails the whole listing.
  answer("getRegistrationList_Array",
         "<getRegistrationList_ArrayReturn><item><firstName>A</firstName></item>"
         "</getRegistrationList_ArrayReturn>");
  EXPECT_FALSE(service.getRegistrationList("p-1"));
  EXPECT_EQ(service.lastErrID(), -1);
}

TEST_F(UsersWire, NamesTheMethodWhenNoRegistrantIsGiven) {
  service.setLastErrID(3);
  EXPECT_FALSE(service.deleteRegisteredUser("p-1"));
  EXPECT_FALSE(service.updateRegisteredUserPassword("p-1", "", "", "pw"));
  EXPECT_FALSE(service.updateRegisteredUserName("p-1", "", "", "A", "B"));
  EXPECT_FALSE(service.updateRegisteredUserCustomXML("p-1", "", "", "<c/>"));
  ASSERT_EQ(host->boxes.size(), 4u);
  const char* methods[] = {"deleteRegisteredUser", "updateRegisteredUserPassword",
                           "updateRegisteredUserName", "updateRegisteredUserCustomXML"};
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(host->boxes[i].text,
              std::string("Please supply either a userGuid or an email parameter to the Telvane "
                          "Service Client ") +
                  methods[i] + " function");
  }
  EXPECT_TRUE(server.requests().empty());
  EXPECT_EQ(service.lastErrID(), 3);
}

TEST_F(UsersWire, ReadsQuotasAndRefusesALimitThatIsNoNumber) {
  const std::string quota =
      "<item><guid>q-1</guid><name>Projects</name><type>count</type><failAction>block"
      "</failAction><limit>LIMIT</limit><used>2</used><units>projects</units>"
      "<defaultLimit>true</defaultLimit></item>";
  auto answerQuota = [&](const std::string& limit) {
    std::string item = quota;
    item.replace(item.find("LIMIT"), 5, limit);
    server.enqueue(Reply::xml(testing::soapEnvelope(
        "<ns1:getQuotaList_ArrayResponse xmlns:ns1=\"urn:telvane-accounts\">"
        "<getQuotaList_ArrayReturn>" +
        item + "</getQuotaList_ArrayReturn></ns1:getQuotaList_ArrayResponse>")));
  };
  answerQuota("2.5");
  auto quotas = service.getQuotaList();
  ASSERT_TRUE(quotas);
  EXPECT_EQ(quotas->Item(1)->quotatype(), "count");
  EXPECT_DOUBLE_EQ(quotas->Item(1)->limit(), 2.5);
  EXPECT_TRUE(quotas->Item(1)->defaultLimit());

  answerQuota("lots");
  EXPECT_FALSE(service.getQuotaList());
  EXPECT_EQ(service.lastErrID(), -1);

  server.enqueue(Reply::xml(testing::soapEnvelope(
      "<ns1:getServiceOrderPeriodResponse xmlns:ns1=\"urn:telvane-accounts\">"
      "<getServiceOrderPeriodReturn><item>2024-01-01T00:00:00Z</item><item>2025-01-01T00:00:00Z"
      "</item></getServiceOrderPeriodReturn></ns1:getServiceOrderPeriodResponse>")));
  auto period = service.getServiceOrderPeriod();
  ASSERT_TRUE(period);
  ASSERT_EQ(period->Count(), 2);
  EXPECT_GE(period->Item(2).year(), 2024);
}

}  // namespace
}  // namespace brenmoor
