#pragma once

#include <optional>
#include <string_view>

#include "store/data_record.h"

namespace sandbox {

class Database;

// The record an editor fills to use a theme, built from the theme's catalog templates: one
// entry per manageable component property, in theme, component and property order, labelled
// "component label.property name". Nothing for an unknown theme.
std::optional<DataRecord> theme_data_record(Database& db, std::string_view theme_guid);

}  // namespace sandbox
