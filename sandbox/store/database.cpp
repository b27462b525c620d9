#include "store/database.h"

#include <sqlite3.h>

#include <stdexcept>

namespace sandbox {
namespace {

[[noreturn]] void fail(sqlite3* db, std::string_view doing) {
  throw std::runtime_error("SQLite " + std::string(doing) + ": " + sqlite3_errmsg(db));
}

// The same few statements run on every call; a handful more come from the odd query.
constexpr std::size_t kMaxKeptStatements = 256;

}  // namespace

Statement::~Statement() {
  if (!in_use_) {
    sqlite3_finalize(statement_);
    return;
  }
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
  *in_use_ = false;
}

bool Statement::step() {
  const int result = sqlite3_step(statement_);
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  fail(db_, "step");
}

void Statement::run() {
  while (step()) {
  }
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(statement_, column);
}

std::optional<std::int64_t> Statement::optional_integer(int column) const {
  if (sqlite3_column_type(statement_, column) == SQLITE_NULL) return std::nullopt;
  return integer(column);
}

std::string Statement::text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  if (text == nullptr) return {};
  return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

std::optional<std::string> Statement::optional_text(int column) const {
  if (sqlite3_column_type(statement_, column) == SQLITE_NULL) return std::nullopt;
  return text(column);
}

void Statement::bind_value(int index, std::int64_t value) {
  if (sqlite3_bind_int64(statement_, index, value) != SQLITE_OK) fail(db_, "bind");
}

void Statement::bind_value(int index, std::string_view value) {
  if (sqlite3_bind_text64(statement_, index, value.data(), value.size(), SQLITE_TRANSIENT,
                          SQLITE_UTF8) != SQLITE_OK) {
    fail(db_, "bind");
  }
}

Database::Database(const std::filesystem::path& file) {
  if (sqlite3_open_v2(file.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
      SQLITE_OK) {
    const std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
    sqlite3_close(db_);
    throw std::runtime_error("cannot open database " + file.string() + ": " + message);
  }
  // Another sandbox on the same folder may hold a lock for a moment.
  sqlite3_busy_timeout(db_, 5000);
  // A commit is acknowledged once it is in the write-ahead log. NORMAL syncs that log only
  // at checkpoints: a killed process loses nothing, since its writes are already with the
  // kernel; only a crash of the machine itself could lose the last commits, which a sandbox
  // may. FULL would add an fsync to every call that touches the store, key checks included.
  try {
    execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
  } catch (const std::exception&) {
    sqlite3_close(db_);
    throw;
  }
}

Database::~Database() {
  for (auto& [sql, kept] : kept_) sqlite3_finalize(kept.statement);
  sqlite3_close(db_);
}

Statement Database::prepare(std::string_view sql) {
  const auto found = kept_.find(std::string(sql));
  if (found != kept_.end() && !found->second.in_use) {
    found->second.in_use = true;
    return Statement(db_, found->second.statement, &found->second.in_use);
  }
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(db_, sql.data(), static_cast<int>(sql.size()), &statement, nullptr) !=
      SQLITE_OK) {
    sqlite3_finalize(statement);
    fail(db_, "prepare");
  }
  // One already in use (a statement run again while its rows are read) stays unkept.
  if (found != kept_.end() || kept_.size() >= kMaxKeptStatements) return Statement(db_, statement);
  Kept& kept = kept_[std::string(sql)];
  kept = {statement, true};
  return Statement(db_, statement, &kept.in_use);
}

void Database::execute(std::string_view sql) {
  const std::string statements(sql);
  char* error = nullptr;
  if (sqlite3_exec(db_, statements.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string message = error ? error : "unknown error";
    sqlite3_free(error);
    throw std::runtime_error("SQLite execute: " + message);
  }
}

Transaction::~Transaction() {
  if (done_) return;
  try {
    db_.execute("ROLLBACK TO change; RELEASE change");
  } catch (const std::exception&) {
    // SQLite has already rolled back after the error that got us here.
  }
}

void Transaction::commit() {
  db_.prepare("RELEASE change").run();
  done_ = true;
}

}  // namespace sandbox
