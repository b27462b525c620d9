#include <chrono>

#include "crypto/digest.h"
#include "crypto/random.h"
#include "dispatch/session_cookie.h"
#include "services/services.h"
#include "soap/faults.h"
#include "store/database.h"

namespace sandbox {
namespace {

constexpr std::chrono::minutes kChallengeLifetime{5};
constexpr std::string_view kBadCredentials = "The user id or password you have entered is invalid.";

std::int64_t now_ms() {
  return current_time().time_since_epoch().count();
}

void get_challenge(Call& call) {
  const std::int64_t now = now_ms();
  call.db.prepare("DELETE FROM challenges WHERE expires_at <= ?").bind(now).run();
  const std::string challenge = random_hex(16);
  call.db.prepare("INSERT INTO challenges (value, expires_at) VALUES (?, ?)")
      .bind(challenge, now + std::chrono::milliseconds(kChallengeLifetime).count())
      .run();
  call.reply.scalar(challenge);
}

// Takes the challenge out of the store, so it serves one attempt only; true if it was live.
bool consume_challenge(Database& db, const std::string& challenge) {
  std::optional<std::int64_t> expires_at;
  {
    auto lookup = db.prepare("SELECT expires_at FROM challenges WHERE value = ?");
    if (lookup.bind(challenge).step()) expires_at = lookup.integer(0);
  }
  db.prepare("DELETE FROM challenges WHERE value = ?").bind(challenge).run();
  return expires_at && *expires_at > now_ms();
}

void user_login(Call& call) {
  const std::string challenge = call.args.string("challenge");
  const std::string response = call.args.string("response");
  const std::string username = call.args.string("username");
  if (!consume_challenge(call.db, challenge)) throw ServerException(std::string(kBadCredentials));

  std::int64_t user_id = 0;
  std::string password_md5;
  {
    auto user = call.db.prepare(
        "SELECT id, password_md5 FROM users WHERE email = ? "
        "AND id NOT IN (SELECT user_id FROM closed_users)");
    if (!user.bind(username).step()) throw ServerException(std::string(kBadCredentials));
    user_id = user.integer(0);
    password_md5 = user.text(1);
  }
  const std::string secret = md5_hex(challenge + password_md5);
  if (!same_digest(response, md5_hex("0" + secret))) {
    throw ServerException(std::string(kBadCredentials));
  }

  const std::string token = random_hex(16);
  call.db
      .prepare(
          "INSERT INTO sessions (token, user_id, secret, last_counter, started_at) "
          "VALUES (?, ?, ?, 0, ?)")
      .bind(token, user_id, secret, now_ms())
      .run();
  call.new_session_cookie = open_session_cookie(call.db, token);
  call.reply.scalar(token);
}

void user_logout(Call& call) {
  call.db.prepare("UPDATE sessions SET is_open = 0 WHERE token = ?")
      .bind(call.session().token)
      .run();
  call.reply.scalar(true);
}

void get_user_accounts(Call& call) {
  auto accounts = call.db.prepare(
      "SELECT a.id, a.name FROM accounts a JOIN account_members m ON m.account_id = a.id "
      "WHERE m.user_id = ? ORDER BY a.id");
  accounts.bind(call.session().user_id);
  std::vector<Fields> items;
  while (accounts.step()) {
    items.push_back({{"accountID", static_cast<std::int32_t>(accounts.integer(0))},
                     {"accountName", accounts.text(1)}});
  }
  call.reply.records("UserAccountInfo", std::move(items));
}

// Binds the session to the account if the user belongs to it.
void select_member_account(Call& call, std::string_view condition, auto account) {
  std::optional<std::int64_t> account_id;
  {
    auto lookup = call.db.prepare(
        "SELECT a.id FROM accounts a JOIN account_members m ON m.account_id = a.id "
        "WHERE m.user_id = ? AND " +
        std::string(condition));
    if (lookup.bind(call.session().user_id, account).step()) account_id = lookup.integer(0);
  }
  if (account_id) {
    call.db.prepare("UPDATE sessions SET account_id = ? WHERE token = ?")
        .bind(*account_id, call.session().token)
        .run();
  }
  call.reply.scalar(account_id.has_value());
}

void select_account(Call& call) {
  select_member_account(call, "a.id = ?", std::int64_t{call.args.int32("account_id")});
}

void select_account_by_guid(Call& call) {
  select_member_account(call, "a.guid = ?", call.args.string("account_guid"));
}

void is_compatible(Call& call) {
  const std::string client_code = call.args.string("clientCode");
  const std::int32_t major = call.args.int32("major");
  // Read so that a missing or mistyped one is refused like any other argument.
  call.args.int32("minor");
  call.args.int32("revision");
  call.reply.scalar(client_code == "KWRB" && major == 4);
}

constexpr Operation kOperations[] = {
    {"getChallenge", Access::open, get_challenge, "-> string"},
    {"userLogin", Access::open, user_login, "challenge response username -> string"},
    {"userLogout", Access::keyed, user_logout, "-> boolean"},
    {"getUserAccounts", Access::keyed, get_user_accounts, "-> UserAccountInfo[]"},
    {"selectAccount", Access::keyed, select_account, "account_id:int -> boolean"},
    {"selectAccountByGuid", Access::keyed, select_account_by_guid, "account_guid -> boolean"},
    {"isCompatible", Access::open, is_compatible,
     "clientCode major:int minor:int revision:int -> boolean"},
};

}  // namespace

const Service& login_service() {
  static const Service service{"Login", "/services/Login", "urn:telvane-login", kOperations};
  return service;
}

}  // namespace sandbox
