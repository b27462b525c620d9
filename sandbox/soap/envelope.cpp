#include "soap/envelope.h"

namespace sandbox {

std::string wrap_in_envelope(std::string_view body_entries) {
  static constexpr std::string_view kHead =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<soapenv:Envelope xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" "
      "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><soapenv:Body>";
  static constexpr std::string_view kTail = "</soapenv:Body></soapenv:Envelope>";
  std::string envelope;
  envelope.reserve(kHead.size() + body_entries.size() + kTail.size());
  envelope += kHead;
  envelope += body_entries;
  envelope += kTail;
  return envelope;
}

}  // namespace sandbox
