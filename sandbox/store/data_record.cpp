#include "store/data_record.h"

#include <unordered_set>

namespace sandbox {

Fields entry_fields(const DataRecordEntry& entry) {
  Value value = Nil{};
  if (entry.value) {
    value = Record{"DataRecordEntryValue",
                   {{"value", entry.value->value},
                    {"assetGuid", entry.value->asset_guid},
                    {"assetDependencies", entry.value->asset_dependencies}}};
  }
  Fields fields{{"guidList", Strings{entry.guid}},
                {"label", entry.label},
                {"description", entry.description},
                {"type", entry.type},
                {"ext", entry.ext},
                {"format", entry.format},
                {"escaped", entry.escaped},
                {"hidden", entry.hidden},
                {"value", std::move(value)}};
  if (entry.theme) {
    fields.insert(fields.end(), {{"src", entry.theme->src},
                                 {"buttonText", entry.theme->button_text},
                                 {"width", entry.theme->width},
                                 {"height", entry.theme->height}});
  }
  return fields;
}

Fields record_fields(const DataRecord& record) {
  std::vector<Fields> entries;
  Strings assets;
  std::unordered_set<std::string> listed;
  for (const DataRecordEntry& entry : record.entries) {
    entries.push_back(entry_fields(entry));
    if (!entry.value || entry.value->asset_guid.empty()) continue;
    if (listed.insert(entry.value->asset_guid).second) assets.push_back(entry.value->asset_guid);
  }
  return {{"guid", record.guid},
          {"name", record.name},
          {"entries", RecordArray{"DataRecordEntry", std::move(entries)}},
          {"templateGuidList", record.template_guids},
          {"assets", std::move(assets)}};
}

}  // namespace sandbox
