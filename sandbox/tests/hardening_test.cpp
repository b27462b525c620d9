// The sandbox under abuse: killed mid-write, oversized and dripping requests, many clients,
// keys out of order, and a log that must hold no secret.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "crypto/digest.h"
#include "crypto/random.h"
#include "sandbox_child.h"
#include "sandbox_fixture.h"

namespace sandbox::testing {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::string_view kUnmanagedUpload = "/AssetManager/am_Asset_Unmanaged_BinaryUpload.jsp";

struct TempFolder {
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("telvane-hardening-" + random_hex(8));
  ~TempFolder() { std::filesystem::remove_all(path); }
};

std::string key_text(SoapSession& session) {
  const std::string element = session.key();
  const auto start = element.find('>') + 1;
  return element.substr(start, element.rfind('<') - start);
}

std::string data_record(std::string_view guid, std::string_view project,
                        std::string_view template_guid) {
  return "<dr>" + arg("guid", "string", guid) + arg("name", "string", "Project") +
         "<entries></entries><templateGuidList>" +
         arg("templateGuidList", "string", template_guid) + "</templateGuidList></dr>" +
         arg("projectGuid", "string", project) + arg("overwriteExisting", "boolean", "false");
}

std::string new_project(SoapSession& session, std::string_view name) {
  return session
      .call("Telvane", kMainNs, "createProject",
            session.key() + arg("name", "string", name) + arg("description", "string", ""))
      .value;
}

// What one writer had acknowledged before the kill.
struct Acknowledged {
  std::vector<std::string> projects;
  std::vector<std::string> records;
  std::vector<std::pair<std::string, std::string>> files;  // path, content
  std::size_t count() const { return projects.size() + records.size() + files.size(); }
};

TEST(SandboxCrashTest, KillDuringWritesKeepsEveryAcknowledgedWrite) {
  TempFolder data;
  constexpr int kWriters = 4;
  std::vector<Acknowledged> acknowledged(kWriters);
  std::string project;
  std::string template_guid;
  {
    ChildSandbox sandbox(data.path, {"--quota", "projects=1000000"});
    SoapSession setup(sandbox.port());
    ASSERT_TRUE(setup.sign_in());
    project = new_project(setup, "holder");
    template_guid = setup
                        .call("Telvane", kMainNs, "copyTemplate",
                              setup.key() + arg("templateGuid", "string", "tpl-title-page") +
                                  arg("targetProjectGuid", "string", project) +
                                  arg("templateName", "string", "") +
                                  arg("overwriteExisting", "boolean", "false"))
                        .value;
    ASSERT_FALSE(template_guid.empty());

    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w) {
      writers.emplace_back([&, w] {
        SoapSession session(sandbox.port());
        if (!session.sign_in()) return;
        Acknowledged& mine = acknowledged[static_cast<std::size_t>(w)];
        for (int i = 0; i < 100000; ++i) {
          const std::string id = std::to_string(w) + "-" + std::to_string(i);
          SoapSession::Result result;
          if (i % 3 == 0) {
            result = session.call("Telvane", kMainNs, "createProject",
                                  session.key() + arg("name", "string", "p-" + id) +
                                      arg("description", "string", ""));
            if (result.status == 200 && !result.value.empty())
              mine.projects.push_back(result.value);
          } else if (i % 3 == 1) {
            result = session.call("Telvane", kMainNs, "createDataRecord",
                                  session.key() + data_record("dr-" + id, project, template_guid));
            if (result.status == 200 && result.value == "dr-" + id)
              mine.records.push_back(result.value);
          } else {
            const std::string content = "content of " + id + std::string(2000, 'x');
            result = session.post(std::string(kUnmanagedUpload) + "?pid=" + project + "&key=" +
                                      key_text(session) + "&name=f-" + id + ".txt&filetype=txt",
                                  content);
            const auto comma = result.body.find(',');
            if (result.status == 200 && result.body.starts_with("http://") &&
                comma != std::string::npos) {
              const std::string url = result.body.substr(0, comma);
              mine.files.emplace_back(url.substr(url.find('/', 7)), content);
            }
          }
          if (result.status == 0) return;  // the sandbox is gone
        }
      });
    }
    std::this_thread::sleep_for(milliseconds(1500));
    sandbox.kill_hard();
    for (auto& writer : writers) writer.join();
  }

