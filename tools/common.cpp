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
  if (context.maxAnswerBytes) service.setMaxAnswerBytes(context.maxAnswerBytes);
}

bool signIn(ZylService& service, Context& context) {
  prepare(service, context);
  if (context.user.empty()) {
    std::cerr << "brenmoor: this command needs --user and --password\n";
    context.status = 2;
    return false;
  }
  if (service.loginUnencryptedPassword(context.user, context.password).empty()) {
    context.status = failed(service, "sign-in");
    return false;
  }
  if (!context.account.empty() && !service.selectAccount(context.account)) {
    context.status = failed(service, "selecting account " + context.account);
    return false;
  }
  return true;
}

}  // namespace brenmoor::cli
