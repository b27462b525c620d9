#include "mail/outbox.h"
#include "services/main_operations.h"
#include "services/text_rules.h"
#include "soap/faults.h"
#include "store/database.h"

namespace sandbox {
namespace {

// RFC 5322 caps a line at 998 characters; the header name needs a few of them.
constexpr std::size_t kMaxHeaderText = 900;

// Header fields are checked to be single lines, so no text can add headers of its own.
void send_email(Call& call) {
  OutgoingMessage message{"", call.args.string("to"), call.args.string("subject"),
                          call.args.string("msg")};
  require_plain_text("to", message.to, kMaxHeaderText);
  require_plain_text("subject", message.subject, kMaxHeaderText);
  if (message.to.find('@') == std::string::npos) {
    throw ApplicationFault("InvalidArgument", "to must hold an e-mail address");
  }
  auto sender = call.db.prepare("SELECT email FROM users WHERE id = ?");
  sender.bind(call.session().user_id).step();
  message.from = sender.text(0);
  try {
    write_to_outbox(call.server.data_dir, message);
  } catch (const std::exception& error) {
    throw ServerException(error.what());
  }
  call.reply.scalar(true);
}

constexpr Operation kOperations[] = {
    {"sendEmail", Access::keyed, send_email, "to subject msg -> boolean"},
};

}  // namespace

std::span<const Operation> mail_operations() {
  return kOperations;
}

}  // namespace sandbox
