#pragma once
// The host every command's service gets: the console host, quieter with --quiet, counting the
// message boxes so that commands notice the faults that leave no other mark.

#include <string>

#include "brenmoor/host.h"

namespace brenmoor::cli {

class CliHost : public StderrHost {
 public:
  explicit CliHost(bool quiet) : quiet_(quiet) {}

  void messageBox(const std::string& text, const std::string& title) override;
  void showContactForm(ContactForm& form) override;
  void contactTextChanged(const ContactForm& form) override;

  const std::string& lastText() const { return lastText_; }
  int boxesShown() const { return boxes_; }

 private:
  bool quiet_;
  int boxes_ = 0;
  std::string firstText_, lastText_;
};

}  // namespace brenmoor::cli
