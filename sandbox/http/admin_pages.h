#pragma once

#include <string_view>

#include "dispatch/dispatcher.h"

namespace httplib {
struct Response;
}  // namespace httplib

namespace sandbox {

// GET /admin/accounts: what tests need to know about accounts that no operation answers,
// such as the key of an account that createUserAccount opened.
class AdminPages {
 public:
  explicit AdminPages(Dispatcher& dispatcher) : dispatcher_(dispatcher) {}

  // Whether `path` (slashes collapsed) is an admin page.
  static bool serves(std::string_view path);

  void handle(httplib::Response& response);

 private:
  Dispatcher& dispatcher_;
};

}  // namespace sandbox
