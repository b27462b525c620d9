#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "dispatch/service.h"
#include "processes/process_runner.h"

namespace sandbox {

// A request path with repeated slashes made one, as a base URL with a trailing slash gives.
std::string collapse_slashes(std::string_view path);

// What one SOAP request came to, for the HTTP layer and the request log.
struct Outcome {
  int status = 200;
  std::string body;
  std::string operation;   // as the request named it, clipped; empty if unreadable
  std::string key_note;    // token prefix (and key counter) of the session, for the log
  std::string set_cookie;  // a Set-Cookie value, when the operation opened a session
};

// Routes a request to the service's handler, running the key check for keyed operations
// and turning every failure into the matching SOAP fault. Owns the long-running processes
// that handlers start, since those share the store with the handlers.
class Dispatcher {
 public:
  Dispatcher(Database& db, const ServerInfo& server, std::vector<const Service*> services,
             std::chrono::milliseconds process_step)
      : db_(db),
        server_(server),
        services_(std::move(services)),
        processes_(db_, store_mutex_, process_step) {}

  // The service at an endpoint path; repeated slashes are ignored. Null if none.
  const Service* find_service(std::string_view path) const;

  // `cookie_header` is the request's Cookie header, where cookie operations find their session.
  Outcome handle(const Service& service, std::string_view body, std::string_view cookie_header);

  // Runs `work` on the store, one at a time with the handlers and process steps.
  void with_store(const std::function<void(Database&)>& work) {
    const std::lock_guard lock(store_mutex_);
    work(db_);
  }

  // Ends background work; call once no request can arrive any more.
  void stop_processes() { processes_.stop(); }

 private:
  Database& db_;
  const ServerInfo& server_;
  std::vector<const Service*> services_;
  // The store is one SQLite connection: handlers and process steps run one at a time.
  std::mutex store_mutex_;
  ProcessRunner processes_;
};

}  // namespace sandbox
