#include "util/datetime.h"

#include "brenmoor/error.h"

namespace brenmoor::util {

std::string formatDateTime(const Date& utc) {
  std::string text = utc.toString();  // "yyyy-mm-dd hh:mm:ss[.fff]"
  text[10] = 'T';
  return text + 'Z';
}

Date parseDateTime(std::string_view text) {
  auto mismatch = [&]() -> Error {
    std::string what(1, '"');
    what.append(text).append("\" is not an xsd:dateTime");
    return Error(Error::TypeMismatch, what);
  };
  std::string_view local = text;
  int64_t offsetSeconds = 0;
  if (!local.empty() && local.back() == 'Z') {
    local.remove_suffix(1);
  } else if (local.size() > 6 &&
             (local[local.size() - 6] == '+' || local[local.size() - 6] == '-')) {
    std::string_view zone = local.substr(local.size() - 6);
    auto two = [&](size_t at) {
      char a = zone[at], b = zone[at + 1];
      return (a >= '0' && a <= '9' && b >= '0' && b <= '9') ? (a - '0') * 10 + (b - '0') : -1;
    };
    int h = two(1), m = two(4);
    if (h < 0 || m < 0 || zone[3] != ':' || h > 14 || m > 59) throw mismatch();
    offsetSeconds = (h * 3600 + m * 60) * (zone[0] == '+' ? 1 : -1);
    local.remove_suffix(6);
  }
  if (local.size() < 19 || local[10] != 'T') throw mismatch();
  auto date = Date::parse(local);
  if (!date) throw mismatch();
  return date->addSeconds(-offsetSeconds);
}

}  // namespace brenmoor::util
