#pragma once
// How commands print data on standard output: JSON with --json; otherwise columns aligned
// under a header on a terminal, and tab-separated lines without a header for scripts.

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace brenmoor::cli {

struct OutputMode {
  bool json = false;
  bool terminal = false;  // standard output is a terminal
};

// A list: a JSON array, or one line per item with the named properties of each object (an
// item that is not an object prints alone).
void printList(const OutputMode& mode, const nlohmann::json& items,
               const std::vector<std::string>& columns);
// One record: a JSON object, or one line with the named properties it has.
void printRecord(const OutputMode& mode, const nlohmann::json& record,
                 const std::vector<std::string>& columns);
// One value: {"name": value} as JSON, or the value alone.
void printValue(const OutputMode& mode, const std::string& name, const nlohmann::json& value);

}  // namespace brenmoor::cli
