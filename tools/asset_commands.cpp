// Subcommands about assets: uploading files with a progress bar, listing, finding, deleting
// and previewing them.

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>

#include "cli_host.h"
#include "commands.h"
#include "exit_codes.h"
#include "progress_bar.h"
#include "records_json.h"
#include "terminal.h"

namespace brenmoor::cli {
namespace {

const std::vector<std::string> kAssetColumns = {"guid", "name", "typeText", "created",
                                                "description"};

// The asset type a file's extension suggests, for files given without --type.
std::string typeOfExtension(const std::string& extension) {
  static const std::pair<const char*, const char*> kTypes[] = {
      {"jpg", "Image"}, {"jpeg", "Image"},   {"png", "Image"},    {"gif", "Image"},
      {"mp4", "Video"}, {"flv", "Video"},    {"mov", "Video"},    {"mp3", "Audio"},
      {"wav", "Audio"}, {"pdf", "Document"}, {"txt", "Document"}, {"swf", "Flash"},
  };
  for (const auto& [known, type] : kTypes) {
    if (extension == known) return type;
  }
  return "";
}

std::string extensionOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  if (!extension.empty()) extension.erase(0, 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

// Turns the creation's events into the progress bar, and Ctrl-C into Cancel(): the library
// checks its cancel flag only between chunks, so the yield after each chunk is where to ask.
class UploadHost : public CliHost {
 public:
  UploadHost(bool quiet, ZylService& service, const InterruptCatcher& interrupt,
             std::vector<uint64_t> sizes, ProgressBar* bar)
      : CliHost(quiet),
        service_(service),
        interrupt_(interrupt),
        sizes_(std::move(sizes)),
        bar_(bar) {}

  void CreateAssetFileProgress(int32_t percent, const std::string& filename) override {
    if (bar_ && index_ < sizes_.size()) {
      bar_->update(sent_ + sizes_[index_] * static_cast<uint64_t>(percent) / 100, filename);
    }
  }
  // Comes after each file (and once more at the end).
  void CreateAssetProgress(int32_t) override {
    if (index_ < sizes_.size()) sent_ += sizes_[index_++];
  }
  // Asked again at every yield: the managed creation forgets a cancel between two files.
  void yield() override {
    if (interrupt_.caught()) service_.Cancel();
  }
  void messageBox(const std::string& text, const std::string& title) override {
    if (interrupt_.caught()) return;  // the files it names were cancelled, not failed
    if (bar_) bar_->breakLine();
    CliHost::messageBox(text, title);
  }

 private:
  ZylService& service_;
  const InterruptCatcher& interrupt_;
  std::vector<uint64_t> sizes_;
  ProgressBar* bar_;
  size_t index_ = 0;
  uint64_t sent_ = 0;
};

struct UploadArgs {
  std::vector<std::string> files;
  std::string name, type, description, project;
  int16_t folder = 0;
  bool unmanaged = false;
};

// One representation per file. Empty (with the status set) when a file cannot be sent.
Collection<Representation> representations(const UploadArgs& args, Context& context,
                                           std::vector<uint64_t>& sizes) {
  Collection<Representation> reps;
  for (const auto& file : args.files) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (error || access(file.c_str(), R_OK) != 0) {
      context.status = usageError("cannot read " + file);
      return {};
    }
    const std::string extension = extensionOf(file);
    auto r = std::make_shared<Representation>();
    r->localPath = file;
    r->fileType = extension;
    r->repType = args.type.empty() ? typeOfExtension(extension) : args.type;
    reps.Add(r);
    sizes.push_back(size);
  }
  return reps;
}

void upload(ZylService& service, Context& context, const UploadArgs& args) {
  std::vector<uint64_t> sizes;
  const Collection<Representation> reps = representations(args, context, sizes);
  if (context.status != kSuccess) return;
  const std::string type = args.type.empty() ? reps.Item(1)->repType() : args.type;
  if (type.empty()) {
    return void(context.status = usageError("give --type: the file extensions do not tell it"));
  }
  uint64_t total = 0;
  for (const uint64_t size : sizes) total += size;
  ProgressBar bar(total, isatty(STDERR_FILENO), std::cerr);
  InterruptCatcher interrupt;
  service.setHost(std::make_shared<UploadHost>(context.quiet, service, interrupt, sizes,
                                               context.quiet ? nullptr : &bar));
  const std::string guid =
      args.unmanaged ? service.CreateAsset_Unmanaged(args.name, args.description, type, reps,
                                                     args.folder, args.project)
                     : service.CreateAsset(args.name, args.description, type, reps, args.folder);
  if (!context.quiet) bar.finish();
  if (interrupt.caught()) {
    // The service registers what it got before the cancel; an interrupted upload leaves nothing.
    if (!guid.empty()) service.deleteAsset(guid);
    std::cerr << "brenmoor: upload cancelled\n";
    return void(context.status = kInterrupted);
  }
  if (guid.empty()) return void(context.status = failed(service, "creating the asset"));
  printValue(context.output, "guid", guid);
  const auto unsent =
      std::count_if(reps.begin(), reps.end(), [](const auto& r) { return r->invalid(); });
  if (unsent > 0) {
    std::cerr << "brenmoor: " << unsent << " of " << reps.Count() << " files were not sent ("
              << service.lastUploadErrorMessage() << "); the asset holds the others\n";
    context.status = kCallFailed;
  }
}

// The list operations answer an empty list when they fail: the watch tells the two apart.
template <class Call>
void printAssets(ZylService& service, Context& context, Call call) {
  CallWatch watch(service);
  auto assets = call();
  if (watch.failed() || !assets) return void(context.status = failed(service, "listing assets"));
  printList(context.output, toJson(*assets), kAssetColumns);
}

}  // namespace

void addAssetCommands(CLI::App& app, Context& context) {
  auto* assets = app.add_subcommand("assets", "Assets: media files kept in numbered folders");
  assets->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 assets upload talk.mp4 talk-low.mp4 \\\n"
      "      --name Keynote --folder 3\n"
      "  brenmoor --profile work --account 1001 --json assets list --folder 3 --search Keynote\n"
      "On a terminal the upload draws a progress bar on standard error; Ctrl-C cancels it and "
      "exits 130.");
  assets->require_subcommand(1);

