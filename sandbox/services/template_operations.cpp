#include "services/lookups.h"
#include "services/main_operations.h"
#include "soap/faults.h"
#include "store/database.h"
#include "store/project_store.h"
#include "store/record_columns.h"
#include "store/template_store.h"

namespace sandbox {
namespace {

void get_template_list(Call& call) {
  call.reply.records("TemplateInfo", catalog_template_records(call.db, call.args.string("type")));
}

void get_project_template_list(Call& call) {
  const std::string project = call.args.string("projectGuid");
  const bool with_deployment = call.args.boolean("includeDeploymentInfo");
  require_project(call, project);
  call.reply.records("TemplateInfo", project_template_records(call.db, project, with_deployment));
}

void get_template_info(Call& call) {
  const std::string guid = call.args.string("templateGuid");
  auto info = usable_template_record(call.db, call.session().user_id, guid);
  if (!info) throw ApplicationFault("NoSuchTemplate", "No template with that guid", kNotFoundFault);
  call.reply.record("TemplateInfo", std::move(*info));
}

void get_theme_template_info(Call& call) {
  const std::string theme = call.args.string("themeGuid");
  const std::string guid = call.args.string("templateGuid");
  auto info = theme_template_record(call.db, theme, guid);
  if (!info) {
    throw ApplicationFault("NoSuchTemplate", "The theme has no template with that guid",
                           kNotFoundFault);
  }
  call.reply.record("TemplateInfo", std::move(*info));
}

void has_template_access(Call& call) {
  const std::string guid = call.args.string("templateGuid");
  // Every right is granted on a usable template; the argument is read to check its type.
  call.args.string("rights");
  call.reply.scalar(find_usable_template(call.db, call.session().user_id, guid).has_value());
}

void set_template_metadata(Call& call) {
  const std::string guid = call.args.string("tGuid");
  const std::string metadata = call.args.string("metadataXML");
  require_usable_template(call, guid);
  call.db.prepare("UPDATE templates SET metadata_xml = ?, modified_at = ? WHERE guid = ?")
      .bind(metadata, now_ms(), guid)
      .run();
  call.reply.scalar(true);
}

void template_exists(Call& call) {
  const std::string guid = call.args.string("tGuid");
  call.reply.scalar(find_usable_template(call.db, call.session().user_id, guid).has_value());
}

void copy_template(Call& call) {
  const std::string source = call.args.string("templateGuid");
  const std::string project = call.args.string("targetProjectGuid");
  const std::string requested_name = call.args.string("templateName");
  const bool overwrite = call.args.boolean("overwriteExisting");
  require_project(call, project);
  const TemplatePlace place = require_usable_template(call, source);
  const std::string name = requested_name.empty() ? place.name : requested_name;
  if (!overwrite && project_has_template_named(call.db, project, name)) {
    throw ApplicationFault("DuplicateName", "A template with that name already exists",
                           kDuplicateNameFault);
  }
  Transaction transaction(call.db);
  const std::string copy = copy_into_project(call.db, source, project, name);
  touch_project(call.db, project);
  transaction.commit();
  call.reply.scalar(copy);
}

void delete_template(Call& call) {
  const std::string guid = call.args.string("templateGuid");
  const bool undeploy = call.args.boolean("doUndeploy");
  const TemplatePlace place = require_usable_template(call, guid);
  if (!place.project_guid) {
    throw ApplicationFault("CatalogTemplate", "Templates of the catalog cannot be deleted");
  }
  Transaction transaction(call.db);
  remove_template(call.db, guid, undeploy);
  touch_project(call.db, *place.project_guid);
  transaction.commit();
  call.reply.scalar(true);
}

void get_components(Call& call) {
  const std::string guid = call.args.string("templateGuid");
  const std::string component = call.args.string("cGuid");
  const std::string label = call.args.string("cLabel");
  const std::string class_name = call.args.string("cClass");
  require_usable_template(call, guid);
  call.reply.records("Component", component_records(call.db, guid, component, label, class_name));
}

constexpr Operation kOperations[] = {
    {"getTemplateList_Array", Access::keyed, get_template_list, "type -> TemplateInfo[]"},
    {"getProjectTemplateList_Array", Access::keyed, get_project_template_list,
     "projectGuid includeDeploymentInfo:boolean -> TemplateInfo[]"},
    {"getTemplateInfo", Access::keyed, get_template_info, "templateGuid -> TemplateInfo"},
    {"getThemeTemplateInfo", Access::keyed, get_theme_template_info,
     "themeGuid templateGuid -> TemplateInfo"},
    {"hasTemplateAccess", Access::keyed, has_template_access, "templateGuid rights -> boolean"},
    {"setTemplateMetadata", Access::keyed, set_template_metadata, "tGuid metadataXML -> boolean"},
    {"templateExists", Access::keyed, template_exists, "tGuid -> boolean"},
    {"copyTemplate", Access::keyed, copy_template,
     "templateGuid targetProjectGuid templateName overwriteExisting:boolean -> string"},
    {"deleteTemplate", Access::keyed, delete_template,
     "templateGuid doUndeploy:boolean -> boolean"},
    {"getComponents", Access::keyed, get_components,
     "templateGuid cGuid cLabel cClass -> Component[]"},
};

}  // namespace

std::span<const Operation> template_operations() {
  return kOperations;
}

}  // namespace sandbox
