#include "services/services.h"

namespace sandbox {

// No operations yet, so every call is answered "No such operation"; add them in a
// table as login_service.cpp does.
const Service& accounts_service() {
  static const Service service{"Accounts", "/services/Accounts", "urn:telvane-accounts", {}};
  return service;
}

}  // namespace sandbox
