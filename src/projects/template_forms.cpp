// The XML forms of templates and themes, and the look-ups inside template records.

#include <algorithm>
#include <cctype>

#include "brenmoor/error.h"
#include "brenmoor/template.h"
#include "util/convert.h"
#include "util/xml.h"

namespace brenmoor {
namespace {

std::string childText(pugi::xml_node e, const char* name) {
  return util::nodeTextOrDefault(e.child(name), "");
}

// A missing WIDTH or HEIGHT is 0; a present one must be a whole number.
int32_t childNumber(pugi::xml_node e, const char* name) {
  auto child = e.child(name);
  return child ? util::toInt32(util::nodeTextOrDefault(child, "")) : 0;
}

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

}  // namespace

std::string TemplateInfo::GetMetadata(const std::string& name) const {
  return util::selectText(metadataXML(), ("METADATA/" + name).c_str());
}

std::string TemplateInfo::getXML() const {
  return "<TEMPLATE><GUID>" + guid() + "</GUID><NAME>" + name() + "</NAME><WIDTH>" +
         std::to_string(width()) + "</WIDTH><HEIGHT>" + std::to_string(height()) +
         "</HEIGHT><FLAGS>" + flags() + "</FLAGS><DESCRIPTION>" + description() +
         "</DESCRIPTION><ICONURL>" + iconUrl() + "</ICONURL><TYPE>" + templateType() +
         "</TYPE><METADATA><![CDATA[" + metadataXML() + "]]></METADATA></TEMPLATE>";
}

void TemplateInfo::readXML(pugi::xml_node e) {
  guid = childText(e, "GUID");
  name = childText(e, "NAME");
  width = childNumber(e, "WIDTH");
  height = childNumber(e, "HEIGHT");
  flags = childText(e, "FLAGS");
  description = childText(e, "DESCRIPTION");
  iconUrl = childText(e, "ICONURL");
  templateType = childText(e, "TYPE");
  metadataXML = childText(e, "METADATA");
}

void TemplateInfo::readXML(std::string_view xml) {
  pugi::xml_document doc;
  readXML(util::loadDocumentElement(doc, xml));
}

std::string ThemeInfo::getXML() const {
  std::string xml = "<THEME><GUID>" + guid() + "</GUID><NAME><![CDATA[" + name() +
                    "]]></NAME><DESCRIPTION><![CDATA[" + description() +
                    "]]></DESCRIPTION><WIDTH>" + std::to_string(width()) + "</WIDTH><HEIGHT>" +
                    std::to_string(height()) + "</HEIGHT><SMICONURL>" + smIconUrl() +
                    "</SMICONURL><LGICONURL>" + lgIconUrl() + "</LGICONURL><TEMPLATES>";
  if (themeTemplateList()) {
    for (const auto& t : *themeTemplateList()) {
      xml += "<TEMPLATE required='";
      xml += t->required() ? "True" : "False";
      xml += "'>" + t->templateGuid() + "</TEMPLATE>";
    }
  }
  return xml + "</TEMPLATES></THEME>";
}

void ThemeInfo::readXML(pugi::xml_node e) {
  guid = childText(e, "GUID");
  name = childText(e, "NAME");
  width = childNumber(e, "WIDTH");
  height = childNumber(e, "HEIGHT");
  description = childText(e, "DESCRIPTION");
  smIconUrl = childText(e, "SMICONURL");
  lgIconUrl = childText(e, "LGICONURL");
  auto list = std::make_shared<Collection<ThemeTemplate>>();
  themeTemplateList = list;
  for (auto node : e.child("TEMPLATES").children("TEMPLATE")) {
    auto t = std::make_shared<ThemeTemplate>();
    t->templateGuid = util::nodeTextOrDefault(node, "");
    t->required = util::toBool(util::attributeOrDefault(node, "required", "False"));
    list->Add(std::move(t));
  }
}

void ThemeInfo::readXML(std::string_view xml) {
  pugi::xml_document doc;
  readXML(util::loadDocumentElement(doc, xml));
}

std::string Component::getPropertyValue(const std::string& name) const {
  if (!properties()) return {};
  const std::string wanted = upper(name);
  for (const auto& p : *properties()) {
    if (upper(p->name()) == wanted) return p->value();
  }
  return {};
}

}  // namespace brenmoor
