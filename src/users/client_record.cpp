#include "users/client_record.h"

#include "service/call.h"

namespace brenmoor::users {

void readClientDetails(const service::Fields& in, ClientDetails& d) {
  in("firstAccessed", d.firstAccessed);
  in("bandwidth", d.bandwidth);
  in("browserType", d.browserType);
  in("browserVersion", d.browserVersion);
  in("country", d.country);
  in("guid", d.guid);
  in("hasCookies", d.hasCookies);
  in("hasFlash", d.hasFlash);
  in("hasJava", d.hasJava);
  in("hasWM", d.hasWM);
  in("hasReal", d.hasReal);
  in("ipAddress", d.ipAddress);
  in("jsVersionMajor", d.jsVersionMajor);
  in("jsVersionMinor", d.jsVersionMinor);
  in("language", d.language);
  in("operatingSystem", d.operatingSystem);
  in("screenDepth", d.screenDepth);
  in("screenHeight", d.screenHeight);
  in("screenWidth", d.screenWidth);
}

void readClient(const service::Fields& in, Client& c) {
  in("email", c.email);
  in("firstName", c.firstName);
  in("lastName", c.lastName);
  in("guid", c.guid);
  in("password", c.Password);
  in("customXML", c.customXML);
  in("userHostName", c.userHostName);
  in("userIP", c.userIP);
  in("created", c.created);
  in("modified", c.modified);
  in("registered", c.registered);
  if (auto details = in.child("details"); details && !details->nil()) {
    c.details = service::record<ClientDetails, readClientDetails>(*details);
  }
}

}  // namespace brenmoor::users
