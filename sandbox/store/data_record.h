#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "soap/value.h"

namespace sandbox {

// The content that fills templates: labelled entries and the templates it belongs to.

struct DataRecordValue {
  std::string value;
  std::string asset_guid;
  std::string asset_dependencies;
};

// What an entry of a theme's record adds: the editor's source and button, and the size of
// the template it belongs to.
struct ThemeEntryExtras {
  std::string src;
  std::string button_text;
  std::int16_t width = 0;
  std::int16_t height = 0;
};

struct DataRecordEntry {
  std::string guid;
  std::string label;
  std::string description;
  std::string type;
  std::string ext;
  std::string format;
  bool escaped = false;
  bool hidden = false;
  std::optional<DataRecordValue> value;  // nil in answers when absent
  std::optional<ThemeEntryExtras> theme;
};

struct DataRecord {
  std::string guid;
  std::string name;
  std::vector<DataRecordEntry> entries;
  std::vector<std::string> template_guids;
};

// The DataRecordEntry answer record.
Fields entry_fields(const DataRecordEntry& entry);

// The DataRecord answer record; its assets are the distinct asset guids that its values
// refer to, in entry order.
Fields record_fields(const DataRecord& record);

}  // namespace sandbox
