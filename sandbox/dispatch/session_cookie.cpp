#include "dispatch/session_cookie.h"

#include <optional>

#include "crypto/random.h"
#include "dispatch/service.h"
#include "soap/faults.h"
#include "store/database.h"

namespace sandbox {
namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// The value of our cookie among the "name=value; ..." pairs of a Cookie header.
std::optional<std::string_view> cookie_value(std::string_view header) {
  while (!header.empty()) {
    const auto end = header.find(';');
    const std::string_view pair = trimmed(header.substr(0, end));
    const auto equals = pair.find('=');
    if (equals != std::string_view::npos && pair.substr(0, equals) == kSessionCookieName) {
      return pair.substr(equals + 1);
    }
    if (end == std::string_view::npos) break;
    header.remove_prefix(end + 1);
  }
  return std::nullopt;
}

}  // namespace

std::string open_session_cookie(Database& db, std::string_view token) {
  const std::string cookie = random_hex(16);
  db.prepare("INSERT INTO session_cookies (cookie, token) VALUES (?, ?)").bind(cookie, token).run();
  return std::string(kSessionCookieName) + "=" + cookie + "; Path=/; HttpOnly";
}

Session session_from_cookie(Database& db, std::string_view cookie_header) {
  const auto cookie = cookie_value(cookie_header);
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
