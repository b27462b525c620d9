#include "services/text_rules.h"

#include <algorithm>
#include <string>

#include "soap/faults.h"

namespace sandbox {
namespace {

constexpr std::size_t kMaxEmail = 254;

bool is_control(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

}  // namespace

void require_plain_text(std::string_view what, std::string_view text, std::size_t limit) {
  if (text.size() > limit) {
    throw ApplicationFault("InvalidArgument", std::string(what) + " is longer than " +
                                                  std::to_string(limit) + " bytes");
  }
  if (std::any_of(text.begin(), text.end(), is_control)) {
    throw ApplicationFault("InvalidArgument",
                           std::string(what) + " must not hold control characters or line breaks");
  }
}

void require_email(std::string_view text) {
  require_plain_text("The e-mail address", text, kMaxEmail);
  const auto at = text.find('@');
  if (at == std::string_view::npos || at == 0 || at + 1 == text.size() ||
      text.find_first_of(" ,;<>\"") != std::string_view::npos) {
    throw ApplicationFault("InvalidArgument", "Not an e-mail address");
  }
}

}  // namespace sandbox
