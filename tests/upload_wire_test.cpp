// The file upload against a scripted loopback server: the request as it goes on the wire, the
// chunk events, the answer read, cancel, a server that stops reading, and files that cannot be
// read.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "scripted_server.h"
#include "soap/transport.h"
#include "soap/upload.h"
#include "soap/upload_url.h"
#include "soap_answers.h"

namespace brenmoor {
namespace {

using soap::FileUpload;
using testing::Reply;
namespace fs = std::filesystem;

// Files under a fresh folder of /tmp, removed with it.
struct TempFiles {
  TempFiles() {
    std::string name = (fs::temp_directory_path() / "upload-test-XXXXXX").string();
    dir = ::mkdtemp(name.data());
  }
  ~TempFiles() { fs::remove_all(dir); }
  std::string make(const std::string& name, const std::string& bytes) const {
    const auto path = (dir / name).string();
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  fs::path dir;
};

std::string bytes(size_t n) {
  std::string s(n, '\0');
  for (size_t i = 0; i < n; ++i) s[i] = static_cast<char>(i * 7 + i / 4096);
  return s;
}

// Accepts connections into its backlog and never reads: the server that stops reading.
struct DeafListener {
  DeafListener() {
    const int small = 4096;
    ::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof a;
    ::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
    ::listen(fd, 1);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &size);
    url = "http://127.0.0.1:" + std::to_string(ntohs(a.sin_port)) + "/up";
  }
  ~DeafListener() { ::close(fd); }
  int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::string url;
};

class UploadWire : public ::testing::Test {
 protected:
  FileUpload upload(int32_t timeoutMs = 5000) {
    return FileUpload(pool,
                      {[this](int32_t percent, const std::string& name) {
                         events.push_back(percent);
                         names.push_back(name);
                         if (cancelAt == events.size()) current->cancel();
                       },
                       [this] { ++yields; }},
                      timeoutMs, &trace);
  }

