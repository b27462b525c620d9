// Reports on the wire: the date range, the version gate, and nested answers.

#include <regex>
#include <string>

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;

std::string element(const std::string& body, const std::string& name) {
  const auto open = body.find("<" + name + " ");
  if (open == std::string::npos) return "<missing>";
  const auto start = body.find('>', open) + 1;
  return body.substr(start, body.find("</" + name + ">", start) - start);
}

class ReportsWire : public testing::WireTest {
 protected:
  void answerReport(const std::string& op, const std::string& returned) {
    server.enqueue(Reply::xml(testing::soapEnvelope("<ns1:" + op +
                                                    "Response xmlns:ns1=\"urn:telvane-reports\">" +
                                                    returned + "</ns1:" + op + "Response>")));
  }
};

TEST_F(ReportsWire, SendsTheRangeFromTheZeroDateToNowUnlessGiven) {
  setenv("TZ", "Pacific/Auckland", 1);  // +13:00 in November
  const std::regex now("20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9:.]+Z");
  for (int i = 0; i < 3; ++i) answerReport("getTotalPageHits", "<r xsi:type=\"xsd:short\">4</r>");
  EXPECT_EQ(service.getTotalPageHits("pg"), 4);
  const Date start = Date::fromParts(2024, 11, 5, 9, 30);
  service.getTotalPageHits("pg", start);
  service.getTotalPageHits("pg", start, Date::fromParts(2024, 11, 6));

  const auto requests = server.requests();
  EXPECT_EQ(element(requests[0].body, "startDate"), "1899-12-29T11:00:00Z");
  EXPECT_TRUE(std::regex_match(element(requests[0].body, "endDate"), now));
  EXPECT_EQ(element(requests[1].body, "startDate"), "2024-11-04T20:30:00Z");
  EXPECT_TRUE(std::regex_match(element(requests[1].body, "endDate"), now));
  EXPECT_EQ(element(requests[2].body, "endDate"), "2024-11-05T11:00:00Z");
}

TEST_F(ReportsWire, AsksNothingOfServersBefore3_2_4_60) {
  // Before any sign-in the version is unknown, which counts as too old.
  EXPECT_TRUE(service.getPollResponses("pg").empty());
  EXPECT_FALSE(service.updateQAItem("q-1", "Yes"));
  EXPECT_FALSE(service.updateQAItemStatus("q-1", "answered"));
  server.enqueue(Reply::xml(testing::scalarAnswer("getVersion", "3.2.4.59")));
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  service.ShowAlerts(false);
  EXPECT_FALSE(service.updateQAItem("q-1", "Yes"));
  EXPECT_EQ(server.requests().size(), 1u);
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ReportsWire, ReadsNestedPollsSurveysAndQuestions) {
  answerReport("getPollSummaryResults_Array",
               "<r><item><guid>p-1</guid><questionTxt>Best?</questionTxt><responseCount>3"
               "</responseCount><answers><item><answerID>1</answerID><answerTxt>A</answerTxt>"
               "<count>2</count></item><item><answerID>2</answerID><answerTxt>B</answerTxt>"
               "<count>1</count></item></answers></item></r>");
  auto polls = service.getPollSummaryResults("pg");
  ASSERT_TRUE(polls);
  const auto& poll = *polls->Item(1);
  ASSERT_TRUE(poll.answers.occurs());
  EXPECT_EQ(poll.answers()->Count(), 2);
  EXPECT_EQ(poll.answers()->Item(2)->answerTxt(), "B");

  answerReport("getSurveySummary",
               "<r><guid>s-1</guid><name>Feedback</name><questions><item><seqNo>1</seqNo>"
               "<questionTxt>Why?</questionTxt><questionType>2</questionType><colCount>1"
               "</colCount><rowCount>1</rowCount><responseCount>4</responseCount>"
               "<nonresponseCount>0</nonresponseCount><answers><item><answerTxt>Because"
               "</answerTxt><answerType>1</answerType><col>0</col><row>0</row><correct>true"
               "</correct><count>4</count><guid>a-1</guid></item></answers></item></questions>"
               "</r>");
  auto survey = service.getSurveySummary("pg", "s-1");
  ASSERT_TRUE(survey) << service.lastErrMsg();
  const auto& question = *survey->questions()->Item(1);
  EXPECT_FALSE(question.guid.occurs());
  EXPECT_TRUE(question.answers()->Item(1)->correct());
  EXPECT_FALSE(survey->responses.occurs());

  const std::string client =
      "<client><email>a@x</email><firstName>A</firstName><lastName>B</lastName><guid>c-1"
      "</guid><password/><customXML/><userHostName/><userIP/><created xsi:nil=\"true\"/>"
      "<modified xsi:nil=\"true\"/><registered>false</registered></client>";
  const std::string qa =
      "<questionDt>2024-01-15T09:00:00Z</questionDt><answerDt xsi:nil=\"true\"/><answerTxt/>"
      "<category/><guid>q-GUID</guid><location/><questionTxt>When?</questionTxt><name/>"
      "<status>new</status><submitterHostname/><submitterIP/>";
  std::string withClient = "<item>" + qa + client + "</item>", without = "<item>" + qa + "</item>";
  withClient.replace(withClient.find("GUID"), 4, "1");
  without.replace(without.find("GUID"), 4, "2");
  answerReport("getQAList_Array", "<r>" + withClient + without + "</r>");
  auto items = service.getQAList("pg");
  ASSERT_TRUE(items) << service.lastErrMsg();
  EXPECT_EQ(items->Item(1)->Client()->email(), "a@x");
  EXPECT_FALSE(items->Item(2)->Client.occurs());
  EXPECT_FALSE(items->Item(1)->answerDt.occurs());

  answerReport("getSurveyResponseList_Array",
               "<r><item><guid>r-1</guid><questionGuid>q</questionGuid><answerGuid>a</answerGuid>"
               "<answerTxt>t</answerTxt><responseDt>2024-01-15T09:00:00Z</responseDt><userGuid>u"
               "</userGuid></item></r>");
  const auto responses = service.getSurveyResponses("pg", "s-1");
  ASSERT_EQ(responses.size(), 1u);
  EXPECT_EQ(responses[0].answerTxt(), "t");
  EXPECT_TRUE(responses[0].responseDt.occurs());
}

}  // namespace
}  // namespace brenmoor
