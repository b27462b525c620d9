#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "brenmoor/contact_form.h"
#include "brenmoor/host.h"

namespace brenmoor::testing {

// A host that keeps every message box instead of showing it, and writes down each step of the
// contacting form, pressing its OK button when it appears.
class RecordingHost : public Host {
 public:
  struct Box {
    std::string text;
    std::string title;
  };

  void messageBox(const std::string& text, const std::string& title) override {
    boxes.push_back({text, title});
  }

  void showContactForm(ContactForm& form) override {
    formSteps.push_back("shown " + form.caption() + ": " + form.text());
    if (throwOnShow) throw std::runtime_error("the host gave up");
    form.start();
    if (form.isOpen()) {
      formSteps.push_back("OK pressed");
      form.pressOk();
    }
  }
  void contactTextChanged(const ContactForm& form) override {
    formSteps.push_back("text " + form.text());
  }
  void contactOkShown(const ContactForm&) override { formSteps.push_back("OK shown"); }

  void CreateAssetProgress(int32_t percent) override {
    progress.push_back(percent);
    if (onProgress) onProgress(percent);
  }
  void CreateAssetFileProgress(int32_t percent, const std::string& filename) override {
    fileProgress.push_back(filename + " " + std::to_string(percent));
  }

  std::vector<Box> boxes;
  std::vector<std::string> formSteps;
  bool throwOnShow = false;
  std::vector<int32_t> progress;
  std::vector<std::string> fileProgress;
  std::function<void(int32_t)> onProgress;
};

}  // namespace brenmoor::testing
