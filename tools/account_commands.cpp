// Subcommands about signing in and the user's accounts.

#include <iostream>

#include "commands.h"

namespace brenmoor::cli {

void addAccountCommands(CLI::App& app, Context& context) {
  app.add_subcommand("login", "Sign in, print the session token, and sign out")
      ->callback([&context] {
        ZylService service;
        if (!signIn(service, context)) return;
        std::cout << service.sessionToken() << '\n';
        if (!service.logout()) context.status = failed(service, "sign-out");
      });

  app.add_subcommand("accounts", "List the accounts of the user, one per line: id, tab, name")
      ->callback(signedIn(context, [&context](ZylService& service) {
        auto accounts = service.getAccounts();
        if (!accounts) return void(context.status = failed(service, "listing accounts"));
        for (const auto& account : *accounts) {
          std::cout << account->accountID() << '\t' << account->accountName() << '\n';
        }
      }));

  app.add_subcommand("compatible", "Ask whether the server accepts this library's version")
      ->callback([&context] {
        ZylService service;
        prepare(service, context);
        if (!service.isCompatible()) {
          context.status = failed(service, "compatibility check");
          return;
        }
        std::cout << "compatible\n";
      });
}

}  // namespace brenmoor::cli
