#include <vector>

#include "services/assets_operations.h"
#include "services/services.h"

namespace sandbox {
namespace {

std::vector<Operation> all_asset_operations() {
  std::vector<Operation> operations;
  for (const std::span<const Operation> area : {asset_operations(), folder_operations()}) {
    operations.insert(operations.end(), area.begin(), area.end());
  }
  return operations;
}

}  // namespace

// Every operation finds its session by the cookie that userLogin set.
const Service& assets_service() {
  static const std::vector<Operation> operations = all_asset_operations();
  static const Service service{"Assets", "/services/Assets", "urn:telvane-assets", operations};
  return service;
}

}  // namespace sandbox
