// Subcommands about the server itself: its version and its simple values.

#include <iostream>

#include "commands.h"

namespace brenmoor::cli {

void addServerCommands(CLI::App& app, Context& context) {
  app.add_subcommand("ping", "Print the server's version")
      ->footer("Example: brenmoor --url http://127.0.0.1:8080 ping")
      ->callback([&context] {
        ZylService service;
        if (!prepare(service, context)) return;
        if (!service.Ping(context.settings.url, context.useProxy)) {
          context.status = failed(service, "ping");
          return;
        }
        printValue(context.output, "serverVersion", service.serverVersion());
      });

  app.add_subcommand("guid", "Print a new guid made by the server")
      ->footer("Example: brenmoor --url http://127.0.0.1:8080 --json guid")
      ->callback([&context] {
        ZylService service;
        if (!prepare(service, context)) return;
        std::string guid = service.getGuid();
        if (guid.empty()) {
          context.status = failed(service, "guid");
          return;
        }
        printValue(context.output, "guid", guid);
      });
}

}  // namespace brenmoor::cli
