#include "wsdl/service_wsdl.h"

#include <algorithm>
#include <set>

#include "services/record_types.h"
#include "soap/namespaces.h"
#include "soap/xml_escape.h"

namespace sandbox {
namespace {

constexpr std::string_view kSimpleTypes[] = {"string",  "int",    "short",
                                             "boolean", "double", "dateTime"};

bool is_simple(std::string_view type) {
  return std::find(std::begin(kSimpleTypes), std::end(kSimpleTypes), type) !=
         std::end(kSimpleTypes);
}

std::string_view trim(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

const RecordType* find_record_type(std::string_view name) {
  for (const RecordType& type : record_types()) {
    if (type.name == name) return &type;
  }
  return nullptr;
}

// The type's item type when it is an array ("ProjectInfo[]"), nothing otherwise.
std::string_view item_type(std::string_view type) {
  return type.ends_with("[]") ? type.substr(0, type.size() - 2) : std::string_view{};
}

// Axis's names for arrays: ArrayOf_xsd_string for simple items, ArrayOfProjectInfo for records.
std::string array_type_name(std::string_view item) {
  if (item == "string") return std::string(kStringArrayType);
  return is_simple(item) ? "ArrayOf_xsd_" + std::string(item) : "ArrayOf" + std::string(item);
}

std::string qualified(std::string_view type) {
  if (is_simple(type)) return "xsd:" + std::string(type);
  if (const auto item = item_type(type); !item.empty()) return "impl:" + array_type_name(item);
  return "impl:" + std::string(type);
}

// The record types and array types that `type` needs, with those its records' fields need.
void collect_types(std::string_view type, std::set<std::string_view>& records,
                   std::set<std::string_view>& array_items) {
  if (const auto item = item_type(type); !item.empty()) {
    array_items.insert(item);
    return collect_types(item, records, array_items);
  }
  if (is_simple(type) || !records.insert(type).second) return;
  if (const RecordType* record = find_record_type(type)) {
    for (const TypedName& field : typed_names(record->fields)) {
      collect_types(field.type, records, array_items);
    }
  }
}

void append_attribute(std::string& out, std::string_view name, std::string_view value) {
  out += ' ';
  out += name;
  out += "=\"";
  append_escaped(out, value);
  out += '"';
}

std::string schemas(const Service& service, std::string_view location) {
  std::set<std::string_view> records;
  std::set<std::string_view> array_items;
  for (const Operation& operation : service.operations) {
    const OperationShape shape = operation_shape(operation);
    for (const TypedName& part : shape.parts) collect_types(part.type, records, array_items);
    if (!shape.answer.empty()) collect_types(shape.answer, records, array_items);
  }

  // The service's location serves soapenc's schema too: toolkits that resolve every import
  // (zeep) find it there instead of on the network.
  std::string out = "<xsd:schema";
  append_attribute(out, "targetNamespace", service.ns);
  out += "><xsd:import namespace=\"" + std::string(kEncodingNs) + "\"";
  append_attribute(out, "schemaLocation", std::string(location) + "?xsd=soapenc");
  out += "/>";
  // The items' element is named as well as their type: toolkits that model the restriction
  // (zeep) then read and write the items as values rather than as untyped XML.
  for (const std::string_view item : array_items) {
    out += "<xsd:complexType name=\"" + array_type_name(item) +
           "\"><xsd:complexContent><xsd:restriction base=\"soapenc:Array\"><xsd:sequence>"
           "<xsd:element name=\"item\" type=\"" +
           qualified(item) +
           "\" minOccurs=\"0\" maxOccurs=\"unbounded\" nillable=\"true\"/></xsd:sequence>"
           "<xsd:attribute ref=\"soapenc:arrayType\" wsdl:arrayType=\"" +
           qualified(item) + "[]\"/></xsd:restriction></xsd:complexContent></xsd:complexType>";
  }
  for (const std::string_view name : records) {
    const RecordType* record = find_record_type(name);
    if (!record) continue;
    // Records answer their fields in more than one order, and some only when they apply.
    out += "<xsd:complexType name=\"" + std::string(name) + "\"><xsd:all>";
    for (const TypedName& field : typed_names(record->fields)) {
      out += "<xsd:element";
      append_attribute(out, "name", field.name);
      out += " type=\"" + qualified(field.type) + "\" minOccurs=\"0\" nillable=\"true\"/>";
    }
    out += "</xsd:all></xsd:complexType>";
  }
  out += "</xsd:schema>";
  return out;
}

}  // namespace

std::string encoding_schema() {
  // Reduced to what the arrays refer to; it names none of its own components by reference,
  // which zeep would resolve by fetching the namespace from the network.
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xsd:schema xmlns:xsd=\"" +
         std::string(kSchemaNs) + "\" targetNamespace=\"" + std::string(kEncodingNs) +
         "\"><xsd:attribute name=\"arrayType\" type=\"xsd:string\"/>"
         "<xsd:complexType name=\"Array\"><xsd:sequence><xsd:any minOccurs=\"0\" "
         "maxOccurs=\"unbounded\" processContents=\"lax\"/></xsd:sequence>"
         "<xsd:anyAttribute processContents=\"lax\"/></xsd:complexType></xsd:schema>";
}

std::vector<TypedName> typed_names(std::string_view text) {
  std::vector<TypedName> names;
  while (!(text = trim(text)).empty()) {
    const auto end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    const auto colon = word.find(':');
    if (colon == std::string_view::npos) {
      names.push_back({word, "string"});
    } else {
      names.push_back({word.substr(0, colon), word.substr(colon + 1)});
    }
  }
  return names;
}

OperationShape operation_shape(const Operation& operation) {
  OperationShape shape;
  if (operation.access == Access::keyed) shape.parts.push_back({"key", "string"});
  const std::string_view signature = operation.signature;
  const auto arrow = signature.find("->");
  const auto parts = typed_names(signature.substr(0, arrow));
  shape.parts.insert(shape.parts.end(), parts.begin(), parts.end());
  if (arrow != std::string_view::npos) shape.answer = trim(signature.substr(arrow + 2));
  return shape;
}

std::string service_wsdl(const Service& service, std::string_view location) {
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<wsdl:definitions";
  append_attribute(out, "targetNamespace", service.ns);
  append_attribute(out, "xmlns:impl", service.ns);
  out +=
      " xmlns:wsdl=\"http://schemas.xmlsoap.org/wsdl/\" "
      "xmlns:wsdlsoap=\"http://schemas.xmlsoap.org/wsdl/soap/\" xmlns:soapenc=\"" +
      std::string(kEncodingNs) + "\" xmlns:xsd=\"" + std::string(kSchemaNs) + "\">";
  out += "<wsdl:types>" + schemas(service, location) + "</wsdl:types>";

  std::string port_type = "<wsdl:portType name=\"" + std::string(service.name) + "\">";
  std::string binding = "<wsdl:binding name=\"" + std::string(service.name) +
                        "SoapBinding\" type=\"impl:" + std::string(service.name) +
                        "\"><wsdlsoap:binding style=\"rpc\" "
                        "transport=\"http://schemas.xmlsoap.org/soap/http\"/>";
  std::string body =
      "<wsdlsoap:body use=\"encoded\" encodingStyle=\"" + std::string(kEncodingNs) + "\"";
  append_attribute(body, "namespace", service.ns);
  body += "/>";
  for (const Operation& operation : service.operations) {
    const OperationShape shape = operation_shape(operation);
    const std::string name(operation.name);
    std::string order;
    out += "<wsdl:message name=\"" + name + "Request\">";
    for (const TypedName& part : shape.parts) {
      out += "<wsdl:part";
      append_attribute(out, "name", part.name);
      out += " type=\"" + qualified(part.type) + "\"/>";
      if (!order.empty()) order += ' ';
      order += part.name;
    }
    out += "</wsdl:message><wsdl:message name=\"" + name + "Response\">";
    if (!shape.answer.empty()) {
      out += "<wsdl:part name=\"" + name + "Return\" type=\"" + qualified(shape.answer) + "\"/>";
    }
    out += "</wsdl:message>";

    port_type += "<wsdl:operation name=\"" + name + "\"";
    if (!order.empty()) append_attribute(port_type, "parameterOrder", order);
    port_type += "><wsdl:input name=\"" + name + "Request\" message=\"impl:" + name +
                 "Request\"/><wsdl:output name=\"" + name + "Response\" message=\"impl:" + name +
                 "Response\"/></wsdl:operation>";
    binding += "<wsdl:operation name=\"" + name +
               "\"><wsdlsoap:operation soapAction=\"\"/><wsdl:input name=\"" + name + "Request\">" +
               body + "</wsdl:input><wsdl:output name=\"" + name + "Response\">" + body +
               "</wsdl:output></wsdl:operation>";
  }
  out += port_type + "</wsdl:portType>" + binding + "</wsdl:binding>";
  out += "<wsdl:service name=\"" + std::string(service.name) + "Service\"><wsdl:port name=\"" +
         std::string(service.name) + "\" binding=\"impl:" + std::string(service.name) +
         "SoapBinding\"><wsdlsoap:address";
  append_attribute(out, "location", location);
  out += "/></wsdl:port></wsdl:service></wsdl:definitions>";
  return out;
}

}  // namespace sandbox
