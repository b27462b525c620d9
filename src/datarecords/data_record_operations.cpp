// Fetching, creating, synchronising and deploying data records.

#include "brenmoor/zyl_service.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;
using soap::Structure;

namespace {

std::shared_ptr<Collection<std::string>> readStrings(const std::optional<Fields>& list) {
  auto strings = std::make_shared<Collection<std::string>>();
  if (list) list->forEachItem([&](const Fields& item) { strings->Add(item.as<std::string>()); });
  return strings;
}

// A theme's record adds sources and button texts to each entry, and sizes from services that
// send them right.
enum class Extras { None, Theme, ThemeWithSizes };

template <Extras extras>
void readEntry(const Fields& answer, DataRecordEntry& entry) {
  const auto in = answer.reading(Fields::Missing::SetsEmpty);
  entry.guidList = readStrings(in.child("guidList"));
  in("label", entry.label);
  in("description", entry.description);
  in("type", entry.typeName);
  in("ext", entry.ext);
  in("format", entry.format);
  in("escaped", entry.escaped);
  in("hidden", entry.hidden);
  if constexpr (extras != Extras::None) {
    in("src", entry.src);
    in("buttonText", entry.buttonText);
  }
  if constexpr (extras == Extras::ThemeWithSizes) {
    in("width", entry.width);
    in("height", entry.height);
  }
  auto value = std::make_shared<DataRecordEntryValue>();
  if (auto of = in.child("value"); of && !of->nil()) {
    (*of)("value", value->value);
    (*of)("assetGuid", value->assetGuid);
    (*of)("assetDependencies", value->assetDependencies);
  }
  entry.value = value;
}

// The record's assets are in the answer but are not kept: callers have always found `assets`
// empty after a fetch.
template <Extras extras>
void readRecord(const Fields& answer, DataRecord& record) {
  const auto in = answer.reading(Fields::Missing::SetsEmpty);
  auto entries = std::make_shared<Collection<DataRecordEntry>>();
  if (auto list = in.child("entries"))
    entries = readList<DataRecordEntry>(*list, readEntry<extras>);
  record.entries = entries;
  record.templateGuidList = readStrings(in.child("templateGuidList"));
  in("guid", record.guid);
  in("name", record.name);
}

std::vector<std::string> readGuids(const Fields& returned) {
  std::vector<std::string> guids;
  returned.forEachItem([&](const Fields& item) { guids.push_back(item.as<std::string>()); });
  return guids;
}

constexpr auto kGetDataRecord =
    Operation<std::shared_ptr<DataRecord>>("getDataRecord", Service::Main)
        .sends("guid", "templateGuidList")
        .reads(record<DataRecord, readRecord<Extras::None>>)
        .alerts(FaultAlert::silent())
        .emptyAfterFault();
constexpr auto kGetThemeDataRecord =
    Operation<std::shared_ptr<DataRecord>>("getThemeDataRecord", Service::Main)
        .sends("themeGuid")
        .reads(record<DataRecord, readRecord<Extras::Theme>>)
        .alerts(FaultAlert::silent())
        .emptyAfterFault();
constexpr auto kGetThemeDataRecordWithSizes =
    kGetThemeDataRecord.reads(record<DataRecord, readRecord<Extras::ThemeWithSizes>>);
constexpr auto kGetDataRecordEntry =
    Operation<std::shared_ptr<DataRecordEntry>>("getDataRecordEntry", Service::Main)
        .sends("templateGuid", "dreGuid", "dreLabel")
        .reads(record<DataRecordEntry, readEntry<Extras::None>>)
        .alerts(FaultAlert::silent())
        .emptyAfterFault();
constexpr auto kCreateDataRecord = Operation<std::string>("createDataRecord", Service::Main)
                                       .sends("dr", "projectGuid", "overwriteExisting")
                                       .reads(asText);
constexpr auto kSetDataRecordSyncData =
    Operation<std::string>("setDataRecordSyncData", Service::Main)
        .sends("drGuid", "templateGuid", "syncXML")
        .reads(asText);
constexpr auto kDeploy = Operation<std::vector<std::string>>("deploy", Service::Main)
                             .sends("datarecordGuidList", "templateGuidList")
                             .reads(readGuids);

// The "dr" structure of createDataRecord. Only an entry's first guid goes, and the record's
// name is always sent as "Project": the service expects both.
Structure recordStructure(const DataRecord& record) {
  if (!record.entries() || !record.templateGuidList()) {
    throw Error(Error::UnsetObject, "Object variable not set");
  }
  Structure entries;
  for (const auto& entry : *record.entries()) {
    if (!entry->guidList() || entry->guidList()->Count() == 0) {
      throw Error(Error::SubscriptOutOfRange, "Subscript out of range: an entry has no guid");
    }
    if (!entry->value()) throw Error(Error::UnsetObject, "Object variable not set");
    const DataRecordEntryValue& v = *entry->value();
    entries.children.push_back(
        {"entries", Structure{{{"guidList", entry->guidList()->Item(1)},
                               {"label", entry->label()},
                               {"description", entry->description()},
                               {"type", entry->typeName()},
                               {"ext", entry->ext()},
                               {"format", entry->format()},
                               {"escaped", entry->escaped()},
                               {"hidden", entry->hidden()},
                               {"value", Structure{{{"value", v.value()},
                                                    {"assetGuid", v.assetGuid()},
                                                    {"assetDependencies", v.assetDependencies()},
                                                    {"valueArray", v.valueArray()}}}}}}});
  }
  Structure templates;
  for (const auto& t : *record.templateGuidList())
    templates.children.push_back({"templateGuidList", t});
  return Structure{{{"guid", record.guid()},
                    {"name", std::string("Project")},
                    {"assets", record.assets()},
                    {"entries", std::move(entries)},
                    {"templateGuidList", std::move(templates)}}};
}

}  // namespace

std::shared_ptr<DataRecord> ZylService::getDataRecord(
    const std::vector<std::string>& templateGuid) {
  return kGetDataRecord(*state_, std::string(), templateGuid);
}

std::shared_ptr<DataRecord> ZylService::getThemeDataRecord(const std::string& themeGuid) {
  const auto& op = validVersion("3.2.4.59") ? kGetThemeDataRecordWithSizes : kGetThemeDataRecord;
  return op(*state_, themeGuid);
}

std::shared_ptr<DataRecordEntry> ZylService::getDataRecordEntry(const std::string& templateGuid,
                                                                const std::string& dreGuid,
                                                                const std::string& dreLabel) {
  return kGetDataRecordEntry(*state_, templateGuid, dreGuid, dreLabel);
}

std::string ZylService::createDataRecord(const DataRecord& dr, const std::string& projectGuid,
                                         bool overwriteExisting) {
  return kCreateDataRecord(
      *state_, [&] { return recordStructure(dr); }, projectGuid, overwriteExisting);
}

std::string ZylService::setDataRecordSyncData(const std::string& drGuid,
                                              const std::string& templateGuid,
                                              const std::string& syncXML) {
  return kSetDataRecordSyncData(*state_, drGuid, templateGuid, syncXML);
}

std::vector<std::string> ZylService::Deploy(const std::vector<std::string>& datarecordGuid,
                                            const std::vector<std::string>& templateGuid) {
  return kDeploy(*state_, datarecordGuid, templateGuid);
}

}  // namespace brenmoor
