#include "soap/reply.h"

#include "soap/envelope.h"
#include "soap/namespaces.h"
#include "soap/xml_escape.h"

namespace sandbox {
namespace {

// Writes the wrapper's return element and collects the multiRef entries that follow it.
class AnswerWriter {
 public:
  AnswerWriter(std::string_view operation, std::string_view ns)
      : return_name_(std::string(operation) + "Return"), ns_(ns) {}

  std::string& out() { return wrapper_; }
  const std::string& return_name() const { return return_name_; }

  void open_return() {
    wrapper_ += '<';
    wrapper_ += return_name_;
  }
  void close_return() {
    wrapper_ += "</";
    wrapper_ += return_name_;
    wrapper_ += '>';
  }

  // Adds a multiRef entry for the record and answers its reference ("#id0").
  std::string add_multi_ref(std::string_view type, const Fields& fields) {
    const std::string id = "id" + std::to_string(next_id_++);
    multi_refs_ += "<multiRef id=\"" + id + "\" soapenc:root=\"0\" soapenv:encodingStyle=\"" +
                   std::string(kEncodingNs) + "\" xsi:type=\"ns2:";
    append_escaped(multi_refs_, type);
    multi_refs_ += "\" xmlns:soapenc=\"" + std::string(kEncodingNs) + "\" xmlns:ns2=\"";
    append_escaped(multi_refs_, ns_);
    multi_refs_ += "\">";
    for (const Field& field : fields) append_typed_element(multi_refs_, field.name, field.value);
    multi_refs_ += "</multiRef>";
    return '#' + id;
  }

  std::string finish(std::string_view operation) const {
    std::string body = "<ns1:";
    body += operation;
    body += "Response soapenv:encodingStyle=\"";
    body += kEncodingNs;
    body += "\" xmlns:ns1=\"";
    append_escaped(body, ns_);
    body += "\">";
    body += wrapper_;
    body += "</ns1:";
    body += operation;
    body += "Response>";
    body += multi_refs_;
    return wrap_in_envelope(body);
  }

 private:
  std::string return_name_;
  std::string_view ns_;
  std::string wrapper_;
  std::string multi_refs_;
  int next_id_ = 0;
};

void open_array(AnswerWriter& writer, std::string_view item_type, std::size_t count,
                std::string_view extra_declarations) {
  writer.open_return();
  std::string& out = writer.out();
  out += " soapenc:arrayType=\"";
  append_escaped(out, item_type);
  out += '[' + std::to_string(count) + "]\" xsi:type=\"soapenc:Array\"";
  out += extra_declarations;
  out += " xmlns:soapenc=\"";
  out += kEncodingNs;
  out += "\">";
}

}  // namespace

std::string Reply::render(std::string_view operation, std::string_view ns) const {
  AnswerWriter writer(operation, ns);
  std::string& out = writer.out();

  if (const auto* value = std::get_if<Value>(&result_)) {
    append_typed_element(out, writer.return_name(), *value);
  } else if (const auto* record = std::get_if<Record>(&result_)) {
    const std::string ref = writer.add_multi_ref(record->type, record->fields);
    out += '<' + writer.return_name() + " href=\"" + ref + "\"/>";
  } else if (const auto* list = std::get_if<RecordList>(&result_)) {
    std::string ns_declaration = " xmlns:ns2=\"";
    append_escaped(ns_declaration, ns);
    ns_declaration += '"';
    open_array(writer, "ns2:" + list->type, list->items.size(), ns_declaration);
    for (const Fields& item : list->items) {
      out += "<item href=\"" + writer.add_multi_ref(list->type, item) + "\"/>";
    }
    writer.close_return();
  } else if (const auto* strings = std::get_if<std::vector<std::string>>(&result_)) {
    open_array(writer, "xsd:string", strings->size(), "");
    for (const std::string& item : *strings) append_typed_element(out, "item", item);
    writer.close_return();
  }
  return writer.finish(operation);
}

}  // namespace sandbox
