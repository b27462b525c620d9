#include <vector>

#include "services/accounts_operations.h"
#include "services/services.h"

namespace sandbox {

const Service& accounts_service() {
  static const std::vector<Operation> operations = [] {
    std::vector<Operation> joined;
    for (const std::span<const Operation> area : {user_operations(), quota_operations()}) {
      joined.insert(joined.end(), area.begin(), area.end());
    }
    return joined;
  }();
  static const Service service{"Accounts", "/services/Accounts", "urn:telvane-accounts",
                               operations};
  return service;
}

}  // namespace sandbox
