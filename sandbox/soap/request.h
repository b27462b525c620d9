#pragma once

#include <memory>
#include <pugixml.hpp>
#include <string_view>
#include <utility>

namespace sandbox {

// A parsed SOAP 1.1 request: the operation element is the first entry of the Body.
class SoapRequest {
 public:
  // Throws ServerException when the body is not XML, not a SOAP envelope, or the
  // operation is not in `service_ns`; `service_name` is for the messages.
  static SoapRequest parse(std::string_view body, std::string_view service_ns,
                           std::string_view service_name);

  pugi::xml_node operation() const { return operation_; }
  std::string_view operation_name() const;

 private:
  SoapRequest(std::unique_ptr<pugi::xml_document> document, pugi::xml_node operation)
      : document_(std::move(document)), operation_(operation) {}

  std::unique_ptr<pugi::xml_document> document_;
  pugi::xml_node operation_;
};

}  // namespace sandbox
