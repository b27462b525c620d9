#include "brenmoor/host.h"

#include <unistd.h>

#include <iostream>
#include <string>

#include "brenmoor/contact_form.h"

namespace brenmoor {

void Host::showContactForm(ContactForm& form) {
  form.start();
  // Nobody could press OK: the text has been handed over, which is all a user would have seen.
  if (form.isOpen()) form.pressOk();
}

void StderrHost::messageBox(const std::string& text, const std::string& title) {
  if (title.empty()) {
    std::cerr << text << '\n';
  } else {
    std::cerr << title << ": " << text << '\n';
  }
}

void StderrHost::showContactForm(ContactForm& form) {
  contactTextChanged(form);
  form.start();
  if (!form.isOpen()) return;
  // Without a terminal nobody is there to press Enter: never wait then.
  if (isatty(STDIN_FILENO)) {
    std::cerr << "[OK: press Enter]" << std::flush;
    std::string line;
    std::getline(std::cin, line);
  }
  form.pressOk();
}

void StderrHost::contactTextChanged(const ContactForm& form) {
  std::cerr << form.caption() << ": " << form.text() << '\n';
}

}  // namespace brenmoor
