#pragma once

#include <string>
#include <string_view>

namespace sandbox {

class Database;
struct Session;

inline constexpr std::string_view kSessionCookieName = "TelvaneSession";

// Opens a cookie for the session `token`; answers the Set-Cookie header's value.
std::string open_session_cookie(Database& db, std::string_view token);

// The session that the TelvaneSession cookie in a Cookie header stands for; throws
// ServerException when there is none or it has ended.
Session session_from_cookie(Database& db, std::string_view cookie_header);

}  // namespace sandbox
