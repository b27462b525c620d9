#include "util/time_zone.h"

#include <cstdlib>
#include <ctime>
#include <string>

namespace brenmoor::util {
namespace {

// Loading the zone rules means stat-ing /etc/localtime, which a list of dates would otherwise
// do once per date. The offset is kept for the rest of the second in which it was read, and
// read again at once when TZ changes.
struct OffsetCache {
  bool valid = false;
  std::string tz;
  bool tzSet = false;
  std::time_t second = 0;
  int32_t offset = 0;
};

thread_local bool pinned = false;
thread_local int32_t pinnedOffset = 0;

}  // namespace

PinnedOffset::PinnedOffset() : wasPinned_(pinned), previous_(pinnedOffset) {
  pinnedOffset = localOffsetSeconds();
  pinned = true;
}

PinnedOffset::~PinnedOffset() {
  pinned = wasPinned_;
  pinnedOffset = previous_;
}

int32_t localOffsetSeconds() {
  if (pinned) return pinnedOffset;
  thread_local OffsetCache cache;
  const std::time_t now = std::time(nullptr);
  const char* tz = std::getenv("TZ");
  if (cache.valid && cache.second == now && cache.tzSet == (tz != nullptr) &&
      (!tz || cache.tz == tz)) {
    return cache.offset;
  }
  tzset();
  std::tm local{};
  localtime_r(&now, &local);
  cache = {true, tz ? tz : "", tz != nullptr, now, static_cast<int32_t>(local.tm_gmtoff)};
  return cache.offset;
}

Date localToUtc(const Date& local) {
  return local.addSeconds(-localOffsetSeconds());
}

Date localToUtc() {
  return localToUtc(Date::now());
}

Date utcToLocal(const Date& utc) {
  return utc.addSeconds(localOffsetSeconds());
}

}  // namespace brenmoor::util
