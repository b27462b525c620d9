// The challenge/response sign-in and the request key.

#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "service/key.h"

namespace brenmoor {

using service::Key;
using service::Operation;
using service::Outcome;
using soap::Service;

namespace {
constexpr Operation kGetChallenge{"getChallenge", Service::Login, Key::None};
constexpr Operation kUserLogin{"userLogin", Service::Login, Key::None};
constexpr Operation kGetVersion{"getVersion", Service::Main, Key::None};
// The key goes in by hand: logout spends one key before the one it sends.
constexpr Operation kUserLogout{"userLogout", Service::Login, Key::None};
}  // namespace

std::string ZylService::key() {
  return service::nextKey(*state_);
}
int16_t ZylService::keyCounter() const {
  return state_->keyCounter;
}
const std::string& ZylService::sessionToken() const {
  return state_->sessionToken;
}

std::string ZylService::login(const std::string& UserName, const std::string& Password) {
  auto& s = *state_;
  std::string challenge;
  if (service::run(s, kGetChallenge, service::noElements, [&](const soap::Answer& a) {
        challenge = service::returnText(a);
      }) != Outcome::Answered) {
    return {};
  }

  // Counter 0 is spent on the response itself, so the first key after sign-in carries 1.
  s.keyCounter = 0;
  s.sessionSecret = s.md5.MD5(challenge + Password);
  const std::string response = s.md5.MD5("0" + s.sessionSecret);
  s.keyCounter = 1;

  auto outcome = service::run(
      s, kUserLogin,
      [&] {
        return service::Elements{
            {"challenge", challenge}, {"response", response}, {"username", UserName}};
      },
      [&](const soap::Answer& a) { s.sessionToken = service::returnText(a); });
  if (outcome == Outcome::Failed) return {};
  // After a fault this is the previous session's token: callers have long relied on it.
  std::string result = s.sessionToken;

  service::run(s, kGetVersion, service::noElements,
               [&](const soap::Answer& a) { s.serverVersion = service::returnText(a); });
  return result;
}

std::string ZylService::loginUnencryptedPassword(const std::string& UserName,
                                                 const std::string& Password) {
  return login(UserName, state_->md5.MD5(Password));
}

bool ZylService::logout() {
  auto& s = *state_;
  return service::call(
      s, kUserLogout,
      [&] {
        service::nextKey(s);  // logout has always spent one key before the one it sends
        return service::Elements{{"key", service::nextKey(s)}};
      },
      false, service::returnBool);
}

}  // namespace brenmoor