  std::size_t total = 0;
  for (const auto& mine : acknowledged) total += mine.count();
  ASSERT_GT(total, 30u) << "too few writes before the kill to prove anything";

  ChildSandbox again(data.path);
  SoapSession session(again.port());
  ASSERT_TRUE(session.sign_in());
  std::size_t found = 0;
  for (const auto& mine : acknowledged) {
    for (const auto& guid : mine.projects) {
      found += session
                   .call("Telvane", kMainNs, "projectExists",
                         session.key() + arg("projectGuid", "string", guid))
                   .value == "true";
    }
    for (const auto& guid : mine.records) {
      found += session
                   .call("Telvane", kMainNs, "createDataRecord",
                         session.key() + data_record(guid, project, template_guid))
                   .body.find("DuplicateDataRecord") != std::string::npos;
    }
    for (const auto& [path, content] : mine.files) {
      const auto served = session.http.Get(path);
      found += served && served->status == 200 && served->body == content;
    }
  }
  std::cout << "kill -9 during writes: " << total << " acknowledged, " << found << " found\n";
  EXPECT_EQ(found, total);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(data.path)) {
    EXPECT_NE(entry.path().extension(), ".part") << entry.path();
  }
}

TEST(SandboxLimitsTest, OversizedBodiesAreRefusedAtOnceWithBoundedMemory) {
  TempFolder data;
  ChildSandbox sandbox(data.path, {"--max-upload-bytes", "4194304"});
  SoapSession session(sandbox.port());
  ASSERT_TRUE(session.sign_in());
  const long peak_before = sandbox.peak_rss_kib();
  const std::string upload = "/AssetManager/am_Asset_BinaryUpload.jsp?key=";
  const std::string chunk = std::string("100000\r\n") + std::string(1 << 20, 'x') + "\r\n";

  const std::string endless_line(1 << 20, 'a');  // a chunk-size line that never ends
  struct Case {
    std::string head;      // request line and headers
    std::string repeated;  // then sent again and again until the answer comes
    std::string status;
    std::string text;  // in the answer
  };
  const std::vector<Case> cases = {
      {"POST /services/Login HTTP/1.1\r\nContent-Length: 1073741824\r\n", "", "413",
       "larger than the sandbox accepts (16777216 bytes)"},
      {"POST /services/Login HTTP/1.1\r\nTransfer-Encoding: chunked\r\n", chunk, "413",
       "larger than the sandbox accepts"},
      {"POST /services/Login HTTP/1.1\r\nTransfer-Encoding: chunked\r\n", endless_line, "400",
       "Connection: close"},
      {"POST " + upload + key_text(session) + " HTTP/1.1\r\nContent-Length: 4194305\r\n", "", "413",
       "Error: the file is larger than the sandbox accepts (4194304 bytes)"},
      {"POST " + upload + key_text(session) + " HTTP/1.1\r\nTransfer-Encoding: chunked\r\n", chunk,
       "413", "Error: the file is larger"},
      {"PUT /services/Login HTTP/1.1\r\nTransfer-Encoding: chunked\r\n", chunk, "413",
       "Only POST requests may carry a body"},
      {"GET /unmanaged/x/y HTTP/1.1\r\nContent-Length: 1073741824\r\n", "", "413", "Only POST"},
      {"POST /services/Login HTTP/1.1\r\nContent-Length: 1073741824\r\nExpect: 100-continue\r\n",
       "", "413", "larger than the sandbox accepts"},
  };
  for (const Case& c : cases) {
    RawConnection connection(sandbox.port());
    const auto started = Clock::now();
    ASSERT_TRUE(connection.send(c.head + "Host: 127.0.0.1\r\n\r\n"));
    std::string answer = connection.receive(milliseconds(300));
    for (int sent = 0; !c.repeated.empty() && answer.empty() && sent < 64; ++sent) {
      if (!connection.send(c.repeated)) break;
      answer = connection.receive(milliseconds(5));
    }
    answer = connection.receive(milliseconds(2000), std::move(answer));
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 " + c.status)) << c.head << answer;
    EXPECT_NE(answer.find(c.text), std::string::npos) << c.head << answer;
    EXPECT_NE(answer.find("Connection: close"), std::string::npos) << c.head << answer;
    EXPECT_LT(Clock::now() - started, std::chrono::seconds(5)) << c.head;
  }
  // The chunked bodies stopped being read at their limit: no more than that was held.
  EXPECT_LT(sandbox.peak_rss_kib() - peak_before, 80 * 1024);
  EXPECT_EQ(session.call("Telvane", kMainNs, "getVersion").status, 200);
}

