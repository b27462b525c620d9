#include "store/asset_types.h"

#include <strings.h>
#include <charconv>
#include <span>

namespace sandbox {
namespace {

struct TypeName {
  std::int32_t id;
  std::string_view name;
};

constexpr TypeName kAssetTypes[] = {
    {1, "Image"}, {2, "Video"}, {3, "Audio"}, {4, "Document"}, {5, "Flash"},
};

constexpr TypeName kFileTypes[] = {
    {1, "jpg"}, {2, "png"}, {3, "gif"}, {4, "mp4"}, {5, "flv"},
    {6, "mp3"}, {7, "pdf"}, {8, "swf"}, {9, "txt"},
};

std::int32_t id_of(std::span<const TypeName> names, std::string_view type) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(type.data(), type.data() + type.size(), number);
  if (!type.empty() && error == std::errc() && end == type.data() + type.size()) return number;
  for (const TypeName& known : names) {
    if (known.name.size() == type.size() &&
        strncasecmp(known.name.data(), type.data(), type.size()) == 0) {
      return known.id;
    }
  }
  return 0;
}

}  // namespace

std::int32_t asset_type_id(std::string_view type) {
  return id_of(kAssetTypes, type);
}

std::int32_t file_type_id(std::string_view type) {
  return id_of(kFileTypes, type);
}

std::string asset_type_text(std::int32_t id, std::string_view given) {
  for (const TypeName& known : kAssetTypes) {
    if (known.id == id) return std::string(known.name);
  }
  return std::string(given);
}

}  // namespace sandbox
