#include "http/admin_pages.h"

#include <httplib.h>

#include "store/user_store.h"

namespace sandbox {

bool AdminPages::serves(std::string_view path) {
  return path == "/admin/accounts";
}

// One account a line: id, key, name and the members' e-mail addresses, tab-separated.
void AdminPages::handle(httplib::Response& response) {
  std::string text;
  dispatcher_.with_store([&](Database& db) {
    for (const AccountListing& account : list_accounts(db)) {
      text += std::to_string(account.id) + '\t' + account.key + '\t' + account.name + '\t' +
              account.members + '\n';
    }
  });
  response.set_content(text, "text/plain; charset=utf-8");
}

}  // namespace sandbox
