#include "soap/value.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

#include "soap/xml_escape.h"

namespace sandbox {
namespace {

std::string double_text(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "INF" : "-INF";
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

struct TypedText {
  std::string_view type;
  std::string text;
};

TypedText typed_text(const Value& value) {
  struct Visitor {
    TypedText operator()(Nil) const { return {"", ""}; }
    TypedText operator()(const std::string& v) const { return {"xsd:string", v}; }
    TypedText operator()(std::int32_t v) const { return {"xsd:int", std::to_string(v)}; }
    TypedText operator()(std::int16_t v) const { return {"xsd:short", std::to_string(v)}; }
    TypedText operator()(bool v) const { return {"xsd:boolean", v ? "true" : "false"}; }
    TypedText operator()(double v) const { return {"xsd:double", double_text(v)}; }
    TypedText operator()(Timestamp v) const { return {"xsd:dateTime", format_date_time(v)}; }
    TypedText operator()(const Strings&) const { throw not_scalar(); }
    TypedText operator()(const Dates&) const { throw not_scalar(); }
    TypedText operator()(const Record&) const { throw not_scalar(); }
    TypedText operator()(const RecordArray&) const { throw not_scalar(); }
    static std::logic_error not_scalar() {
      return std::logic_error("arrays and records are written by the Reply");
    }
  };
  return std::visit(Visitor{}, value);
}

}  // namespace

void append_typed_element(std::string& out, std::string_view name, const Value& value) {
  out += '<';
  out += name;
  if (std::holds_alternative<Nil>(value)) {
    out += " xsi:nil=\"true\"/>";
    return;
  }
  const TypedText typed = typed_text(value);
  out += " xsi:type=\"";
  out += typed.type;
  out += "\">";
  append_escaped(out, typed.text);
  out += "</";
  out += name;
  out += '>';
}

}  // namespace sandbox
