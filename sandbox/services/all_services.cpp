#include "services/services.h"

namespace sandbox {

std::vector<const Service*> all_services() {
  return {&login_service(), &telvane_service(), &assets_service(), &accounts_service(),
          &reports_service()};
}

}  // namespace sandbox
