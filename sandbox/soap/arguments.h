#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "soap/timestamp.h"

namespace sandbox {

// Typed access to an operation's arguments, found by element name. A missing, nil (except
// for strings, where nil reads as ""), mistyped or unreadable argument throws
// ServerException with a message naming the argument and the operation.
class Arguments {
 public:
  Arguments(pugi::xml_node operation, std::string_view operation_name)
      : operation_(operation), operation_name_(operation_name) {}

  std::string string(std::string_view name) const;
  std::int32_t int32(std::string_view name) const;
  std::int16_t int16(std::string_view name) const;
  bool boolean(std::string_view name) const;
  double real(std::string_view name) const;
  Timestamp date_time(std::string_view name) const;
  std::vector<std::string> strings(std::string_view name) const;

  // The text of the first argument, provided it is named `name`; nothing otherwise.
  std::optional<std::string> leading(std::string_view name) const;

 private:
  pugi::xml_node find(std::string_view name) const;
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
};

}  // namespace sandbox
