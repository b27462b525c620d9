// Subcommands about asset folders: the tree, creating, deleting and clearing them.

#include <memory>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {

void addFolderCommands(CLI::App& app, Context& context) {
  auto* folders = app.add_subcommand("folders", "Asset folders: a numbered tree per account");
  folders->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 folders tree\n"
      "  brenmoor --profile work --account 1001 folders create Talks/2024 --parent 3\n"
      "  brenmoor --profile work --account 1001 folders clear 12 --async");
  folders->require_subcommand(1);

  struct Args {
    int16_t id = 0, parent = 0;
    std::string path;
    bool async = false;
  };
  auto args = std::make_shared<Args>();

  auto* tree = folders->add_subcommand(
      "tree", "The folders under ID (default: all): id, parent, name indented by depth");
  tree->add_option("id", args->id, "Folder id");
  tree->callback(signedIn(context, [&context, args](ZylService& service) {
    CallWatch watch(service);
    auto nodes = service.getAssetFolderTree(args->id);
    if (watch.failed() || !nodes) return void(context.status = failed(service, "listing folders"));
    nlohmann::json items = toJson(*nodes);
    if (context.output.terminal && !context.output.json) {
      for (auto& item : items) {
        item["name"] = std::string(2 * item["parentCount"].get<size_t>(), ' ') +
                       item["name"].get<std::string>();
      }
    }
    printList(context.output, items, {"id", "parentID", "name", "rights"});
  }));

  auto* create = folders->add_subcommand("create", "Create a folder and print its id");
  create->add_option("path", args->path, "The folder's name or path")->required();
  create->add_option("--parent", args->parent, "Create it inside this folder");
  create->callback(signedIn(context, [&context, args](ZylService& service) {
    const int16_t id = args->parent ? service.createChildAssetFolder(args->parent, args->path)
                                    : service.createAssetFolder(args->path);
    if (id <= 0) return void(context.status = failed(service, "creating the folder"));
    printValue(context.output, "id", id);
  }));

  auto* remove = folders->add_subcommand("delete", "Delete an empty folder");
  remove->add_option("id", args->id, "Folder id")->required();
  remove->callback(signedIn(context, [&context, args](ZylService& service) {
    if (!service.deleteAssetFolder(args->id)) {
      context.status = failed(service, "deleting the folder");
    }
  }));

  auto* clear = folders->add_subcommand("clear", "Delete every asset of a folder");
  clear->add_option("id", args->id, "Folder id")->required();
  clear->add_flag("--async", args->async,
                  "Clear in the background and follow the progress (for large folders)");
  clear->callback(signedIn(context, [&context, args](ZylService& service) {
    if (!args->async) {
      if (!service.clearAssetFolder(args->id)) context.status = failed(service, "clearing");
      return;
    }
    const std::string proc = service.clearAssetFolder_Async(args->id);
    if (proc.empty()) return void(context.status = failed(service, "starting to clear"));
    followProcess(service, context, proc, "clearing the folder");
  }));
}

}  // namespace brenmoor::cli
