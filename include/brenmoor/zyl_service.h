#pragma once
// ZylService: one connection to the Telvane services.
//
// Remote operations never throw. Each returns its failure value (false, 0, an empty string or
// a null pointer) when it fails, and leaves the cause in lastErrID() and lastErrMsg():
//   1 the connection timed out
//   2 the server address cannot be used
//   3 the server refused or dropped the connection, or is in maintenance
//   4 the server rejected the user name or password
//   5 the server does not accept this library's version
//  -1 anything else (lastErrMsg() says what)
// No success clears them. While alerts are on (the default) each such failure is also shown
// through the Host's message box with the title "Telvane". A fault answered by the service is
// shown at once in a message box, whatever the alert switch says, and leaves both untouched.
//
// One object serves one caller at a time; calls block until the answer is in or the time-out
// passes. Connections to the server are kept open and reused between calls.

#include <cstdint>
#include <memory>
#include <string>

#include "brenmoor/collection.h"
#include "brenmoor/deployment.h"
#include "brenmoor/host.h"
#include "brenmoor/user_account_info.h"

namespace brenmoor {

class ZylService {
 public:
  ZylService();
  ~ZylService();
  ZylService(const ZylService&) = delete;
  ZylService& operator=(const ZylService&) = delete;

  // --- Host -------------------------------------------------------------------------------
  // Replaces the host that shows message boxes; null restores the default StderrHost.
  void setHost(std::shared_ptr<Host> host);
  Host& host() const;

  // --- Properties -------------------------------------------------------------------------
  const std::string& baseUrl() const;
  const std::string& lastErrMsg() const;
  void setLastErrMsg(std::string message);
  int16_t lastErrID() const;
  void setLastErrID(int16_t id);

  // The endpoints derived from the base URL, the version learnt by Ping(), and the switches.
  const std::string& loginUrl() const;
  const std::string& telvaneUrl() const;
  const std::string& assetsUrl() const;
  const std::string& accountsUrl() const;
  const std::string& reportsUrl() const;
  const std::string& serverVersion() const;
  bool useProxy() const;
  bool showAlerts() const;

  // --- Set-up -----------------------------------------------------------------------------
  // Stores the base URL and appends each service's path to it exactly as given: nothing is
  // checked or normalised, so "http://h/" gives "http://h//services/Login".
  void SetServiceBaseUrl(const std::string& baseUrl);
  // Turns the failure message boxes on or off.
  void ShowAlerts(bool val);

  // --- Server version and simple values ---------------------------------------------------
  // Sets the base URL and the proxy switch (true: through the proxy at localhost:8080), asks
  // the server for its version with a 4 second time-out and keeps it in serverVersion().
  // Reports a failure silently and then turns alerts on, whatever they were before.
  bool Ping(const std::string& baseUrl, bool m_useProxy = false);
  // A new guid made by the server.
  std::string getGuid();
  // The server's fixed URL.
  std::string getFixedUrl();

  // --- Signing in and accounts -----------------------------------------------------------
  // A new request key, "token:n:digest"; each read spends one value n of the key counter.
  // Throws Error::Overflow once the counter has reached 32767 (sign in again to reset it).
  std::string key();
  // The number of keys handed out in this session; signing in sets it to 1.
  int16_t keyCounter() const;
  // The session token of the last sign-in, empty before one.
  const std::string& sessionToken() const;

  // Signs in by challenge and response; `Password` is the MD5 digest of the password, never
  // the password. Returns the session token (empty after a failure; after a fault answered by
  // the service, the previous token). Then learns the server's version.
  std::string login(const std::string& UserName, const std::string& Password);
  // The same with the clear password, which is digested here and never sent.
  std::string loginUnencryptedPassword(const std::string& UserName, const std::string& Password);
  // Ends the session on the server; the local session values stay until the next sign-in.
  bool logout();

  // The accounts of the signed-in user; null after a failure, empty when there are none.
  std::shared_ptr<Collection<UserAccountInfo>> getAccounts();
  // Binds the session to an account. `accountID` must be a whole number: other text is
  // reported as a failure and nothing is sent.
  bool selectAccount(const std::string& accountID);
  bool selectAccountByGuid(const std::string& accountGuid);

  // --- Version checks ---------------------------------------------------------------------
  // Whether version `v` ("a.b.c.d") is not newer than serverVersion(). Always true against a
  // 3.2.1.0 server; false when either version is not four whole numbers.
  bool validVersion(const std::string& v) const;
  // Asks the server whether it accepts this library's version. A refusal (or a fault) leaves
  // lastErrID() 5; a failure to ask leaves the reporter's number.
  bool isCompatible();
  // Sends diagnostics text to servers from 3.2.4.59 on; does nothing with older ones.
  void sendDebugInfo(const std::string& debugInfo);

  // --- Deployments ------------------------------------------------------------------------
  // The deployment of a template. After a fault, an empty record; after a failure, null.
  std::shared_ptr<DeploymentInfo> getDeploymentInfo(const std::string& templateGuid);

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace brenmoor
