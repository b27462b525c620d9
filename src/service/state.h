#pragma once
// The state of one ZylService, shared by the subsystems that implement its operations.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "brenmoor/host.h"
#include "brenmoor/trace.h"
#include "service/catalog.h"
#include "soap/answer.h"
#include "soap/transport.h"
#include "util/md5.h"

namespace brenmoor::service {

struct State {
  std::string sessionSecret;  // hashed into every key, never sent
  std::string sessionToken;
  int16_t keyCounter = 0;
  std::string lastErrMsg;
  int16_t lastErrID = 0;
  bool useProxy = false;
  bool showAlerts = true;
  std::string sourceSystem;
  std::string baseUrl;
  std::string loginUrl;
  std::string telvaneUrl;
  std::string assetsUrl;
  std::string accountsUrl;
  std::string reportsUrl;
  std::string serverVersion;
  bool envelopeOption = true;  // handed to every request envelope
  CMD5 md5;

  std::shared_ptr<Host> host = std::make_shared<StderrHost>();
  TraceHandler trace;
  std::function<void()> cancelCreation;  // of the asset creation in progress, if any
  int32_t lastUploadCode = 0;
  std::string lastUploadMessage;
  soap::AnswerLimits answerLimits;
  int64_t callDeadlineMs = 0;  // 0: a multiple of each call's time-out
  std::string caFile;          // kept in the pool as well, which applies it
  soap::ConnectionPool connections;

  const std::string& endpoint(Service service) const;
};

// Whether version `v` ("a.b.c.d") is not newer than the server's. Always true against a 3.2.1.0
// server; false when either version is not four whole numbers.
bool serverIsAtLeast(const State& state, const std::string& v);

}  // namespace brenmoor::service
