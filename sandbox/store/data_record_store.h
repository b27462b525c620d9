#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "store/data_record.h"

namespace sandbox {

class Database;

bool project_has_data_record(Database& db, std::string_view project_guid, std::string_view guid);

// Saves the record into the project, replacing the project's record of that guid; the saved
// record becomes the most recent. Its templates must be the project's.
void save_data_record(Database& db, std::string_view project_guid, const DataRecord& record);

// The account's most recent record that is attached to every one of the templates; nothing
// when none is or no template is given.
std::optional<DataRecord> latest_data_record(Database& db, std::int64_t account,
                                             std::span<const std::string> template_guids);

// Keeps `xml` as the sync data of the account's record `record_guid` for the template it is
// attached to. False when no such record is attached to that template.
bool set_data_record_sync_data(Database& db, std::int64_t account, std::string_view record_guid,
                               std::string_view template_guid, std::string_view xml);

// Guids of the account's records attached to the template.
std::vector<std::string> records_attached_to(Database& db, std::int64_t account,
                                             std::string_view template_guid);

}  // namespace sandbox
