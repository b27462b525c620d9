#pragma once
// HTTP transport for SOAP requests, on libcurl. One transport serves one call; the connection
// pool outlives calls so that keep-alive connections are reused.

#include <cstdint>
#include <memory>
#include <string>

namespace brenmoor::soap {

class ConnectionPool {
 public:
  ConnectionPool();
  ~ConnectionPool();
  ConnectionPool(const ConnectionPool&) = delete;
  ConnectionPool& operator=(const ConnectionPool&) = delete;

  void* share() const { return share_; }  // the CURLSH handle

 private:
  void* share_;
};

struct HttpAnswer {
  long status = 0;
  std::string charset;  // from the Content-Type, empty when none
  std::string body;
};

class HttpTransport {
 public:
  static constexpr int32_t kDefaultTimeoutMs = 15000;
  // Larger answers are refused rather than held in memory.
  static constexpr size_t kMaxAnswerBytes = 64u << 20;

  explicit HttpTransport(ConnectionPool& pool);

  // Inactivity time-out: the call fails when no byte has moved for this long.
  void setTimeout(int32_t milliseconds) { timeoutMs_ = milliseconds; }
  // The action URI; it goes on the wire in double quotes.
  void setSoapAction(std::string action) { soapAction_ = std::move(action); }
  void setProxy(std::string server, int port);

  // POSTs a SOAP request. Answers with status 2xx and 500 are returned (a 500 carries a
  // Fault); everything else throws Failure with the code for its kind.
  HttpAnswer send(const std::string& url, const std::string& requestText);

 private:
  ConnectionPool& pool_;
  int32_t timeoutMs_ = kDefaultTimeoutMs;
  std::string soapAction_;
  std::string proxy_;  // empty: no proxy at all
};

}  // namespace brenmoor::soap
