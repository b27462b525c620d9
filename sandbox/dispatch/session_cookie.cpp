#include "dispatch/session_cookie.h"

#include "crypto/random.h"
#include "dispatch/cookie_header.h"
#include "dispatch/service.h"
#include "soap/faults.h"
#include "store/database.h"

namespace sandbox {

std::string open_session_cookie(Database& db, std::string_view token) {
  const std::string cookie = random_hex(16);
  db.prepare("INSERT INTO session_cookies (cookie, token) VALUES (?, ?)").bind(cookie, token).run();
  return std::string(kSessionCookieName) + "=" + cookie + "; Path=/; HttpOnly";
}

Session session_from_cookie(Database& db, std::string_view cookie_header) {
  const auto cookie = cookie_value(cookie_header, kSessionCookieName);
  if (!cookie || cookie->empty()) {
    throw ServerException(
        "No session: sign in first; this service finds the session by the TelvaneSession cookie "
        "that userLogin sets");
  }
  auto lookup = db.prepare(
      "SELECT s.token, s.user_id, s.account_id, s.last_counter, s.is_open FROM session_cookies c "
      "JOIN sessions s ON s.token = c.token WHERE c.cookie = ?");
  if (!lookup.bind(*cookie).step()) {
    throw ServerException("Unknown session cookie: sign in again");
  }
  if (lookup.integer(4) == 0) throw ServerException("Session has ended");
  return Session{lookup.text(0), lookup.integer(1), lookup.optional_integer(2), lookup.integer(3)};
}

}  // namespace sandbox
