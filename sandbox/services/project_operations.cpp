#include "crypto/random.h"
#include "services/lookups.h"
#include "services/main_operations.h"
#include "soap/faults.h"
#include "store/database.h"
#include "store/deployment_store.h"
#include "store/project_store.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

void create_project(Call& call) {
  const std::string name = call.args.string("name");
  const std::string description = call.args.string("description");
  const std::int64_t account = call.account();
  if (name.empty()) throw ApplicationFault("InvalidName", "A project needs a name");
  if (call.db.prepare("SELECT 1 FROM projects WHERE account_id = ? AND name = ?")
          .bind(account, name)
          .step()) {
    throw ApplicationFault("DuplicateName", "A project with that name already exists",
                           kDuplicateNameFault);
  }
  require_quota(call, QuotaKind::projects, 1);
  const std::string guid = random_guid();
  const std::int64_t now = now_ms();
  call.db
      .prepare(
          "INSERT INTO projects (guid, account_id, name, description, creator_id, created_at, "
          "modified_at) VALUES (?, ?, ?, ?, ?, ?, ?)")
      .bind(guid, account, name, description, call.session().user_id, now, now)
      .run();
  call.reply.scalar(guid);
}

void delete_project(Call& call) {
  const std::string guid = call.args.string("projectGuid");
  const bool undeploy = call.args.boolean("doUndeploy");
  require_project(call, guid);
  Transaction transaction(call.db);
  if (undeploy) undeploy_project(call.db, guid);
  call.db.prepare("DELETE FROM projects WHERE guid = ?").bind(guid).run();
  transaction.commit();
  call.reply.scalar(true);
}

void project_exists(Call& call) {
  const std::string guid = call.args.string("projectGuid");
  call.reply.scalar(project_in_account(call.db, call.account(), guid));
}

void has_deployed_template(Call& call) {
  const std::string guid = call.args.string("projectGuid");
  const std::string type = call.args.string("templateType");
  require_project(call, guid);
  call.reply.scalar(project_has_deployment(call.db, guid, type));
}

void get_project_list(Call& call) {
  call.reply.records("ProjectInfo", project_records(call.db, call.account()));
}

void get_project_list_by_type(Call& call) {
  const std::string type = call.args.string("type");
  call.reply.records("ProjectInfo", project_records(call.db, call.account(), type));
}

void get_project_properties(Call& call) {
  const std::string guid = call.args.string("projectGuid");
  auto project = project_record(call.db, call.account(), guid);
  if (!project)
    throw ApplicationFault("NoSuchProject", "No project with that guid", kNotFoundFault);
  call.reply.record("ProjectInfo", std::move(*project));
}

void set_project_type(Call& call) {
  const std::string guid = call.args.string("projectGuid");
  const std::string type = call.args.string("type");
  require_project(call, guid);
  call.db.prepare("UPDATE projects SET type = ?, modified_at = ? WHERE guid = ?")
      .bind(type, now_ms(), guid)
      .run();
  call.reply.scalar(true);
}

constexpr Operation kOperations[] = {
    {"createProject", Access::keyed, create_project, "name description -> string"},
    {"deleteProject", Access::keyed, delete_project, "projectGuid doUndeploy:boolean -> boolean"},
    {"projectExists", Access::keyed, project_exists, "projectGuid -> boolean"},
    {"hasDeployedTemplate", Access::keyed, has_deployed_template,
     "projectGuid templateType -> boolean"},
    {"getProjectList_Array", Access::keyed, get_project_list, "-> ProjectInfo[]"},
    {"getProjectListByType_Array", Access::keyed, get_project_list_by_type,
     "type -> ProjectInfo[]"},
    {"getProjectProperties", Access::keyed, get_project_properties, "projectGuid -> ProjectInfo"},
    {"setProjectType", Access::keyed, set_project_type, "projectGuid type -> boolean"},
};

}  // namespace

std::span<const Operation> project_operations() {
  return kOperations;
}

}  // namespace sandbox
