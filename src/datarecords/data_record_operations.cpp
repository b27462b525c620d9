// Fetching, creating, synchronising and deploying data records.

#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "util/record_reader.h"

namespace brenmoor {

using service::Elements;
using service::Operation;
using soap::Service;
using soap::Structure;
using util::RecordReader;

namespace {

constexpr Operation kGetDataRecord{"getDataRecord", Service::Main};
constexpr Operation kGetThemeDataRecord{"getThemeDataRecord", Service::Main};
constexpr Operation kGetDataRecordEntry{"getDataRecordEntry", Service::Main};
constexpr Operation kCreateDataRecord{"createDataRecord", Service::Main};
constexpr Operation kSetDataRecordSyncData{"setDataRecordSyncData", Service::Main};
constexpr Operation kDeploy{"deploy", Service::Main};

std::shared_ptr<Collection<std::string>> readStrings(const soap::Node* list) {
  auto strings = std::make_shared<Collection<std::string>>();
  if (list) {
    for (const auto& item : list->children()) strings->Add(item->text());
  }
  return strings;
}

// What a theme's record adds to each entry; sizes only from services that send them right.
struct ThemeExtras {
  bool sizes = false;
};

void readEntry(const soap::Node& node, DataRecordEntry& entry, const ThemeExtras* theme) {
  entry.guidList = readStrings(node.child("guidList"));
  RecordReader in(node, RecordReader::Missing::SetsEmpty);
  in("label", entry.label);
  in("description", entry.description);
  in("type", entry.typeName);
  in("ext", entry.ext);
  in("format", entry.format);
  in("escaped", entry.escaped);
  in("hidden", entry.hidden);
  if (theme) {
    in("src", entry.src);
    in("buttonText", entry.buttonText);
    if (theme->sizes) {
      in("width", entry.width);
      in("height", entry.height);
    }
  }
  auto value = std::make_shared<DataRecordEntryValue>();
  const soap::Node* valueNode = node.child("value");
  if (valueNode && !valueNode->nil()) {
    RecordReader of(*valueNode, RecordReader::Missing::SetsEmpty);
    of("value", value->value);
    of("assetGuid", value->assetGuid);
    of("assetDependencies", value->assetDependencies);
  }
  entry.value = value;
}

// The record's assets are in the answer but are not kept: callers have always found `assets`
// empty after a fetch.
void readRecord(const soap::Node& node, DataRecord& record, const ThemeExtras* theme) {
  auto entries = std::make_shared<Collection<DataRecordEntry>>();
  if (const soap::Node* list = node.child("entries")) {
    for (const auto& item : list->children()) {
      auto entry = std::make_shared<DataRecordEntry>();
      readEntry(*item, *entry, theme);
      entries->Add(std::move(entry));
    }
  }
  record.entries = entries;
  record.templateGuidList = readStrings(node.child("templateGuidList"));
  RecordReader in(node, RecordReader::Missing::SetsEmpty);
  in("guid", record.guid);
  in("name", record.name);
}

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
  return service::fillNew<DataRecord>(
      *state_, kGetDataRecord,
      [&] {
        return Elements{{"guid", std::string()}, {"templateGuidList", templateGuid}};
      },
      [](const soap::Node& node, DataRecord& record) { readRecord(node, record, nullptr); },
      service::silentFault);
}

std::shared_ptr<DataRecord> ZylService::getThemeDataRecord(const std::string& themeGuid) {
  const ThemeExtras theme{validVersion("3.2.4.59")};
  return service::fillNew<DataRecord>(
      *state_, kGetThemeDataRecord,
      [&] {
        return Elements{{"themeGuid", themeGuid}};
      },
      [&](const soap::Node& node, DataRecord& record) { readRecord(node, record, &theme); },
      service::silentFault);
}

std::shared_ptr<DataRecordEntry> ZylService::getDataRecordEntry(const std::string& templateGuid,
                                                                const std::string& dreGuid,
                                                                const std::string& dreLabel) {
  return service::fillNew<DataRecordEntry>(
      *state_, kGetDataRecordEntry,
      [&] {
        return Elements{
            {"templateGuid", templateGuid}, {"dreGuid", dreGuid}, {"dreLabel", dreLabel}};
      },
      [](const soap::Node& node, DataRecordEntry& entry) { readEntry(node, entry, nullptr); },
      service::silentFault);
}

std::string ZylService::createDataRecord(const DataRecord& dr, const std::string& projectGuid,
                                         bool overwriteExisting) {
  return service::call(
      *state_, kCreateDataRecord,
      [&] {
        return Elements{{"dr", recordStructure(dr)},
                        {"projectGuid", projectGuid},
                        {"overwriteExisting", overwriteExisting}};
      },
      std::string(), service::returnText);
}

std::string ZylService::setDataRecordSyncData(const std::string& drGuid,
                                              const std::string& templateGuid,
                                              const std::string& syncXML) {
  return service::call(
      *state_, kSetDataRecordSyncData,
      [&] {
        return Elements{{"drGuid", drGuid}, {"templateGuid", templateGuid}, {"syncXML", syncXML}};
      },
      std::string(), service::returnText);
}

std::vector<std::string> ZylService::Deploy(const std::vector<std::string>& datarecordGuid,
                                            const std::vector<std::string>& templateGuid) {
  return service::call(
      *state_, kDeploy,
      [&] {
        return Elements{{"datarecordGuidList", datarecordGuid}, {"templateGuidList", templateGuid}};
      },
      std::vector<std::string>(),
      [](const soap::Answer& a) {
        std::vector<std::string> guids;
        for (const auto& item : a.returnNode().children()) guids.push_back(item->text());
        return guids;
      });
}

}  // namespace brenmoor
