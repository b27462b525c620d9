#include "dispatch/session_key.h"

#include <charconv>
#include <string>

#include "crypto/digest.h"
#include "dispatch/service.h"
#include "soap/faults.h"
#include "store/database.h"

namespace sandbox {
namespace {

constexpr std::string_view kInvalidKey = "Invalid session key";

// The library's counter is 16 bits wide, so even keys it made and never sent cannot put it
// further ahead; a counter beyond this is refused rather than let it lock the session.
constexpr std::int64_t kMaxCounterStep = 32767;

struct KeyParts {
  std::string_view token;
  std::string_view counter_text;
  std::int64_t counter = 0;
  std::string_view digest;
};

std::optional<KeyParts> split_key(std::string_view key) {
  const auto first = key.find(':');
  if (first == std::string_view::npos) return std::nullopt;
  const auto second = key.find(':', first + 1);
  if (second == std::string_view::npos) return std::nullopt;

  KeyParts parts;
  parts.token = key.substr(0, first);
  parts.counter_text = key.substr(first + 1, second - first - 1);
  parts.digest = key.substr(second + 1);
  // Digits only: no sign, no spaces, and few enough to fit.
  if (parts.counter_text.empty() || parts.counter_text.size() > 18 ||
      parts.counter_text.find_first_not_of("0123456789") != std::string_view::npos) {
    return std::nullopt;
  }
  std::from_chars(parts.counter_text.data(), parts.counter_text.data() + parts.counter_text.size(),
                  parts.counter);
  return parts;
}

}  // namespace

Session verify_session_key(Database& db, const Arguments& args) {
  const auto key = args.leading("key");
  if (!key) throw ServerException("Missing session key: it must be the operation's first element");
  return verify_session_key(db, *key);
}

Session verify_session_key(Database& db, std::string_view key) {
  const auto parts = split_key(key);
  if (!parts || parts->token.empty()) throw ServerException(std::string(kInvalidKey));

  Session session;
  std::string secret;
  std::int64_t last_counter = 0;
  bool open = false;
  {
    auto lookup = db.prepare(
        "SELECT user_id, secret, last_counter, account_id, is_open FROM sessions WHERE token = ?");
    if (!lookup.bind(parts->token).step()) throw ServerException(std::string(kInvalidKey));
    session = Session{std::string(parts->token), lookup.integer(0), lookup.optional_integer(3),
                      parts->counter};
    secret = lookup.text(1);
    last_counter = lookup.integer(2);
    open = lookup.integer(4) != 0;
  }
  // The digest first: without the secret a key must not tell whether its session lives.
  if (!same_digest(parts->digest, md5_hex(std::string(parts->counter_text) + secret))) {
    throw ServerException(std::string(kInvalidKey));
  }
  if (!open) throw ServerException("Session has ended");
  if (parts->counter <= last_counter) throw ServerException("Stale or replayed session key");
  if (parts->counter - last_counter > kMaxCounterStep) {
    throw ServerException("Session key counter too far ahead: at most " +
                          std::to_string(kMaxCounterStep) + " past the last one");
  }

  db.prepare("UPDATE sessions SET last_counter = ? WHERE token = ?")
      .bind(parts->counter, parts->token)
      .run();
  return session;
}

}  // namespace sandbox
