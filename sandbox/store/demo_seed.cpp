#include "store/demo_seed.h"

#include <cstdint>

#include "crypto/digest.h"
#include "store/catalog_seed.h"
#include "store/database.h"
#include "store/folder_store.h"

namespace sandbox {
namespace {

struct DemoAccount {
  std::int64_t id;
  std::string_view name;
  std::string_view guid;
  std::string_view key;
};

constexpr DemoAccount kDemoAccounts[] = {
    {1001, "Demo Productions", "acct-1001-guid", "acct-1001-key"},
    {1002, "Demo Training", "acct-1002-guid", "acct-1002-key"},
};

}  // namespace

bool has_no_users(Database& db) {
  auto count = db.prepare("SELECT COUNT(*) FROM users");
  return count.step() && count.integer(0) == 0;
}

void seed_demo_data(Database& db) {
  db.prepare(
        "INSERT INTO users (email, password_md5) VALUES (?, ?) "
        "ON CONFLICT (email) DO UPDATE SET password_md5 = excluded.password_md5")
      .bind(kDemoUserEmail, md5_hex(kDemoUserPassword))
      .run();
  auto user = db.prepare("SELECT id FROM users WHERE email = ?");
  user.bind(kDemoUserEmail).step();
  const std::int64_t user_id = user.integer(0);
  db.prepare("DELETE FROM closed_users WHERE user_id = ?").bind(user_id).run();

  for (const DemoAccount& account : kDemoAccounts) {
    db.prepare(
          "INSERT INTO accounts (id, name, guid) VALUES (?, ?, ?) "
          "ON CONFLICT (id) DO UPDATE SET name = excluded.name, guid = excluded.guid")
        .bind(account.id, account.name, account.guid)
        .run();
    db.prepare("INSERT OR IGNORE INTO account_members (account_id, user_id) VALUES (?, ?)")
        .bind(account.id, user_id)
        .run();
    db.prepare(
          "INSERT INTO account_keys (account_id, key) VALUES (?, ?) "
          "ON CONFLICT (account_id) DO UPDATE SET key = excluded.key")
        .bind(account.id, account.key)
        .run();
    seed_asset_folders(db, account.id);
  }
  seed_catalog(db);
}

}  // namespace sandbox
