#pragma once
// The inactivity time-out and the overall deadline of one libcurl transfer, checked in its
// progress callback on libcurl's own clock (which it has just read for that update).

#include <curl/curl.h>

#include <cstdint>

namespace brenmoor::soap {

struct IdleWatch {
  CURL* easy = nullptr;
  int32_t timeoutMs = 0;   // silence allowed
  int64_t deadlineMs = 0;  // the whole transfer; 0: no deadline
  bool idleTooLong = false;
  bool pastDeadline = false;
  curl_off_t lastMoved = 0;    // bytes up plus down at the last movement
  curl_off_t lastMovedAt = 0;  // microseconds into the transfer

  // A CURLOPT_XFERINFOFUNCTION whose data is an IdleWatch: non-zero ends the transfer.
  static int onProgress(void* user, curl_off_t, curl_off_t down, curl_off_t, curl_off_t up) {
    auto& w = *static_cast<IdleWatch*>(user);
    curl_off_t now = 0;
    curl_easy_getinfo(w.easy, CURLINFO_TOTAL_TIME_T, &now);
    // A server that drips bytes never goes silent: only the deadline bounds it.
    if (w.deadlineMs > 0 && now >= w.deadlineMs * 1000) {
      w.pastDeadline = true;
      return 1;
    }
    if (down + up != w.lastMoved) {
      w.lastMoved = down + up;
      w.lastMovedAt = now;
      return 0;
    }
    if (now - w.lastMovedAt >= curl_off_t{w.timeoutMs} * 1000) {
      w.idleTooLong = true;
      return 1;
    }
    return 0;
  }
};

}  // namespace brenmoor::soap
