#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "soap/value.h"

namespace sandbox {

class Database;

struct NewRegistrant {
  std::string guid;
  std::string project_guid;
  std::string email;
  std::string first_name;
  std::string last_name;
  std::string password_md5;  // empty when no password was given
  std::string custom_xml;
  std::string user_ip;
  std::string user_host_name;
  bool registered = true;
};

void insert_registrant(Database& db, const NewRegistrant& registrant);

bool registrant_guid_taken(Database& db, std::string_view guid);
// Case ignored.
bool registrant_email_taken(Database& db, std::string_view project, std::string_view email);

enum class RegistrantOrder { created, email, last_name };

// Client records of the project's registrants, each with its ClientDetails record or nil;
// `limit` 0 means all.
std::vector<Fields> registrant_records(Database& db, std::string_view project,
                                       RegistrantOrder order, std::int32_t limit);

// The project's registrant with that guid, or else (guid empty) with that e-mail.
std::optional<std::int64_t> find_registrant(Database& db, std::string_view project,
                                            std::string_view guid, std::string_view email);

// Sets `column` (one of the registrant table's text columns) and the modified date.
void update_registrant(Database& db, std::int64_t id, std::string_view column,
                       std::string_view value);

void delete_registrant(Database& db, std::int64_t id);

}  // namespace sandbox
