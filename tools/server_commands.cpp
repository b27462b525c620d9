// Subcommands about the server itself: its version and its simple values.

#include <iostream>

#include "commands.h"

namespace brenmoor::cli {

void addServerCommands(CLI::App& app, Context& context) {
  app.add_subcommand("ping", "Print the server's version")->callback([&context] {
    ZylService service;
    service.ShowAlerts(false);
    if (!service.Ping(context.url, context.useProxy)) {
      context.status = failed(service, "ping");
      return;
    }
    std::cout << service.serverVersion() << '\n';
  });

  app.add_subcommand("guid", "Print a new guid made by the server")->callback([&context] {
    ZylService service;
    prepare(service, context);
    std::string guid = service.getGuid();
    if (guid.empty()) {
      context.status = failed(service, "guid");
      return;
    }
    std::cout << guid << '\n';
  });
}

}  // namespace brenmoor::cli