class SandboxLoadTest : public SandboxTest {};

TEST_F(SandboxLoadTest, DrippingClientsDoNotStarveOthersAndManyClientsKeepWriting) {
  stop_server();
  options_.connection_limits.header_time = milliseconds(1500);
  ASSERT_EQ(apply_quota_option(options_.quotas, "projects=1000000"), "");
  start_server();
  const int port = std::stoi(server_->base_url().substr(server_->base_url().rfind(':') + 1));

  // Ten clients that drip their headers a byte at a time.
  std::vector<std::unique_ptr<RawConnection>> drippers;
  for (int i = 0; i < 10; ++i) {
    drippers.push_back(std::make_unique<RawConnection>(port));
    ASSERT_TRUE(drippers.back()->send("POST /services/Telvane HTTP/1.1\r\nHo"));
  }
  for (int round = 0; round < 5; ++round) {
    for (auto& dripper : drippers) dripper->send("s");
    const auto started = Clock::now();
    EXPECT_EQ(call("Telvane", kMainNs, "getVersion").value(), "9.8.7.6");
    EXPECT_LT(Clock::now() - started, milliseconds(500));
    std::this_thread::sleep_for(milliseconds(200));
  }
  // Past the header deadline each dripping connection is closed.
  for (auto& dripper : drippers) {
    const auto started = Clock::now();
    dripper->receive(milliseconds(3000));
    EXPECT_LT(Clock::now() - started, milliseconds(2500));
  }

  // Sixteen clients, each with its own session, writing at once for two seconds.
  constexpr int kClients = 16;
  std::vector<int> written(kClients, 0);
  std::vector<int> failed(kClients, 0);
  std::vector<std::thread> clients;
  const auto until = Clock::now() + std::chrono::seconds(2);
  for (int c = 0; c < kClients; ++c) {
    clients.emplace_back([&, c] {
      SoapSession session(port);
      if (!session.sign_in()) {
        ADD_FAILURE() << "client " << c << " could not sign in: " << session.last_body;
        ++failed[static_cast<std::size_t>(c)];
        return;
      }
      for (int i = 0; i < 100000 && Clock::now() < until; ++i) {
        const auto result = session.call(
            "Telvane", kMainNs, "createProject",
            session.key() +
                arg("name", "string", "load-" + std::to_string(c) + "-" + std::to_string(i)) +
                arg("description", "string", ""));
        const bool ok = !result.value.empty();
        EXPECT_TRUE(ok) << "client " << c << ": " << result.status << " " << result.body;
        ++(ok ? written : failed)[static_cast<std::size_t>(c)];
      }
    });
  }
  for (auto& client : clients) client.join();
  for (int c = 0; c < kClients; ++c) {
    EXPECT_EQ(failed[static_cast<std::size_t>(c)], 0) << "client " << c;
    EXPECT_GT(written[static_cast<std::size_t>(c)], 0) << "client " << c;
  }
}

