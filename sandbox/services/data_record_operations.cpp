#include <algorithm>

#include "crypto/random.h"
#include "services/lookups.h"
#include "services/main_operations.h"
#include "soap/clip.h"
#include "soap/faults.h"
#include "store/data_record_store.h"
#include "store/database.h"
#include "store/project_store.h"
#include "store/template_store.h"
#include "store/theme_data_record.h"

namespace sandbox {
namespace {

ApplicationFault no_such_data_record(std::string_view text) {
  return ApplicationFault("NoSuchDataRecord", std::string(text), kNotFoundFault);
}

// An entry as the client sends it: one guid (the first of its list) and a value structure.
// The value's valueArray is not kept: no answer carries it. The client sends guidList as a
// plain string; a toolkit that follows the WSDL sends the string array it declares.
DataRecordEntry read_entry(const Arguments& entry) {
  DataRecordEntry read;
  if (entry.holds_elements("guidList")) {
    const std::vector<std::string> guids = entry.strings("guidList");
    if (!guids.empty()) read.guid = guids.front();
  } else {
    read.guid = entry.string("guidList");
  }
  read.label = entry.string("label");
  read.description = entry.string("description");
  read.type = entry.string("type");
  read.ext = entry.string("ext");
  read.format = entry.string("format");
  read.escaped = entry.boolean("escaped");
  read.hidden = entry.boolean("hidden");
  if (const auto value = entry.optional_structure("value")) {
    read.value = DataRecordValue{value->string("value"), value->string("assetGuid"),
                                 value->string("assetDependencies")};
  }
  return read;
}

// The record's assets are not read: answers derive them from the values.
DataRecord read_data_record(const Arguments& dr) {
  DataRecord record;
  record.guid = dr.string("guid");
  record.name = dr.string("name");
  for (const Arguments& entry : dr.structures("entries"))
    record.entries.push_back(read_entry(entry));
  record.template_guids = dr.strings("templateGuidList");
  return record;
}

// What the record adds to the account's storage: its name and its entries' texts.
double record_bytes(const DataRecord& record) {
  std::size_t bytes = record.name.size();
  for (const DataRecordEntry& entry : record.entries) {
    bytes += entry.label.size() + entry.description.size();
    if (entry.value) {
      bytes += entry.value->value.size() + entry.value->asset_guid.size() +
               entry.value->asset_dependencies.size();
    }
  }
  return static_cast<double>(bytes);
}

// Records are chosen by their templates alone; the request's "guid" is not used.
void get_data_record(Call& call) {
  const std::vector<std::string> templates = call.args.strings("templateGuidList");
  const auto record = latest_data_record(call.db, call.account(), templates);
  if (!record) throw no_such_data_record("No data record is attached to all those templates");
  call.reply.record("DataRecord", record_fields(*record));
}

void get_theme_data_record(Call& call) {
  const auto record = theme_data_record(call.db, call.args.string("themeGuid"));
  if (!record) throw ApplicationFault("NoSuchTheme", "No theme with that guid", kNotFoundFault);
  call.reply.record("DataRecord", record_fields(*record));
}

// The entry of the template's most recent record, by guid when one is given, else by label;
// the first that matches.
void get_data_record_entry(Call& call) {
  const std::string template_guid = call.args.string("templateGuid");
  const std::string guid = call.args.string("dreGuid");
  const std::string label = call.args.string("dreLabel");
  const auto record = latest_data_record(call.db, call.account(), std::span(&template_guid, 1));
  if (!record) throw no_such_data_record("No data record is attached to that template");
  const auto entry = std::find_if(
      record->entries.begin(), record->entries.end(), [&](const DataRecordEntry& candidate) {
        return guid.empty() ? candidate.label == label : candidate.guid == guid;
      });
  if (entry == record->entries.end()) {
    throw ApplicationFault("NoSuchEntry", "The data record has no such entry", kNotFoundFault);
  }
  call.reply.record("DataRecordEntry", entry_fields(*entry));
}

void create_data_record(Call& call) {
  DataRecord record = read_data_record(call.args.structure("dr"));
  const std::string project = call.args.string("projectGuid");
  const bool overwrite = call.args.boolean("overwriteExisting");
  require_project(call, project);
  for (const std::string& template_guid : record.template_guids) {
    if (!project_has_template(call.db, project, template_guid)) {
      throw ApplicationFault("NoSuchTemplate",
                             "No template " + clip(template_guid) + " in the project",
                             kNotFoundFault);
    }
  }
  if (record.guid.empty()) {
    record.guid = random_guid();
  } else if (!overwrite && project_has_data_record(call.db, project, record.guid)) {
    throw ApplicationFault("DuplicateDataRecord", "The project has a data record with that guid",
                           kDuplicateNameFault);
  }
  require_quota(call, QuotaKind::storage, record_bytes(record));
  Transaction transaction(call.db);
  save_data_record(call.db, project, record);
  touch_project(call.db, project);
  transaction.commit();
  call.reply.scalar(record.guid);
}

void set_sync_data(Call& call) {
  const std::string record = call.args.string("drGuid");
  const std::string template_guid = call.args.string("templateGuid");
  const std::string xml = call.args.string("syncXML");
  if (!set_data_record_sync_data(call.db, call.account(), record, template_guid, xml)) {
    throw no_such_data_record("No data record with that guid is attached to that template");
  }
  call.reply.scalar(true);
}

constexpr Operation kOperations[] = {
    {"getDataRecord", Access::keyed, get_data_record,
     "guid templateGuidList:string[] -> DataRecord"},
    {"getThemeDataRecord", Access::keyed, get_theme_data_record, "themeGuid -> DataRecord"},
    {"getDataRecordEntry", Access::keyed, get_data_record_entry,
     "templateGuid dreGuid dreLabel -> DataRecordEntry"},
    {"createDataRecord", Access::keyed, create_data_record,
     "dr:DataRecord projectGuid overwriteExisting:boolean -> string"},
    {"setDataRecordSyncData", Access::keyed, set_sync_data,
     "drGuid templateGuid syncXML -> boolean"},
};

}  // namespace

std::span<const Operation> data_record_operations() {
  return kOperations;
}

}  // namespace sandbox
