#pragma once

#include <string_view>

namespace sandbox {

class Arguments;
class Database;
struct Session;

// Checks the "key" element that leads every keyed request: TOKEN ":" N ":" MD5(N + secret),
// with N above the last counter the session saw. Records N and answers the session;
// throws ServerException with the refusal otherwise.
Session verify_session_key(Database& db, const Arguments& args);
// The same check for a key that came another way (the upload pages' query string).
Session verify_session_key(Database& db, std::string_view key);

}  // namespace sandbox
