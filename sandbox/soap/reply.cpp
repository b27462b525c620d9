#include "soap/reply.h"

#include "soap/envelope.h"
#include "soap/namespaces.h"
#include "soap/xml_escape.h"

namespace sandbox {
namespace {

// Writes the wrapper's return element and the multiRef entries that follow the wrapper.
// Records are numbered in the order they are referenced; a record's nested records come
// after every entry referenced before them, as Axis writes them.
class AnswerWriter {
 public:
  explicit AnswerWriter(std::string_view ns) : ns_(ns) {}

  // Writes `value` as the element `name` into `out`; records become references.
  // The wrapper does not declare the prefixes that arrays use, multiRef entries do.
  void write(std::string& out, std::string_view name, const Value& value, bool in_wrapper) {
    if (const auto* record = std::get_if<Record>(&value)) {
      out += '<';
      out += name;
      out += " href=\"" + reference(record->type, record->fields) + "\"/>";
    } else if (const auto* array = std::get_if<RecordArray>(&value)) {
      open_array(out, name, "ns2:" + array->type, array->items.size(), in_wrapper);
      for (const Fields& item : array->items) {
        out += "<item href=\"" + reference(array->type, item) + "\"/>";
      }
      close(out, name);
    } else if (const auto* strings = std::get_if<Strings>(&value)) {
      open_array(out, name, "xsd:string", strings->size(), in_wrapper);
      for (const std::string& item : *strings) append_typed_element(out, "item", item);
      close(out, name);
    } else if (const auto* dates = std::get_if<Dates>(&value)) {
      open_array(out, name, "xsd:dateTime", dates->size(), in_wrapper);
      for (const Timestamp item : *dates) append_typed_element(out, "item", item);
      close(out, name);
    } else {
      append_typed_element(out, name, value);
    }
  }

  // The multiRef entries of every record referenced so far, and of those they reference.
  std::string multi_refs() {
    std::string out;
    for (std::size_t index = 0; index < pending_.size(); ++index) {
      // Copied out: writing the fields may add to pending_ and move its elements.
      const PendingRecord record = pending_[index];
      out += "<multiRef id=\"id" + std::to_string(index) +
             "\" soapenc:root=\"0\" soapenv:encodingStyle=\"" + std::string(kEncodingNs) +
             "\" xsi:type=\"ns2:";
      append_escaped(out, record.type);
      out += "\" xmlns:soapenc=\"" + std::string(kEncodingNs) + "\" xmlns:ns2=\"";
      append_escaped(out, ns_);
      out += "\">";
      for (const Field& field : *record.fields) write(out, field.name, field.value, false);
      out += "</multiRef>";
    }
    return out;
  }

 private:
  // Points into the Reply, which outlives the writer.
  struct PendingRecord {
    std::string_view type;
    const Fields* fields;
  };

  std::string reference(std::string_view type, const Fields& fields) {
    pending_.push_back({type, &fields});
    return "#id" + std::to_string(pending_.size() - 1);
  }

  void open_array(std::string& out, std::string_view name, std::string_view item_type,
                  std::size_t count, bool declare_prefixes) {
    out += '<';
    out += name;
    out += " soapenc:arrayType=\"";
    append_escaped(out, item_type);
    out += '[' + std::to_string(count) + "]\" xsi:type=\"soapenc:Array\"";
    if (declare_prefixes) {
      if (item_type.starts_with("ns2:")) {
        out += " xmlns:ns2=\"";
        append_escaped(out, ns_);
        out += '"';
      }
      out += " xmlns:soapenc=\"";
      out += kEncodingNs;
      out += '"';
    }
    out += '>';
  }

  static void close(std::string& out, std::string_view name) {
    out += "</";
    out += name;
    out += '>';
  }

  std::string_view ns_;
  std::vector<PendingRecord> pending_;
};

}  // namespace

std::string Reply::render(std::string_view operation, std::string_view ns) const {
  AnswerWriter writer(ns);
  const std::string return_name = std::string(operation) + "Return";
  std::string body = "<ns1:";
  body += operation;
  body += "Response soapenv:encodingStyle=\"";
  body += kEncodingNs;
  body += "\" xmlns:ns1=\"";
  append_escaped(body, ns);
  body += "\">";
  if (result_) writer.write(body, return_name, *result_, true);
  body += "</ns1:";
  body += operation;
  body += "Response>";
  body += writer.multi_refs();
  return wrap_in_envelope(body);
}

}  // namespace sandbox
