#pragma once
// A wall-clock date and time, to the millisecond, without a time zone. The library hands dates
// to the host in local time and sends them to the service in UTC.

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace brenmoor {

class Date {
 public:
  // The zero date, 30 December 1899 00:00:00, which is also the value of an unset date.
  constexpr Date() = default;

  // Throws Error::InvalidArgument for a day that does not exist or a time out of range.
  static Date fromParts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                        int millisecond = 0);
  // The current local date and time.
  static Date now();
  // Reads "yyyy-mm-dd", "yyyy-mm-dd hh:mm:ss" or "yyyy-mm-ddThh:mm:ss", with optional ".fff";
  // nothing for any other text.
  static std::optional<Date> parse(std::string_view text);

  int year() const;
  int month() const;
  int day() const;
  int hour() const;
  int minute() const;
  int second() const;
  int millisecond() const;

  // Calendar arithmetic on whole seconds; the milliseconds are kept.
  Date addSeconds(int64_t seconds) const;
  int64_t millisecondsSinceZero() const noexcept { return ms_; }

  // "yyyy-mm-dd hh:mm:ss", with ".fff" when the milliseconds are not zero.
  std::string toString() const;

  friend auto operator<=>(const Date&, const Date&) = default;

 private:
  explicit constexpr Date(int64_t ms) : ms_(ms) {}
  int64_t ms_ = 0;
};

}  // namespace brenmoor
