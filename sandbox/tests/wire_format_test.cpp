#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "soap/arguments.h"
#include "soap/faults.h"
#include "soap/timestamp.h"

namespace sandbox {
namespace {

// The arguments of the operation element in `body`, which declares the usual prefixes.
class ParsedArguments {
 public:
  explicit ParsedArguments(const std::string& arguments) {
    const std::string xml =
        "<a:op xmlns:a=\"urn:x\" xmlns:XS=\"http://www.w3.org/2001/XMLSchema\" "
        "xmlns:XI=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xmlns:Enc=\"http://schemas.xmlsoap.org/soap/encoding/\">" +
        arguments + "</a:op>";
    EXPECT_TRUE(document_.load_string(xml.c_str()));
  }
  Arguments args() const { return Arguments(document_.document_element(), "op"); }

 private:
  pugi::xml_document document_;
};

std::string failure_of(const auto& read) {
  try {
    read();
  } catch (const ServerException& error) {
    return error.what();
  }
  return "no failure";
}

TEST(WireFormat, ReadsTypedArgumentsAndRefusesBadOnes) {
  const ParsedArguments parsed(
      "<s XI:type=\"XS:short\">-32768</s><big XI:type=\"XS:short\">32768</big>"
      "<b XI:type=\"XS:boolean\">1</b><d XI:type=\"XS:double\">-2.5E3</d>"
      "<t XI:type=\"XS:dateTime\">2024-02-29T23:59:58.5Z</t><bad XI:type=\"XS:dateTime\">"
      "2023-02-29T00:00:00Z</bad><nested><x/></nested><nil XI:nil=\"true\"/>");
  const Arguments args = parsed.args();
  EXPECT_EQ(args.int16("s"), -32768);
  EXPECT_NE(failure_of([&] { args.int16("big"); }).find("out of range for xsd:short"),
            std::string::npos);
  EXPECT_EQ(args.int32("big"), 32768);
  EXPECT_TRUE(args.boolean("b"));
  EXPECT_DOUBLE_EQ(args.real("d"), -2500.0);
  EXPECT_EQ(format_date_time(args.date_time("t")), "2024-02-29T23:59:58.500Z");
  EXPECT_NE(failure_of([&] { args.date_time("bad"); }).find("not a valid xsd:dateTime"),
            std::string::npos);
  EXPECT_NE(failure_of([&] { args.string("nested"); }).find("must be a simple value"),
            std::string::npos);
  EXPECT_EQ(args.string("nil"), "");
  EXPECT_EQ(failure_of([&] { args.boolean("absent"); }),
            "Missing argument 'absent' of operation 'op'");
}

TEST(WireFormat, ReadsStringArraysAndChecksTheirDeclaredSize) {
  const ParsedArguments parsed(
      "<list XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[3]\"><i XI:type=\"XS:string\">a</i>"
      "<i XI:type=\"XS:string\">&lt;b&gt;</i><i XI:nil=\"true\"/></list>"
      "<short XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[5]\"><i>a</i></short>"
      "<ints XI:type=\"Enc:Array\" Enc:arrayType=\"XS:int[1]\"><i>1</i></ints>"
      "<empty XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[0]\"/>");
  const Arguments args = parsed.args();
  EXPECT_EQ(args.strings("list"), (std::vector<std::string>{"a", "<b>", ""}));
  EXPECT_EQ(failure_of([&] { args.strings("short"); }),
            "Argument 'short' of operation 'op' declares 5 items but holds 1");
  EXPECT_NE(failure_of([&] { args.strings("ints"); }).find("expected xsd:string[N]"),
            std::string::npos);
  EXPECT_TRUE(args.strings("empty").empty());
}

}  // namespace
}  // namespace sandbox
