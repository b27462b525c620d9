#include "dispatch/cookie_header.h"

namespace sandbox {
namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::optional<std::string_view> cookie_value(std::string_view header, std::string_view name) {
  while (!header.empty()) {
    const auto end = header.find(';');
    const std::string_view pair = trimmed(header.substr(0, end));
    const auto equals = pair.find('=');
    if (equals != std::string_view::npos && pair.substr(0, equals) == name) {
      return pair.substr(equals + 1);
    }
    if (end == std::string_view::npos) break;
    header.remove_prefix(end + 1);
  }
  return std::nullopt;
}

}  // namespace sandbox
