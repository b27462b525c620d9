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

// The actor a SOAP 1.1 header entry names when it is meant for whoever receives it first.
constexpr std::string_view kNextActor = "http://schemas.xmlsoap.org/soap/actor/next";

// Refuses the message when an entry addressed to this node must be understood: this server
// understands no header entries, as an Axis service without handlers.
void check_header(pugi::xml_node header) {
  for (pugi::xml_node entry : header.children()) {
    if (entry.type() != pugi::node_element) continue;
    const std::string_view must = find_attribute(entry, kEnvelopeNs, "mustUnderstand").value();
    if (must != "1" && must != "true") continue;
    const pugi::xml_attribute actor = find_attribute(entry, kEnvelopeNs, "actor");
    if (actor && actor.value() != kNextActor) continue;
    const auto name = element_name(entry);
    throw EnvelopeFault("MustUnderstand", "Did not understand \"MustUnderstand\" header(s): {" +
                                              clip(name ? name->ns : "") + "}" +
                                              clip(local_name(entry.name())));
  }
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
    // An Envelope in another namespace is another SOAP version (1.2 most likely); one in no
    // namespace is just malformed.
    const auto name = element_name(envelope);
    if (local_name(envelope.name()) == "Envelope" && name && !name->ns.empty()) {
      throw EnvelopeFault("VersionMismatch", "Version Mismatch: the envelope namespace '" +
                                                 clip(name->ns) + "' is not SOAP 1.1's '" +
                                                 std::string(kEnvelopeNs) + "'");
    }
    throw ServerException("Malformed request: the document is not a SOAP 1.1 Envelope");
  }
  pugi::xml_node body_element;
  for (pugi::xml_node child : envelope.children()) {
    if (child.type() != pugi::node_element) continue;
    if (is_envelope_element(child, "Header")) check_header(child);
    if (is_envelope_element(child, "Body")) {
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
