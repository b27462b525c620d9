// Subcommands about signing in and the user's accounts.

#include <iostream>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {
namespace {

const std::vector<std::string> kAccountColumns = {"accountID", "accountName", "accountGuid"};

// The account Connect chose: the one given by id or guid, or else the first of the list.
void reportAccount(ZylService& service, Context& context) {
  const Settings& s = context.settings;
  if (s.account.empty() && !s.accountGuid.empty()) {
    return printRecord(context.output, {{"accountGuid", s.accountGuid}}, kAccountColumns);
  }
  auto accounts = service.getAccounts();
  if (!accounts) return void(context.status = failed(service, "listing accounts"));
  for (const auto& account : *accounts) {
    if (s.account.empty() || std::to_string(account->accountID()) == s.account) {
      return printRecord(context.output, toJson(*account), kAccountColumns);
    }
  }
}

}  // namespace

void addAccountCommands(CLI::App& app, Context& context) {
  app.add_subcommand("login", "Sign in, print the session token, and sign out")
      ->footer("Example: brenmoor --user demo@example.com --password-file ~/.telvane login")
      ->callback([&context] {
        ZylService service;
        if (!signIn(service, context)) return;
        printValue(context.output, "sessionToken", service.sessionToken());
        if (!service.logout()) context.status = failed(service, "sign-out");
      });

  app.add_subcommand("connect",
                     "Sign in with Connect (compatibility, sign-in, account) and print the "
                     "account it selected: the one of --account-guid, else the first")
      ->footer(
          "Example: brenmoor --profile work connect --source-system nightly-sync\n"
          "The contacting form's texts go to standard error; it never waits for Enter.")
      ->callback([&context] {
        ZylService service;
        if (!connect(service, context)) return;
        reportAccount(service, context);
        service.logout();
      });

  app.add_subcommand("accounts", "List the accounts of the user: id and name")
      ->footer("Example: brenmoor --profile work --json accounts")
      ->callback(signedIn(context, [&context](ZylService& service) {
        auto accounts = service.getAccounts();
        if (!accounts) return void(context.status = failed(service, "listing accounts"));
        printList(context.output, toJson(*accounts), {"accountID", "accountName"});
      }));

  app.add_subcommand("compatible", "Ask whether the server accepts this library's version")
      ->footer("Example: brenmoor --url http://127.0.0.1:8080 compatible")
      ->callback([&context] {
        ZylService service;
        if (!prepare(service, context)) return;
        if (!service.isCompatible()) {
          context.status = failed(service, "compatibility check");
          return;
        }
        if (context.output.json) return printValue(context.output, "compatible", true);
        std::cout << "compatible\n";
      });
}

}  // namespace brenmoor::cli
