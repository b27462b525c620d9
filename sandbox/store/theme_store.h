#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "soap/value.h"

namespace sandbox {

class Database;

// ThemeInfo records by name, each with its ThemeTemplate list; only those of `type` unless
// it is empty.
std::vector<Fields> theme_records(Database& db, std::string_view type);
std::optional<Fields> theme_record(Database& db, std::string_view guid);

struct ThemeTemplate {
  std::string guid;
  std::string name;
};
// The catalog templates a theme lists, in its order; nothing for an unknown theme.
std::optional<std::vector<ThemeTemplate>> theme_templates(Database& db, std::string_view guid);

}  // namespace sandbox
