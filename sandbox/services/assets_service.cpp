#include "services/services.h"

namespace sandbox {

// No operations yet, so every call is answered "No such operation"; add them in a
// table as login_service.cpp does.
const Service& assets_service() {
  static const Service service{"Assets", "/services/Assets", "urn:telvane-assets", {}};
  return service;
}

}  // namespace sandbox
