#pragma once
// A test suite sharing one sandbox process; each test gets a fresh ZylService pointed at it,
// with a recording host and alerts off.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "brenmoor/zyl_service.h"
#include "recording_host.h"
#include "sandbox_process.h"

namespace brenmoor::testing {

inline constexpr const char* kDemoUser = "demo@example.com";
inline constexpr const char* kDemoPassword = "demo";

class SandboxTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { sandbox = std::make_unique<SandboxProcess>(); }
  static void TearDownTestSuite() { sandbox.reset(); }

  void SetUp() override {
    host = std::make_shared<RecordingHost>();
    service.setHost(host);
    service.ShowAlerts(false);
    service.SetServiceBaseUrl(sandbox->baseUrl());
  }

  // Signs in as the demo user and selects its first account.
  void signInToFirstAccount() {
    ASSERT_FALSE(service.loginUnencryptedPassword(kDemoUser, kDemoPassword).empty())
        << service.lastErrMsg();
    ASSERT_TRUE(service.selectAccount("1001")) << service.lastErrMsg();
  }

  static inline std::unique_ptr<SandboxProcess> sandbox;
  std::shared_ptr<RecordingHost> host;
  ZylService service;
};

}  // namespace brenmoor::testing
