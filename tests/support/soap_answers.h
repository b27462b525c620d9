#pragma once
// Answer texts in the style the services write, for scripting wire tests.

#include <string>

namespace brenmoor::testing {

// An answer envelope whose Body holds `entries` as they stand.
std::string soapEnvelope(const std::string& entries);

// <opResponse><opReturn xsi:type="xsd:TYPE">value</opReturn></opResponse> in namespace `ns`.
std::string scalarAnswer(const std::string& op, const std::string& value,
                         const std::string& type = "string",
                         const std::string& ns = "urn:telvane-main");

// A server exception: HTTP 500 body with a soapenv:Fault.
std::string serverFault(const std::string& faultString,
                        const std::string& code = "soapenv:Server.userException");

// An application fault entry in the service namespace, with <detail><id>detailId</id></detail>.
std::string applicationFault(const std::string& code, const std::string& text,
                             const std::string& detailId);

}  // namespace brenmoor::testing
