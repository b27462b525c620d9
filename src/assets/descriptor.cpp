#include "assets/descriptor.h"

#include <ctime>

#include "util/text.h"

namespace brenmoor::assets {
namespace {

constexpr const char* kNL = "\r\n";

void appendRepresentation(std::string& out, const Representation& r, Descriptor::Files files) {
  out += "\t<REPRESENTATION reptype=\"" + r.repType() + "\" filetype=\"" + r.fileType() +
         "\" language=\"ENGLISH\" bandwidth=\"" + std::to_string(r.bw()) + "\" width=\"" +
         std::to_string(r.width()) + "\" height=\"" + std::to_string(r.height()) + "\"";
  if (files == Descriptor::Files::Unmanaged) out += " size=\"" + std::to_string(r.size()) + "\"";
  out += ">";
  out += kNL;
  if (!r.metadataLabel().empty()) {
    std::string text = r.Metadata();
    out += "\t\t<METADATA tag=\"" + r.metadataLabel() + "\"><![CDATA[" +
           util::stripControlChars(text) + "]]></METADATA>" + kNL;
  }
  out += std::string("\t\t<FILES>") + kNL;
  if (files == Descriptor::Files::Uploaded) {
    out += std::string("\t\t\t<LOCATION type=\"file\">") + kNL +    //
           "\t\t\t\t<SERVER></SERVER>" + kNL +                      //
           "\t\t\t\t<USERNAME></USERNAME>" + kNL +                  //
           "\t\t\t\t<PASSWORD></PASSWORD>" + kNL +                  //
           "\t\t\t\t<PATH>" + kNL +                                 //
           "\t\t\t\t\t<DIRECTORY><![CDATA[]]></DIRECTORY>" + kNL +  //
           "\t\t\t\t\t<FILE>" + kNL +                               //
           "\t\t\t\t\t\t<NAME rename=\"" + r.filename() + "\">" + r.guid() + "</NAME>" + kNL +
           "\t\t\t\t\t</FILE>" + kNL +  //
           "\t\t\t\t</PATH>" + kNL;
  } else {
    out += std::string("\t\t\t<LOCATION type=\"unmanaged\">") + kNL + "\t\t\t\t<URL>" +
           util::escapeXml(r.filename()) + "</URL>" + kNL;
  }
  out +=
      std::string("\t\t\t</LOCATION>") + kNL + "\t\t</FILES>" + kNL + "\t</REPRESENTATION>" + kNL;
}

}  // namespace

void Descriptor::addMetadata(const std::string& label, const std::string& data) {
  metadata_ += "<METADATA tag=\"" + label + "\"><![CDATA[" + data + "]]></METADATA>";
}

std::string Descriptor::build(const std::string& name, const std::string& description,
                              const std::string& type,
                              const Collection<Representation>& representations, int16_t folderID,
                              Files files, const std::string& activeDate) const {
  std::string out = "<ASSET type='" + type + "' folder_id='" + std::to_string(folderID) + "'";
  if (preventDmp_) out += " nodmp='true'";
  if (!zoomParent_.empty()) out += " ownerAssetID='1'";
  out += "><STATUS>ACTIVE</STATUS><ACTIVEDATE>" + activeDate + "</ACTIVEDATE><NAME>" +
         util::escapeXml(name) + "</NAME><DESCRIPTION>" + util::escapeXml(description) +
         "</DESCRIPTION>" + metadata_;
  for (const auto& r : representations) {
    if (!r->invalid()) appendRepresentation(out, *r, files);
  }
  if (!zoomParent_.empty()) {
    out += "<RELATION type='ZOOMFILE' parent_guid='" + zoomParent_ + "'></RELATION>";
  }
  return out + "</ASSET>";
}

std::string localDateTimeText() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[128];
  const size_t n = std::strftime(text, sizeof text, "%x %X", &local);
  return std::string(text, n);
}

}  // namespace brenmoor::assets