TEST_F(SandboxLoadTest, KeysAreCheckedBeforeSessionStateAndRequestsKeepToTheirShape) {
  login();
  const auto fault = [&](std::string_view arguments) {
    return call("Login", kLoginNs, "getUserAccounts", arguments).fault_string();
  };
  const std::string far = "999999999999999999";
  const std::string far_key =
      arg("key", "string", token_ + ":" + far + ":" + md5_hex(far + secret_));
  EXPECT_EQ(fault(far_key),
            "java.lang.Exception: Session key counter too far ahead: at most 32767 past the last "
            "one");
  // Refused without moving the session on: the next key in turn still works, and so does a
  // step of exactly the window.
  EXPECT_EQ(call("Login", kLoginNs, "getUserAccounts", key()).status, 200);
  counter_ += 32766;
  EXPECT_EQ(call("Login", kLoginNs, "getUserAccounts", key()).status, 200);

  EXPECT_EQ(call("Login", kLoginNs, "userLogout", key()).value(), "true");
  const std::string wrong = arg("key", "string", token_ + ":99999:" + md5_hex("99999x"));
  EXPECT_EQ(fault(wrong), "java.lang.Exception: Invalid session key");
  EXPECT_EQ(fault(key()), "java.lang.Exception: Session has ended");

  const auto nested = [](int depth) {
    std::string xml;
    for (int i = 0; i < depth; ++i) xml += "<d>";
    for (int i = 0; i < depth; ++i) xml += "</d>";
    return xml;
  };
  std::string many;
  for (int i = 0; i < 200001; ++i) many += "<e/>";
  const std::vector<std::pair<std::string, std::string>> shapes = {
      {nested(70), "elements nested more than 64 deep"},
      {many, "more than 200000 elements and attributes"},
      {"<" + std::string(1025, 'n') + "/>", "a name longer than 1024 bytes"},
      {arg("v", "string", std::string(1024 * 1024 + 1, 't')), "a text longer than 1048576 bytes"},
      {"<v a=\"" + std::string(1024 * 1024 + 1, 't') + "\"/>", "an attribute value longer than"},
  };
  for (const auto& [arguments, problem] : shapes) {
    const Answer answer = call("Telvane", kMainNs, "getVersion", arguments);
    EXPECT_EQ(answer.status, 500);
    EXPECT_NE(answer.fault_string().find("Request refused: it holds " + problem), std::string::npos)
        << answer.fault_string();
  }
  EXPECT_EQ(call("Telvane", kMainNs, "getVersion", nested(50)).value(), "9.8.7.6");
}

TEST(SandboxLogTest, TheRequestLogHoldsNoSecret) {
  TempFolder data;
  std::filesystem::create_directories(data.path);
  const std::filesystem::path log = data.path / "requests.log";
  std::vector<std::string> secrets;
  {
    ChildSandbox sandbox(data.path / "store", {"--log"}, log);
    SoapSession session(sandbox.port());
    ASSERT_TRUE(session.sign_in());
    const std::string first_key = key_text(session);
    secrets = {session.secret, session.token, md5_hex("demo"), first_key,
               first_key.substr(first_key.rfind(':') + 1)};
    EXPECT_EQ(
        session.call("Login", kLoginNs, "getUserAccounts", arg("key", "string", first_key)).status,
        200);
    const std::string project = new_project(session, "logged");
    const std::string upload_key = key_text(session);
    secrets.push_back(upload_key);
    EXPECT_EQ(session
                  .post(std::string(kUnmanagedUpload) + "?pid=" + project + "&key=" + upload_key +
                            "&name=a.txt&filetype=txt",
                        "bytes")
                  .status,
              200);
    const std::string password = "Pa55-word-for-the-log";
    secrets.insert(secrets.end(), {password, md5_hex(password)});
    EXPECT_EQ(session
                  .call("Accounts", "urn:telvane-accounts", "createUserAccount",
                        arg("firstName", "string", "Log") + arg("lastName", "string", "Test") +
                            arg("email", "string", "log@example.com") +
                            arg("password", "string", password))
                  .value,
              "true");
    const std::string new_hash = md5_hex("another-Pa55");
    secrets.push_back(new_hash);
    session.call("Accounts", "urn:telvane-accounts", "changeUserPassword",
                 session.key() + arg("passwordHash", "string", new_hash));
    EXPECT_EQ(session.call("Login", kLoginNs, "userLogout", session.key()).value, "true");
  }
  std::stringstream text;
  text << std::ifstream(log).rdbuf();
  const std::string logged = text.str();
  EXPECT_NE(logged.find("Login userLogin 200"), std::string::npos) << logged;
  EXPECT_NE(logged.find("Accounts createUserAccount 200"), std::string::npos) << logged;
  for (const std::string& secret : secrets) {
    EXPECT_EQ(logged.find(secret), std::string::npos) << secret << " in\n" << logged;
  }
}

}  // namespace
}  // namespace sandbox::testing
