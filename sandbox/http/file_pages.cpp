#include "http/file_pages.h"

#include <httplib.h>

#include <fstream>
#include <memory>
#include <optional>
#include <vector>

#include "assets/stored_files.h"
#include "store/asset_store.h"
#include "store/upload_store.h"

namespace sandbox {
namespace {

constexpr std::size_t kChunk = 64 * 1024;

// A 1x1 transparent PNG: the sandbox makes no real thumbnails or icons.
constexpr unsigned char kPlaceholderPng[] = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x06, 0x00, 0x00,
    0x00, 0x1f, 0x15, 0xc4, 0x89, 0x00, 0x00, 0x00, 0x0b, 0x49, 0x44, 0x41, 0x54, 0x78,
    0x9c, 0x63, 0x60, 0x00, 0x02, 0x00, 0x00, 0x05, 0x00, 0x01, 0x7a, 0x5e, 0xab, 0x3f,
    0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};

// The path's pieces between slashes, empty ones skipped.
std::vector<std::string_view> segments(std::string_view path) {
  std::vector<std::string_view> pieces;
  while (!path.empty()) {
    const auto end = path.find('/');
    if (end != 0) pieces.push_back(path.substr(0, end));
    if (end == std::string_view::npos) break;
    path.remove_prefix(end + 1);
  }
  return pieces;
}

void not_found(httplib::Response& response) {
  response.status = 404;
  response.set_content("Nothing at this path\n", "text/plain");
}

void serve_placeholder(httplib::Response& response) {
  response.set_content(reinterpret_cast<const char*>(kPlaceholderPng), sizeof kPlaceholderPng,
                       "image/png");
}

void serve_file(httplib::Response& response, const std::filesystem::path& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  auto stream = std::make_shared<std::ifstream>(file, std::ios::binary);
  if (error || !*stream) return not_found(response);
  if (size == 0) return response.set_content("", "application/octet-stream");
  auto buffer = std::make_shared<std::vector<char>>(kChunk);
  response.set_content_provider(
      size, "application/octet-stream",
      [stream, buffer](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        stream->seekg(static_cast<std::streamoff>(offset));
        stream->read(buffer->data(), static_cast<std::streamsize>(std::min(length, kChunk)));
        const std::streamsize got = stream->gcount();
        return got > 0 && sink.write(buffer->data(), static_cast<std::size_t>(got));
      });
}

}  // namespace

void FilePages::handle(const httplib::Request& request, httplib::Response& response) {
  const std::vector<std::string_view> path = segments(request.path);
  std::optional<std::string> file;
  bool placeholder = false;
  dispatcher_.with_store([&](Database& db) {
    if (path.size() == 3 && path[0] == "unmanaged") {
      const auto upload = find_upload(db, path[1]);
      if (upload && upload->page == kUnmanagedPage) file = upload->path;
    } else if (path.size() == 3 && path[0] == "assets" && path[2] == "preview") {
      file = first_representation_file(db, path[1]);
    } else if (path.size() == 3 && path[0] == "assets" && path[2] == "thumbnail") {
      placeholder = asset_exists(db, path[1]);
    } else if (path.size() == 2 && path[0] == "icons" && path[1].ends_with(".png")) {
      placeholder = true;
    }
  });
  if (placeholder) return serve_placeholder(response);
  if (!file || !is_stored_file_path(*file)) return not_found(response);
  serve_file(response, server_.data_dir / *file);
}

}  // namespace sandbox
