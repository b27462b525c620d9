#include "crypto/digest.h"
#include "processes/process_runner.h"
#include "services/accounts_operations.h"
#include "services/lookups.h"
#include "services/process_results.h"
#include "services/text_rules.h"
#include "soap/clip.h"
#include "soap/faults.h"
#include "store/database.h"
#include "store/user_store.h"

namespace sandbox {
namespace {

constexpr std::string_view kTerminateKind = "terminateUserAccount";
constexpr std::size_t kMaxName = 255;

bool is_md5_hex(std::string_view text) {
  return text.size() == 32 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::int64_t require_account_key(const Call& call) {
  const auto account = account_with_key(call.db, call.args.string("accountKey"));
  if (!account) throw ApplicationFault("NoSuchAccount", "No account with that key", kNotFoundFault);
  return *account;
}

// The new user as the creation calls send it; the clear password is only ever digested.
NewUser read_new_user(const Call& call) {
  const std::string password = call.args.string("password");
  NewUser user{call.args.string("firstName"), call.args.string("lastName"),
               call.args.string("email"), md5_hex(password)};
  require_plain_text("The first name", user.first_name, kMaxName);
  require_plain_text("The last name", user.last_name, kMaxName);
  require_email(user.email);
  if (password.empty()) throw ApplicationFault("InvalidArgument", "A user needs a password");
  if (email_taken(call.db, user.email)) {
    throw ApplicationFault("DuplicateEmail",
                           "A user with the e-mail address '" + clip(user.email) + "' exists",
                           kDuplicateNameFault);
  }
  return user;
}

void create_user_account(Call& call) {
  const NewUser user = read_new_user(call);
  std::string name = user.first_name;
  if (!user.first_name.empty() && !user.last_name.empty()) name += ' ';
  name += user.last_name;
  Transaction transaction(call.db);
  const std::int64_t id = insert_user(call.db, user);
  open_account(call.db, id, name.empty() ? user.email : name);
  transaction.commit();
  call.reply.scalar(true);
}

void create_user_in_account(Call& call) {
  const std::int64_t account = require_account_key(call);
  const NewUser user = read_new_user(call);
  const std::string account_type = call.args.string("accountType");
  require_plain_text("The account type", account_type, kMaxName);
  Transaction transaction(call.db);
  add_member(call.db, account, insert_user(call.db, user), account_type);
  transaction.commit();
  call.reply.scalar(true);
}

// The client proves the password without sending it: MD5(MD5(P) + email + accountKey).
void is_user_account_valid(Call& call) {
  const std::string key = call.args.string("accountKey");
  const std::string email = call.args.string("email");
  const std::string hash = call.args.string("passwordHash");
  const auto account = account_with_key(call.db, key);
  const auto stored = account ? member_password_md5(call.db, *account, email) : std::nullopt;
  call.reply.scalar(stored.has_value() && same_digest(hash, md5_hex(*stored + email + key)));
}

void change_user_password(Call& call) {
  const std::string digest = call.args.string("passwordHash");
  if (!is_md5_hex(digest)) {
    throw ApplicationFault("InvalidArgument",
                           "passwordHash must be the password's MD5 as 32 lowercase hex digits");
  }
  set_password_md5(call.db, call.session().user_id, digest);
  call.reply.scalar(true);
}

void get_account_name_from_key(Call& call) {
  const std::int64_t account = require_account_key(call);
  auto name = call.db.prepare("SELECT name FROM accounts WHERE id = ?");
  name.bind(account).step();
  call.reply.scalar(name.text(0));
}

void terminate_user_account_async(Call& call) {
  const std::int64_t user = call.session().user_id;
  if (call.db.prepare("SELECT 1 FROM closed_users WHERE user_id = ?").bind(user).step()) {
    throw ApplicationFault("UserClosed", "The user account has already been terminated");
  }
  const std::string id =
      call.processes.start({std::string(kTerminateKind), user, "Removing projects",
                            projects_of_sole_accounts(call.db, user), [user](Database& db) {
                              close_user(db, user);
                              return true;
                            }});
  // "C": the Accounts service runs it; the main service's progress operations follow it.
  call.reply.scalar(id + ";C");
}

void terminate_user_account_result(Call& call) {
  answer_process_result(call, kTerminateKind);
}

constexpr Operation kOperations[] = {
    {"createUserAccount", Access::open, create_user_account,
     "firstName lastName email password -> boolean"},
    {"createUserInAccount", Access::open, create_user_in_account,
     "accountKey firstName lastName email password accountType -> boolean"},
    {"isUserAccountValid", Access::open, is_user_account_valid,
     "accountKey email passwordHash -> boolean"},
    {"changeUserPassword", Access::keyed, change_user_password, "passwordHash -> boolean"},
    {"getAccountNameFromKey", Access::open, get_account_name_from_key, "accountKey -> string"},
    {"terminateUserAccount_Async", Access::keyed, terminate_user_account_async, "-> string"},
    {"terminateUserAccount_Result", Access::keyed, terminate_user_account_result,
     "procGuid -> boolean"},
};

}  // namespace

std::span<const Operation> user_operations() {
  return kOperations;
}

}  // namespace sandbox
