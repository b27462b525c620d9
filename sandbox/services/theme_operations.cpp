#include "services/lookups.h"
#include "services/main_operations.h"
#include "soap/faults.h"
#include "store/database.h"
#include "store/project_store.h"
#include "store/template_store.h"
#include "store/theme_store.h"

namespace sandbox {
namespace {

ApplicationFault no_such_theme() {
  return ApplicationFault("NoSuchTheme", "No theme with that guid", kNotFoundFault);
}

void get_theme_list(Call& call) {
  call.reply.records("ThemeInfo", theme_records(call.db, call.args.string("type")));
}

void get_theme_info(Call& call) {
  auto theme = theme_record(call.db, call.args.string("guid"));
  if (!theme) throw no_such_theme();
  call.reply.record("ThemeInfo", std::move(*theme));
}

// Copies each of the theme's templates into the project under its catalog name, replacing
// the project's template of that name.
void apply_theme(Call& call) {
  const std::string theme = call.args.string("themeGuid");
  const std::string project = call.args.string("projectGuid");
  require_project(call, project);
  const auto templates = theme_templates(call.db, theme);
  if (!templates) throw no_such_theme();
  Transaction transaction(call.db);
  for (const ThemeTemplate& entry : *templates) {
    copy_into_project(call.db, entry.guid, project, entry.name);
  }
  touch_project(call.db, project);
  transaction.commit();
  call.reply.scalar(true);
}

constexpr Operation kOperations[] = {
    {"getThemeList_Array", Access::keyed, get_theme_list, "type -> ThemeInfo[]"},
    {"getThemeInfo", Access::keyed, get_theme_info, "guid -> ThemeInfo"},
    {"applyTheme", Access::keyed, apply_theme, "themeGuid projectGuid -> boolean"},
};

}  // namespace

std::span<const Operation> theme_operations() {
  return kOperations;
}

}  // namespace sandbox
