// Connect: the one-call sign-in, and the contacting form that shows it.

#include "brenmoor/contact_form.h"
#include "brenmoor/zyl_service.h"
#include "service/state.h"

namespace brenmoor {
namespace {

// The server's own text for a wrong user name or password; the form replaces it.
constexpr const char* kWrongPassword = "The user id or password you have entered is invalid.";
constexpr const char* kSettingsText =
    "The User Name or Password you have entered in the Settings dialog is invalid. Remember, "
    "the User Name is the email address you provided in the account setup screen";
constexpr const char* kAccountText = "Could not log in to the selected account";
constexpr int16_t kVersionMismatch = 5;

// Puts the alert switch back however Connect is left.
class AlertsRestorer {
 public:
  explicit AlertsRestorer(ZylService& service) : service_(service), saved_(service.showAlerts()) {}
  ~AlertsRestorer() { service_.ShowAlerts(saved_); }
  AlertsRestorer(const AlertsRestorer&) = delete;
  AlertsRestorer& operator=(const AlertsRestorer&) = delete;
  bool saved() const { return saved_; }

 private:
  ZylService& service_;
  bool saved_;
};

}  // namespace

bool ZylService::Connect(const std::string& baseUrl, const std::string& UserName,
                         const std::string& Password, const std::string& sourceSystem,
                         const std::string& accountGuid, bool m_useProxy,
                         bool unencryptedPassword) {
  if (sourceSystem.empty()) {
    state_->host->messageBox("Please supply a valid source system string", "");
    return false;
  }
  state_->useProxy = m_useProxy;
  state_->sourceSystem = sourceSystem;
  SetServiceBaseUrl(baseUrl);

  AlertsRestorer alerts(*this);
  ShowAlerts(false);
  // Hold the host: a handler may replace it while the form is up.
  std::shared_ptr<Host> host = state_->host;
  ContactForm form(*this, *host, UserName, Password, accountGuid, unencryptedPassword,
                   !alerts.saved());
  host->showContactForm(form);
  return form.result();
}

const std::string& ZylService::sourceSystem() const {
  return state_->sourceSystem;
}

ContactForm::ContactForm(ZylService& service, Host& host, const std::string& UserName,
                         const std::string& Password, const std::string& accountGuid,
                         bool unencryptedPassword, bool quiet)
    : service_(service),
      host_(host),
      userName_(UserName),
      password_(Password),
      accountGuid_(accountGuid),
      unencryptedPassword_(unencryptedPassword),
      quiet_(quiet) {}

void ContactForm::start() {
  if (started_) return;
  started_ = true;
  result_ = true;
  contact();
  if (!open_) return;
  if (result_ || quiet_) {
    open_ = false;
  } else {
    okShown_ = true;
    host_.contactOkShown(*this);
  }
}

// The branches read lastErrID/lastErrMsg as earlier calls left them: a fault does not write
// them, so a stale 5 or wrong-password text steers the outcome. Hosts have long seen it so.
void ContactForm::contact() {
  if (service_.isCompatible()) {
    const std::string token = unencryptedPassword_
                                  ? service_.loginUnencryptedPassword(userName_, password_)
                                  : service_.login(userName_, password_);
    if (!token.empty()) {
      if (!selectAccount()) fail(kAccountText);
      return;
    }
    if (service_.lastErrMsg() != kWrongPassword) return fail(service_.lastErrMsg());
    return fail(kSettingsText);
  }
  if (service_.lastErrMsg() == kWrongPassword) return fail(kSettingsText);
  if (service_.lastErrID() != kVersionMismatch) return fail(service_.lastErrMsg());
  // isCompatible has announced the mismatch already.
  result_ = false;
  open_ = false;
}

bool ContactForm::selectAccount() {
  if (!accountGuid_.empty()) return service_.selectAccountByGuid(accountGuid_);
  auto accounts = service_.getAccounts();
  if (!accounts || accounts->Count() == 0) return false;
  return service_.selectAccount(std::to_string(accounts->Item(1)->accountID()));
}

void ContactForm::fail(const std::string& text) {
  result_ = false;
  text_ = text;
  host_.contactTextChanged(*this);
}

}  // namespace brenmoor
