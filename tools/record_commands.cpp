// Subcommands about data records and deploying them.

#include <iostream>
#include <memory>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {

void addRecordCommands(CLI::App& app, Context& context) {
  struct Args {
    std::vector<std::string> templates, records;
    std::string theme;
  };
  auto args = std::make_shared<Args>();

  auto* records = app.add_subcommand("records", "Data records: the content of templates");
  records->require_subcommand(1);
  records->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 records show --theme theme-classroom\n"
      "  brenmoor --profile work --account 1001 records deploy --record REC --template TPL");

  auto* show = records->add_subcommand(
      "show", "Print the record of templates (or a theme) as XML; with --json as an object");
  show->add_option("templates", args->templates, "Template guids");
  show->add_option("--theme", args->theme, "A theme's record instead");
  show->callback(signedIn(context, [&context, args](ZylService& service) {
    auto record = args->theme.empty() ? service.getDataRecord(args->templates)
                                      : service.getThemeDataRecord(args->theme);
    if (!record || !record->entries()) {
      context.status = failed(service, "reading the record");
    } else if (context.output.json) {
      printRecord(context.output, toJson(*record), {});
    } else {
      std::cout << record->getXML() << '\n';
    }
  }));

  auto* deploy = records->add_subcommand("deploy", "Deploy templates with records");
  deploy->add_option("--record", args->records, "Record guids")->required();
  deploy->add_option("--template", args->templates, "Template guids")->required();
  deploy->callback(signedIn(context, [&context, args](ZylService& service) {
    auto deployments = service.Deploy(args->records, args->templates);
    if (deployments.empty()) context.status = failed(service, "deploying");
    if (!deployments.empty()) printList(context.output, deployments, {});
  }));
}

}  // namespace brenmoor::cli
