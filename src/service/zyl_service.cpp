#include "brenmoor/zyl_service.h"

#include "service/state.h"

namespace brenmoor {

ZylService::ZylService() : state_(std::make_unique<service::State>()) {}
ZylService::~ZylService() = default;

const std::string& service::State::endpoint(Service service) const {
  switch (service) {
    case Service::Login: return loginUrl;
    case Service::Main: return telvaneUrl;
    case Service::Assets: return assetsUrl;
    case Service::Accounts: return accountsUrl;
    case Service::Reports: return reportsUrl;
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
  auto at = [&](service::Service service) {
    return baseUrl + std::string(service::serviceInfo(service).path);
  };
  s.loginUrl = at(service::Service::Login);
  s.telvaneUrl = at(service::Service::Main);
  s.assetsUrl = at(service::Service::Assets);
  s.accountsUrl = at(service::Service::Accounts);
  s.reportsUrl = at(service::Service::Reports);
}

uint64_t ZylService::maxAnswerBytes() const {
  return state_->answerLimits.maxBytes;
}
void ZylService::setMaxAnswerBytes(uint64_t bytes) {
  state_->answerLimits.maxBytes = bytes;
}

int64_t ZylService::callDeadline() const {
  return state_->callDeadlineMs;
}
void ZylService::setCallDeadline(int64_t milliseconds) {
  state_->callDeadlineMs = milliseconds > 0 ? milliseconds : 0;
}

const std::string& ZylService::caFile() const {
  return state_->caFile;
}
void ZylService::setCaFile(const std::string& path) {
  state_->caFile = path;
  state_->connections.setCaFile(path);
}

void ZylService::ShowAlerts(bool val) {
  state_->showAlerts = val;
}

void ZylService::setTraceHandler(TraceHandler handler) {
  state_->trace = std::move(handler);
}

}  // namespace brenmoor
