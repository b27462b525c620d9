#include "services/services.h"

namespace sandbox {

// No operations yet, so every call is answered "No such operation"; add them in a
// table as login_service.cpp does.
const Service& reports_service() {
  static const Service service{"Reports", "/services/Reports", "urn:telvane-reports", {}};
  return service;
}

}  // namespace sandbox
