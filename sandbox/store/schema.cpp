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

CREATE TABLE IF NOT EXISTS projects (
  guid TEXT PRIMARY KEY,
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  name TEXT NOT NULL,
  description TEXT NOT NULL,
  type TEXT NOT NULL DEFAULT '',
  creator_id INTEGER NOT NULL REFERENCES users(id),
  created_at INTEGER NOT NULL,
  modified_at INTEGER NOT NULL,
  event_start INTEGER,
  event_end INTEGER,
  deployment_def_id INTEGER NOT NULL DEFAULT 0,
  deployment_path TEXT NOT NULL DEFAULT '',
  linked_project_guid TEXT NOT NULL DEFAULT '',
  notes TEXT NOT NULL DEFAULT '',
  UNIQUE (account_id, name)
);

-- Templates without a project form the catalog that projects copy from.
CREATE TABLE IF NOT EXISTS templates (
  guid TEXT PRIMARY KEY,
  project_guid TEXT REFERENCES projects(guid) ON DELETE CASCADE,
  name TEXT NOT NULL,
  description TEXT NOT NULL DEFAULT '',
  type TEXT NOT NULL DEFAULT '',
  flags TEXT NOT NULL DEFAULT '',
  folder_name TEXT NOT NULL DEFAULT '',
  icon_url TEXT NOT NULL DEFAULT '',
  width INTEGER NOT NULL DEFAULT 0,
  height INTEGER NOT NULL DEFAULT 0,
  live_type INTEGER NOT NULL DEFAULT 0,
  metadata_xml TEXT NOT NULL DEFAULT '',
  created_at INTEGER NOT NULL,
  modified_at INTEGER NOT NULL,
  UNIQUE (project_guid, name)
);

CREATE TABLE IF NOT EXISTS components (
  guid TEXT PRIMARY KEY,
  template_guid TEXT NOT NULL REFERENCES templates(guid) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  class_name TEXT NOT NULL,
  label TEXT NOT NULL
);

CREATE TABLE IF NOT EXISTS component_properties (
  component_guid TEXT NOT NULL REFERENCES components(guid) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  name TEXT NOT NULL,
  value TEXT NOT NULL DEFAULT '',
  asset_dependencies TEXT NOT NULL DEFAULT '',
  asset_id TEXT NOT NULL DEFAULT '',
  manageable INTEGER NOT NULL DEFAULT 0,
  manageid TEXT NOT NULL DEFAULT '',
  PRIMARY KEY (component_guid, position)
);

CREATE TABLE IF NOT EXISTS themes (
  guid TEXT PRIMARY KEY,
  name TEXT NOT NULL,
  description TEXT NOT NULL DEFAULT '',
  type TEXT NOT NULL DEFAULT '',
  width INTEGER NOT NULL DEFAULT 0,
  height INTEGER NOT NULL DEFAULT 0,
  sm_icon_url TEXT NOT NULL DEFAULT '',
  lg_icon_url TEXT NOT NULL DEFAULT '',
  created_at INTEGER NOT NULL,
  modified_at INTEGER NOT NULL
);

CREATE TABLE IF NOT EXISTS theme_templates (
  theme_guid TEXT NOT NULL REFERENCES themes(guid) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  template_guid TEXT NOT NULL REFERENCES templates(guid) ON DELETE CASCADE,
  required INTEGER NOT NULL,
  PRIMARY KEY (theme_guid, position)
);

CREATE TABLE IF NOT EXISTS deployment_environments (
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL,
  must_use_path INTEGER NOT NULL
);
-- Records fill templates of their project; a guid names one record per project. Every save
-- takes a new id, so the highest id is the most recent.
CREATE TABLE IF NOT EXISTS data_records (
  id INTEGER PRIMARY KEY,
  guid TEXT NOT NULL,
  project_guid TEXT NOT NULL REFERENCES projects(guid) ON DELETE CASCADE,
  name TEXT NOT NULL,
  UNIQUE (project_guid, guid)
);

CREATE TABLE IF NOT EXISTS data_record_entries (
  record_id INTEGER NOT NULL REFERENCES data_records(id) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  guid TEXT NOT NULL,
  label TEXT NOT NULL,
  description TEXT NOT NULL,
  type TEXT NOT NULL,
  ext TEXT NOT NULL,
  format TEXT NOT NULL,
  escaped INTEGER NOT NULL,
  hidden INTEGER NOT NULL,
  has_value INTEGER NOT NULL,
  value TEXT NOT NULL,
  asset_guid TEXT NOT NULL,
  asset_dependencies TEXT NOT NULL,
  PRIMARY KEY (record_id, position)
);

-- A template that goes away takes its records' attachments (and their sync data) with it.
CREATE TABLE IF NOT EXISTS data_record_templates (
  record_id INTEGER NOT NULL REFERENCES data_records(id) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  template_guid TEXT NOT NULL REFERENCES templates(guid) ON DELETE CASCADE,
  sync_xml TEXT NOT NULL DEFAULT '',
  PRIMARY KEY (record_id, position)
);
CREATE INDEX IF NOT EXISTS data_record_templates_by_template
  ON data_record_templates (template_guid);
