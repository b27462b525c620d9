// The brenmoor command-line tool as a user runs it: settings, JSON, the trace, exit codes,
// assets and folders, against a sandbox process (and a scripted server for a version refusal).

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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

  // Runs the tool, waits for its first line on standard error, sends it SIGINT and returns its
  // exit status (-1 when no line came within the time).
  int interruptAfterFirstErrorLine(const std::vector<std::string>& args) {
    std::vector<std::string> words = {"/usr/bin/env", "-i", "XDG_CONFIG_HOME=" + config.string(),
                                      BRENMOOR_CLI_PATH};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    int fds[2];
    if (pipe(fds) != 0) return -1;
    const pid_t pid = fork();
    if (pid == 0) {
      dup2(fds[1], STDERR_FILENO);
      close(fds[0]);
      execv(argv[0], argv.data());
      _exit(127);
    }
    close(fds[1]);
    std::string err;
    // Reads until `enough` or the end, bounded; the child keeps a reader for its last words.
    const auto readUntil = [&](auto enough) {
      for (int reads = 0; reads < 1000 && !enough(); ++reads) {
        pollfd p{fds[0], POLLIN, 0};
        char buf[256];
        if (poll(&p, 1, 10000) <= 0) return;
        const ssize_t n = read(fds[0], buf, sizeof buf);
        if (n <= 0) return;
        err.append(buf, static_cast<size_t>(n));
      }
    };
    readUntil([&] { return err.find('\n') != std::string::npos; });
    const bool lineCame = err.find('\n') != std::string::npos;
    kill(pid, lineCame ? SIGINT : SIGKILL);
    readUntil([] { return false; });
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return lineCame && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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

TEST_F(Cli, UploadsFindsAndDeletesAssetsInAFolder) {
  const auto as = [this](std::vector<std::string> args) {
    args.insert(args.begin(), {"--account", "1001"});
    return run({}, asDemo(args));
  };
  const auto created = as({"--json", "folders", "create", "CLI talks"});
  ASSERT_EQ(created.status, 0) << created.err;
  const std::string folder = std::to_string(json::parse(created.out)["id"].get<int>());
  const json tree = json::parse(as({"--json", "folders", "tree"}).out);
  EXPECT_TRUE(std::any_of(tree.begin(), tree.end(), [&](const json& node) {
    return node["name"] == "CLI talks" && std::to_string(node["id"].get<int>()) == folder;
  })) << tree;

  const std::string talk = write("talk.mp4", std::string(100000, 't'), 0600);
  const std::string low = write("talk-low.mp4", std::string(5000, 'l'), 0600);
  const auto uploaded = as({"assets", "upload", talk, low, "--name", "CLI keynote", "--folder",
                            folder, "--description", "Spring"});
  ASSERT_EQ(uploaded.status, 0) << uploaded.err;
  EXPECT_NE(uploaded.err.find("100%"), std::string::npos) << uploaded.err;  // plain lines
  const std::string guid = uploaded.out.substr(0, uploaded.out.find('\n'));

  const json listed = json::parse(as({"--json", "assets", "list", "--folder", folder}).out);
  ASSERT_EQ(listed.size(), 1u) << listed;
  EXPECT_EQ(listed[0]["guid"], guid);
  EXPECT_EQ(listed[0]["name"], "CLI keynote");
  EXPECT_EQ(listed[0]["typeText"], "Video");  // from the extension
  EXPECT_EQ(as({"assets", "list", "--folder", folder, "--search", "Autumn"}).out, "");
  EXPECT_EQ(as({"assets", "search", "cli keynote"}).out.substr(0, guid.size()), guid);

  EXPECT_EQ(as({"folders", "delete", folder}).status, 1);  // not empty
  EXPECT_EQ(as({"assets", "delete", guid}).status, 0);
  EXPECT_EQ(as({"assets", "list", "--folder", folder}).out, "");
  EXPECT_EQ(as({"folders", "delete", folder}).status, 0);
}

TEST_F(Cli, PrintsQuotasAsJson) {
  const json quotas = json::parse(run({}, asDemo({"--account", "1001", "--json", "quota"})).out);
  ASSERT_EQ(quotas.size(), 3u) << quotas;
  for (const json& quota : quotas) {
    EXPECT_TRUE(quota["limit"].is_number() && quota["used"].is_number()) << quota;
    EXPECT_EQ(quota["failAction"], "block");
  }
  EXPECT_EQ(quotas[0]["name"], "Projects");
}

TEST_F(Cli, ReportsNoHitsOfAPageNotYetVisited) {
  const auto as = [this](std::vector<std::string> args) {
    args.insert(args.begin(), {"--account", "1001"});
    return run({}, asDemo(args));
  };
  const auto firstLine = [](const ProgramRun& result) {
    return result.out.substr(0, result.out.find('\n'));
  };
  const std::string project = firstLine(as({"projects", "create", "CLI reports"}));
  const std::string page = firstLine(as({"templates", "copy", "tpl-audience", project, "Poll"}));
  const auto record = as({"records", "create", project, "--template", page});
  ASSERT_EQ(record.status, 0) << record.err;
  ASSERT_EQ(as({"records", "deploy", "--record", firstLine(record), "--template", page}).status, 0);

  const auto hits = as({"reports", "hits", page, "--from", "2024-01-01", "--json"});
  ASSERT_EQ(hits.status, 0) << hits.err;
  const json report = json::parse(hits.out);
  EXPECT_EQ(report["total"], 0);
  EXPECT_EQ(report["unique"], 0);
  EXPECT_EQ(report["perDay"], json::array());
  EXPECT_EQ(as({"reports", "hits", page, "--to", "2024-02-30"}).status, 2);
  EXPECT_EQ(as({"projects", "delete", project}).status, 0);
}

TEST_F(Cli, CancelsAnUploadOnInterrupt) {
  const auto big = config / "big.mp4";
  std::ofstream(big).close();
  std::filesystem::resize_file(big, 1ull << 30);  // sparse: the cancel comes long before its end
  const auto folder = run({}, asDemo({"--account", "1001", "folders", "create", "Cancelled"}));
  ASSERT_EQ(folder.status, 0) << folder.err;
  const std::string id = folder.out.substr(0, folder.out.find('\n'));
  EXPECT_EQ(interruptAfterFirstErrorLine(asDemo({"--account", "1001", "assets", "upload",
                                                 big.string(), "--name", "Big", "--folder", id})),
            130);
  EXPECT_EQ(run({}, asDemo({"--account", "1001", "assets", "list", "--folder", id})).out, "");
}

}  // namespace
}  // namespace brenmoor
