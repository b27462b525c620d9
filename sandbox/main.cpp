// telvane-sandbox: a local, stateful emulator of the Telvane SOAP services.

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>

#include "http/sandbox_server.h"

int main(int argc, char** argv) {
  // Blocked before any thread starts, so only the sigwait below ever receives them.
  sigset_t stop_signals;
  sigemptyset(&stop_signals);
  sigaddset(&stop_signals, SIGINT);
  sigaddset(&stop_signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);

  sandbox::ServerOptions options;
  CLI::App app{"Local, stateful emulator of the Telvane SOAP services"};
  app.add_option("--port", options.port, "TCP port; 0 picks a free one")
      ->required()
      ->check(CLI::Range(0, 65535));
  app.add_option("--data", options.data_dir, "Folder of the SQLite database")->required();
  app.add_flag("--seed", options.seed, "Create or restore the demo user and accounts");
  app.add_flag("--log", options.log, "Log one line per request to stderr");
  app.add_option("--version", options.version, "Version answered by getVersion")
      ->capture_default_str();
  app.add_option("--host", options.host, "Numeric address to listen on")->capture_default_str();
  app.add_option("--max-upload-bytes", options.max_upload_bytes,
                 "Largest file the upload pages accept")
      ->capture_default_str();
  app.add_option("--workers", options.connection_limits.workers,
                 "Connections served at once; more wait for a free worker")
      ->capture_default_str()
      ->check(CLI::Range(1, 1024));
  app.add_option_function<std::vector<std::string>>(
         "--quota",
         [&options](const std::vector<std::string>& quotas) {
           for (const std::string& quota : quotas) {
             const std::string problem = sandbox::apply_quota_option(options.quotas, quota);
             if (!problem.empty()) throw CLI::ValidationError("--quota " + quota, problem);
           }
         },
         "NAME=LIMIT[:block|warn] for projects, storage (bytes) or deployments; repeatable")
      ->type_name("NAME=LIMIT[:ACTION]");
  app.add_option("--disable-deployments", options.deployments_disabled,
                 "Account id whose deploy is refused; repeatable");
  int simulated_viewers = 0;
  std::uint32_t simulation_seed = 1;
  app.add_option("--simulate-viewers", simulated_viewers,
                 "Add N synthetic viewers of the demo project's pages over the last 30 days")
      ->check(CLI::Range(0, 100000));
  app.add_option("--simulation-seed", simulation_seed, "Seed of --simulate-viewers")
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  }

  try {
    sandbox::SandboxServer server(options);
    server.start();
    if (simulated_viewers > 0) server.simulate_viewers(simulated_viewers, simulation_seed);
    std::cout << "listening on " << server.base_url() << std::endl;
    int received = 0;
    sigwait(&stop_signals, &received);
    server.stop();
  } catch (const std::exception& error) {
    std::cerr << "telvane-sandbox: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
