#include "soap/timestamp.h"

#include <cstdio>

namespace sandbox {
namespace {

using namespace std::chrono;

// Reads exactly `count` digits at `pos`, moving past them.
std::optional<int> read_digits(std::string_view text, std::size_t& pos, std::size_t count) {
  if (pos + count > text.size()) return std::nullopt;
  int value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const char c = text[pos + i];
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  pos += count;
  return value;
}

bool read_char(std::string_view text, std::size_t& pos, char expected) {
  if (pos >= text.size() || text[pos] != expected) return false;
  ++pos;
  return true;
}

}  // namespace

Timestamp current_time() {
  return floor<milliseconds>(system_clock::now());
}

std::string format_date_time(Timestamp time) {
  const auto day = floor<days>(time);
  const year_month_day date{day};
  const hh_mm_ss clock{time - day};
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int{date.year()},
                unsigned{date.month()}, unsigned{date.day()},
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()),
                static_cast<int>(clock.subseconds().count()));
  return text;
}

std::optional<Timestamp> parse_date_time(std::string_view text) {
  std::size_t pos = 0;
  const auto y = read_digits(text, pos, 4);
  if (!y || !read_char(text, pos, '-')) return std::nullopt;
  const auto mo = read_digits(text, pos, 2);
  if (!mo || !read_char(text, pos, '-')) return std::nullopt;
  const auto d = read_digits(text, pos, 2);
  if (!d || !read_char(text, pos, 'T')) return std::nullopt;
  const auto h = read_digits(text, pos, 2);
  if (!h || !read_char(text, pos, ':')) return std::nullopt;
  const auto mi = read_digits(text, pos, 2);
  if (!mi || !read_char(text, pos, ':')) return std::nullopt;
  const auto s = read_digits(text, pos, 2);
  if (!s) return std::nullopt;

  int millis = 0;
  if (read_char(text, pos, '.')) {
    int digits = 0;
    for (; pos < text.size() && text[pos] >= '0' && text[pos] <= '9'; ++pos, ++digits) {
      if (digits < 3) millis = millis * 10 + (text[pos] - '0');
    }
    if (digits == 0) return std::nullopt;
    for (; digits < 3; ++digits) millis *= 10;
  }
  read_char(text, pos, 'Z');
  if (pos != text.size()) return std::nullopt;

  const year_month_day date{year{*y}, month{static_cast<unsigned>(*mo)},
                            day{static_cast<unsigned>(*d)}};
  if (!date.ok() || *h > 23 || *mi > 59 || *s > 59) return std::nullopt;
  return sys_days{date} + hours{*h} + minutes{*mi} + seconds{*s} + milliseconds{millis};
}

}  // namespace sandbox