-- The session a cookie stands for: operations that carry no key find their session by it.
CREATE TABLE IF NOT EXISTS session_cookies (
  cookie TEXT PRIMARY KEY,
  token TEXT NOT NULL REFERENCES sessions(token)
);

-- Folder ids are 16-bit and numbered per account; a parent id of 0 marks the root.
CREATE TABLE IF NOT EXISTS asset_folders (
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  id INTEGER NOT NULL,
  parent_id INTEGER NOT NULL,
  name TEXT NOT NULL,
  rights TEXT NOT NULL,
  metadata_xml TEXT NOT NULL DEFAULT '',
  metadata_source TEXT NOT NULL DEFAULT '',
  PRIMARY KEY (account_id, id)
);

-- Files received by the upload pages, named by the key the page answered. `path` is relative
-- to the data folder; `page` is 'base' or 'fixed' (managed) or 'unmanaged'. An upload backs
-- at most one asset.
CREATE TABLE IF NOT EXISTS uploads (
  key TEXT PRIMARY KEY,
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  page TEXT NOT NULL,
  project_guid TEXT,
  name TEXT NOT NULL DEFAULT '',
  file_type TEXT NOT NULL DEFAULT '',
  size INTEGER NOT NULL,
  path TEXT NOT NULL,
  timed_data TEXT UNIQUE,
  removable INTEGER NOT NULL DEFAULT 0,
  asset_guid TEXT,
  received_at INTEGER NOT NULL
);
CREATE INDEX IF NOT EXISTS uploads_by_asset ON uploads (asset_guid);

CREATE TABLE IF NOT EXISTS assets (
  guid TEXT PRIMARY KEY,
  account_id INTEGER NOT NULL,
  folder_id INTEGER NOT NULL,
  type TEXT NOT NULL,
  type_id INTEGER NOT NULL,
  name TEXT NOT NULL,
  description TEXT NOT NULL,
  status TEXT NOT NULL,
  active_date TEXT NOT NULL,
  no_dmp INTEGER NOT NULL,
  zoom_parent_guid TEXT,
  source_system TEXT NOT NULL,
  created_at INTEGER NOT NULL,
  FOREIGN KEY (account_id, folder_id) REFERENCES asset_folders(account_id, id)
);

CREATE TABLE IF NOT EXISTS asset_metadata (
  asset_guid TEXT NOT NULL REFERENCES assets(guid) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  tag TEXT NOT NULL,
  data TEXT NOT NULL,
  PRIMARY KEY (asset_guid, position)
);

CREATE TABLE IF NOT EXISTS asset_representations (
  asset_guid TEXT NOT NULL REFERENCES assets(guid) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  rep_type TEXT NOT NULL,
  file_type TEXT NOT NULL,
  file_type_id INTEGER NOT NULL,
  language TEXT NOT NULL,
  bandwidth INTEGER NOT NULL,
  width INTEGER NOT NULL,
  height INTEGER NOT NULL,
  metadata_tag TEXT,
  metadata_data TEXT,
  file_name TEXT NOT NULL,
  upload_key TEXT NOT NULL REFERENCES uploads(key),
  PRIMARY KEY (asset_guid, position)
);
-- Users and accounts made through the Accounts service. The key names an account to
-- operations that have no session; closed users can no longer sign in.
CREATE TABLE IF NOT EXISTS user_profiles (
  user_id INTEGER PRIMARY KEY REFERENCES users(id),
  first_name TEXT NOT NULL,
  last_name TEXT NOT NULL,
  created_at INTEGER NOT NULL
);
CREATE TABLE IF NOT EXISTS account_keys (
  account_id INTEGER PRIMARY KEY REFERENCES accounts(id),
  key TEXT NOT NULL UNIQUE
);
CREATE TABLE IF NOT EXISTS member_types (
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  user_id INTEGER NOT NULL REFERENCES users(id),
  account_type TEXT NOT NULL,
  PRIMARY KEY (account_id, user_id)
);
CREATE TABLE IF NOT EXISTS closed_users (
  user_id INTEGER PRIMARY KEY REFERENCES users(id),
  closed_at INTEGER NOT NULL
);

CREATE TABLE IF NOT EXISTS service_orders (
  guid TEXT PRIMARY KEY,
  account_id INTEGER NOT NULL REFERENCES accounts(id),
  ordered_at INTEGER NOT NULL,
  period_start INTEGER NOT NULL,
  period_end INTEGER NOT NULL
);

-- The people registered for a project, whether added through the service or by a viewer's
-- registration form. Passwords are kept as MD5 digests only; `id` keeps creation order.
CREATE TABLE IF NOT EXISTS registrants (
  id INTEGER PRIMARY KEY,
  guid TEXT NOT NULL UNIQUE,
  project_guid TEXT NOT NULL REFERENCES projects(guid) ON DELETE CASCADE,
  email TEXT NOT NULL COLLATE NOCASE,
  first_name TEXT NOT NULL,
  last_name TEXT NOT NULL,
  password_md5 TEXT NOT NULL,
  custom_xml TEXT NOT NULL,
  user_ip TEXT NOT NULL,
  user_host_name TEXT NOT NULL,
  registered INTEGER NOT NULL,
  created_at INTEGER NOT NULL,
  modified_at INTEGER NOT NULL,
  UNIQUE (project_guid, email)
);

