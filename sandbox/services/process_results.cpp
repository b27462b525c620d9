#include "services/process_results.h"

#include "services/lookups.h"
#include "soap/faults.h"

namespace sandbox {

ProcessStatus process_status(const Call& call) {
  const std::string proc_guid = call.args.string("procGuid");
  auto status = call.processes.status(std::string_view(proc_guid).substr(0, proc_guid.find(';')));
  if (!status) throw ApplicationFault("NoSuchProcess", "No process with that guid", kNotFoundFault);
  return std::move(*status);
}

void answer_process_result(Call& call, std::string_view kind) {
  const ProcessStatus status = process_status(call);
  if (status.kind != kind || status.owner != call.session().user_id) {
    throw ApplicationFault("NoSuchProcess", "No process with that guid", kNotFoundFault);
  }
  if (!status.complete) throw ApplicationFault("ProcessNotComplete", "Process not complete");
  call.reply.scalar(status.outcome);
}

}  // namespace sandbox
