// Every class of fault through the public API against the scripted server: what the host reads
// afterwards, how long the call took, and that the answer could not make memory grow unbounded.

#include <zlib.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include "wire_fixture.h"

#if defined(__SANITIZE_ADDRESS__)
#define BRENMOOR_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BRENMOOR_ASAN 1
#endif
#endif

namespace brenmoor {
namespace {

using testing::Reply;
using testing::scalarAnswer;
using testing::soapEnvelope;
using namespace std::chrono_literals;

constexpr uint64_t kLimit = 1 << 20;

// A field of /proc/self/status in KiB.
long statusKiB(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(field + ":", 0) == 0) return std::stol(line.substr(field.size() + 1));
  }
  return -1;
}

// A gzip body that inflates to `head`, `fill` bytes of 'a' and `tail`, made without holding
// the inflated text.
std::string gzipBomb(const std::string& head, size_t fill, const std::string& tail) {
  z_stream z{};
  deflateInit2(&z, 9, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY);
  std::string out;
  auto put = [&](const std::string& in, int flush) {
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
    z.avail_in = static_cast<uInt>(in.size());
    char buffer[1 << 14];
    do {
      z.next_out = reinterpret_cast<Bytef*>(buffer);
      z.avail_out = sizeof buffer;
      deflate(&z, flush);
      out.append(buffer, sizeof buffer - z.avail_out);
    } while (z.avail_out == 0);
  };
  const std::string block(1 << 20, 'a');
  put(head, Z_NO_FLUSH);
  for (size_t i = 0; i < fill / block.size(); ++i) put(block, Z_NO_FLUSH);
  put(tail, Z_FINISH);
  deflateEnd(&z);
  return out;
}

// An answer without its XML declaration, for a prologue of the test's own.
std::string undeclared(const std::string& text) {
  return text.substr(text.find("<soapenv"));
}

Reply typed(std::string contentType, std::string body, std::vector<std::string> headers = {}) {
  Reply reply = Reply::xml(std::move(body));
  reply.contentType = std::move(contentType);
  reply.headers = std::move(headers);
  return reply;
}

class FaultMatrix : public testing::WireTest {};

