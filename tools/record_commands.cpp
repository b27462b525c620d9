// Subcommands about data records and deploying them.

#include <iostream>
#include <memory>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {

void addRecordCommands(CLI::App& app, Context& context) {
  struct Args {
    std::vector<std::string> templates, records;
    std::string theme, project, name;
  };
  auto args = std::make_shared<Args>();

  auto* records = app.add_subcommand("records", "Data records: the content of templates");
  records->require_subcommand(1);
  records->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 records show --theme theme-classroom\n"
      "  brenmoor --profile work --account 1001 records create PROJECT --template TPL\n"
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

  auto* create = records->add_subcommand(
      "create", "Attach a new record without entries to project templates; print its guid");
  create->add_option("project", args->project, "Project guid")->required();
  create->add_option("--template", args->templates, "Template guids")->required();
  create->add_option("--name", args->name, "The record's name");
  create->callback(signedIn(context, [&context, args](ZylService& service) {
    DataRecord record;
    record.name = args->name;
    record.entries = std::make_shared<Collection<DataRecordEntry>>();
    record.templateGuidList = std::make_shared<Collection<std::string>>();
    for (const auto& guid : args->templates) record.templateGuidList()->Add(guid);
    const std::string guid = service.createDataRecord(record, args->project, false);
    if (guid.empty()) return void(context.status = failed(service, "creating the record"));
    printValue(context.output, "guid", guid);
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
