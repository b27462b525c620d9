#include "store/user_store.h"

#include "crypto/random.h"
#include "store/database.h"
#include "store/deployment_store.h"
#include "store/folder_store.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

// Accounts whose only member is the user.
constexpr std::string_view kSoleAccounts =
    "SELECT account_id FROM account_members WHERE account_id IN "
    "(SELECT account_id FROM account_members WHERE user_id = ?1) "
    "GROUP BY account_id HAVING COUNT(*) = 1";

}  // namespace

bool email_taken(Database& db, std::string_view email) {
  return db.prepare("SELECT 1 FROM users WHERE email = ?").bind(email).step();
}

std::int64_t insert_user(Database& db, const NewUser& user) {
  db.prepare("INSERT INTO users (email, password_md5) VALUES (?, ?)")
      .bind(user.email, user.password_md5)
      .run();
  auto id = db.prepare("SELECT id FROM users WHERE email = ?");
  id.bind(user.email).step();
  const std::int64_t user_id = id.integer(0);
  db.prepare(
        "INSERT INTO user_profiles (user_id, first_name, last_name, created_at) "
        "VALUES (?, ?, ?, ?)")
      .bind(user_id, user.first_name, user.last_name, now_ms())
      .run();
  return user_id;
}

std::int64_t open_account(Database& db, std::int64_t owner, std::string_view name) {
  const std::string guid = random_guid();
  db.prepare("INSERT INTO accounts (name, guid) VALUES (?, ?)").bind(name, guid).run();
  auto id = db.prepare("SELECT id FROM accounts WHERE guid = ?");
  id.bind(guid).step();
  const std::int64_t account = id.integer(0);
  db.prepare("INSERT INTO account_keys (account_id, key) VALUES (?, ?)")
      .bind(account, random_hex(16))
      .run();
  add_member(db, account, owner, "owner");
  seed_asset_folders(db, account);
  return account;
}

void add_member(Database& db, std::int64_t account, std::int64_t user,
                std::string_view account_type) {
  db.prepare("INSERT INTO account_members (account_id, user_id) VALUES (?, ?)")
      .bind(account, user)
      .run();
  db.prepare("INSERT INTO member_types (account_id, user_id, account_type) VALUES (?, ?, ?)")
      .bind(account, user, account_type)
      .run();
}

std::optional<std::int64_t> account_with_key(Database& db, std::string_view key) {
  auto row = db.prepare("SELECT account_id FROM account_keys WHERE key = ?");
  if (key.empty() || !row.bind(key).step()) return std::nullopt;
  return row.integer(0);
}

std::optional<std::string> member_password_md5(Database& db, std::int64_t account,
                                               std::string_view email) {
  auto row = db.prepare(
      "SELECT u.password_md5 FROM users u JOIN account_members m ON m.user_id = u.id "
      "WHERE m.account_id = ? AND u.email = ? "
      "AND u.id NOT IN (SELECT user_id FROM closed_users)");
  if (!row.bind(account, email).step()) return std::nullopt;
  return row.text(0);
}

void set_password_md5(Database& db, std::int64_t user, std::string_view digest) {
  db.prepare("UPDATE users SET password_md5 = ? WHERE id = ?").bind(digest, user).run();
}

int projects_of_sole_accounts(Database& db, std::int64_t user) {
  auto count = db.prepare("SELECT COUNT(*) FROM projects WHERE account_id IN (" +
                          std::string(kSoleAccounts) + ")");
  count.bind(user).step();
  return static_cast<int>(count.integer(0));
}

void close_user(Database& db, std::int64_t user) {
  Transaction transaction(db);
  std::vector<std::string> projects;
  {
    auto row = db.prepare("SELECT guid FROM projects WHERE account_id IN (" +
                          std::string(kSoleAccounts) + ")");
    row.bind(user);
    while (row.step()) projects.push_back(row.text(0));
  }
  for (const std::string& project : projects) {
    undeploy_project(db, project);
    db.prepare("DELETE FROM projects WHERE guid = ?").bind(project).run();
  }
  db.prepare("DELETE FROM member_types WHERE user_id = ?").bind(user).run();
  db.prepare("DELETE FROM account_members WHERE user_id = ?").bind(user).run();
  db.prepare("UPDATE sessions SET account_id = NULL WHERE user_id = ?").bind(user).run();
  db.prepare("INSERT OR IGNORE INTO closed_users (user_id, closed_at) VALUES (?, ?)")
      .bind(user, now_ms())
      .run();
  transaction.commit();
}

std::vector<AccountListing> list_accounts(Database& db) {
  auto row = db.prepare(
      "SELECT a.id, COALESCE(k.key, ''), a.name, "
      "COALESCE((SELECT group_concat(u.email, ',') FROM account_members m "
      "JOIN users u ON u.id = m.user_id WHERE m.account_id = a.id), '') "
      "FROM accounts a LEFT JOIN account_keys k ON k.account_id = a.id ORDER BY a.id");
  std::vector<AccountListing> accounts;
  while (row.step()) {
    accounts.push_back({row.integer(0), row.text(1), row.text(2), row.text(3)});
  }
  return accounts;
}

}  // namespace sandbox
