#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

#include "brenmoor/brenmoor.h"

namespace brenmoor::cli {

struct Context {
  std::string url;
  bool useProxy = false;
  std::string user;
  std::string password;
  std::string account;          // an account id to select after signing in, if any
  uint64_t maxAnswerBytes = 0;  // 0: the library's own limit
  int status = 0;               // the exit status of the subcommand that ran
};

// Prints the service's error pair to stderr and returns the exit status for a failed call.
int failed(const ZylService& service, const std::string& what);

// A service with alerts off (the CLI reports failures itself) pointed at the context's URL.
void prepare(ZylService& service, const Context& context);

// Signs in with the context's user and password, then selects its account if it names one.
// Returns false (with the status set) when that fails.
bool signIn(ZylService& service, Context& context);

// A subcommand callback that runs `body` on a signed-in service (with the context's account
// selected) and signs out afterwards.
template <class Body>
auto signedIn(Context& context, Body body) {
  return [&context, body] {
    ZylService service;
    if (!signIn(service, context)) return;
    body(service);
    service.logout();
  };
}

// One function per subcommand group.
void addServerCommands(CLI::App& app, Context& context);
void addAccountCommands(CLI::App& app, Context& context);
void addProjectCommands(CLI::App& app, Context& context);
void addTemplateCommands(CLI::App& app, Context& context);
void addRecordCommands(CLI::App& app, Context& context);

}  // namespace brenmoor::cli
