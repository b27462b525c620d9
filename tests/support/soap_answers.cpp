#include "soap_answers.h"

namespace brenmoor::testing {

std::string soapEnvelope(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
         "<soapenv:Envelope xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" "
         "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xmlns:soapenc=\"http://schemas.xmlsoap.org/soap/encoding/\"><soapenv:Body>" +
         entries + "</soapenv:Body></soapenv:Envelope>";
}

std::string scalarAnswer(const std::string& op, const std::string& value, const std::string& type,
                         const std::string& ns) {
  return soapEnvelope("<ns1:" + op + "Response xmlns:ns1=\"" + ns + "\"><" + op +
                      "Return xsi:type=\"xsd:" + type + "\">" + value + "</" + op +
                      "Return></ns1:" + op + "Response>");
}

std::string serverFault(const std::string& faultString, const std::string& code) {
  return soapEnvelope("<soapenv:Fault><faultcode>" + code + "</faultcode><faultstring>" +
                      faultString + "</faultstring><detail/></soapenv:Fault>");
}

std::string applicationFault(const std::string& code, const std::string& text,
                             const std::string& detailId) {
  return soapEnvelope(
      "<ns1:Fault xmlns:ns1=\"urn:telvane-main\"><faultcode xmlns:tv=\"urn:telvane-faults\">" +
      code + "</faultcode><faultstring>" + text + "</faultstring><detail><id>" + detailId +
      "</id></detail></ns1:Fault>");
}

}  // namespace brenmoor::testing
