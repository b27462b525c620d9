// Subcommands about projects, templates, themes and their long-running work.

#include <memory>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {

void addProjectCommands(CLI::App& app, Context& context) {
  auto* projects = app.add_subcommand("projects", "Projects of the selected account");
  projects->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 projects list\n"
      "  brenmoor --profile work --connect projects create Launch --description 'Spring'");
  projects->require_subcommand(1);

  // Option values live as long as the callbacks that read them.
  struct Args {
    std::string type, name, description, guid;
  };
  auto args = std::make_shared<Args>();

  auto* list = projects->add_subcommand("list", "One project per line: guid, name, description");
  list->add_option("--type", args->type, "Only projects of this type");
  list->callback(signedIn(context, [&context, args](ZylService& service) {
    auto all = service.getProjectList(args->type);
    if (!all) return void(context.status = failed(service, "listing projects"));
    printList(context.output, toJson(*all), {"guid", "name", "description"});
  }));

  auto* create = projects->add_subcommand("create", "Create a project and print its guid");
  create->add_option("name", args->name)->required();
  create->add_option("--description", args->description);
  create->callback(signedIn(context, [&context, args](ZylService& service) {
    std::string guid = service.createProject(args->name, args->description);
    if (guid.empty()) return void(context.status = failed(service, "creating the project"));
    printValue(context.output, "guid", guid);
  }));

  auto* remove = projects->add_subcommand("delete", "Delete a project, undeploying it");
  remove->add_option("guid", args->guid)->required();
  remove->callback(signedIn(context, [&context, args](ZylService& service) {
    if (!service.deleteProject(args->guid))
      context.status = failed(service, "deleting the project");
  }));

  auto* clear = projects->add_subcommand("clear", "Empty a project, showing the progress");
  clear->add_option("guid", args->guid)->required();
  clear->callback(signedIn(context, [&context, args](ZylService& service) {
    std::string proc = service.clearProject_Async(args->guid, true);
    if (proc.empty()) return void(context.status = failed(service, "starting to clear"));
    if (!followProcess(service, context, proc, "clearing the project")) return;
    if (!service.clearProject_Result(proc)) context.status = failed(service, "clearing");
  }));
}

void addTemplateCommands(CLI::App& app, Context& context) {
  struct Args {
    std::string type, templateGuid, projectGuid, name, themeGuid;
  };
  auto args = std::make_shared<Args>();

  auto* templates = app.add_subcommand("templates", "The template catalog and project templates");
  templates->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 templates list --type video\n"
      "  brenmoor --profile work --account 1001 templates copy tpl-video-player PROJECT 'Keynote'");
  templates->require_subcommand(1);
  auto* list = templates->add_subcommand("list", "One template per line: guid, name, type");
  list->add_option("--type", args->type, "Only templates of this type");
  list->add_option("--project", args->projectGuid, "The templates of this project instead");
  list->callback(signedIn(context, [&context, args](ZylService& service) {
    auto all = args->projectGuid.empty()
                   ? service.getTemplateList(args->type, "getTemplateList_Array")
                   : service.getProjectTemplateList(args->projectGuid);
    if (!all) return void(context.status = failed(service, "listing templates"));
    printList(context.output, toJson(*all), {"guid", "name", "templateType"});
  }));
  auto* copy = templates->add_subcommand("copy", "Copy a template into a project");
  copy->add_option("template", args->templateGuid)->required();
  copy->add_option("project", args->projectGuid)->required();
  copy->add_option("name", args->name)->required();
  copy->callback(signedIn(context, [&context, args](ZylService& service) {
    std::string guid =
        service.copyTemplate(args->templateGuid, args->projectGuid, args->name, false);
    if (guid.empty()) return void(context.status = failed(service, "copying the template"));
    printValue(context.output, "guid", guid);
  }));

  auto* themes = app.add_subcommand("themes", "Themes: named sets of templates");
  themes->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 --json themes list\n"
      "  brenmoor --profile work --account 1001 themes apply theme-classroom PROJECT");
  themes->require_subcommand(1);
  themes->add_subcommand("list", "One theme per line: guid, name")
      ->callback(signedIn(context, [&context, args](ZylService& service) {
        auto all = service.getThemeList("", "getThemeList_Array");
        if (!all) return void(context.status = failed(service, "listing themes"));
        printList(context.output, toJson(*all), {"guid", "name"});
      }));
  auto* apply = themes->add_subcommand("apply", "Copy a theme's templates into a project");
  apply->add_option("theme", args->themeGuid)->required();
  apply->add_option("project", args->projectGuid)->required();
  apply->callback(signedIn(context, [&context, args](ZylService& service) {
    if (!service.applyTheme(args->themeGuid, args->projectGuid)) {
      context.status = failed(service, "applying the theme");
    }
  }));
}

}  // namespace brenmoor::cli
