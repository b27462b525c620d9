#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

// Where uploaded files live, relative to the data folder. Names are keys the sandbox made,
// never text a client chose.

// A managed upload: uploads/KEY.
std::string managed_upload_path(std::string_view key);
// An unmanaged upload, kept with its project: projects/PROJECT/KEY.
std::string project_upload_path(std::string_view project_guid, std::string_view key);

// Removes stored files; one already gone is no matter.
void remove_stored_files(const std::filesystem::path& data_dir,
                         const std::vector<std::string>& paths);

}  // namespace sandbox
