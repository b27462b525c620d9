#pragma once

#include <cstdint>

#include "soap/value.h"
#include "store/database.h"

namespace sandbox {

// Readers for the columns that answers are built from; times are stored as milliseconds
// since the Unix epoch, UTC.

inline Timestamp time_at(const Statement& row, int column) {
  return Timestamp(std::chrono::milliseconds(row.integer(column)));
}

// A stored time, or nil where the column is NULL.
inline Value time_or_nil_at(const Statement& row, int column) {
  const auto ms = row.optional_integer(column);
  if (!ms) return Nil{};
  return Timestamp(std::chrono::milliseconds(*ms));
}

inline std::int32_t int32_at(const Statement& row, int column) {
  return static_cast<std::int32_t>(row.integer(column));
}

inline bool flag_at(const Statement& row, int column) {
  return row.integer(column) != 0;
}

inline std::int64_t now_ms() {
  return current_time().time_since_epoch().count();
}

}  // namespace sandbox
