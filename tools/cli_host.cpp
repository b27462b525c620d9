#include "cli_host.h"

#include "brenmoor/contact_form.h"

namespace brenmoor::cli {

void CliHost::messageBox(const std::string& text, const std::string& title) {
  ++boxes_;
  StderrHost::messageBox(text, title);
}

void CliHost::showContactForm(ContactForm& form) {
  firstText_ = form.text();
  StderrHost::showContactForm(form);
}

void CliHost::contactTextChanged(const ContactForm& form) {
  lastText_ = form.text();
  if (quiet_ && lastText_ == firstText_) return;
  StderrHost::contactTextChanged(form);
}

}  // namespace brenmoor::cli
