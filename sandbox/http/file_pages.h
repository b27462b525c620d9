#pragma once

#include "dispatch/dispatcher.h"
#include "dispatch/service.h"

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace sandbox {

// GET pages that serve what the asset operations answer as URLs: unmanaged uploads
// (/unmanaged/KEY/NAME), asset previews (/assets/GUID/preview, the first representation's
// bytes), thumbnails (/assets/GUID/thumbnail) and type icons (/icons/NAME.png). Files are
// streamed from disk, never read whole.
class FilePages {
 public:
  FilePages(Dispatcher& dispatcher, const ServerInfo& server)
      : dispatcher_(dispatcher), server_(server) {}

  void handle(const httplib::Request& request, httplib::Response& response);

 private:
  Dispatcher& dispatcher_;
  const ServerInfo& server_;
};

}  // namespace sandbox
