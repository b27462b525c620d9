#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

// Where uploaded files live, relative to the data folder. Names are keys the sandbox made,
// never text a client chose; each piece is checked all the same, so that no stored value
// can reach outside the folder.

// A managed upload: uploads/KEY.
std::string managed_upload_path(std::string_view key);
// An unmanaged upload, kept with its project: projects/PROJECT/KEY.
std::string project_upload_path(std::string_view project_guid, std::string_view key);
// Whether `path` has one of the two shapes above; only such paths are read or removed.
bool is_stored_file_path(std::string_view path);

// Removes stored files; one already gone is no matter.
void remove_stored_files(const std::filesystem::path& data_dir,
                         const std::vector<std::string>& paths);
// Removes the ".part" files of uploads and outgoing mail that a killed sandbox left unfinished.
void remove_partial_files(const std::filesystem::path& data_dir);

}  // namespace sandbox
