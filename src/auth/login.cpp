// The challenge/response sign-in and the request key.

#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "service/key.h"

namespace brenmoor {

using namespace service;

namespace {

constexpr auto kGetChallenge =
    Operation<std::string>("getChallenge", Service::Login).keyless().reads(asText);
constexpr auto kUserLogin = Operation<std::string>("userLogin", Service::Login)
                                .keyless()
                                .sends("challenge", "response", "username")
                                .reads(asText);
constexpr auto kGetVersion =
    Operation<std::string>("getVersion", Service::Main).keyless().reads(asText);
// The key goes in as a value: logout spends one key before the one it sends.
constexpr auto kUserLogout =
    Operation<bool>("userLogout", Service::Login).keyless().sends("key").reads(asBool);

}  // namespace

std::string ZylService::key() {
  return nextKey(*state_);
}
int16_t ZylService::keyCounter() const {
  return state_->keyCounter;
}
const std::string& ZylService::sessionToken() const {
  return state_->sessionToken;
}

std::string ZylService::login(const std::string& UserName, const std::string& Password) {
  auto& s = *state_;
  auto challenge = kGetChallenge.run(s);
  if (!challenge.answered()) return {};

  // Counter 0 is spent on the response itself, so the first key after sign-in carries 1.
  s.keyCounter = 0;
  s.sessionSecret = s.md5.MD5(challenge.value + Password);
  const std::string response = s.md5.MD5("0" + s.sessionSecret);
  s.keyCounter = 1;

  auto token = kUserLogin.run(s, challenge.value, response, UserName);
  if (token.failed()) return {};
  // After a fault this is the previous session's token: callers have long relied on it.
  if (token.answered()) s.sessionToken = token.value;
  const std::string result = s.sessionToken;

  auto version = kGetVersion.run(s);
  if (version.answered()) s.serverVersion = version.value;
  return result;
}

std::string ZylService::loginUnencryptedPassword(const std::string& UserName,
                                                 const std::string& Password) {
  return login(UserName, state_->md5.MD5(Password));
}

bool ZylService::logout() {
  auto& s = *state_;
  return kUserLogout(s, [&] {
    nextKey(s);  // logout has always spent one key before the one it sends
    return nextKey(s);
  });
}

}  // namespace brenmoor
