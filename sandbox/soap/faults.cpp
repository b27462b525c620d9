#include "soap/faults.h"

#include "soap/envelope.h"
#include "soap/namespaces.h"
#include "soap/xml_escape.h"

namespace sandbox {

std::string server_fault_envelope(std::string_view text) {
  std::string fault =
      "<soapenv:Fault><faultcode>soapenv:Server.userException</faultcode>"
      "<faultstring>java.lang.Exception: ";
  append_escaped(fault, text);
  fault += "</faultstring><detail/></soapenv:Fault>";
  return wrap_in_envelope(fault);
}

std::string server_fault_envelope(const ServerException& error) {
  const auto* envelope_fault = dynamic_cast<const EnvelopeFault*>(&error);
  if (!envelope_fault) return server_fault_envelope(std::string_view(error.what()));
  std::string fault = "<soapenv:Fault><faultcode>soapenv:";
  append_escaped(fault, envelope_fault->code());
  fault += "</faultcode><faultstring>";
  append_escaped(fault, envelope_fault->what());
  fault += "</faultstring></soapenv:Fault>";
  return wrap_in_envelope(fault);
}

std::string application_fault_envelope(const ApplicationFault& fault, std::string_view service_ns) {
  std::string entry = "<ns1:Fault xmlns:ns1=\"";
  append_escaped(entry, service_ns);
  entry += "\"><faultcode xmlns:tv=\"";
  entry += kFaultCodeNs;
  entry += "\">tv:";
  append_escaped(entry, fault.code());
  entry += "</faultcode><faultstring>";
  append_escaped(entry, fault.what());
  entry += "</faultstring>";
  if (fault.detail_id()) {
    entry += "<detail><id>" + std::to_string(*fault.detail_id()) + "</id></detail>";
  } else {
    entry += "<detail/>";
  }
  entry += "</ns1:Fault>";
  return wrap_in_envelope(entry);
}

}  // namespace sandbox
