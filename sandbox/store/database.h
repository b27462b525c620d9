#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace sandbox {

// One prepared statement; bind parameters in order, then step through the rows.
class Statement {
 public:
  Statement(sqlite3* db, std::string_view sql);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Binds the arguments to parameters 1..n.
  template <class... Args>
  Statement& bind(const Args&... args) {
    int index = 0;
    (bind_value(++index, args), ...);
    return *this;
  }

  // Advances to the next row; false once there is none (or the statement is done).
  bool step();
  // Runs a statement that returns no rows.
  void run();

  std::int64_t integer(int column) const;
  std::optional<std::int64_t> optional_integer(int column) const;
  std::string text(int column) const;
  std::optional<std::string> optional_text(int column) const;

 private:
  void bind_value(int index, std::int64_t value);
  void bind_value(int index, std::string_view value);

  sqlite3* db_;
  sqlite3_stmt* statement_ = nullptr;
};

// The sandbox's SQLite file. Not thread-safe: callers serialise access.
class Database {
 public:
  explicit Database(const std::filesystem::path& file);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Runs one or more statements that take no parameters.
  void execute(std::string_view sql);
  Statement prepare(std::string_view sql) { return Statement(db_, sql); }

 private:
  sqlite3* db_ = nullptr;
};

// Groups the statements of one change: rolled back unless commit() is reached. A savepoint,
// so that a change made of smaller changes can group them again.
class Transaction {
 public:
  explicit Transaction(Database& db) : db_(db) { db_.execute("SAVEPOINT change"); }
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void commit();

 private:
  Database& db_;
  bool done_ = false;
};

}  // namespace sandbox
