#include "processes/process_runner.h"
#include "services/lookups.h"
#include "services/main_operations.h"
#include "services/process_results.h"
#include "soap/faults.h"
#include "store/database.h"
#include "store/deployment_store.h"
#include "store/project_store.h"

namespace sandbox {
namespace {

constexpr std::string_view kClearKind = "clearProject";
constexpr std::string_view kUndeployKind = "undeployProject";

// The procGuid of a process that this service runs.
std::string main_service_proc_guid(const std::string& id) {
  return id + ";M";
}

void clear_project(Call& call) {
  const std::string project = call.args.string("projectGuid");
  const bool undeploy = call.args.boolean("doUndeploy");
  require_project(call, project);
  remove_project_templates(call.db, project, undeploy);
  call.reply.scalar(true);
}

void clear_project_async(Call& call) {
  const std::string project = call.args.string("projectGuid");
  const bool undeploy = call.args.boolean("doUndeploy");
  require_project(call, project);
  const std::string id =
      call.processes.start({std::string(kClearKind), call.session().user_id, "Clearing templates",
                            template_count(call.db, project), [project, undeploy](Database& db) {
                              return remove_project_templates(db, project, undeploy);
                            }});
  call.reply.scalar(main_service_proc_guid(id));
}

void undeploy_project_async(Call& call) {
  const std::string project = call.args.string("projectGuid");
  require_project(call, project);
  const std::string id = call.processes.start(
      {std::string(kUndeployKind), call.session().user_id, "Undeploying templates",
       template_count(call.db, project), [project](Database& db) {
         const bool exists =
             db.prepare("SELECT 1 FROM projects WHERE guid = ?").bind(project).step();
         undeploy_project(db, project);
         return exists;
       }});
  call.reply.scalar(main_service_proc_guid(id));
}

void is_process_complete(Call& call) {
  call.reply.scalar(process_status(call).complete);
}

void get_process_percent_complete(Call& call) {
  call.reply.scalar(process_status(call).percent);
}

void get_process_message(Call& call) {
  call.reply.scalar(process_status(call).message);
}

void clear_project_result(Call& call) {
  answer_process_result(call, kClearKind);
}

void undeploy_project_result(Call& call) {
  answer_process_result(call, kUndeployKind);
}

constexpr Operation kOperations[] = {
    {"clearProject", Access::keyed, clear_project, "projectGuid doUndeploy:boolean -> boolean"},
    {"clearProject_Async", Access::keyed, clear_project_async,
     "projectGuid doUndeploy:boolean -> string"},
    {"undeployProject_Async", Access::keyed, undeploy_project_async, "projectGuid -> string"},
    {"isProcessComplete", Access::open, is_process_complete, "procGuid -> boolean"},
    {"getProcessPercentComplete", Access::open, get_process_percent_complete, "procGuid -> short"},
    {"getProcessMessage", Access::open, get_process_message, "procGuid -> string"},
    {"clearProject_Result", Access::keyed, clear_project_result, "procGuid -> boolean"},
    {"undeployProject_Result", Access::keyed, undeploy_project_result, "procGuid -> boolean"},
};

}  // namespace

std::span<const Operation> process_operations() {
  return kOperations;
}

}  // namespace sandbox
