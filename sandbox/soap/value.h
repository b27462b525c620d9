#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "soap/timestamp.h"

namespace sandbox {

// The null value, written as xsi:nil="true".
struct Nil {};

// One typed value of an answer; the alternative picks the xsd type it is written with.
using Value = std::variant<Nil, std::string, std::int32_t, std::int16_t, bool, double, Timestamp>;

// A field of a record, in the order the record's type lists them.
struct Field {
  std::string name;
  Value value;
};
using Fields = std::vector<Field>;

// A date that may be absent: nil when it is.
inline Value date_or_nil(std::optional<Timestamp> time) {
  if (time) return *time;
  return Nil{};
}

// Appends <name xsi:type="xsd:T">text</name>, or <name xsi:nil="true"/> for Nil.
void append_typed_element(std::string& out, std::string_view name, const Value& value);

}  // namespace sandbox