  testing::ScriptedServer server;
  soap::ConnectionPool pool;
  TempFiles files;
  std::vector<int32_t> events;
  std::vector<std::string> names;
  size_t yields = 0;
  size_t cancelAt = 0;  // the event after which the handler cancels; 0: never
  FileUpload* current = nullptr;
  std::vector<std::string> traced;
  TraceHandler trace = [this](const Exchange& x) { traced.emplace_back(x.request); };
};

TEST_F(UploadWire, PostsTheRawBytesInChunksWithAnEventAfterEach) {
  const struct {
    size_t size;
    std::string name;
    std::vector<int32_t> events;
  } rows[] = {{0, "empty.bin", {}}, {4097, "a\\b.bin", {100, 100}}, {8192, "two.bin", {50, 100}}};
  for (const auto& row : rows) {
    events.clear();
    names.clear();
    yields = 0;
    const std::string body = bytes(row.size);
    const std::string path = files.make(row.name, body);
    server.enqueue(Reply::text(200, "key-" + row.name));
    auto up = upload();
    EXPECT_EQ(up.send(server.baseUrl() + "/Asset Manager/up.jsp?pid=7&key=k:1", path),
              "key-" + row.name);
    EXPECT_EQ(up.lastCode(), FileUpload::kNone);
    const auto r = server.lastRequest();
    EXPECT_EQ(r.method + " " + r.target + " " + r.version,
              "POST /Asset%20Manager/up.jsp?pid=7&key=k:1 HTTP/1.0");
    EXPECT_EQ(r.header("Content-Length"), std::to_string(row.size));
    EXPECT_EQ(r.header("Expect"), "");
    EXPECT_EQ(r.header("Content-Type"), "");
    EXPECT_TRUE(r.body == body) << row.name;
    EXPECT_EQ(events, row.events) << row.name;
    EXPECT_EQ(yields, row.events.size());
    for (const auto& name : names) EXPECT_EQ(name, row.name == "a\\b.bin" ? "b.bin" : row.name);
  }
  ASSERT_EQ(traced.size(), 3u);
  EXPECT_EQ(traced.back(), "<8192 bytes from " + (files.dir / "two.bin").string() + ">");
}

TEST_F(UploadWire, ReadsOneKilobyteOfAnswerAndRefusesErrorTexts) {
  const std::string path = files.make("f.bin", bytes(10));
  const std::string longAnswer = bytes(3000);
  const struct {
    std::string answer, result;
    int32_t code;
  } rows[] = {{"Error: no room", "", FileUpload::kErrorAnswer},
              {"key Error: late", "", FileUpload::kErrorAnswer},
              {longAnswer, longAnswer.substr(0, 1024), FileUpload::kNone}};
  for (const auto& row : rows) {
    server.enqueue(Reply::text(200, row.answer));
    auto up = upload();
    EXPECT_EQ(up.send(server.baseUrl() + "/up", path), row.result);
    EXPECT_EQ(up.lastCode(), row.code);
    EXPECT_EQ(up.lastMessage(), row.code ? row.answer : "");
  }
}

TEST_F(UploadWire, CancelFromTheEventHandlerStopsBeforeTheNextChunk) {
  cancelAt = 1;
  server.enqueue(Reply::text(200, "never read"));
  auto up = upload();
  current = &up;
  EXPECT_EQ(up.send(server.baseUrl() + "/up", files.make("f.bin", bytes(5 * 4096))), "");
  EXPECT_EQ(up.lastCode(), FileUpload::kCancelled);
  EXPECT_EQ(up.lastMessage(), "Upload cancelled by user request");
  EXPECT_EQ(events, std::vector<int32_t>{20});
  EXPECT_TRUE(server.requests().empty());  // the body never ended
}

TEST_F(UploadWire, GivesUpOnAServerThatStopsReading) {
  DeafListener deaf;
  auto up = upload(300);
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(up.send(deaf.url, files.make("big.bin", std::string(32 << 20, 'x'))), "");
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
  EXPECT_EQ(up.lastCode(), FileUpload::kSendFailed);
  EXPECT_NE(up.lastMessage().find("timed out"), std::string::npos) << up.lastMessage();
}

TEST_F(UploadWire, ReportsFilesThatCannotBeReadAndServersThatCannotBeReached) {
  const std::string missing = (files.dir / "missing.bin").string();
  const std::string refused = "http://127.0.0.1:" + std::to_string(testing::closedPort()) + "/up";
  const std::string file = files.make("f.bin", "x");
  const struct {
    std::string url, path, message;
  } rows[] = {{server.baseUrl(), missing, "Cannot open " + missing + ": No such file or directory"},
              {server.baseUrl(), files.dir.string(),
               "Cannot open " + files.dir.string() + ": not a regular file"},
              {refused, file, "Send Request failed"},
              {"ftp://127.0.0.1/up", file, "Send Request failed"},
              // libcurl takes "http:/host/..." too, so the path starts before the "://" that
              // comes later: its unencoded bytes are refused, not sent.
              {"http:/" + server.baseUrl().substr(7) + "/caf\xe9?next=http://h/", file,
               "Send Request failed"}};
  for (const auto& row : rows) {
    auto up = upload();
    EXPECT_EQ(up.send(row.url, row.path), "");
    EXPECT_EQ(up.lastCode(), FileUpload::kSendFailed);
    EXPECT_EQ(up.lastMessage(), row.message);
  }
  EXPECT_TRUE(server.requests().empty());
}

TEST(UploadUrl, RefusesAHostThatLibcurlDecodesIntoAControlByte) {
  // After "///" libcurl reads the escaped path as the host, and decodes it.
  EXPECT_EQ(soap::uploadUrl("https:///h%7F/up"), std::nullopt);
  EXPECT_EQ(soap::uploadUrl("https://h/%7F"), "https://h/%7F");
}

TEST_F(UploadWire, SendsTheCookiesThatTheSoapCallsReceived) {
  Reply login = Reply::xml(testing::scalarAnswer("login", "ok"));
  login.headers = {"Set-Cookie: session=s-42; Path=/"};
  server.enqueue(login);
  soap::HttpTransport(pool, soap::AnswerLimits{}).send(server.baseUrl() + "/soap", "<x/>");
  server.enqueue(Reply::text(200, "key"));
  EXPECT_EQ(upload().send(server.baseUrl() + "/up", files.make("f.bin", "x")), "key");
  EXPECT_EQ(server.lastRequest().header("Cookie"), "session=s-42");
}

}  // namespace
}  // namespace brenmoor
