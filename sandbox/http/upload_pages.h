#pragma once

#include <cstdint>
#include <string_view>

#include "dispatch/dispatcher.h"
#include "dispatch/service.h"

namespace httplib {
struct Request;
struct Response;
class ContentReader;
}  // namespace httplib

namespace sandbox {

// The asset manager's upload pages: a POST of a file's raw bytes, answered with plain text
// (the upload's key, or "URL,size,timedData" for an unmanaged upload, or "Error: ...").
// Bodies go straight to a temporary file that is renamed only once complete.
class UploadPages {
 public:
  UploadPages(Dispatcher& dispatcher, const ServerInfo& server, std::uint64_t max_bytes)
      : dispatcher_(dispatcher), server_(server), max_bytes_(max_bytes) {}

  // Whether `path` (slashes collapsed) is one of the pages.
  static bool serves(std::string_view path);

  void handle(const httplib::Request& request, httplib::Response& response,
              const httplib::ContentReader& read_content);

 private:
  Dispatcher& dispatcher_;
  const ServerInfo& server_;
  const std::uint64_t max_bytes_;
};

}  // namespace sandbox
