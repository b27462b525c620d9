#pragma once

#include <string>
#include <string_view>

#include "dispatch/dispatcher.h"

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace sandbox {

// The deployed pages at their links, /live/DEPLOYMENT/: GET shows the page and records a
// hit; the forms POST to register, poll, survey and question under it; GET or POST of
// close?hit=HIT ends the visit. A viewer is known again by the TelvaneViewer cookie.
class ViewerPages {
 public:
  explicit ViewerPages(Dispatcher& dispatcher) : dispatcher_(dispatcher) {}

  // Whether `path` (slashes collapsed) is under /live/.
  static bool serves(std::string_view path);

  void handle_get(const httplib::Request& request, httplib::Response& response);
  // `body` is the request's whole body.
  void handle_post(const httplib::Request& request, const std::string& body,
                   httplib::Response& response);

 private:
  Dispatcher& dispatcher_;
};

}  // namespace sandbox
