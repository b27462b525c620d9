#include "projects/duplicate_name.h"

namespace brenmoor::projects {

service::FaultAlert duplicateNameAlert(std::string name) {
  return [name = std::move(name)](const soap::Node& fault) {
    const soap::Node* detail = fault.child("detail");
    const soap::Node* id = detail ? detail->child("id") : nullptr;
    if (id && id->textContent() == "1") {
      return "A project named " + name +
             " already exists. Please select another name for the project";
    }
    return service::genericFaultAlert(fault);
  };
}

}  // namespace brenmoor::projects
