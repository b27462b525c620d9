#include <gtest/gtest.h>

#include "brenmoor/error.h"
#include "soap/answer.h"
#include "soap/failure.h"
#include "soap_answers.h"
#include "util/datetime.h"

namespace brenmoor::soap {
namespace {

using testing::soapEnvelope;

Answer parse(const std::string& body, std::string_view charset = "") {
  return Answer::parse(body, charset, "http://127.0.0.1:1/services/Telvane");
}

uint32_t failureCode(const std::string& body, std::string* description = nullptr) {
  try {
    parse(body);
  } catch (const Failure& f) {
    if (description) *description = f.what();
    return f.code();
  }
  return 0;
}

TEST(Answer, ReadsScalarsAndRecordsThroughReferencesInEitherOrder) {
  // The record's multiRef comes after its reference, an array item's before it.
  auto answer = parse(soapEnvelope(
      "<multiRef id=\"id1\" soapenc:root=\"0\"><accountID xsi:type=\"xsd:int\">7</accountID>"
      "</multiRef>"
      "<ns1:opResponse xmlns:ns1=\"urn:telvane-main\"><opReturn href=\"#id0\"/></ns1:opResponse>"
      "<multiRef id=\"id0\" soapenc:root=\"0\"><name>Apollo</name>"
      "<list soapenc:arrayType=\"ns2:X[2]\"><item href=\"#id1\"/><anything href=\"#id1\"/></list>"
      "</multiRef>"));
  ASSERT_EQ(answer.parameterCount(), 1u);
  EXPECT_FALSE(answer.isFault());
  const Node ret = answer.returnNode();
  EXPECT_EQ(ret.name(), "opReturn");
  EXPECT_EQ(ret.child("name").text(), "Apollo");
  const Node list = ret.child("list");
  ASSERT_TRUE(list);
  ASSERT_EQ(list.children().size(), 2u);
  const Node first = list.children().front(), second = *++list.children().begin();
  EXPECT_EQ(second.name(), "anything");
  EXPECT_EQ(second.child("accountID").text(), "7");
  // A multiRef referenced twice is shared, not copied.
  EXPECT_TRUE(first.sharesValueWith(second));
  EXPECT_EQ(ret.textContent(), "Apollo77");
}

TEST(Answer, MarksNilWithTrueOrOne) {
  auto answer = parse(
      soapEnvelope("<r><a xsi:nil=\"true\"/><b xsi:nil=\"1\"/><c xsi:nil=\"false\">x</c>"
                   "<d href=\"#n\"/></r><multiRef id=\"n\" soapenc:root=\"0\" xsi:nil=\"true\"/>"));
  const Node r = answer.firstParameter();
  EXPECT_TRUE(r.child("a").nil());
  EXPECT_TRUE(r.child("b").nil());
  EXPECT_FALSE(r.child("c").nil());
  EXPECT_TRUE(r.child("d").nil());
}

TEST(Answer, TurnsAServerFaultIntoAFailureNamingItsCode) {
  std::string description;
  EXPECT_EQ(failureCode(testing::serverFault("boom", "x:Odd"), &description), kServerFault);
  EXPECT_EQ(description, "{}Odd : boom");
}

TEST(Answer, RefusesWhatIsNotASoapEnvelope) {
  std::string description;
  EXPECT_EQ(failureCode("", &description), kUnusableServer);
  EXPECT_EQ(failureCode("<html><body>Service Unavailable</body></html>", &description),
            kUnusableServer);
  EXPECT_NE(description.find("<html>"), std::string::npos);
  EXPECT_EQ(failureCode(soapEnvelope("<r>").substr(0, 200), &description), kUnusableServer);
  EXPECT_NE(description.find("at byte"), std::string::npos);
  EXPECT_EQ(failureCode("<e:Envelope xmlns:e=\"urn:other\"><e:Body/></e:Envelope>"),
            kUnusableServer);
}

TEST(Answer, DecodesTheDeclaredCharset) {
  std::string latin =
      "<?xml version=\"1.0\"?>"
      "<soapenv:Envelope xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\">"
      "<soapenv:Body><r>caf\xe9</r></soapenv:Body></soapenv:Envelope>";
  EXPECT_EQ(parse(latin, "ISO-8859-1").firstParameter().text(), "caf\xc3\xa9");
  std::string declared = latin;
  declared.replace(0, 21, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>");
  EXPECT_EQ(parse(declared).firstParameter().text(), "caf\xc3\xa9");
  EXPECT_THROW(parse(latin, "klingon-8"), Failure);
}

TEST(DateTime, ReadsZonesIntoUtcAndWritesUtc) {
  using util::formatDateTime;
  using util::parseDateTime;
  EXPECT_EQ(parseDateTime("2024-03-01T10:00:00Z"), Date::fromParts(2024, 3, 1, 10));
  EXPECT_EQ(parseDateTime("2024-03-01T10:00:00.250Z"), Date::fromParts(2024, 3, 1, 10, 0, 0, 250));
  EXPECT_EQ(parseDateTime("2024-03-01T01:30:00+02:00"), Date::fromParts(2024, 2, 29, 23, 30));
  EXPECT_EQ(parseDateTime("2023-12-31T22:00:00-05:30"), Date::fromParts(2024, 1, 1, 3, 30));
  EXPECT_EQ(parseDateTime("2024-03-01T10:00:00"), Date::fromParts(2024, 3, 1, 10));
  for (const char* bad : {"", "2024-03-01", "2024-03-01 10:00:00Z", "2024-02-30T00:00:00Z",
                          "2024-03-01T10:00:00+2:00", "yesterday"}) {
    EXPECT_THROW(parseDateTime(bad), Error) << bad;
  }
  EXPECT_EQ(formatDateTime(Date::fromParts(1999, 12, 31, 23, 59, 59, 999)),
            "1999-12-31T23:59:59.999Z");
}

}  // namespace
}  // namespace brenmoor::soap
