#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "quotas/quota_settings.h"
#include "soap/arguments.h"
#include "soap/faults.h"
#include "soap/reply.h"

namespace sandbox {

class Database;
class ProcessRunner;

// The path under which the sandbox serves its fixed URL, so that uploads sent there can be
// told from those sent to the base URL.
inline constexpr std::string_view kFixedUrlPrefix = "/fixed";

// Facts about the running sandbox that some operations answer with.
struct ServerInfo {
  std::string version;
  std::string base_url;            // e.g. "http://127.0.0.1:8080"
  std::filesystem::path data_dir;  // uploaded files live under it
  QuotaSettings quotas;
  std::set<std::int64_t> deployments_disabled;  // account ids

  std::string fixed_url() const { return base_url + std::string(kFixedUrlPrefix); }
};

// The signed-in session behind a keyed request, as the key check found it.
struct Session {
  std::string token;
  std::int64_t user_id = 0;
  std::optional<std::int64_t> account_id;  // the selected account, if any
  std::int64_t counter = 0;                // of the key that this request carried
};

// Everything a handler works with. Handlers run one at a time.
class Call {
 public:
  Call(Database& db, ProcessRunner& processes, const ServerInfo& server, const Arguments& args,
       Reply& reply, const Session* session)
      : db(db), processes(processes), server(server), args(args), reply(reply), session_(session) {}

  Database& db;
  ProcessRunner& processes;
  const ServerInfo& server;
  const Arguments& args;
  Reply& reply;
  // Set by an operation that opens a session: the cookie that will stand for it.
  std::string new_session_cookie;

  // The session of a keyed or cookie operation; open operations have none.
  const Session& session() const {
    if (!session_) throw std::logic_error("session() called by an operation without a session");
    return *session_;
  }

  // The account the session selected; refused with a server fault when there is none.
  std::int64_t account() const {
    if (!session().account_id) throw ServerException("No account selected");
    return *session().account_id;
  }

 private:
  const Session* session_;
};

// How an operation finds its session: none, a valid key as its first element, or the
// session cookie of the HTTP request.
enum class Access { open, keyed, cookie };

using Handler = void (*)(Call& call);

struct Operation {
  std::string_view name;
  Access access;
  Handler handler;
  // The parts after the key and the answer's type, which the WSDL is made from, e.g.
  // "projectGuid doUndeploy:boolean -> boolean": a part's type is string unless named, a
  // record or array type names the answer's record ("ProjectInfo[]"); no "->", no answer.
  std::string_view signature;
};

// One endpoint: its path, namespace and the table of operations it serves.
struct Service {
  std::string_view name;
  std::string_view path;
  std::string_view ns;
  std::span<const Operation> operations;
};

}  // namespace sandbox
