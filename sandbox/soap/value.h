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

struct Field;
// The fields of a record, in the order the record's type lists them.
using Fields = std::vector<Field>;

// A record of type `type` (e.g. "DeploymentInfo") in the service's namespace; written as a
// multiRef entry that the field or return element points at.
struct Record {
  std::string type;
  Fields fields;
};

// An array of records of one type, written as a soapenc:Array of references.
struct RecordArray {
  std::string type;
  std::vector<Fields> items;
};

// An array of strings, written as a soapenc:Array of xsd:string items.
using Strings = std::vector<std::string>;

// An array of dates, written as a soapenc:Array of xsd:dateTime items.
using Dates = std::vector<Timestamp>;

// One value of an answer; the alternative picks the xsd type it is written with.
using Value = std::variant<Nil, std::string, std::int32_t, std::int16_t, bool, double, Timestamp,
                           Strings, Dates, Record, RecordArray>;

struct Field {
  std::string name;
  Value value;
};

// A date that may be absent: nil when it is.
inline Value date_or_nil(std::optional<Timestamp> time) {
  if (time) return *time;
  return Nil{};
}

// Appends <name xsi:type="xsd:T">text</name>, or <name xsi:nil="true"/> for Nil. Arrays and
// records are written by the Reply, which knows the prefixes and multiRef entries they need.
void append_typed_element(std::string& out, std::string_view name, const Value& value);

}  // namespace sandbox
