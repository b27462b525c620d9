#include "assets/stored_files.h"

namespace sandbox {

std::string managed_upload_path(std::string_view key) {
  return "uploads/" + std::string(key);
}

std::string project_upload_path(std::string_view project_guid, std::string_view key) {
  return "projects/" + std::string(project_guid) + "/" + std::string(key);
}

void remove_stored_files(const std::filesystem::path& data_dir,
                         const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    std::error_code ignored;
    std::filesystem::remove(data_dir / path, ignored);
  }
}

}  // namespace sandbox
