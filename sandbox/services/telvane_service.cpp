#include "crypto/random.h"
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
  call.reply.scalar(call.server.base_url);
}

void send_client_debug_info(Call& call) {
  call.db.prepare("INSERT INTO client_debug_reports (user_id, received_at, text) VALUES (?, ?, ?)")
      .bind(call.session().user_id, current_time().time_since_epoch().count(),
            call.args.string("debugInfo"))
      .run();
  call.reply.scalar(true);
}

// A template without a row in `deployments` has never been deployed.
void get_deployment_info(Call& call) {
  auto row = call.db.prepare(
      "SELECT deployed_at, height, width, live_enabled, login_flag, login_url, name, "
      "version_guid, deployment_guid, link, duration, size "
      "FROM deployments WHERE template_guid = ?");
  const bool deployed = row.bind(call.args.string("templateGuid")).step();
  const auto int32_at = [&](int column) {
    return deployed ? static_cast<std::int32_t>(row.integer(column)) : 0;
  };
  const auto text_at = [&](int column) { return deployed ? row.text(column) : std::string(); };

  std::optional<Timestamp> deployed_at;
  if (const auto ms = deployed ? row.optional_integer(0) : std::nullopt) {
    deployed_at = Timestamp(std::chrono::milliseconds(*ms));
  }
  call.reply.record("DeploymentInfo", {{"deployed", deployed},
                                       {"deploymentDate", date_or_nil(deployed_at)},
                                       {"height", int32_at(1)},
                                       {"width", int32_at(2)},
                                       {"liveEnabled", deployed && row.integer(3) != 0},
                                       {"loginFlag", text_at(4)},
                                       {"loginUrl", text_at(5)},
                                       {"name", text_at(6)},
                                       {"versionGuid", text_at(7)},
                                       {"deploymentGuid", text_at(8)},
                                       {"link", text_at(9)},
                                       {"duration", int32_at(10)},
                                       {"size", int32_at(11)}});
}

constexpr Operation kOperations[] = {
    {"getVersion", Access::open, get_version},
    {"getGuid", Access::open, get_guid},
    {"getFixedUrl", Access::open, get_fixed_url},
    {"sendClientDebugInfo", Access::keyed, send_client_debug_info},
    {"getDeploymentInfo", Access::keyed, get_deployment_info},
};

}  // namespace

const Service& telvane_service() {
  static const Service service{"Telvane", "/services/Telvane", "urn:telvane-main", kOperations};
  return service;
}

}  // namespace sandbox
