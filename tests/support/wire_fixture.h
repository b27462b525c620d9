#pragma once
// A ZylService pointed at a scripted loopback server, with a recording host and alerts off.

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "brenmoor/zyl_service.h"
#include "recording_host.h"
#include "scripted_server.h"
#include "soap_answers.h"

namespace brenmoor::testing {

// Puts TZ back as it was, so that a test may set it freely.
struct TzGuard {
  TzGuard() {
    if (const char* tz = std::getenv("TZ")) saved = tz;
  }
  ~TzGuard() { saved ? setenv("TZ", saved->c_str(), 1) : unsetenv("TZ"); }
  TzGuard(const TzGuard&) = delete;
  TzGuard& operator=(const TzGuard&) = delete;
  std::optional<std::string> saved;
};

class WireTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host = std::make_shared<RecordingHost>();
    service.setHost(host);
    service.ShowAlerts(false);
    service.SetServiceBaseUrl(server.baseUrl());
  }

  // Scripts the next answer: <opResponse> holding `returnXml` and then `entries`.
  void answer(const std::string& op, const std::string& returnXml,
              const std::string& entries = "") {
    server.enqueue(
        Reply::xml(soapEnvelope("<ns1:" + op + "Response xmlns:ns1=\"urn:telvane-main\">" +
                                returnXml + "</ns1:" + op + "Response>" + entries)));
  }
  void answerScalar(const std::string& op, const std::string& value,
                    const std::string& type = "string") {
    server.enqueue(Reply::xml(scalarAnswer(op, value, type)));
  }

  TzGuard savedTz;
  ScriptedServer server;
  std::shared_ptr<RecordingHost> host;
  ZylService service;
};

}  // namespace brenmoor::testing
