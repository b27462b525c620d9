#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

#include "brenmoor/brenmoor.h"
#include "output.h"
#include "settings.h"

namespace brenmoor::cli {

struct Context {
  SettingsSources sources;  // as the command line gave them
  Settings settings;        // resolved before any subcommand runs
  bool useProxy = false;
  bool connect = false;  // sign in with Connect instead of login and selectAccount
  std::string sourceSystem = "brenmoor-cli";
  bool quiet = false;
  bool trace = false;
  OutputMode output;
  uint64_t maxAnswerBytes = 0;  // 0: the library's own limit
  int status = 0;               // the exit status of the subcommand that ran
};

// Prints the service's error pair to stderr and returns the exit status for the failure.
int failed(const ZylService& service, const std::string& what);

// For calls whose result cannot tell a failure (lists that come back empty, false answers):
// clears the error pair and notes the message boxes shown so far; failed() tells whether the
// calls made since then failed or faulted.
class CallWatch {
 public:
  explicit CallWatch(ZylService& service);
  bool failed() const;

 private:
  ZylService& service_;
  int boxesBefore_ = 0;
};

// Prints a usage error to stderr and returns its exit status.
int usageError(const std::string& message);

// Sets the service up as the options say: alerts off (the CLI reports failures itself), the
// host, the trace, the answer limit and the context's URL. False (with the status set) when
// no URL was given.
bool prepare(ZylService& service, Context& context);

// Signs in with Connect (--connect) or with login and then selects the account given by id
// or guid. Returns false (with the status set) when that fails.
bool signIn(ZylService& service, Context& context);

// Signs in with Connect and, when an account id is given, selects it afterwards.
bool connect(ZylService& service, Context& context);

// A subcommand callback that runs `body` on a signed-in service and signs out afterwards.
template <class Body>
auto signedIn(Context& context, Body body) {
  return [&context, body] {
    ZylService service;
    if (!signIn(service, context)) return;
    body(service);
    service.logout();
  };
}

// Looks in on a background process of the service until it completes, printing its percent
// and message unless --quiet, for a bounded number of polls and time. False (with the status
// set) when polling fails or the process outlasts the bound.
bool followProcess(ZylService& service, Context& context, const std::string& procGuid,
                   const std::string& what);

// One function per subcommand group.
void addServerCommands(CLI::App& app, Context& context);
void addAccountCommands(CLI::App& app, Context& context);
void addProjectCommands(CLI::App& app, Context& context);
void addTemplateCommands(CLI::App& app, Context& context);
void addRecordCommands(CLI::App& app, Context& context);
void addAssetCommands(CLI::App& app, Context& context);
void addFolderCommands(CLI::App& app, Context& context);
void addUserCommands(CLI::App& app, Context& context);
void addRegistrantCommands(CLI::App& app, Context& context);
void addQuotaCommands(CLI::App& app, Context& context);
void addReportCommands(CLI::App& app, Context& context);

}  // namespace brenmoor::cli
