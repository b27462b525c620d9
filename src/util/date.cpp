#include "brenmoor/date.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "brenmoor/error.h"

namespace brenmoor {
namespace {

using namespace std::chrono;

constexpr int64_t kMsPerDay = 86'400'000;
constexpr sys_days kZeroDay = sys_days{std::chrono::year{1899} / December / 30};

int64_t floorDiv(int64_t a, int64_t b) {
  return a / b - ((a % b != 0) && ((a < 0) != (b < 0)));
}

year_month_day calendarDay(int64_t ms) {
  return year_month_day{kZeroDay + days{floorDiv(ms, kMsPerDay)}};
}
int64_t msOfDay(int64_t ms) {
  return ms - floorDiv(ms, kMsPerDay) * kMsPerDay;
}

// Reads exactly `count` digits at `pos`, or -1.
int digits(std::string_view text, size_t pos, size_t count) {
  if (pos + count > text.size()) return -1;
  int value = 0;
  for (size_t i = pos; i < pos + count; ++i) {
    if (text[i] < '0' || text[i] > '9') return -1;
    value = value * 10 + (text[i] - '0');
  }
  return value;
}

}  // namespace

Date Date::fromParts(int y, int mo, int d, int h, int mi, int s, int ms) {
  year_month_day ymd{std::chrono::year{y}, std::chrono::month{static_cast<unsigned>(mo)},
                     std::chrono::day{static_cast<unsigned>(d)}};
  if (y < 1 || y > 9999 || mo < 1 || mo > 12 || d < 1 || d > 31 || !ymd.ok() || h < 0 || h > 23 ||
      mi < 0 || mi > 59 || s < 0 || s > 59 || ms < 0 || ms > 999) {
    throw Error(Error::InvalidArgument, "Invalid date or time");
  }
  int64_t dayCount = (sys_days{ymd} - kZeroDay).count();
  return Date(dayCount * kMsPerDay + ((h * 60LL + mi) * 60 + s) * 1000 + ms);
}

Date Date::now() {
  auto clock = system_clock::now();
  std::time_t t = system_clock::to_time_t(clock);
  std::tm local{};
  localtime_r(&t, &local);
  int ms = static_cast<int>(duration_cast<milliseconds>(clock.time_since_epoch()).count() % 1000);
  return fromParts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                   local.tm_min, local.tm_sec, ms < 0 ? 0 : ms);
}

std::optional<Date> Date::parse(std::string_view text) {
  int y = digits(text, 0, 4), mo = digits(text, 5, 2), d = digits(text, 8, 2);
  if (y < 0 || mo < 0 || d < 0 || text[4] != '-' || text[7] != '-') return std::nullopt;
  int h = 0, mi = 0, s = 0, ms = 0;
  if (text.size() > 10) {
    if (text[10] != ' ' && text[10] != 'T') return std::nullopt;
    h = digits(text, 11, 2), mi = digits(text, 14, 2), s = digits(text, 17, 2);
    if (h < 0 || mi < 0 || s < 0 || text[13] != ':' || text[16] != ':') return std::nullopt;
    size_t end = 19;
    if (text.size() > end && text[end] == '.') {
      size_t first = ++end;
      while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
      if (end == first) return std::nullopt;
      for (size_t i = first; i < first + 3; ++i) ms = ms * 10 + (i < end ? text[i] - '0' : 0);
    }
    if (end != text.size()) return std::nullopt;
  }
  try {
    return fromParts(y, mo, d, h, mi, s, ms);
  } catch (const Error&) {
    return std::nullopt;
  }
}

int Date::year() const {
  return static_cast<int>(calendarDay(ms_).year());
}
int Date::month() const {
  return static_cast<int>(static_cast<unsigned>(calendarDay(ms_).month()));
}
int Date::day() const {
  return static_cast<int>(static_cast<unsigned>(calendarDay(ms_).day()));
}
int Date::hour() const {
  return static_cast<int>(msOfDay(ms_) / 3'600'000);
}
int Date::minute() const {
  return static_cast<int>(msOfDay(ms_) / 60'000 % 60);
}
int Date::second() const {
  return static_cast<int>(msOfDay(ms_) / 1000 % 60);
}
int Date::millisecond() const {
  return static_cast<int>(msOfDay(ms_) % 1000);
}

Date Date::addSeconds(int64_t seconds) const {
  return Date(ms_ + seconds * 1000);
}

std::string Date::toString() const {
  char buf[48];
  int n = std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", year(), month(), day(),
                        hour(), minute(), second());
  if (millisecond() != 0) n += std::snprintf(buf + n, sizeof buf - n, ".%03d", millisecond());
  return std::string(buf, static_cast<size_t>(n));
}

}  // namespace brenmoor
