#pragma once
// Answer texts in the style the services write, for scripting wire tests.

#include <string>

namespace brenmoor::testing {

// An answer envelope whose Body holds `entries` as they stand.
inline std::string soapEnvelope(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
         "<soapenv:Envelope xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" "
         "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xmlns:soapenc=\"http://schemas.xmlsoap.org/soap/encoding/\"><soapenv:Body>" +
         entries + "</soapenv:Body></soapenv:Envelope>";
}

// <opResponse><opReturn xsi:type="xsd:TYPE">value</opReturn></opResponse> in namespace `ns`.
inline std::string scalarAnswer(const std::string& op, const std::string& value,
                                const std::string& type = "string",
                                const std::string& ns = "urn:telvane-main") {
  return soapEnvelope("<ns1:" + op + "Response xmlns:ns1=\"" + ns + "\"><" + op +
                      "Return xsi:type=\"xsd:" + type + "\">" + value + "</" + op +
                      "Return></ns1:" + op + "Response>");
}

// A server exception: HTTP 500 body with a soapenv:Fault.
inline std::string serverFault(const std::string& faultString,
                               const std::string& code = "soapenv:Server.userException") {
  return soapEnvelope("<soapenv:Fault><faultcode>" + code + "</faultcode><faultstring>" +
                      faultString + "</faultstring><detail/></soapenv:Fault>");
}

// An application fault entry in the service namespace, with <detail><id>detailId</id></detail>.
inline std::string applicationFault(const std::string& code, const std::string& text,
                                    const std::string& detailId) {
  return soapEnvelope(
      "<ns1:Fault xmlns:ns1=\"urn:telvane-main\"><faultcode xmlns:tv=\"urn:telvane-faults\">" +
      code + "</faultcode><faultstring>" + text + "</faultstring><detail><id>" + detailId +
      "</id></detail></ns1:Fault>");
}

// The same fault as the first child of the response wrapper, as some servers write it.
inline std::string wrappedFault(const std::string& op, const std::string& code,
                                const std::string& text, const std::string& detailId) {
  return soapEnvelope("<ns1:" + op +
                      "Response xmlns:ns1=\"urn:telvane-main\"><Fault>"
                      "<faultcode xmlns:tv=\"urn:telvane-faults\">" +
                      code + "</faultcode><faultstring>" + text + "</faultstring><detail><id>" +
                      detailId + "</id></detail></Fault></ns1:" + op + "Response>");
}

}  // namespace brenmoor::testing
