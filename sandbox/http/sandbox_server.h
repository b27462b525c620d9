#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include "dispatch/dispatcher.h"
#include "dispatch/service.h"
#include "http/admin_pages.h"
#include "http/connection_limits.h"
#include "http/file_pages.h"
#include "http/upload_pages.h"
#include "store/database.h"
#include "viewers/viewer_pages.h"

namespace sandbox {

class GuardedServer;

struct ServerOptions {
  std::string host = "127.0.0.1";  // a numeric address; "localhost" means 127.0.0.1
  int port = 0;                    // 0 picks a free port
  std::filesystem::path data_dir;  // holds the SQLite file; created if missing
  bool seed = false;               // (re)create the demo user even if users exist
  bool log = false;                // one line per request on stderr
  std::string version = "3.2.4.60";
  // Long-running processes advance in ten such steps.
  std::chrono::milliseconds process_step{150};
  // The largest file the upload pages take.
  std::uint64_t max_upload_bytes = std::uint64_t{2} << 30;
  ConnectionLimits connection_limits;
  QuotaSettings quotas;                         // the same limits for every account
  std::set<std::int64_t> deployments_disabled;  // account ids whose "deploy" is refused
};

// The HTTP front of the sandbox: the five SOAP endpoints, the upload pages, the pages that
// serve uploaded files and the deployed pages that viewers visit, over one store.
class SandboxServer {
 public:
  // Opens the store, creates the schema and seeds the demo data when asked or when
  // the store has no user yet. Throws std::exception on failure.
  explicit SandboxServer(const ServerOptions& options);
  ~SandboxServer();
  SandboxServer(const SandboxServer&) = delete;
  SandboxServer& operator=(const SandboxServer&) = delete;

  // Binds, starts serving on a background thread and returns the port once requests
  // are being served. Throws when the address cannot be bound.
  int start();
  // "http://HOST:PORT", valid after start().
  const std::string& base_url() const { return info_.base_url; }
  // Adds synthetic viewers to the demo project's pages (see viewers/simulated_viewers.h);
  // call after start(), since the pages' links need the base URL.
  void simulate_viewers(int count, std::uint32_t seed);
  // Stops serving, waits for requests in progress and ends background processes; safe to
  // call more than once.
  void stop();

 private:
  void install_routes(bool log);

  ServerOptions options_;
  Database db_;
  ServerInfo info_;
  Dispatcher dispatcher_;
  UploadPages upload_pages_;
  FilePages file_pages_;
  ViewerPages viewer_pages_;
  AdminPages admin_pages_;
  std::unique_ptr<GuardedServer> http_;
  std::thread listener_;
};

}  // namespace sandbox
