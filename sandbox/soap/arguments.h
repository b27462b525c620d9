#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "soap/timestamp.h"

namespace sandbox {

// Typed access to an operation's arguments, found by element name. A missing, nil (except
// for strings, where nil reads as ""), mistyped or unreadable argument throws
// ServerException with a message naming the argument and the operation.
// A structure argument (an element of elements) is read the same way, through structure().
// As Axis does, any order is fine, xsd: and soapenc: types of a compatible kind are taken, and
// an element with href="#id" stands for the element of the request that carries that id.
class Arguments {
 public:
  Arguments(pugi::xml_node operation, std::string_view operation_name);

  std::string string(std::string_view name) const;
  std::int32_t int32(std::string_view name) const;
  std::int16_t int16(std::string_view name) const;
  bool boolean(std::string_view name) const;
  double real(std::string_view name) const;
  Timestamp date_time(std::string_view name) const;
  // A soapenc:Array of strings, or a plain element whose children are the strings.
  std::vector<std::string> strings(std::string_view name) const;

  // The fields of the structure `name`; messages name them as "name.field".
  Arguments structure(std::string_view name) const;
  // Likewise, but nothing when the structure is nil.
  std::optional<Arguments> optional_structure(std::string_view name) const;
  // Each child element of the structure `name` as a structure of its own: a list sent as
  // repeated elements. Messages name them as "name[index].field".
  std::vector<Arguments> structures(std::string_view name) const;

  // Whether the argument is present and holds elements (an array or a structure).
  bool holds_elements(std::string_view name) const;

  // The text of the first argument, provided it is named `name`; nothing otherwise.
  std::optional<std::string> leading(std::string_view name) const;

 private:
  // Elements that carry an id, by id, and what following references has cost so far; shared
  // by the structures of one request.
  struct References {
    struct Target {
      pugi::xml_node node;
      std::optional<std::size_t> text_size;  // measured when first referenced
    };
    std::unordered_map<std::string_view, Target> targets;
    std::size_t bytes_referenced = 0;
  };

  Arguments(pugi::xml_node node, const Arguments& parent, std::string path)
      : operation_(node),
        operation_name_(parent.operation_name_),
        path_(std::move(path)),
        references_(parent.references_) {}

  // The element `node` refers to through href (following chains, boundedly), or `node`.
  pugi::xml_node resolved(pugi::xml_node node, std::string_view name) const;
  pugi::xml_node find(std::string_view name) const;
  pugi::xml_node present(std::string_view name) const;
  // A structure's element: present, and holding elements rather than text.
  pugi::xml_node structure_node(std::string_view name) const;
  std::string described(std::string_view name) const { return path_ + std::string(name); }
  // The argument's element, after checking that any xsi:type is one of `accepted`.
  pugi::xml_node typed(std::string_view name, std::span<const std::string_view> accepted,
                       std::string_view described_as) const;
  // The trimmed text of a non-nil simple argument.
  std::string scalar_text(std::string_view name, std::span<const std::string_view> accepted,
                          std::string_view described_as) const;
  std::int64_t integer(std::string_view name, std::int64_t min, std::int64_t max,
                       std::string_view described_as) const;
  [[noreturn]] void fail(std::string_view name, std::string_view problem) const;

  pugi::xml_node operation_;
  std::string_view operation_name_;
  std::string path_;  // of a structure's fields, e.g. "dr.entries[0]."
  std::shared_ptr<References> references_;
};

}  // namespace sandbox
