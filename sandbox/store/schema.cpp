#include "store/schema.h"

#include "store/database.h"

namespace sandbox {

void create_schema(Database& db) {
  // Times are milliseconds since the Unix epoch, UTC.
  db.execute(R"sql(
PRAGMA journal_mode = WAL;
PRAGMA foreign_keys = ON;

CREATE TABLE IF NOT EXISTS users (
  id INTEGER PRIMARY KEY,
  email TEXT NOT NULL UNIQUE COLLATE NOCASE,
  password_md5 TEXT NOT NULL
);

CREATE TABLE IF NOT EXISTS accounts (
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL,
  guid TEXT NOT NULL UNIQUE
);

CREATE TABLE IF NOT EXISTS account_members (
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  user_id INTEGER NOT NULL REFERENCES users(id),
  PRIMARY KEY (account_id, user_id)
);

CREATE TABLE IF NOT EXISTS challenges (
  value TEXT PRIMARY KEY,
  expires_at INTEGER NOT NULL
);

CREATE TABLE IF NOT EXISTS sessions (
  token TEXT PRIMARY KEY,
  user_id INTEGER NOT NULL REFERENCES users(id),
  secret TEXT NOT NULL,
  last_counter INTEGER NOT NULL,
  account_id INTEGER REFERENCES accounts(id),
  is_open INTEGER NOT NULL DEFAULT 1,
  started_at INTEGER NOT NULL
);

CREATE TABLE IF NOT EXISTS client_debug_reports (
  id INTEGER PRIMARY KEY,
  user_id INTEGER NOT NULL REFERENCES users(id),
  received_at INTEGER NOT NULL,
  text TEXT NOT NULL
);

CREATE TABLE IF NOT EXISTS deployments (
  template_guid TEXT PRIMARY KEY,
  deployed_at INTEGER,
  height INTEGER NOT NULL DEFAULT 0,
  width INTEGER NOT NULL DEFAULT 0,
  live_enabled INTEGER NOT NULL DEFAULT 0,
  login_flag TEXT NOT NULL DEFAULT '',
  login_url TEXT NOT NULL DEFAULT '',
  name TEXT NOT NULL DEFAULT '',
  version_guid TEXT NOT NULL DEFAULT '',
  deployment_guid TEXT NOT NULL DEFAULT '',
  link TEXT NOT NULL DEFAULT '',
  duration INTEGER NOT NULL DEFAULT 0,
  size INTEGER NOT NULL DEFAULT 0
);
)sql");
}

}  // namespace sandbox
