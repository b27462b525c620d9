// Answers as the services write them, and hostile ones: whatever the server sends, parsing
// returns or throws Failure (or Error), and never crashes, hangs or balloons. Inputs are
// generated from fixed seeds so failures repeat.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "brenmoor/error.h"
#include "service/call.h"
#include "soap/answer.h"
#include "soap/answer_parser.h"
#include "soap/failure.h"
#include "soap_answers.h"
#include "util/datetime.h"

namespace brenmoor::soap {
namespace {

using testing::soapEnvelope;
using namespace std::literals;

constexpr std::string_view kSource = "http://127.0.0.1:1/services/Telvane";

Answer parse(const std::string& body, std::string_view charset = "") {
  return Answer::parse(body, charset, kSource);
}

// The text of the failure that refuses `body`.
std::string refusal(std::string_view body) {
  try {
    Answer::parse(body, "", kSource);
  } catch (const Failure& f) {
    return f.what();
  }
  return "(parsed)";
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

  // Nil is "true" or "1", on the element or on the multiRef it refers to.
  answer = parse(
      soapEnvelope("<r><a xsi:nil=\"true\"/><b xsi:nil=\"1\"/><c xsi:nil=\"false\">x</c>"
                   "<d href=\"#n\"/></r><multiRef id=\"n\" soapenc:root=\"0\" xsi:nil=\"true\"/>"));
  const Node r = answer.firstParameter();
  EXPECT_TRUE(r.child("a").nil() && r.child("b").nil() && r.child("d").nil());
  EXPECT_FALSE(r.child("c").nil());
}

TEST(Answer, RefusesFaultsAndWhatIsNotASoapEnvelopeByClearTexts) {
  EXPECT_EQ(refusal(testing::serverFault("boom", "x:Odd")), "{}Odd : boom");
  EXPECT_NE(refusal("<html><body>Service Unavailable</body></html>").find("<html>"),
            std::string::npos);
  EXPECT_NE(refusal(soapEnvelope("<r>").substr(0, 200)).find("at byte"), std::string::npos);
  EXPECT_NE(refusal("<e:Envelope xmlns:e=\"urn:other\"><e:Body/></e:Envelope>"), "(parsed)");
  EXPECT_NE(refusal(""), "(parsed)");
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

enum class Outcome { Parsed, Refused };

// What an answer keeps in memory: its distinct values and the child links they hold. Walking
// them also lets the sanitizers check everything the parser made.
struct Footprint {
  size_t values = 0;
  size_t childLinks = 0;
};

Footprint footprintOf(const Answer& answer) {
  Footprint footprint;
  std::unordered_set<uint32_t> seen;
  std::vector<Node> pending;
  for (size_t i = 0; i < answer.parameterCount(); ++i) pending.push_back(answer.parameter(i));
  while (!pending.empty()) {
    const Node node = pending.back();
    pending.pop_back();
    if (!seen.insert(node.valueId()).second) continue;
    ++footprint.values;
    footprint.childLinks += node.children().size();
    for (Node c : node.children()) pending.push_back(c);
  }
  return footprint;
}

// The only acceptable ways out of the parser are an answer, a Failure or an Error.
Outcome outcomeOf(std::string_view body, std::string_view charset = "") {
  try {
    footprintOf(Answer::parse(body, charset, kSource));
    return Outcome::Parsed;
  } catch (const Failure&) {
    return Outcome::Refused;
  } catch (const Error&) {
    return Outcome::Refused;
  } catch (const std::exception& e) {
    ADD_FAILURE() << "unexpected exception: " << e.what();
  } catch (...) {
    ADD_FAILURE() << "exception of an unknown type";
  }
  return Outcome::Refused;
}

std::string repeat(std::string_view text, int times) {
  std::string out;
  out.reserve(text.size() * times);
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

// A list answer as the services write it: an array of references to a multiRef with typed,
// nil, escaped and nested values.
std::string realisticAnswer() {
  return soapEnvelope(
      "<ns1:getProjectsResponse soapenv:encodingStyle=\"http://schemas.xmlsoap.org/soap/"
      "encoding/\" xmlns:ns1=\"urn:telvane-main\"><getProjectsReturn soapenc:arrayType=\"ns2:"
      "ProjectInfo[2]\" xsi:type=\"soapenc:Array\" xmlns:ns2=\"urn:telvane-main\">"
      "<item href=\"#id1\"/><item href=\"#id1\"/></getProjectsReturn></ns1:getProjectsResponse>"
      "<multiRef id=\"id1\" soapenc:root=\"0\" xsi:type=\"ns2:ProjectInfo\" "
      "xmlns:ns2=\"urn:telvane-main\"><projectID xsi:type=\"xsd:int\">1</projectID>"
      "<name xsi:type=\"xsd:string\">Apollo &amp; Co &lt;1&gt;</name>"
      "<created xsi:type=\"xsd:dateTime\">2024-03-01T10:00:00.000Z</created>"
      "<budget xsi:type=\"xsd:double\">1250.5</budget><notes xsi:nil=\"true\"/>"
      "<owner href=\"#id9\"/><tags soapenc:arrayType=\"xsd:string[2]\" xsi:type=\"soapenc:Array\">"
      "<item>a</item><item><![CDATA[<b>]]></item></tags></multiRef>"
      "<multiRef id=\"id9\" soapenc:root=\"0\"><login xsi:type=\"xsd:string\">ada</login>"
      "</multiRef>");
}

// Each multiRef refers to the next one twice: as a tree it doubles at every level.
std::string fanOutChain(int levels, const std::string& leaf = "leaf") {
  std::string chain;
  for (int i = 0; i < levels; ++i) {
    const std::string next = "#l" + std::to_string(i + 1);
    chain += "<multiRef id=\"l" + std::to_string(i) + "\" soapenc:root=\"0\"><p href=\"" + next +
             "\"/><q href=\"" + next + "\"/></multiRef>";
  }
  return chain + "<multiRef id=\"l" + std::to_string(levels) + "\" soapenc:root=\"0\">" + leaf +
         "</multiRef>";
}

// An application fault whose fault string refers to a fan-out chain ending in `leaf`.
Answer fanOutFault(const std::string& leaf) {
  return Answer::parse(
      soapEnvelope("<ns1:Fault xmlns:ns1=\"urn:telvane-main\"><faultcode>x</faultcode>"
                   "<faultstring href=\"#l0\"/><detail/></ns1:Fault>" +
                   fanOutChain(60, leaf)),
      "", kSource);
}

TEST(AnswerRobustness, RefusesEveryTruncationAndSurvivesRandomMutations) {
  const std::string whole = realisticAnswer();
  ASSERT_EQ(outcomeOf(whole), Outcome::Parsed);

  // A cut answer must never pass for a complete one.
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(outcomeOf(std::string_view(whole).substr(0, size)), Outcome::Refused) << size;
  }

  // Markup bytes are the interesting ones to insert; the rest are arbitrary.
  constexpr auto kMarkup = "<>/\"'=&#;:![]?- \0\xff"sv;
  std::mt19937 random(20240301);
  auto below = [&](size_t bound) { return static_cast<size_t>(random() % bound); };
  int parsed = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string body = whole;
    for (int edits = 1 + round % 3; edits > 0 && !body.empty(); --edits) {
      const size_t at = below(body.size());
      switch (below(3)) {
        case 0: body[at] = static_cast<char>(body[at] ^ (1 << below(8))); break;
        case 1: {
          const char inserted =
              below(2) ? kMarkup[below(kMarkup.size())] : static_cast<char>(below(256));
          body.insert(body.begin() + static_cast<std::ptrdiff_t>(at), inserted);
          break;
        }
        default: body.erase(at, 1 + below(8)); break;
      }
    }
    if (outcomeOf(body) == Outcome::Parsed) ++parsed;
  }
  // Most single edits land in text or values, so many mutants still parse; both paths ran.
  EXPECT_GT(parsed, 0);
  EXPECT_LT(parsed, 3000);
}

TEST(AnswerRobustness, StaysBoundedOnDeepHugeAndEntityLadenDocuments) {
  constexpr int kLevels = 100'000;
  const std::string open = repeat("<d>", kLevels);
  const std::string close = repeat("</d>", kLevels);
  EXPECT_NE(refusal(soapEnvelope(open + close)).find("deeper"), std::string::npos);
  EXPECT_EQ(outcomeOf(soapEnvelope(open)), Outcome::Refused);
  // Deep below a multiRef, reached only through a reference.
  EXPECT_NE(refusal(soapEnvelope("<r href=\"#deep\"/><multiRef id=\"deep\" soapenc:root=\"0\">" +
                                 open + close + "</multiRef>"))
                .find("deeper"),
            std::string::npos);

  // A SOAP message has no document type, so no entities to expand or to fetch.
  std::string entities = "<!DOCTYPE soapenv:Envelope [<!ENTITY lol0 \"lol\">";
  for (int i = 1; i <= 9; ++i) {
    entities += "<!ENTITY lol" + std::to_string(i) + " \"" +
                repeat("&lol" + std::to_string(i - 1) + ";", 10) + "\">";
  }
  entities += "<!ENTITY outside SYSTEM \"file:///etc/passwd\">]>";
  std::string laughs = soapEnvelope("<r><a>&lol9;</a><b>&outside;</b></r>");
  laughs.insert(laughs.find("?>") + 2, entities);
  EXPECT_NE(refusal(laughs).find("document type"), std::string::npos);

  const std::string huge(20u << 20, 'x');
  const Answer big = Answer::parse(soapEnvelope("<r><v>" + huge + "</v></r>"), "", kSource);
  EXPECT_EQ(big.returnNode().text().size(), huge.size());
}

TEST(AnswerRobustness, SharesReferencedValuesAndRefusesBrokenReferences) {
  // 2^60 paths through 61 multiRefs: shared, the tree keeps one value per multiRef.
  const Answer fanOut =
      Answer::parse(soapEnvelope("<r><x href=\"#l0\"/></r>" + fanOutChain(60)), "", kSource);
  EXPECT_LT(footprintOf(fanOut).values, 200u);
  // A thousand references to a multiRef of a thousand children link those children once.
  constexpr size_t kCount = 1000;
  const Answer wide = Answer::parse(
      soapEnvelope("<r>" + repeat("<x href=\"#m\"/>", kCount) +
                   "</r><m id=\"m\" soapenc:root=\"0\">" + repeat("<c/>", kCount) + "</m>"),
      "", kSource);
  EXPECT_EQ(footprintOf(wide).childLinks, 2 * kCount);

  const std::string cycles[] = {
      "<r><x href=\"#a\"/></r><multiRef id=\"a\" soapenc:root=\"0\"><y href=\"#a\"/></multiRef>",
      "<r id=\"r\"><x href=\"#r\"/></r>",
      "<r><x href=\"#a\"/></r><multiRef id=\"a\" soapenc:root=\"0\"><y href=\"#b\"/></multiRef>"
      "<multiRef id=\"b\" soapenc:root=\"0\"><z href=\"#c\"/></multiRef>"
      "<multiRef id=\"c\" soapenc:root=\"0\"><w href=\"#a\"/></multiRef>",
  };
  for (const auto& body : cycles) {
    EXPECT_NE(refusal(soapEnvelope(body)).find("cycle"), std::string::npos) << body;
  }

  // An element referring to itself has no children to follow: it is simply its own value.
  EXPECT_EQ(outcomeOf(soapEnvelope("<r><x id=\"s\" href=\"#s\">v</x></r>")), Outcome::Parsed);
  // An empty href is no reference at all.
  EXPECT_EQ(
      Answer::parse(soapEnvelope("<r><x href=\"\">v</x></r>"), "", kSource).returnNode().text(),
      "v");
  EXPECT_NE(refusal(soapEnvelope("<r><x href=\"#\"/></r>")).find("missing"), std::string::npos);
  EXPECT_EQ(outcomeOf(soapEnvelope("<r><x href=\"#\"/></r><m id=\"\" soapenc:root=\"0\">v</m>")),
            Outcome::Parsed);
  for (const char* external : {"http://127.0.0.1:1/x#a", "file:///etc/passwd", "a", " #a"}) {
    EXPECT_NE(refusal(soapEnvelope("<r><x href=\"" + std::string(external) + "\"/></r>"))
                  .find("external"),
              std::string::npos)
        << external;
  }
  // Fed without a size, so the element array is full when the refused empty element ends.
  AnswerParser streamed("", std::string(kSource), {});
  EXPECT_THROW(streamed.feed(soapEnvelope("<r><a/><x href=\"a\"/></r>")), Failure);
  EXPECT_NE(refusal(soapEnvelope("<r><x href=\"#gone\"/></r>")).find("#gone"), std::string::npos);
  EXPECT_EQ(Answer::parse(soapEnvelope("<r><x href=\"#m\"/></r><m id=\"m\" soapenc:root=\"0\">1</m>"
                                       "<m id=\"m\" soapenc:root=\"0\">2</m>"),
                          "", kSource)
                .returnNode()
                .text(),
            "1");
}

// UTF-8 below U+10000 to UTF-16 in either byte order; the input is known to be valid.
std::string utf16(std::string_view utf8, bool bigEndian) {
  std::string out;
  for (size_t i = 0; i < utf8.size();) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    const int length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : 3;
    uint32_t code = length == 1 ? lead : lead & (0x3f >> (length - 1));
    for (int k = 1; k < length; ++k) code = code << 6 | (utf8[i + k] & 0x3f);
    i += length;
    out += static_cast<char>(bigEndian ? code >> 8 : code & 0xff);
    out += static_cast<char>(bigEndian ? code & 0xff : code >> 8);
  }
  return out;
}

TEST(AnswerRobustness, DecodesUtf16AndSurvivesNulAndInvalidUtf8) {
  const std::string text = "caf\xc3\xa9 \xe2\x82\xac";  // é, €
  const std::string answer = soapEnvelope("<r><v>" + text + "</v></r>");
  for (bool bigEndian : {false, true}) {
    const std::string bom = bigEndian ? "\xfe\xff" : "\xff\xfe";
    const std::string encoded = utf16(answer, bigEndian);
    const std::string named = bigEndian ? "UTF-16BE" : "UTF-16LE";
    EXPECT_EQ(Answer::parse(bom + encoded, "", kSource).returnNode().text(), text) << named;
    EXPECT_EQ(Answer::parse(encoded, named, kSource).returnNode().text(), text) << named;
    EXPECT_EQ(outcomeOf(encoded.substr(0, encoded.size() - 1)), Outcome::Refused);
  }

  // Bytes that are not UTF-8 make the text unreadable: refused, by a clear text.
  for (const char* stray :
       {"\x80", "\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xfe\xff"}) {
    const std::string bytes = stray;
    EXPECT_NE(refusal(soapEnvelope("<r><v>" + bytes + "</v></r>")).find("not well-formed"),
              std::string::npos);
    outcomeOf(soapEnvelope("<r><v" + bytes + ">x</v" + bytes + "></r>"));
    outcomeOf(soapEnvelope("<r><v a=\"" + bytes + "\" href=\"#" + bytes + "\"/></r>"));
    outcomeOf(bytes + answer);
  }
  EXPECT_EQ(outcomeOf(soapEnvelope("<r><v>\xef\xbb\xbf</v></r>")), Outcome::Parsed);

  // The parser stops at a NUL, so anywhere inside the envelope it leaves the answer cut short.
  const std::string withNul = soapEnvelope("<r><v>a</v></r>");
  for (size_t at = 0; at < withNul.size(); ++at) {
    std::string body = withNul;
    body.insert(at, 1, '\0');
    EXPECT_EQ(outcomeOf(body), Outcome::Refused) << at;
  }
}

TEST(AnswerRobustness, CapsTheAlertOfAFaultThatSpellsOutExponentially) {
  // A long leaf reaches the text cap in few steps; an empty one never does, so only a bound on
  // the walk itself stops it.
  for (const std::string& leaf : {std::string(1 << 16, 'x'), std::string()}) {
    const Answer answer = fanOutFault(leaf);
    ASSERT_TRUE(answer.isFault());
    EXPECT_THROW(service::genericFaultAlert(answer.firstParameter()), Failure) << leaf.size();
  }
}

}  // namespace
}  // namespace brenmoor::soap
