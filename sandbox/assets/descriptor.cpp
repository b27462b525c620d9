#include "assets/descriptor.h"

#include <charconv>
#include <limits>
#include <pugixml.hpp>

#include "soap/clip.h"

namespace sandbox {
namespace {

// Bounds what one descriptor can make the sandbox store.
constexpr std::size_t kMaxEntries = 1000;

[[noreturn]] void refuse(const std::string& why) {
  throw DescriptorError("Invalid asset descriptor: " + why);
}

bool named(pugi::xml_node node, std::string_view name) {
  return node.type() == pugi::node_element && name == node.name();
}

std::vector<pugi::xml_node> element_children(pugi::xml_node node) {
  std::vector<pugi::xml_node> children;
  for (pugi::xml_node child : node.children()) {
    if (child.type() == pugi::node_element) children.push_back(child);
  }
  return children;
}

pugi::xml_node only_child(pugi::xml_node parent, std::string_view name) {
  const pugi::xml_node child = parent.child(std::string(name).c_str());
  if (!child) refuse("<" + std::string(parent.name()) + "> has no <" + std::string(name) + ">");
  return child;
}

std::int64_t number(pugi::xml_node element, std::string_view attribute, std::int64_t min,
                    std::int64_t max) {
  const std::string_view text = element.attribute(std::string(attribute).c_str()).value();
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size() || value < min ||
      value > max) {
    refuse("attribute '" + std::string(attribute) + "' of <" + element.name() +
           "> is not an integer in range: '" + clip(text) + "'");
  }
  return value;
}

std::int64_t int16_attribute(pugi::xml_node element, std::string_view attribute) {
  return number(element, attribute, std::numeric_limits<std::int16_t>::min(),
                std::numeric_limits<std::int16_t>::max());
}

DescriptorMetadata metadata(pugi::xml_node element) {
  if (!element.attribute("tag")) refuse("<METADATA> has no tag");
  return {element.attribute("tag").value(), element.child_value()};
}

void read_location(pugi::xml_node files, DescriptorRepresentation& representation) {
  const auto locations = element_children(files);
  if (locations.size() != 1 || !named(locations.front(), "LOCATION")) {
    refuse("<FILES> must hold exactly one <LOCATION>");
  }
  const pugi::xml_node location = locations.front();
  const std::string_view type = location.attribute("type").value();
  if (type == "file") {
    const pugi::xml_node name =
        only_child(only_child(only_child(location, "PATH"), "FILE"), "NAME");
    representation.location = DescriptorRepresentation::Location::file;
    representation.file_name = name.attribute("rename").value();
    representation.upload_key = name.child_value();
  } else if (type == "unmanaged") {
    representation.location = DescriptorRepresentation::Location::unmanaged;
    representation.url = only_child(location, "URL").child_value();
  } else {
    refuse("unknown <LOCATION> type '" + clip(type) + "'");
  }
}

DescriptorRepresentation representation(pugi::xml_node element) {
  DescriptorRepresentation read;
  read.rep_type = element.attribute("reptype").value();
  read.file_type = element.attribute("filetype").value();
  read.language = element.attribute("language").value();
  read.bandwidth = int16_attribute(element, "bandwidth");
  read.width = int16_attribute(element, "width");
  read.height = int16_attribute(element, "height");
  bool has_files = false;
  for (pugi::xml_node child : element_children(element)) {
    if (named(child, "METADATA") && !read.metadata && !has_files) {
      read.metadata = metadata(child);
    } else if (named(child, "FILES") && !has_files) {
      read_location(child, read);
      has_files = true;
    } else {
      refuse("unexpected <" + clip(child.name()) + "> in <REPRESENTATION>");
    }
  }
  if (!has_files) refuse("<REPRESENTATION> has no <FILES>");
  return read;
}

void read_relation(pugi::xml_node element, Descriptor& descriptor) {
  if (descriptor.zoom_parent_guid) refuse("more than one <RELATION>");
  if (std::string_view(element.attribute("type").value()) != "ZOOMFILE") {
    refuse("unknown <RELATION> type '" + clip(element.attribute("type").value()) + "'");
  }
  const std::string parent = element.attribute("parent_guid").value();
  if (parent.empty()) refuse("<RELATION> has no parent_guid");
  descriptor.zoom_parent_guid = parent;
}

}  // namespace

Descriptor parse_descriptor(std::string_view xml) {
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_buffer(
      xml.data(), xml.size(), pugi::parse_default | pugi::parse_doctype, pugi::encoding_utf8);
  if (!parsed) {
    refuse(std::string("not well-formed XML (") + parsed.description() + " at offset " +
           std::to_string(parsed.offset) + ")");
  }
  for (pugi::xml_node node : document.children()) {
    if (node.type() == pugi::node_doctype) refuse("a document type declaration is not accepted");
  }
  const pugi::xml_node asset = document.document_element();
  if (!named(asset, "ASSET")) refuse("the document element must be <ASSET>");

  Descriptor descriptor;
  descriptor.type = asset.attribute("type").value();
  if (!asset.attribute("folder_id")) refuse("<ASSET> has no folder_id");
  descriptor.folder_id = static_cast<std::int16_t>(int16_attribute(asset, "folder_id"));
  if (const pugi::xml_attribute nodmp = asset.attribute("nodmp")) {
    const std::string_view flag = nodmp.value();
    if (flag != "true" && flag != "false") refuse("nodmp must be 'true' or 'false'");
    descriptor.no_dmp = flag == "true";
  }

  bool has_name = false;
  for (pugi::xml_node child : element_children(asset)) {
    const std::string_view name = child.name();
    if (name == "STATUS") {
      descriptor.status = child.child_value();
    } else if (name == "ACTIVEDATE") {
      descriptor.active_date = child.child_value();
    } else if (name == "NAME") {
      descriptor.name = child.child_value();
      has_name = true;
    } else if (name == "DESCRIPTION") {
      descriptor.description = child.child_value();
    } else if (name == "METADATA" && descriptor.metadata.size() < kMaxEntries) {
      descriptor.metadata.push_back(metadata(child));
    } else if (name == "REPRESENTATION" && descriptor.representations.size() < kMaxEntries) {
      descriptor.representations.push_back(representation(child));
    } else if (name == "RELATION") {
      read_relation(child, descriptor);
    } else {
      refuse("unexpected <" + clip(name) + "> in <ASSET> (or too many of them)");
    }
  }
  if (!has_name) refuse("<ASSET> has no <NAME>");
  if (asset.attribute("ownerAssetID") && !descriptor.zoom_parent_guid) {
    refuse("ownerAssetID is set but there is no <RELATION>");
  }
  return descriptor;
}

}  // namespace sandbox
