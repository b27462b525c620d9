#include <vector>

#include "crypto/random.h"
#include "services/main_operations.h"
#include "services/services.h"
#include "store/database.h"

namespace sandbox {
namespace {

void get_version(Call& call) {
  call.reply.scalar(call.server.version);
}

void get_guid(Call& call) {
  call.reply.scalar(random_guid());
}

void get_fixed_url(Call& call) {
  call.reply.scalar(call.server.fixed_url());
}

void send_client_debug_info(Call& call) {
  call.db.prepare("INSERT INTO client_debug_reports (user_id, received_at, text) VALUES (?, ?, ?)")
      .bind(call.session().user_id, current_time().time_since_epoch().count(),
            call.args.string("debugInfo"))
      .run();
  call.reply.scalar(true);
}

constexpr Operation kOperations[] = {
    {"getVersion", Access::open, get_version, "-> string"},
    {"getGuid", Access::open, get_guid, "-> string"},
    {"getFixedUrl", Access::open, get_fixed_url, "-> string"},
    {"sendClientDebugInfo", Access::keyed, send_client_debug_info, "debugInfo -> boolean"},
};

std::vector<Operation> all_main_operations() {
  std::vector<Operation> operations;
  for (const std::span<const Operation> area :
       {std::span<const Operation>(kOperations), project_operations(), template_operations(),
        theme_operations(), process_operations(), deployment_operations(), data_record_operations(),
        mail_operations(), registrant_operations()}) {
    operations.insert(operations.end(), area.begin(), area.end());
  }
  return operations;
}

}  // namespace

const Service& telvane_service() {
  static const std::vector<Operation> operations = all_main_operations();
  static const Service service{"Telvane", "/services/Telvane", "urn:telvane-main", operations};
  return service;
}

}  // namespace sandbox
