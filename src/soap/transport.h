#pragma once
// HTTP transport for SOAP requests, on libcurl. One transport serves one call; the connection
// pool outlives calls, so that one libcurl handle and its kept-alive connections serve them all.
// The pool also holds the service's cookies, in memory only, and the authorities its TLS
// connections trust, for its calls and its uploads.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "brenmoor/trace.h"
#include "soap/answer.h"

namespace brenmoor::soap {

class ConnectionPool {
 public:
  ConnectionPool();
  ~ConnectionPool();
  ConnectionPool(const ConnectionPool&) = delete;
  ConnectionPool& operator=(const ConnectionPool&) = delete;

  // The PEM file of the certificate authorities that servers' certificates must chain to,
  // instead of the system's; empty: the system's. Takes effect at the next call or upload.
  void setCaFile(const std::string& path);

 private:
  friend class HttpTransport;
  friend class FileUpload;
  // Gives another libcurl easy handle this pool's cookies, resolver cache and trust.
  void shareWith(void* easy);
  void trustWith(void* easy);

  struct Handles;
  std::unique_ptr<Handles> handles_;
};

class HttpTransport {
 public:
  static constexpr int32_t kDefaultTimeoutMs = 15000;
  // Unless set, a whole exchange may take this many times the inactivity time-out.
  static constexpr int32_t kDeadlineFactor = 8;

  HttpTransport(ConnectionPool& pool, const AnswerLimits& limits);

  // Inactivity time-out: the call fails when no byte has moved for this long.
  void setTimeout(int32_t milliseconds) { timeoutMs_ = milliseconds; }
  // The longest a whole exchange may take, however steadily bytes arrive; 0: the default.
  void setDeadline(int64_t milliseconds) { deadlineMs_ = milliseconds; }
  // The action URI; it goes on the wire in double quotes.
  void setSoapAction(std::string_view action) { soapAction_ = action; }
  void setProxy(std::string_view server, int port);
  // Hands the exchange to `handler` once it is over; null (the default) traces nothing.
  void setTrace(const TraceHandler* handler) { trace_ = handler; }

  // POSTs a SOAP request and parses the answer while it arrives. Answers with status 2xx and
  // 500 are parsed (a 500 carries a Fault); everything else throws Failure with the code for
  // its kind, as does an answer that cannot be parsed or passes a limit.
  Answer send(const std::string& url, std::string_view requestText);

 private:
  ConnectionPool& pool_;
  AnswerLimits limits_;
  int32_t timeoutMs_ = kDefaultTimeoutMs;
  int64_t deadlineMs_ = 0;
  std::string_view soapAction_;
  std::string proxy_;  // empty: no proxy at all
  const TraceHandler* trace_ = nullptr;
};

}  // namespace brenmoor::soap
