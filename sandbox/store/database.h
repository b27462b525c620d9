#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace sandbox {

// One prepared statement; bind parameters in order, then step through the rows.
class Statement {
 public:
  // `in_use`, when given, marks a statement the database keeps for reuse: it is reset on
  // destruction and `*in_use` cleared; otherwise the statement is finalized.
  Statement(sqlite3* db, sqlite3_stmt* statement, bool* in_use = nullptr)
      : db_(db), statement_(statement), in_use_(in_use) {}
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
  sqlite3_stmt* statement_;
  bool* in_use_;
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
  // Statements are kept prepared once used: compiling them cost more than running them.
  Statement prepare(std::string_view sql);

 private:
  struct Kept {
    sqlite3_stmt* statement = nullptr;
    bool in_use = false;
  };

  sqlite3* db_ = nullptr;
  std::unordered_map<std::string, Kept> kept_;
};

// Groups the statements of one change: rolled back unless commit() is reached. A savepoint,
// so that a change made of smaller changes can group them again.
class Transaction {
 public:
  explicit Transaction(Database& db) : db_(db) { db_.prepare("SAVEPOINT change").run(); }
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void commit();

 private:
  Database& db_;
  bool done_ = false;
};

}  // namespace sandbox