  auto up = std::make_shared<UploadArgs>();
  auto* uploadCommand = assets->add_subcommand(
      "upload", "Upload files as one asset (one representation each) and print its guid");
  uploadCommand->add_option("files", up->files, "The files")->required();
  uploadCommand->add_option("--name", up->name, "The asset's name")->required();
  uploadCommand->add_option("--type", up->type,
                            "Asset type, e.g. Video (default: from the first file's extension)");
  uploadCommand->add_option("--folder", up->folder, "Folder id")->required();
  uploadCommand->add_option("--description", up->description);
  auto* project = uploadCommand->add_option("--project", up->project,
                                            "The project that keeps an unmanaged asset's files");
  uploadCommand
      ->add_flag("--unmanaged", up->unmanaged, "Keep the files in a project, served at URLs")
      ->needs(project);
  uploadCommand->callback(
      signedIn(context, [&context, up](ZylService& service) { upload(service, context, *up); }));

  struct Args {
    int16_t folder = 0, assetType = 0, fileType = 0, width = 0, height = 0;
    std::string extension, search, searchBy, sortBy, name, guid;
    bool exact = false;
  };
  auto args = std::make_shared<Args>();

  auto* list = assets->add_subcommand("list", "The assets of a folder: guid, name, type, created");
  list->add_option("--folder", args->folder, "Folder id")->required();
  list->add_option("--asset-type", args->assetType, "Only this asset type (the service's number)");
  list->add_option("--file-type", args->fileType, "Only this file type (the service's number)");
  list->add_option("--width", args->width, "Only this width");
  list->add_option("--height", args->height, "Only this height");
  list->add_option("--extension", args->extension, "Only files with this extension");
  list->add_option("--search", args->search, "Only assets whose name or description holds this");
  list->add_option("--search-by", args->searchBy, "Where --search looks")
      ->check(CLI::IsMember({"name", "description"}));
  list->add_flag("--exact", args->exact, "--search matches the whole text");
  list->add_option("--sort", args->sortBy, "Order")
      ->check(CLI::IsMember({"name", "created", "type"}));
  list->callback(signedIn(context, [&context, args](ZylService& service) {
    printAssets(service, context, [&] {
      const Args& a = *args;
      return service.getAssets(a.folder, a.assetType, a.fileType, a.width, a.height, a.extension,
                               a.search, a.searchBy, a.exact, a.sortBy);
    });
  }));

  auto* search = assets->add_subcommand("search", "Assets whose name holds NAME, in any folder");
  search->add_option("name", args->name)->required();
  search->add_option("--folder", args->folder, "Only this folder");
  search->callback(signedIn(context, [&context, args](ZylService& service) {
    printAssets(service, context,
                [&] { return service.getAssetsByName(args->name, args->folder); });
  }));

  auto* remove = assets->add_subcommand("delete", "Delete an asset and its files");
  remove->add_option("guid", args->guid)->required();
  remove->callback(signedIn(context, [&context, args](ZylService& service) {
    if (!service.deleteAsset(args->guid)) context.status = failed(service, "deleting the asset");
  }));

  auto* preview = assets->add_subcommand("preview", "Print the URL of an asset's preview");
  preview->add_option("guid", args->guid)->required();
  preview->callback(signedIn(context, [&context, args](ZylService& service) {
    const std::string url = service.getAssetPreviewUrl(args->guid);
    if (url.empty()) return void(context.status = failed(service, "previewing the asset"));
    printValue(context.output, "url", url);
  }));
}

}  // namespace brenmoor::cli
