#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "soap/value.h"

namespace sandbox {

class Database;

// Where a template lives: in the catalog (no project) or in one project.
struct TemplatePlace {
  std::string name;
  std::optional<std::string> project_guid;
};

// A template the user may use: one of the catalog, or of a project of one of the user's
// accounts. Nothing for any other guid.
std::optional<TemplatePlace> find_usable_template(Database& db, std::int64_t user,
                                                  std::string_view guid);

// TemplateInfo records of the catalog by name; only those of `type` unless it is empty.
std::vector<Fields> catalog_template_records(Database& db, std::string_view type);
// TemplateInfo records of the project's templates by name, with their DeploymentInfo if asked.
std::vector<Fields> project_template_records(Database& db, std::string_view project_guid,
                                             bool with_deployment);
// The TemplateInfo record of a template the user may use.
std::optional<Fields> usable_template_record(Database& db, std::int64_t user,
                                             std::string_view guid);
// The TemplateInfo record of one of the theme's templates.
std::optional<Fields> theme_template_record(Database& db, std::string_view theme_guid,
                                            std::string_view template_guid);

// Component records of the template, each with its Property records; every non-empty
// filter must match.
std::vector<Fields> component_records(Database& db, std::string_view template_guid,
                                      std::string_view guid, std::string_view label,
                                      std::string_view class_name);

bool project_has_template_named(Database& db, std::string_view project_guid, std::string_view name);
bool project_has_template(Database& db, std::string_view project_guid, std::string_view guid);

// Copies a template and its components into the project as `name`, replacing a template of
// that name there; answers the copy's guid. Everything copied gets a fresh guid.
std::string copy_into_project(Database& db, std::string_view source_guid,
                              std::string_view project_guid, std::string_view name);

// Removes a template, and its deployment when asked to undeploy.
void remove_template(Database& db, std::string_view guid, bool undeploy);

}  // namespace sandbox
