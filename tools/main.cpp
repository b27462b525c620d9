// brenmoor: the Telvane services from the command line. Data goes to stdout, diagnostics to
// stderr; a failed call exits non-zero with the library's error number and message.

#include <CLI/CLI.hpp>

#include <iostream>

#include "commands.h"

int main(int argc, char** argv) {
  CLI::App app{"brenmoor: work with the Telvane services from the command line"};
  app.require_subcommand(1);
  brenmoor::cli::Context context;
  app.add_option("--url", context.url, "Base URL of the server, e.g. http://127.0.0.1:8080")
      ->required();
  app.add_flag("--proxy", context.useProxy, "Send requests through the proxy at localhost:8080");
  app.add_option("--user", context.user, "User name for commands that sign in");
  app.add_option("--password", context.password, "Password (sent only as a digest)")
      ->envname("BRENMOOR_PASSWORD");
  app.add_option("--account", context.account, "Account id to select after signing in");
  app.add_option("--max-answer-bytes", context.maxAnswerBytes,
                 "Refuse answers larger than this (default 1 GiB)");
  brenmoor::cli::addServerCommands(app, context);
  brenmoor::cli::addAccountCommands(app, context);
  brenmoor::cli::addProjectCommands(app, context);
  brenmoor::cli::addTemplateCommands(app, context);
  brenmoor::cli::addRecordCommands(app, context);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e);
  }
  return context.status;
}
