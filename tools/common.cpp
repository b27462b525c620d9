#include <iostream>

#include "commands.h"

namespace brenmoor::cli {

int failed(const ZylService& service, const std::string& what) {
  std::cerr << "brenmoor: " << what << " failed (error " << service.lastErrID()
            << "): " << service.lastErrMsg() << '\n';
  return 1;
}

void prepare(ZylService& service, const Context& context) {
  service.ShowAlerts(false);
  service.SetServiceBaseUrl(context.url);
}

}  // namespace brenmoor::cli
