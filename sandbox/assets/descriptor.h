#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

// What the client's asset descriptor (the ASSET document of addAsset_XML) says.

struct DescriptorMetadata {
  std::string tag;
  std::string data;
};

struct DescriptorRepresentation {
  enum class Location { file, unmanaged };

  std::string rep_type;
  std::string file_type;
  std::string language;
  std::int64_t bandwidth = 0;
  std::int64_t width = 0;
  std::int64_t height = 0;
  std::optional<DescriptorMetadata> metadata;
  Location location = Location::file;
  std::string file_name;   // file: the NAME's rename attribute
  std::string upload_key;  // file: the NAME's text
  std::string url;         // unmanaged: the URL's text
};

struct Descriptor {
  std::string type;
  std::int16_t folder_id = 0;
  bool no_dmp = false;
  std::string status;
  std::string active_date;
  std::string name;
  std::string description;
  std::vector<DescriptorMetadata> metadata;
  std::vector<DescriptorRepresentation> representations;
  std::optional<std::string> zoom_parent_guid;
};

// The descriptor is not one the sandbox can store; the text says why.
class DescriptorError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads a descriptor. A document type declaration is refused, so no entity is ever expanded.
Descriptor parse_descriptor(std::string_view xml);

}  // namespace sandbox
