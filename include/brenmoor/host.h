#pragma once
// What the library shows the user goes through a Host, so that a desktop application can use
// its own dialogs, a service can log instead, and tests can record. Calls come on the thread
// that called the library. An exception thrown by a host function goes back to the caller of
// the library function that called it, after the library has restored its own state.

#include <cstdint>
#include <string>

namespace brenmoor {

class ContactForm;

class Host {
 public:
  virtual ~Host() = default;

  // Shows `text` and returns once the user has seen it. An empty title means the host's own
  // default title.
  virtual void messageBox(const std::string& text, const std::string& title) = 0;

  // Lets the host's message loop run; called during long operations.
  virtual void yield() {}

  // Shows Connect()'s form modally and returns once it is closed. A host puts the form on
  // screen, calls form.start() (which does the work and reports through the two functions
  // below), and, while form.isOpen(), waits for the user to press OK (form.pressOk()). The
  // default, for hosts without a user interface, starts the form and presses OK at once.
  virtual void showContactForm(ContactForm& form);
  // The form's text has changed.
  virtual void contactTextChanged(const ContactForm& form) { (void)form; }
  // The form's OK button has appeared: the form stays open until it is pressed.
  virtual void contactOkShown(const ContactForm& form) { (void)form; }

  // Asset creation: after each representation, and 100 at the end.
  virtual void CreateAssetProgress(int32_t percentComplete) { (void)percentComplete; }
  // After each chunk of a file upload; `filename` without its folder.
  virtual void CreateAssetFileProgress(int32_t percentComplete, const std::string& filename) {
    (void)percentComplete;
    (void)filename;
  }
};

// Writes each message box to standard error as one line, "title: text" (the text alone when
// the title is empty), and never blocks. The default host of every ZylService. It writes the
// contacting form as lines too ("Telvane Service: text"), and waits for Enter on the form's
// OK button only when standard input is a terminal.
class StderrHost : public Host {
 public:
  void messageBox(const std::string& text, const std::string& title) override;
  void showContactForm(ContactForm& form) override;
  void contactTextChanged(const ContactForm& form) override;
};

}  // namespace brenmoor
