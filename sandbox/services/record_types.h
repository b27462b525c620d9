#pragma once

#include <span>
#include <string_view>

namespace sandbox {

// A record type the services answer with (or take, as createDataRecord's "dr"): its fields
// in the same notation as an operation's parts, e.g. "accountID:int accountName".
struct RecordType {
  std::string_view name;
  std::string_view fields;
};

// Every record type of every service; they share one namespace per service, so the WSDL of
// each service declares those its operations reach.
std::span<const RecordType> record_types();

}  // namespace sandbox
