// The brenmoor command-line tool as a user runs it: settings, JSON, the trace and exit codes,
// against a sandbox process (and a scripted server for a version refusal).

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>

#include "sandbox_test.h"
#include "scripted_server.h"
#include "soap_answers.h"

namespace brenmoor {
namespace {

using nlohmann::json;
using testing::kDemoPassword;
using testing::kDemoUser;
using testing::ProgramRun;

class Cli : public testing::SandboxTest {
 protected:
  void SetUp() override {
    SandboxTest::SetUp();
    config = std::filesystem::temp_directory_path() /
             ("brenmoor-cli-" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(config / "brenmoor");
  }
  void TearDown() override { std::filesystem::remove_all(config); }

  // Runs the tool with only the given environment (and the test's settings folder).
  ProgramRun run(const std::vector<std::string>& env, const std::vector<std::string>& args) {
    std::vector<std::string> argv = {"/usr/bin/env", "-i", "XDG_CONFIG_HOME=" + config.string()};
    argv.insert(argv.end(), env.begin(), env.end());
    argv.push_back(BRENMOOR_CLI_PATH);
    argv.insert(argv.end(), args.begin(), args.end());
    return testing::runProgram(argv);
  }
  // A file of the settings folder, with the given permissions.
  std::string write(const std::string& name, const std::string& text, mode_t mode) {
    const auto path = config / name;
    std::ofstream(path) << text;
    chmod(path.c_str(), mode);
    return path.string();
  }
  std::vector<std::string> asDemo(std::vector<std::string> args) {
    args.insert(args.begin(),
                {"--url", sandbox->baseUrl(), "--user", kDemoUser, "--password", kDemoPassword});
    return args;
  }

  std::filesystem::path config;
};

TEST_F(Cli, TakesOptionsOverEnvironmentOverProfile) {
  write("brenmoor/config",
        "# the default profile signs in; [other] names a user the sandbox does not know\n"
        "url = " +
            sandbox->baseUrl() +
            "\nuser = demo@example.com\npassword = demo\n\n"
            "[other]\nurl = " +
            sandbox->baseUrl() + "\nuser = nobody@example.com\npassword = x\n",
        0600);
  const std::string passwordFile = write("password", "demo\n", 0600);
  const std::string unreachable = "http://127.0.0.1:1";
  const struct {
    std::vector<std::string> env, args;
    int status;
  } cases[] = {
      {{}, {"accounts"}, 0},
      {{"BRENMOOR_PASSWORD=wrong"}, {"accounts"}, 4},
      {{"BRENMOOR_PASSWORD=wrong"}, {"--password", "demo", "accounts"}, 0},
      {{"BRENMOOR_PASSWORD=wrong"}, {"--password-file", passwordFile, "accounts"}, 0},
      {{"BRENMOOR_URL=" + unreachable}, {"accounts"}, 3},
      {{"BRENMOOR_URL=" + unreachable}, {"--url", sandbox->baseUrl(), "accounts"}, 0},
      {{"BRENMOOR_ACCOUNT=4242"}, {"accounts"}, 1},
      {{}, {"--profile", "other", "accounts"}, 4},
      {{"BRENMOOR_USER=demo@example.com", "BRENMOOR_PASSWORD=demo"},
       {"--profile", "other", "accounts"},
       0},
      {{}, {"--profile", "missing", "accounts"}, 2},
  };
  for (const auto& c : cases) {
    const auto result = run(c.env, c.args);
    EXPECT_EQ(result.status, c.status) << ::testing::PrintToString(c.args) << result.err;
  }
  EXPECT_EQ(run({}, {"accounts"}).out, "1001\tDemo Productions\n1002\tDemo Training\n");

  write("brenmoor/config", "url = " + sandbox->baseUrl() + "\npassword = demo\n", 0644);
  const auto loose = run({}, {"ping"});
  EXPECT_EQ(loose.status, 2);
  EXPECT_NE(loose.err.find("chmod 600"), std::string::npos) << loose.err;
}

TEST_F(Cli, PrintsListsAndRecordsAsJson) {
  const json accounts = json::parse(run({}, asDemo({"--json", "accounts"})).out);
  ASSERT_TRUE(accounts.is_array());
  ASSERT_EQ(accounts.size(), 2u);
  EXPECT_EQ(accounts[0]["accountID"], 1001);
  EXPECT_EQ(accounts[1]["accountName"], "Demo Training");

  const json account = json::parse(run({}, asDemo({"--json", "--quiet", "connect"})).out);
  EXPECT_EQ(account["accountID"], 1001);
  EXPECT_EQ(account["accountName"], "Demo Productions");

  const json theme = json::parse(run({}, asDemo({"--account", "1001", "--json", "records", "show",
                                                 "--theme", "theme-corporate"}))
                                     .out);
  ASSERT_TRUE(theme["entries"].is_array());
  EXPECT_FALSE(theme["entries"].empty());
  EXPECT_TRUE(theme["entries"][0].contains("label"));
}

TEST_F(Cli, TracesExchangesWithoutSecrets) {
  const auto traced = run({}, asDemo({"--trace", "--connect", "login"}));
  ASSERT_EQ(traced.status, 0) << traced.err;
  const std::string token = traced.out.substr(0, traced.out.find('\n'));
  ASSERT_FALSE(token.empty());
  for (const auto& secret : {token, std::string(">demo<"),
                             std::string("fe01ce2a7fbac8fafaed7c982a04e229")}) {  // MD5("demo")
    EXPECT_EQ(traced.err.find(secret), std::string::npos) << secret;
  }
  // Challenge, response and key digests are all 32 hexadecimal digits.
  EXPECT_FALSE(std::regex_search(traced.err, std::regex("[0-9a-fA-F]{32}"))) << traced.err;
  EXPECT_TRUE(std::regex_search(traced.err, std::regex("<key[^>]*>…:[0-9]+:…</key>")));
  EXPECT_NE(traced.err.find("isCompatible"), std::string::npos);
  EXPECT_NE(traced.err.find("HTTP 200"), std::string::npos);
}

TEST_F(Cli, ExitsWithTheClassOfFailure) {
  const struct {
    std::vector<std::string> args;
    int status;
  } cases[] = {
      {{"--url", sandbox->baseUrl(), "ping"}, 0},
      {{"--url", sandbox->baseUrl(), "--no-such-option", "ping"}, 2},
      {{"ping"}, 2},                                                        // no URL from anywhere
      {{"--url", sandbox->baseUrl(), "--user", kDemoUser, "accounts"}, 2},  // no password
      {{"--url", "http://127.0.0.1:1", "guid"}, 3},
      {{"--url", sandbox->baseUrl(), "--user", kDemoUser, "--password", "no", "accounts"}, 4},
      {{"--url", sandbox->baseUrl(), "--user", kDemoUser, "--password", "no", "connect"}, 4},
      {asDemo({"--account", "1001", "projects", "delete", "no-such-project"}), 1},
  };
  for (const auto& c : cases) {
    const auto result = run({}, c.args);
    EXPECT_EQ(result.status, c.status) << ::testing::PrintToString(c.args) << result.err;
  }
  EXPECT_EQ(run({}, {"--url", sandbox->baseUrl(), "ping"}).out, "3.2.4.60\n");

  testing::ScriptedServer refusing;
  refusing.setDefault(testing::Reply::xml(
      testing::scalarAnswer("isCompatible", "false", "boolean", "urn:telvane-login")));
  EXPECT_EQ(run({}, {"--url", refusing.baseUrl(), "compatible"}).status, 5);
}

}  // namespace
}  // namespace brenmoor