TEST_F(FaultMatrix, EveryFaultEndsWithItsNumberAndTextPromptlyAndInBoundedMemory) {
  const std::string secret = "never-read-" + std::to_string(::getpid());
  const auto secretPath = std::filesystem::temp_directory_path() / (secret + ".txt");
  std::ofstream(secretPath) << secret;
  const std::string answer = scalarAnswer("getGuid", std::string(4000, 'g'));
  const std::string open = answer.substr(0, answer.find("gggg"));
  const std::string close = answer.substr(answer.rfind("gggg") + 4);
  std::string laughs = "<!DOCTYPE lolz [<!ENTITY l0 \"lol\">";
  for (int i = 1; i <= 9; ++i) {
    laughs += "<!ENTITY l" + std::to_string(i) + " \"";
    for (int j = 0; j < 10; ++j) laughs += "&l" + std::to_string(i - 1) + ";";
    laughs += "\">";
  }
  laughs += "]>";
  std::string nested;
  for (int i = 0; i < 100000; ++i) nested += "<a>";

  const std::string contact = "^Could not contact the Telvane service\\.";
  const std::string maintenance = contact +
                                  "\r\nThe service is currently undergoing a maintenance "
                                  "upgrade\\.\r\nService should be restored in less than 10 "
                                  "minutes\\.$";
  const std::string from = "^The answer from http://127\\.0\\.0\\.1:[0-9]+/services/Telvane ";
  const std::string doctype = from + "declares a document type, which a SOAP message must not$";
  struct Row {
    const char* what;
    Reply reply;
    int id;
    std::string message;  // a regular expression
    bool refused = false, ping = false;
  } rows[] = {
      {"connection refused",
       {},
       3,
       contact + "\r\nThe service may be temporarily unavailable\\.$",
       true},
      {"reset mid-body", Reply::resetMidBody(answer), 3, maintenance},
      {"stall mid-body", Reply::stallMidBody(answer, 20s), 1, contact + "$", false, true},
      {"HTTP 503", Reply::text(503, "<html>busy</html>"), 3, maintenance},
      {"HTML page",
       typed("text/html; charset=utf-8", "<!DOCTYPE html><html><body>Sign in</body></html>"), -1,
       from + "is an HTML page, not a SOAP envelope$"},
      {"truncated XML", Reply::xml(answer.substr(0, answer.size() / 2)), -1,
       from + "is not well-formed XML in UTF-8, the charset its Content-Type names: no element "
              "found at byte [0-9]+$"},
      {"past the answer limit", Reply::xml(open + std::string(4 * kLimit, 'g') + close), -1,
       from + "announces [0-9]+ bytes, past the answer limit of 1048576 bytes$"},
      {"gzip bomb",
       typed("text/xml", gzipBomb(open, 64 * kLimit, close), {"Content-Encoding: gzip"}), -1,
       from + "exceeds the answer limit of 1048576 bytes \\([0-9]+ bytes received\\)$"},
      {"billion laughs", Reply::xml(laughs + undeclared(scalarAnswer("getGuid", "&l9;"))), -1,
       doctype},
      {"external entity",
       Reply::xml("<!DOCTYPE e [<!ENTITY x SYSTEM \"file://" + secretPath.string() + "\">]>" +
                  undeclared(scalarAnswer("getGuid", "&x;"))),
       -1, doctype},
      {"deep nesting", Reply::xml(open + nested + close), -1,
       from + "nests deeper than 128 levels$"},
      {"invalid UTF-8", typed("text/xml", scalarAnswer("getGuid", "caf\xC3\x28")), -1,
       from + "is not well-formed XML: not well-formed \\(invalid token\\) at byte [0-9]+$"},
      {"charset not the body's",
       Reply::xml("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
                  undeclared(scalarAnswer("getGuid", "caf\xE9"))),
       -1,
       from + "is not well-formed XML in UTF-8, the charset its Content-Type names: not "
              "well-formed \\(invalid token\\) at byte [0-9]+$"},
  };

  service.setMaxAnswerBytes(kLimit);
  const std::string refusedUrl = "http://127.0.0.1:" + std::to_string(testing::closedPort());
  for (auto& row : rows) {
    SCOPED_TRACE(row.what);
    service.ShowAlerts(false);
    service.SetServiceBaseUrl(row.refused ? refusedUrl : server.baseUrl());
    if (!row.refused) server.enqueue(row.reply);
    // The peak resident size starts again from here.
    std::ofstream("/proc/self/clear_refs") << "5";
    const long before = statusKiB("VmRSS");
    const auto started = std::chrono::steady_clock::now();
    const bool answered = row.ping ? service.Ping(server.baseUrl()) : !service.getGuid().empty();
    const auto took = std::chrono::steady_clock::now() - started;
    const long grown = statusKiB("VmHWM") - before;

    EXPECT_FALSE(answered);
    EXPECT_EQ(service.lastErrID(), row.id);
    EXPECT_TRUE(std::regex_search(service.lastErrMsg(), std::regex(row.message)))
        << service.lastErrMsg();
    EXPECT_EQ(service.lastErrMsg().find("invalid Telvane URL"), std::string::npos);
    EXPECT_EQ(service.lastErrMsg().find(secret), std::string::npos);
    EXPECT_LT(took, row.ping ? 10s : 3s);
#ifndef BRENMOOR_ASAN
    EXPECT_LT(grown, 64 * 1024) << "KiB";
#endif
    // The matrix as it ran, for the record.
    const std::string shown = std::regex_replace(service.lastErrMsg(), std::regex("\r\n"), " / ");
    std::printf(
        "%-22s %3d %6lld ms %6ld KiB  %s\n", row.what, service.lastErrID(),
        static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count()),
        grown, shown.c_str());
  }
  std::filesystem::remove(secretPath);
}

}  // namespace
}  // namespace brenmoor
