// Setting a service up and signing it in, the explicit way or with Connect.

#include <iostream>
#include <memory>

#include "cli_host.h"
#include "commands.h"
#include "exit_codes.h"
#include "trace.h"

namespace brenmoor::cli {
namespace {

// Connect puts its own text in place of the server's for a wrong user name or password.
bool isWrongPasswordText(const std::string& text) {
  return text.starts_with("The User Name or Password you have entered") ||
         text == "The user id or password you have entered is invalid.";
}

bool selectAccount(ZylService& service, Context& context) {
  const Settings& s = context.settings;
  if (!s.account.empty() && !service.selectAccount(s.account)) {
    context.status = failed(service, "selecting account " + s.account);
    return false;
  }
  return true;
}

}  // namespace

int failed(const ZylService& service, const std::string& what) {
  // A fault leaves the pair alone: the service's own text has gone to stderr already.
  if (service.lastErrID() == 0 && service.lastErrMsg().empty()) {
    std::cerr << "brenmoor: " << what << " failed\n";
    return kCallFailed;
  }
  std::cerr << "brenmoor: " << what << " failed (error " << service.lastErrID()
            << "): " << service.lastErrMsg() << '\n';
  return exitCodeFor(service.lastErrID());
}

CallWatch::CallWatch(ZylService& service) : service_(service) {
  service.setLastErrID(0);
  service.setLastErrMsg("");
  const auto* host = dynamic_cast<const CliHost*>(&service.host());
  boxesBefore_ = host ? host->boxesShown() : 0;
}

bool CallWatch::failed() const {
  const auto* host = dynamic_cast<const CliHost*>(&service_.host());
  return service_.lastErrID() != 0 || !service_.lastErrMsg().empty() ||
         (host && host->boxesShown() > boxesBefore_);
}

int usageError(const std::string& message) {
  std::cerr << "brenmoor: " << message << '\n';
  return kUsage;
}

bool prepare(ZylService& service, Context& context) {
  if (context.settings.url.empty()) {
    context.status = usageError("no server: give --url, BRENMOOR_URL or a profile with url");
    return false;
  }
  service.ShowAlerts(false);
  service.setHost(std::make_shared<CliHost>(context.quiet));
  if (context.trace) service.setTraceHandler(makeTraceHandler());
  if (context.maxAnswerBytes) service.setMaxAnswerBytes(context.maxAnswerBytes);
  service.SetServiceBaseUrl(context.settings.url);
  return true;
}

bool connect(ZylService& service, Context& context) {
  if (!prepare(service, context)) return false;
  Settings& s = context.settings;
  const std::string missing = ensurePassword(s);
  if (!missing.empty()) {
    context.status = usageError(missing);
    return false;
  }
  auto host = std::make_shared<CliHost>(context.quiet);
  service.setHost(host);
  if (!service.Connect(s.url, s.user, s.password, context.sourceSystem, s.accountGuid,
                       context.useProxy, true)) {
    context.status = failed(service, "connect");
    if (isWrongPasswordText(host->lastText())) context.status = kSignInRefused;
    return false;
  }
  return selectAccount(service, context);
}

bool signIn(ZylService& service, Context& context) {
  if (context.connect) return connect(service, context);
  if (!prepare(service, context)) return false;
  Settings& s = context.settings;
  const std::string missing = ensurePassword(s);
  if (!missing.empty()) {
    context.status = usageError(missing);
    return false;
  }
  if (service.loginUnencryptedPassword(s.user, s.password).empty()) {
    context.status = failed(service, "sign-in");
    return false;
  }
  if (s.account.empty() && !s.accountGuid.empty() && !service.selectAccountByGuid(s.accountGuid)) {
    context.status = failed(service, "selecting account " + s.accountGuid);
    return false;
  }
  return selectAccount(service, context);
}

}  // namespace brenmoor::cli
