#pragma once
// The state of one ZylService, shared by the subsystems that implement its operations.

#include <cstdint>
#include <memory>
#include <string>

#include "auth/md5.h"
#include "brenmoor/host.h"
#include "brenmoor/zyl_service.h"
#include "soap/namespaces.h"
#include "soap/transport.h"

namespace brenmoor {

struct ZylService::State {
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
  soap::ConnectionPool connections;

  const std::string& endpoint(soap::Service service) const;
};

}  // namespace brenmoor
