// brenmoor: the Telvane services from the command line. Data goes to stdout, diagnostics to
// stderr; the exit status tells the class of failure (exit_codes.h).

#include <unistd.h>
#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

#include "brenmoor/version.h"
#include "commands.h"
#include "completion.h"
#include "exit_codes.h"
#include "terminal.h"

namespace {

constexpr const char* kSettingsHelp =
    "Settings come from the options, else the environment (BRENMOOR_URL, BRENMOOR_USER,\n"
    "BRENMOOR_PASSWORD, BRENMOOR_ACCOUNT), else a profile of the settings file\n"
    "($XDG_CONFIG_HOME/brenmoor/config or ~/.config/brenmoor/config): [NAME] sections chosen\n"
    "by --profile, [default] otherwise, with lines url, user, password, account and\n"
    "account-guid as \"key = value\". A file holding a password must be readable by its\n"
    "owner only (chmod 600). Without a password, brenmoor asks for one on a terminal.\n"
    "\n"
    "Example:\n"
    "  brenmoor --url http://127.0.0.1:8080 --user demo@example.com --account 1001 projects "
    "list\n";

void addOptions(CLI::App& app, brenmoor::cli::Context& context) {
  auto& given = context.sources.options;
  app.add_option("--url", given.url, "Base URL of the server, e.g. http://127.0.0.1:8080");
  app.add_option("--profile", context.sources.profile, "Profile of the settings file to use");
  app.add_option("--user", given.user, "User name for commands that sign in");
  app.add_option("--password", given.password,
                 "Password (visible to other users in the process list: prefer the others)");
  app.add_option("--password-file", context.sources.passwordFile,
                 "Read the password from the first line of FILE");
  app.add_option("--account", given.account, "Account id to select after signing in");
  app.add_option("--account-guid", given.accountGuid,
                 "Account guid for Connect (connect, --connect) or to select after signing in");
  app.add_flag("--connect", context.connect,
               "Sign in with Connect (compatibility check, sign-in, account) instead of login");
  app.add_option("--source-system", context.sourceSystem,
                 "Source system that Connect records (default brenmoor-cli)");
  app.add_flag("--proxy", context.useProxy, "Send requests through the proxy at localhost:8080");
  app.add_flag("--json", context.output.json, "Print data as JSON");
  app.add_flag("-q,--quiet", context.quiet, "No diagnostics beyond errors");
  app.add_flag("--trace", context.trace,
               "Print each request and answer to standard error, secrets masked");
  app.add_option("--max-answer-bytes", context.maxAnswerBytes,
                 "Refuse answers larger than this (default 1 GiB)");
  app.set_version_flag("--version", std::string("brenmoor ") + brenmoor::kVersionString);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace brenmoor::cli;
  exitOnInterrupt();
  CLI::App app{"brenmoor: work with the Telvane services from the command line"};
  app.require_subcommand(1);
  app.footer(std::string(kSettingsHelp) + "\n" + kExitCodesHelp);
  Context context;
  context.output.terminal = isatty(STDOUT_FILENO);
  addOptions(app, context);
  app.add_option_function<std::string>(
         "--completion",
         [&app](const std::string& shell) {
           if (shell != "bash") throw CLI::ValidationError("--completion", "only bash is known");
           std::cout << bashCompletion(app);
           throw CLI::Success();
         },
         "Print the completion script for SHELL")
      ->group("");
  // Settings are resolved once the command line is read and before any subcommand runs.
  app.parse_complete_callback([&context] {
    const std::string error = resolveSettings(context.sources, context.settings);
    if (!error.empty()) throw CLI::ValidationError(error);
  });
  addServerCommands(app, context);
  addAccountCommands(app, context);
  addProjectCommands(app, context);
  addTemplateCommands(app, context);
  addRecordCommands(app, context);
  addAssetCommands(app, context);
  addFolderCommands(app, context);
  addUserCommands(app, context);
  addRegistrantCommands(app, context);
  addQuotaCommands(app, context);
  addReportCommands(app, context);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int status = app.exit(e);
    return status == 0 ? kSuccess : kUsage;
  } catch (const std::exception& e) {
    std::cerr << "brenmoor: " << e.what() << '\n';
    return kCallFailed;
  }
  return context.status;
}
