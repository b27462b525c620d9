#include "soap/request.h"

#include <string>

#include "soap/clip.h"
#include "soap/faults.h"
#include "soap/namespaces.h"
#include "soap/xml_names.h"

namespace sandbox {
namespace {

bool is_envelope_element(pugi::xml_node node, std::string_view local) {
  const auto name = element_name(node);
  return name && name->ns == kEnvelopeNs && name->local == local;
}

pugi::xml_node first_element_child(pugi::xml_node node) {
  for (pugi::xml_node child : node.children()) {
    if (child.type() == pugi::node_element) return child;
  }
  return {};
}

}  // namespace

SoapRequest SoapRequest::parse(std::string_view body, std::string_view service_ns,
                               std::string_view service_name) {
  auto document = std::make_unique<pugi::xml_document>();
  const pugi::xml_parse_result parsed =
      document->load_buffer(body.data(), body.size(), pugi::parse_default, pugi::encoding_auto);
  if (!parsed) {
    throw ServerException("Malformed request: not XML (" + std::string(parsed.description()) +
                          " at offset " + std::to_string(parsed.offset) + ")");
  }

  const pugi::xml_node envelope = document->document_element();
  if (!is_envelope_element(envelope, "Envelope")) {
    throw ServerException("Malformed request: the document is not a SOAP 1.1 Envelope");
  }
  pugi::xml_node body_element;
  for (pugi::xml_node child : envelope.children()) {
    if (child.type() == pugi::node_element && is_envelope_element(child, "Body")) {
      body_element = child;
      break;
    }
  }
  if (!body_element) throw ServerException("Malformed request: the Envelope has no Body");

  const pugi::xml_node operation = first_element_child(body_element);
  if (!operation) throw ServerException("Malformed request: the Body holds no operation");
  const auto name = element_name(operation);
  if (!name) {
    throw ServerException("Malformed request: undeclared namespace prefix in '" +
                          clip(operation.name()) + "'");
  }
  if (name->ns != service_ns) {
    throw ServerException("Operation '" + clip(name->local) + "' is in namespace '" +
                          clip(name->ns) + "', but service " + std::string(service_name) +
                          " expects '" + std::string(service_ns) + "'");
  }
  return SoapRequest(std::move(document), operation);
}

std::string_view SoapRequest::operation_name() const {
  return local_name(operation_.name());
}

}  // namespace sandbox
