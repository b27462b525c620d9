#pragma once
// Dates travel in UTC and reach the host in local time. The offset in force now is applied to
// every date, whether or not that date itself falls in daylight time.

#include <cstdint>

#include "brenmoor/date.h"

namespace brenmoor::util {

// Seconds to add to UTC to get local time now, daylight saving included while it is in effect
// (from the C library's time-zone data, so TZ is honoured).
int32_t localOffsetSeconds();

// While one lives on a thread, the offset is read once and kept there, so that an answer's
// dates all take the offset of one moment and the zone rules are not read per date.
class PinnedOffset {
 public:
  PinnedOffset();
  ~PinnedOffset();
  PinnedOffset(const PinnedOffset&) = delete;
  PinnedOffset& operator=(const PinnedOffset&) = delete;

 private:
  bool wasPinned_;
  int32_t previous_;
};

Date localToUtc(const Date& local);
// The current time in UTC.
Date localToUtc();
Date utcToLocal(const Date& utc);

}  // namespace brenmoor::util
