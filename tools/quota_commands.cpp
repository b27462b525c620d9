// Subcommands about the account's quotas and service orders.

#include <algorithm>
#include <memory>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {
namespace {

// "[#####-----]" for used of limit; a limit of 0 or less counts as none.
std::string usageBar(double used, double limit) {
  constexpr int kWidth = 20;
  if (limit <= 0) return "";
  const int filled = static_cast<int>(std::clamp(used / limit, 0.0, 1.0) * kWidth + 0.5);
  return "[" + std::string(static_cast<size_t>(filled), '#') +
         std::string(static_cast<size_t>(kWidth - filled), '-') + "]";
}

}  // namespace

void addQuotaCommands(CLI::App& app, Context& context) {
  struct Args {
    std::string excludeProject, quotaType;
  };
  auto args = std::make_shared<Args>();

  auto* quota =
      app.add_subcommand("quota", "The account's quotas: name, used, limit, units, fail action");
  quota->footer(
      "Example: brenmoor --profile work --account 1001 quota\n"
      "On a terminal a bar shows how much of each limit is used.");
  quota->add_option("--exclude-project", args->excludeProject, "Leave out what this project uses");
  quota->callback(signedIn(context, [&context, args](ZylService& service) {
    auto quotas = service.getQuotaList(args->excludeProject);
    if (!quotas) return void(context.status = failed(service, "listing quotas"));
    nlohmann::json items = toJson(*quotas);
    std::vector<std::string> columns = {"name", "used", "limit", "units", "failAction"};
    if (context.output.terminal && !context.output.json) {
      for (auto& item : items) {
        item["usage"] = usageBar(item.value("used", 0.0), item.value("limit", 0.0));
      }
      columns.push_back("usage");
    }
    printList(context.output, items, columns);
  }));

  auto* orders = app.add_subcommand("orders", "Service orders: the account's paid periods");
  orders->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 orders start\n"
      "  brenmoor --profile work --account 1001 --json orders period");
  orders->require_subcommand(1);
  orders->add_subcommand("start", "Start a service order and print the service's answer")
      ->callback(signedIn(context, [&context](ZylService& service) {
        const std::string answer = service.initiateServiceOrder();
        if (answer.empty()) return void(context.status = failed(service, "starting an order"));
        printValue(context.output, "order", answer);
      }));
  auto* period =
      orders->add_subcommand("period", "The dates of the service-order period, one per line");
  period->add_option("--type", args->quotaType, "Of this quota type");
  period->callback(signedIn(context, [&context, args](ZylService& service) {
    auto dates = service.getServiceOrderPeriod(args->quotaType);
    if (!dates) return void(context.status = failed(service, "reading the period"));
    auto items = nlohmann::json::array();
    for (const Date& date : *dates) items.push_back(date.toString());
    printList(context.output, items, {});
  }));
}

}  // namespace brenmoor::cli
