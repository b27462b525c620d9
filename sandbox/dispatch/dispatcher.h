#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "dispatch/service.h"

namespace sandbox {

// What one SOAP request came to, for the HTTP layer and the request log.
struct Outcome {
  int status = 200;
  std::string body;
  std::string operation;  // as the request named it, clipped; empty if unreadable
  std::string key_note;   // token prefix and counter of a verified key, for the log
};

// Routes a request to the service's handler, running the key check for keyed operations
// and turning every failure into the matching SOAP fault.
class Dispatcher {
 public:
  Dispatcher(Database& db, const ServerInfo& server, std::vector<const Service*> services)
      : db_(db), server_(server), services_(std::move(services)) {}

  // The service at an endpoint path; repeated slashes are ignored. Null if none.
  const Service* find_service(std::string_view path) const;

  Outcome handle(const Service& service, std::string_view body);

 private:
  Database& db_;
  const ServerInfo& server_;
  std::vector<const Service*> services_;
  // The store is one SQLite connection: handlers run one at a time.
  std::mutex store_mutex_;
};

}  // namespace sandbox