-- What a viewer's browser told about itself; at most one row per registrant.
CREATE TABLE IF NOT EXISTS registrant_details (
  registrant_id INTEGER PRIMARY KEY REFERENCES registrants(id) ON DELETE CASCADE,
  guid TEXT NOT NULL,
  first_accessed INTEGER,
  bandwidth INTEGER NOT NULL DEFAULT 0,
  browser_type TEXT NOT NULL DEFAULT '',
  browser_version INTEGER NOT NULL DEFAULT 0,
  country TEXT NOT NULL DEFAULT '',
  has_cookies INTEGER NOT NULL DEFAULT 0,
  has_flash INTEGER NOT NULL DEFAULT 0,
  has_java INTEGER NOT NULL DEFAULT 0,
  has_wm INTEGER NOT NULL DEFAULT 0,
  has_real INTEGER NOT NULL DEFAULT 0,
  ip_address TEXT NOT NULL DEFAULT '',
  js_version_major INTEGER NOT NULL DEFAULT 0,
  js_version_minor INTEGER NOT NULL DEFAULT 0,
  language TEXT NOT NULL DEFAULT '',
  operating_system TEXT NOT NULL DEFAULT '',
  screen_depth INTEGER NOT NULL DEFAULT 0,
  screen_height INTEGER NOT NULL DEFAULT 0,
  screen_width INTEGER NOT NULL DEFAULT 0
);
-- Viewers of deployed pages, known by the TelvaneViewer cookie, and what they did there.
-- Rows follow their template: deleting it deletes its viewing history.
CREATE TABLE IF NOT EXISTS viewers (
  guid TEXT PRIMARY KEY,
  first_seen INTEGER NOT NULL
);
CREATE TABLE IF NOT EXISTS page_hits (
  id INTEGER PRIMARY KEY,
  guid TEXT NOT NULL UNIQUE,
  template_guid TEXT NOT NULL REFERENCES templates(guid) ON DELETE CASCADE,
  deployment_guid TEXT NOT NULL,
  viewer_guid TEXT NOT NULL REFERENCES viewers(guid),
  hit_at INTEGER NOT NULL,
  closed_at INTEGER,
  time_spent INTEGER NOT NULL DEFAULT 0,
  ip TEXT NOT NULL,
  host_name TEXT NOT NULL,
  browser_type TEXT NOT NULL,
  browser_version INTEGER NOT NULL,
  operating_system TEXT NOT NULL,
  language TEXT NOT NULL,
  country TEXT NOT NULL,
  has_cookies INTEGER NOT NULL
);
CREATE INDEX IF NOT EXISTS page_hits_by_template ON page_hits (template_guid, hit_at);
CREATE TABLE IF NOT EXISTS viewer_registrations (
  viewer_guid TEXT NOT NULL REFERENCES viewers(guid),
  project_guid TEXT NOT NULL REFERENCES projects(guid) ON DELETE CASCADE,
  registrant_guid TEXT NOT NULL,
  PRIMARY KEY (viewer_guid, project_guid)
);
CREATE TABLE IF NOT EXISTS poll_responses (
  id INTEGER PRIMARY KEY,
  template_guid TEXT NOT NULL REFERENCES templates(guid) ON DELETE CASCADE,
  poll_guid TEXT NOT NULL,
  answer_id INTEGER NOT NULL,
  viewer_guid TEXT NOT NULL REFERENCES viewers(guid),
  responded_at INTEGER NOT NULL
);
CREATE TABLE IF NOT EXISTS survey_responses (
  id INTEGER PRIMARY KEY,
  guid TEXT NOT NULL UNIQUE,
  template_guid TEXT NOT NULL REFERENCES templates(guid) ON DELETE CASCADE,
  survey_guid TEXT NOT NULL,
  question_guid TEXT NOT NULL,
  answer_guid TEXT NOT NULL,
  answer_txt TEXT NOT NULL,
  viewer_guid TEXT NOT NULL REFERENCES viewers(guid),
  responded_at INTEGER NOT NULL
);
CREATE TABLE IF NOT EXISTS qa_items (
  guid TEXT PRIMARY KEY,
  template_guid TEXT NOT NULL REFERENCES templates(guid) ON DELETE CASCADE,
  viewer_guid TEXT NOT NULL REFERENCES viewers(guid),
  question_at INTEGER NOT NULL,
  question_txt TEXT NOT NULL,
  name TEXT NOT NULL,
  location TEXT NOT NULL,
  category TEXT NOT NULL,
  status TEXT NOT NULL,
  answer_txt TEXT NOT NULL DEFAULT '',
  answer_at INTEGER,
  submitter_ip TEXT NOT NULL,
  submitter_host_name TEXT NOT NULL
);
)sql");
}

}  // namespace sandbox
