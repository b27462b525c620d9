#include "assets/stored_files.h"

#include <stdexcept>

namespace sandbox {
namespace {

// Letters, digits, '-' and '_': what the sandbox's keys and guids are made of.
bool is_plain_piece(std::string_view piece) {
  if (piece.empty() || piece.size() > 64) return false;
  for (char c : piece) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '-' || c == '_';
    if (!plain) return false;
  }
  return true;
}

std::string_view checked(std::string_view piece) {
  if (!is_plain_piece(piece)) throw std::invalid_argument("not a stored file name");
  return piece;
}

}  // namespace

std::string managed_upload_path(std::string_view key) {
  return "uploads/" + std::string(checked(key));
}

std::string project_upload_path(std::string_view project_guid, std::string_view key) {
  return "projects/" + std::string(checked(project_guid)) + "/" + std::string(checked(key));
}

bool is_stored_file_path(std::string_view path) {
  if (path.starts_with("uploads/")) return is_plain_piece(path.substr(8));
  if (!path.starts_with("projects/")) return false;
  path.remove_prefix(9);
  const auto slash = path.find('/');
  return slash != std::string_view::npos && is_plain_piece(path.substr(0, slash)) &&
         is_plain_piece(path.substr(slash + 1));
}

void remove_stored_files(const std::filesystem::path& data_dir,
                         const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    std::error_code ignored;
    if (is_stored_file_path(path)) std::filesystem::remove(data_dir / path, ignored);
  }
}

void remove_partial_files(const std::filesystem::path& data_dir) {
  std::error_code error;
  std::vector<std::filesystem::path> folders{data_dir / "uploads", data_dir / "outbox"};
  for (const auto& project : std::filesystem::directory_iterator(data_dir / "projects", error)) {
    folders.push_back(project.path());
  }
  for (const auto& folder : folders) {
    std::vector<std::filesystem::path> partial;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
      if (entry.path().extension() == ".part") partial.push_back(entry.path());
    }
    for (const auto& file : partial) std::filesystem::remove(file, error);
  }
}

}  // namespace sandbox
