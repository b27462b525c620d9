#pragma once
// TLS for tests: a certificate authority made at run time, the certificates it issues, and an
// HTTPS server on 127.0.0.1 that presents one of them.

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "scripted_server.h"

namespace httplib {
class SSLServer;
}

namespace brenmoor::testing {

struct Certificate {
  std::shared_ptr<X509> cert;
  std::shared_ptr<EVP_PKEY> key;
};

class TestAuthority {
 public:
  TestAuthority();  // a self-signed authority, valid for a year

  // A server certificate for `altName` ("IP:127.0.0.1", "DNS:example.test"), valid from
  // `fromDays` to `toDays` days from now.
  Certificate issue(const std::string& altName, long fromDays = -1, long toDays = 30) const;
  // Writes the authority's own certificate as PEM.
  void save(const std::string& path) const;

 private:
  Certificate ca_;
};

// Answers each request with what `answer` makes of it, as text/xml.
class TlsServer {
 public:
  using Answer = std::function<std::string(const RecordedRequest&)>;
  TlsServer(const Certificate& certificate, Answer answer);
  ~TlsServer();
  TlsServer(const TlsServer&) = delete;
  TlsServer& operator=(const TlsServer&) = delete;

  std::string baseUrl() const;  // "https://127.0.0.1:PORT"
  std::vector<RecordedRequest> requests() const;

 private:
  std::unique_ptr<httplib::SSLServer> server_;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::vector<RecordedRequest> requests_;
  std::thread thread_;
};

}  // namespace brenmoor::testing
