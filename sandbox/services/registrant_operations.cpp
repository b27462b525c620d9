#include "crypto/digest.h"
#include "crypto/random.h"
#include "services/lookups.h"
#include "services/main_operations.h"
#include "services/text_rules.h"
#include "soap/clip.h"
#include "soap/faults.h"
#include "store/database.h"
#include "store/project_store.h"
#include "store/registrant_store.h"

namespace sandbox {
namespace {

constexpr std::size_t kMaxShortText = 255;

// Passwords are kept as digests only; an empty one stays empty.
std::string password_digest(const std::string& password) {
  return password.empty() ? std::string() : md5_hex(password);
}

RegistrantOrder sort_order(const std::string& sort_by) {
  if (sort_by.empty() || sort_by == "created") return RegistrantOrder::created;
  if (sort_by == "email") return RegistrantOrder::email;
  if (sort_by == "lastName") return RegistrantOrder::last_name;
  throw ApplicationFault("InvalidArgument",
                         "sortBy must be email, lastName or created, not '" + clip(sort_by) + "'");
}

void get_registration_list(Call& call) {
  const std::string project = call.args.string("projectGuid");
  const std::int32_t max_records = call.args.int32("maxRecords");
  const RegistrantOrder order = sort_order(call.args.string("sortBy"));
  require_project(call, project);
  if (max_records < 0) throw ApplicationFault("InvalidArgument", "maxRecords cannot be negative");
  call.reply.records("Client", registrant_records(call.db, project, order, max_records));
}

void add_registered_user(Call& call) {
  NewRegistrant registrant;
  registrant.project_guid = call.args.string("projectGuid");
  registrant.guid = call.args.string("userGuid");
  registrant.email = call.args.string("email");
  registrant.first_name = call.args.string("firstName");
  registrant.last_name = call.args.string("lastName");
  registrant.password_md5 = password_digest(call.args.string("password"));
  registrant.custom_xml = call.args.string("customXML");
  registrant.user_ip = call.args.string("userIP");
  registrant.user_host_name = call.args.string("userHostName");
  require_project(call, registrant.project_guid);
  require_email(registrant.email);
  require_plain_text("userGuid", registrant.guid, kMaxShortText);
  require_plain_text("firstName", registrant.first_name, kMaxShortText);
  require_plain_text("lastName", registrant.last_name, kMaxShortText);
  require_plain_text("userIP", registrant.user_ip, kMaxShortText);
  require_plain_text("userHostName", registrant.user_host_name, kMaxShortText);
  if (registrant.guid.empty()) registrant.guid = random_guid();
  if (registrant_guid_taken(call.db, registrant.guid)) {
    throw ApplicationFault("DuplicateRegistrant", "A registrant with that guid exists",
                           kDuplicateNameFault);
  }
  if (registrant_email_taken(call.db, registrant.project_guid, registrant.email)) {
    throw ApplicationFault(
        "DuplicateRegistrant",
        "The project has a registrant with the e-mail address '" + clip(registrant.email) + "'",
        kDuplicateNameFault);
  }
  insert_registrant(call.db, registrant);
  touch_project(call.db, registrant.project_guid);
  call.reply.scalar(registrant.guid);
}

// The registrant named by "userGuid", or else by "email", in the request's project.
std::int64_t require_registrant(const Call& call) {
  const std::string project = call.args.string("projectGuid");
  const std::string guid = call.args.string("userGuid");
  const std::string email = call.args.string("email");
  require_project(call, project);
  if (guid.empty() && email.empty()) {
    throw ApplicationFault("InvalidArgument", "Please supply either a userGuid or an email");
  }
  const auto id = find_registrant(call.db, project, guid, email);
  if (!id) {
    throw ApplicationFault("NoSuchRegistrant", "The project has no such registrant",
                           kNotFoundFault);
  }
  return *id;
}

void delete_registered_user(Call& call) {
  delete_registrant(call.db, require_registrant(call));
  call.reply.scalar(true);
}

void update_registered_user_password(Call& call) {
  const std::int64_t id = require_registrant(call);
  update_registrant(call.db, id, "password_md5", password_digest(call.args.string("password")));
  call.reply.scalar(true);
}

void update_registered_user_name(Call& call) {
  const std::int64_t id = require_registrant(call);
  const std::string first = call.args.string("firstName");
  const std::string last = call.args.string("lastName");
  require_plain_text("firstName", first, kMaxShortText);
  require_plain_text("lastName", last, kMaxShortText);
  Transaction transaction(call.db);
  update_registrant(call.db, id, "first_name", first);
  update_registrant(call.db, id, "last_name", last);
  transaction.commit();
  call.reply.scalar(true);
}

void update_registered_user_custom_xml(Call& call) {
  const std::int64_t id = require_registrant(call);
  update_registrant(call.db, id, "custom_xml", call.args.string("customXML"));
  call.reply.scalar(true);
}

constexpr Operation kOperations[] = {
    {"getRegistrationList_Array", Access::keyed, get_registration_list,
     "projectGuid maxRecords:int sortBy -> Client[]"},
    {"addRegisteredUser", Access::keyed, add_registered_user,
     "projectGuid userGuid email firstName lastName password customXML userIP userHostName -> "
     "string"},
    {"deleteRegisteredUser", Access::keyed, delete_registered_user,
     "projectGuid userGuid email -> boolean"},
    {"updateRegisteredUserPassword", Access::keyed, update_registered_user_password,
     "projectGuid userGuid email password -> boolean"},
    {"updateRegisteredUserName", Access::keyed, update_registered_user_name,
     "projectGuid userGuid email firstName lastName -> boolean"},
    {"updateRegisteredUserCustomXML", Access::keyed, update_registered_user_custom_xml,
     "projectGuid userGuid email customXML -> boolean"},
};

}  // namespace

std::span<const Operation> registrant_operations() {
  return kOperations;
}

}  // namespace sandbox
