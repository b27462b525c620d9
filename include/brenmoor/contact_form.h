#pragma once
// The small modal window that ZylService::Connect() shows while it contacts the server: a
// caption, one line of text and an "OK" button that appears only when a failure must stay on
// screen. The library drives it; the Host shows it (Host::showContactForm).

#include <string>

namespace brenmoor {

class Host;
class ZylService;

class ContactForm {
 public:
  ContactForm(const ContactForm&) = delete;
  ContactForm& operator=(const ContactForm&) = delete;

  // "Telvane Service".
  const std::string& caption() const { return caption_; }
  // "Contacting Telvane. Please wait..." until the contacting is over; then the failure, if any.
  const std::string& text() const { return text_; }
  bool okShown() const { return okShown_; }
  bool isOpen() const { return open_; }
  // Whether Connect() succeeded; meaningful once the form has closed.
  bool result() const { return result_; }

  // Does the whole contacting on the calling thread: the host calls it once the form is on
  // screen. It closes the form itself on success, when alerts were off, and on a version
  // mismatch; otherwise it shows the OK button and leaves the form open. Runs once.
  void start();
  // The OK button: closes the form.
  void pressOk() { open_ = false; }

 private:
  friend class ZylService;
  ContactForm(ZylService& service, Host& host, const std::string& UserName,
              const std::string& Password, const std::string& accountGuid, bool unencryptedPassword,
              bool quiet);
  void contact();
  bool selectAccount();
  void fail(const std::string& text);

  ZylService& service_;
  Host& host_;
  const std::string& userName_;
  const std::string& password_;
  const std::string& accountGuid_;
  bool unencryptedPassword_;
  bool quiet_;
  std::string caption_ = "Telvane Service";
  std::string text_ = "Contacting Telvane. Please wait...";
  bool okShown_ = false;
  bool open_ = true;
  bool started_ = false;
  bool result_ = false;
};

}  // namespace brenmoor
