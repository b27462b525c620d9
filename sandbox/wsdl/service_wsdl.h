#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dispatch/service.h"

namespace sandbox {

// One part of an operation's signature or one field of a record type: "name" or "name:type".
struct TypedName {
  std::string_view name;
  std::string_view type;  // "string" when the text names none
};

// The parts of `text` ("challenge response username", or a record's fields).
std::vector<TypedName> typed_names(std::string_view text);

// An operation's parts (the key first, when it takes one) and its answer's type ("" if none).
struct OperationShape {
  std::vector<TypedName> parts;
  std::string_view answer;
};
OperationShape operation_shape(const Operation& operation);

// The WSDL 1.1 document of `service`: rpc/encoded, made from its operation table and the
// record types its answers use; `location` is the address it gives for the service. It
// imports soapenc's schema from `location`?xsd=soapenc, so that a toolkit reading it fetches
// nothing from anywhere else.
std::string service_wsdl(const Service& service, std::string_view location);

// The part of soapenc's schema that the WSDLs use, served at SERVICE?xsd=soapenc.
std::string encoding_schema();

}  // namespace sandbox
