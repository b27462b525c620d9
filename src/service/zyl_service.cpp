#include "brenmoor/zyl_service.h"

#include "service/state.h"

namespace brenmoor {

ZylService::ZylService() : state_(std::make_unique<State>()) {}
ZylService::~ZylService() = default;

const std::string& ZylService::State::endpoint(soap::Service service) const {
  switch (service) {
    case soap::Service::Login: return loginUrl;
    case soap::Service::Main: return telvaneUrl;
    case soap::Service::Assets: return assetsUrl;
    case soap::Service::Accounts: return accountsUrl;
    case soap::Service::Reports: return reportsUrl;
  }
  return telvaneUrl;
}

void ZylService::setHost(std::shared_ptr<Host> host) {
  state_->host = host ? std::move(host) : std::make_shared<StderrHost>();
}
Host& ZylService::host() const {
  return *state_->host;
}

const std::string& ZylService::baseUrl() const {
  return state_->baseUrl;
}
const std::string& ZylService::lastErrMsg() const {
  return state_->lastErrMsg;
}
void ZylService::setLastErrMsg(std::string message) {
  state_->lastErrMsg = std::move(message);
}
int16_t ZylService::lastErrID() const {
  return state_->lastErrID;
}
void ZylService::setLastErrID(int16_t id) {
  state_->lastErrID = id;
}

const std::string& ZylService::loginUrl() const {
  return state_->loginUrl;
}
const std::string& ZylService::telvaneUrl() const {
  return state_->telvaneUrl;
}
const std::string& ZylService::assetsUrl() const {
  return state_->assetsUrl;
}
const std::string& ZylService::accountsUrl() const {
  return state_->accountsUrl;
}
const std::string& ZylService::reportsUrl() const {
  return state_->reportsUrl;
}
const std::string& ZylService::serverVersion() const {
  return state_->serverVersion;
}
bool ZylService::useProxy() const {
  return state_->useProxy;
}
bool ZylService::showAlerts() const {
  return state_->showAlerts;
}

void ZylService::SetServiceBaseUrl(const std::string& baseUrl) {
  auto& s = *state_;
  s.baseUrl = baseUrl;
  auto at = [&](soap::Service service) {
    return baseUrl + std::string(soap::serviceInfo(service).path);
  };
  s.loginUrl = at(soap::Service::Login);
  s.telvaneUrl = at(soap::Service::Main);
  s.assetsUrl = at(soap::Service::Assets);
  s.accountsUrl = at(soap::Service::Accounts);
  s.reportsUrl = at(soap::Service::Reports);
}

void ZylService::ShowAlerts(bool val) {
  state_->showAlerts = val;
}

}  // namespace brenmoor
