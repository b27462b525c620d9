#include "util/time_zone.h"

#include <ctime>

namespace brenmoor::util {

int32_t localOffsetSeconds() {
  tzset();
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return static_cast<int32_t>(local.tm_gmtoff);
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
