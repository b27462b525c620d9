// Data record look-ups and the DATARECORD form.

#include "brenmoor/data_record.h"

#include <limits>

#include "brenmoor/error.h"
#include "util/convert.h"
#include "util/xml.h"

namespace brenmoor {
namespace {

// The walks count with 16-bit numbers, as the record form always has: past that, they stop.
template <class Items, class Visit>
void walk(const Items& items, Visit visit) {
  int32_t index = 0;
  for (const auto& item : items) {
    if (++index > std::numeric_limits<int16_t>::max()) throw Error(Error::Overflow, "Overflow");
    visit(item);
  }
}

template <class T>
T& required(const std::shared_ptr<T>& object) {
  if (!object) throw Error(Error::UnsetObject, "Object variable not set");
  return *object;
}

// readXML fills values without claiming that the service sent them.
template <class T>
void setUnflagged(FlaggedField<T>& field, T value) {
  field = std::move(value);
  field.setOccurs(false);
}

bool flagAttribute(pugi::xml_node e, const char* name) {
  return util::toBool(util::attributeOrDefault(e, name, "False"));
}

}  // namespace

bool DataRecordEntry::hasGuid(const std::string& guid) const {
  bool found = false;
  walk(required(guidList()), [&](const std::string& g) { found = found || g == guid; });
  return found;
}

void DataRecord::SetEntryValue(const std::string& label, const std::string& value,
                               const std::string& guid) {
  walk(required(entries()), [&](const std::shared_ptr<DataRecordEntry>& entry) {
    if (entry->label() != label) return;
    auto& v = required(entry->value());
    v.value = value;
    v.assetGuid = guid;
  });
}

std::shared_ptr<DataRecordEntry> DataRecord::GetEntry(const std::string& label) const {
  std::shared_ptr<DataRecordEntry> last;
  walk(required(entries()), [&](const std::shared_ptr<DataRecordEntry>& entry) {
    if (entry->label() == label) last = entry;
  });
  return last;
}

std::string DataRecord::GetEntryValue(const std::string& label) const {
  auto entry = GetEntry(label);
  return entry ? required(entry->value()).value() : std::string();
}

std::string DataRecord::getXML() const {
  std::string xml = "<DATARECORD guid='" + guid() + "' name='" + name() + "'><ENTRIES>";
  walk(required(entries()), [&](const std::shared_ptr<DataRecordEntry>& entry) {
    std::string guids;
    bool first = true;
    walk(required(entry->guidList()), [&](const std::string& g) {
      if (!first) guids += ',';
      guids += g;
      first = false;
    });
    const auto& value = required(entry->value());
    xml += "<ENTRY guid='" + guids + "' label='" + entry->label() + "' description='" +
           entry->description() + "' type='" + entry->typeName() + "' ext='" + entry->ext() +
           "' format='" + entry->format() + "' escaped='" + (entry->escaped() ? "True" : "False") +
           "' hidden='" + (entry->hidden() ? "True" : "False") + "'><VALUE";
    if (!value.assetGuid().empty()) xml += " assetGuid='" + value.assetGuid() + "'";
    if (!value.assetDependencies().empty()) {
      xml += " assetDependencies='" + value.assetDependencies() + "'";
    }
    xml += "><![CDATA[" + value.value() + "]]></VALUE></ENTRY>";
  });
  xml += "</ENTRIES><TEMPLATES>";
  walk(required(templateGuidList()),
       [&](const std::string& t) { xml += "<TEMPLATE>" + t + "</TEMPLATE>"; });
  return xml + "</TEMPLATES></DATARECORD>";
}

void DataRecord::readXML(pugi::xml_node e) {
  auto newEntries = std::make_shared<Collection<DataRecordEntry>>();
  auto newTemplates = std::make_shared<Collection<std::string>>();
  entries = newEntries;
  templateGuidList = newTemplates;
  guid = util::attributeOrDefault(e, "guid", "");
  name = util::attributeOrDefault(e, "name", "");

  walk(e.select_nodes("ENTRIES/ENTRY"), [&](const pugi::xpath_node& selected) {
    pugi::xml_node node = selected.node();
    auto entry = std::make_shared<DataRecordEntry>();
    const std::string guids = util::attributeOrDefault(node, "guid", "");
    if (!guids.empty()) {
      for (size_t from = 0;;) {
        size_t comma = guids.find(',', from);
        entry->guidList()->Add(guids.substr(from, comma - from));
        if (comma == std::string::npos) break;
        from = comma + 1;
      }
    }
    setUnflagged(entry->label, util::attributeOrDefault(node, "label", ""));
    setUnflagged(entry->description, util::attributeOrDefault(node, "description", ""));
    setUnflagged(entry->typeName, util::attributeOrDefault(node, "type", ""));
    setUnflagged(entry->ext, util::attributeOrDefault(node, "ext", ""));
    setUnflagged(entry->format, util::attributeOrDefault(node, "format", ""));
    entry->escaped = flagAttribute(node, "escaped");
    entry->hidden = flagAttribute(node, "hidden");

    auto value = std::make_shared<DataRecordEntryValue>();
    pugi::xml_node valueNode = node.child("VALUE");
    value->assetGuid = util::attributeOrDefault(valueNode, "assetGuid", "");
    value->assetDependencies = util::attributeOrDefault(valueNode, "assetDependencies", "");
    value->value = util::nodeTextOrDefault(valueNode, "");
    setUnflagged(entry->value, std::move(value));
    newEntries->Add(std::move(entry));
  });
  walk(e.select_nodes("TEMPLATES/TEMPLATE"), [&](const pugi::xpath_node& selected) {
    newTemplates->Add(util::nodeTextOrDefault(selected.node(), ""));
  });
}

void DataRecord::readXML(std::string_view xml) {
  pugi::xml_document doc;
  readXML(util::loadDocumentElement(doc, xml));
}

}  // namespace brenmoor
