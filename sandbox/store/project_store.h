#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "soap/value.h"

namespace sandbox {

class Database;

// ProjectInfo records of the account's projects by name; only those of `type` when given.
std::vector<Fields> project_records(Database& db, std::int64_t account,
                                    std::optional<std::string_view> type = std::nullopt);

// The ProjectInfo record of one of the account's projects; nothing for another guid.
std::optional<Fields> project_record(Database& db, std::int64_t account, std::string_view guid);

bool project_in_account(Database& db, std::int64_t account, std::string_view guid);

// Whether a template of the project (of `type`, unless empty) has a deployment.
bool project_has_deployment(Database& db, std::string_view guid, std::string_view type);

int template_count(Database& db, std::string_view guid);

// Notes a change of the project's content or settings in its modified date.
void touch_project(Database& db, std::string_view guid);

// Removes the project's templates, with their deployments if asked. False if the project
// is gone.
bool remove_project_templates(Database& db, std::string_view guid, bool undeploy);

}  // namespace sandbox
