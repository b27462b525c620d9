#pragma once
// Templates (page designs), themes (named sets of templates) and the components inside a
// template.

#include <pugixml.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "brenmoor/collection.h"
#include "brenmoor/date.h"
#include "brenmoor/deployment.h"
#include "brenmoor/field.h"

namespace brenmoor {

struct TemplateInfo {
  FlaggedField<Date> created;
  // Filled only by lists asked to include it; its flag is the record's deploymentInfoOccurs.
  FlaggedField<std::shared_ptr<::brenmoor::DeploymentInfo>> DeploymentInfo;
  FlaggedField<std::string> description;
  FlaggedField<std::string> flags;
  FlaggedField<std::string> folderName;
  FlaggedField<std::string> guid;
  Field<int32_t> height;
  FlaggedField<std::string> iconUrl;
  Field<int32_t> liveType;
  FlaggedField<Date> modified;
  FlaggedField<std::string> name;
  FlaggedField<std::string> templateType;
  Field<int32_t> width;
  FlaggedField<std::string> metadataXML;

  // The text of <METADATA><name>…</name></METADATA> in metadataXML; empty when there is none.
  std::string GetMetadata(const std::string& name) const;

  // The TEMPLATE form: guid, name, size, flags, description, icon, type and the metadata (in
  // CDATA), written as they are, without escaping.
  std::string getXML() const;
  // Reads a TEMPLATE element; missing children give empty texts and a size of 0. Throws
  // Error::TypeMismatch for a WIDTH or HEIGHT that is not a whole number, after setting the
  // fields before it.
  void readXML(pugi::xml_node e);
  // The same from the text of a TEMPLATE form; throws Error::InvalidArgument when it is not XML.
  void readXML(std::string_view xml);
};

struct ThemeTemplate {
  Field<bool> required;
  FlaggedField<std::string> templateGuid;
};

struct ThemeInfo {
  FlaggedField<Date> created;
  FlaggedField<std::string> description;
  FlaggedField<std::string> guid;
  Field<int32_t> height;
  FlaggedField<std::string> lgIconUrl;
  FlaggedField<Date> modified;
  FlaggedField<std::string> name;
  std::string xml;  // the caller's own; nothing fills it
  FlaggedField<std::string> smIconUrl;
  FlaggedField<std::shared_ptr<Collection<ThemeTemplate>>> themeTemplateList;
  Field<int32_t> width;

  // The THEME form, name and description in CDATA, then each template with its required flag
  // as True or False.
  std::string getXML() const;
  // Reads a THEME element, replacing the template list. Throws Error::TypeMismatch for a size
  // that is not a whole number or a required flag that is not a boolean.
  void readXML(pugi::xml_node e);
  void readXML(std::string_view xml);
};

struct Property {
  FlaggedField<std::string> assetDependencies;
  FlaggedField<std::string> assetID;
  Field<bool> manageable;
  FlaggedField<std::string> manageid;
  FlaggedField<std::string> name;
  FlaggedField<std::string> value;
};

struct Component {
  FlaggedField<std::string> className;
  FlaggedField<std::string> guid;
  FlaggedField<std::string> label;
  FlaggedField<std::shared_ptr<Collection<Property>>> properties;

  // The value of the first property of that name, letter case ignored; empty when none.
  std::string getPropertyValue(const std::string& name) const;
};

}  // namespace brenmoor
