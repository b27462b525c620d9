#pragma once
// Data records: the labelled content that fills a template.
//
// Collections are shared: setting `entries`, `templateGuidList`, `guidList` or `value` stores
// the caller's object itself, so later changes through either side are seen by both. `assets`
// and `valueArray` are plain vectors, copied on every get and set.

#include <pugixml.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "brenmoor/collection.h"
#include "brenmoor/field.h"

namespace brenmoor {

struct DataRecordEntryValue {
  Field<std::string> value;  // the text, or the asset reference of an asset entry
  Field<std::vector<std::string>> valueArray;
  Field<std::string> assetGuid;  // empty when the value refers to no asset
  Field<std::string> assetDependencies;
};

struct DataRecordEntry {
  FlaggedField<std::string> buttonText;
  FlaggedField<std::string> description;
  Field<bool> escaped;
  FlaggedField<std::string> ext;
  FlaggedField<std::string> format;
  // Starts as an empty list (with its flag down).
  FlaggedField<std::shared_ptr<Collection<std::string>>> guidList{
      std::make_shared<Collection<std::string>>()};
  Field<bool> hidden;
  FlaggedField<std::string> label;
  FlaggedField<std::string> src;
  FlaggedField<std::string> typeName;
  FlaggedField<std::shared_ptr<DataRecordEntryValue>> value;  // null until set
  FlaggedField<int16_t> width;
  FlaggedField<int16_t> height;

  // Whether `guid` is one of the entry's guids (exact comparison).
  bool hasGuid(const std::string& guid) const;
};

// The look-ups, getXML() and createDataRecord() need `entries`, which a new record does not
// have: until readXML() or the service fills it (or the caller sets it), they throw
// Error::UnsetObject, as they do for a matching entry without a `value`. Walks stop with
// Error::Overflow past 32767 items.
struct DataRecord {
  Field<std::string> guid;
  Field<std::vector<std::string>> assets;
  Field<std::string> name;
  Field<std::shared_ptr<Collection<DataRecordEntry>>> entries;
  Field<std::shared_ptr<Collection<std::string>>> templateGuidList;

  // Sets the value text and asset guid of every entry labelled `label` (exact comparison);
  // without a guid, the asset reference is cleared. No entry is ever added.
  void SetEntryValue(const std::string& label, const std::string& value,
                     const std::string& guid = "");
  // The last entry labelled `label`, or null.
  std::shared_ptr<DataRecordEntry> GetEntry(const std::string& label) const;
  // That entry's value text, or "" when there is none.
  std::string GetEntryValue(const std::string& label) const;

  // The DATARECORD form: attributes in single quotes, flags as True/False, nothing escaped, the
  // value text in CDATA. Not written: assets, button texts, sources, sizes, value arrays, flags.
  std::string getXML() const;
  // Reads a DATARECORD element into new entry and template lists (assets are left alone).
  // Throws Error::TypeMismatch for an escaped or hidden flag that is not a boolean, keeping
  // the entries read before it.
  void readXML(pugi::xml_node e);
  // The same from the text of a DATARECORD form; Error::InvalidArgument when it is not XML.
  void readXML(std::string_view xml);
};

}  // namespace brenmoor
