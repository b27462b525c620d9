// Subcommands about users and their accounts, and e-mail sent through the service.

#include <iostream>
#include <iterator>
#include <memory>

#include "commands.h"
#include "exit_codes.h"

namespace brenmoor::cli {
namespace {

struct UserArgs {
  std::string firstName, lastName, email, accountKey, accountType;
  UserPasswordSources password;
  bool yes = false;
};

void addPasswordOptions(CLI::App& command, UserPasswordSources& sources) {
  command.add_option("--user-password-file", sources.file,
                     "Read the user's password from the first line of FILE");
  command.add_option("--user-password", sources.given,
                     "The user's password (visible to other users in the process list)");
}

void addNameOptions(CLI::App& command, UserArgs& args) {
  command.add_option("first-name", args.firstName)->required();
  command.add_option("last-name", args.lastName)->required();
  command.add_option("email", args.email)->required();
}

// False (with the status set) when no password comes from the sources.
bool userPassword(Context& context, const UserPasswordSources& sources, const std::string& prompt,
                  bool confirm, std::string& password) {
  const std::string error = readUserPassword(sources, prompt, confirm, password);
  if (!error.empty()) context.status = usageError(error);
  return error.empty();
}

// These calls need no session: a prepared service is enough.
template <class Body>
auto withoutSignIn(Context& context, Body body) {
  return [&context, body] {
    ZylService service;
    if (prepare(service, context)) body(service);
  };
}

}  // namespace

void addUserCommands(CLI::App& app, Context& context) {
  auto* users = app.add_subcommand("users", "User accounts: create, add, check, change, end");
  users->footer(
      "Examples:\n"
      "  brenmoor --url http://127.0.0.1:8080 users create Ada Lovelace ada@example.com\n"
      "  BRENMOOR_USER_PASSWORD=... brenmoor --url URL users check KEY ada@example.com\n"
      "  brenmoor --profile work users password --user-password-file ~/.new-password\n"
      "The user's password comes from --user-password-file, BRENMOOR_USER_PASSWORD or a prompt "
      "without echo;\nthe sign-in password (--password-file, BRENMOOR_PASSWORD) is another.");
  users->require_subcommand(1);
  auto args = std::make_shared<UserArgs>();

  auto* create =
      users->add_subcommand("create", "Create a user with an account of their own (no sign-in)");
  addNameOptions(*create, *args);
  addPasswordOptions(*create, args->password);
  create->callback(withoutSignIn(context, [&context, args](ZylService& service) {
    std::string password;
    if (!userPassword(context, args->password, "Password for " + args->email + ": ", true,
                      password)) {
      return;
    }
    if (!service.createUserAccount(args->firstName, args->lastName, args->email, password)) {
      context.status = failed(service, "creating the user");
    }
  }));

  auto* add =
      users->add_subcommand("add", "Create a user in the account with ACCOUNT-KEY (no sign-in)");
  add->add_option("account-key", args->accountKey)->required();
  addNameOptions(*add, *args);
  add->add_option("--account-type", args->accountType, "The user's type in the account");
  addPasswordOptions(*add, args->password);
  add->callback(withoutSignIn(context, [&context, args](ZylService& service) {
    std::string password;
    if (!userPassword(context, args->password, "Password for " + args->email + ": ", true,
                      password)) {
      return;
    }
    if (!service.createUserInAccount(args->accountKey, args->firstName, args->lastName, args->email,
                                     password, args->accountType)) {
      context.status = failed(service, "adding the user");
    }
  }));

  auto* check = users->add_subcommand(
      "check", "Whether the user may use the account with ACCOUNT-KEY; exit 1 when not");
  check->add_option("account-key", args->accountKey)->required();
  check->add_option("email", args->email)->required();
  addPasswordOptions(*check, args->password);
  check->callback(withoutSignIn(context, [&context, args](ZylService& service) {
    std::string password;
    if (!userPassword(context, args->password, "Password for " + args->email + ": ", false,
                      password)) {
      return;
    }
    CallWatch watch(service);
    const bool valid = service.isUserAccountValid(args->accountKey, args->email, password);
    if (watch.failed()) return void(context.status = failed(service, "checking the user"));
    if (context.output.json) {
      printValue(context.output, "valid", valid);
    } else {
      std::cout << (valid ? "valid" : "not valid") << '\n';
    }
    if (!valid) context.status = kCallFailed;
  }));

  auto* password = users->add_subcommand("password", "Change the signed-in user's password");
  addPasswordOptions(*password, args->password);
  password->callback(signedIn(context, [&context, args](ZylService& service) {
    std::string newPassword;
    if (!userPassword(context, args->password, "New password: ", true, newPassword)) return;
    if (!service.changeUserPassword(newPassword)) {
      context.status = failed(service, "changing the password");
    }
  }));

  auto* terminate = users->add_subcommand(
      "terminate", "End the signed-in user's account, following the service's progress");
  terminate->add_flag("--yes", args->yes, "Yes, end it: it cannot be undone")->required();
  terminate->callback(signedIn(context, [&context](ZylService& service) {
    const std::string proc = service.terminateUserAccount_Async();
    if (proc.empty()) return void(context.status = failed(service, "starting to terminate"));
    if (!followProcess(service, context, proc, "terminating the account")) return;
    if (!service.terminateUserAccount_Result(proc)) {
      context.status = failed(service, "terminating the account");
    }
  }));

  struct MailArgs {
    std::string to, subject, message;
  };
  auto mail = std::make_shared<MailArgs>();
  auto* email = app.add_subcommand("email", "E-mail sent through the service");
  email->footer(
      "Example:\n"
      "  echo 'The keynote is up.' | brenmoor --profile work email send ada@example.com "
      "--subject Keynote");
  email->require_subcommand(1);
  auto* send = email->add_subcommand(
      "send", "Send a message; its text from --message, else from standard input");
  send->add_option("to", mail->to, "The recipient")->required();
  send->add_option("--subject", mail->subject)->required();
  send->add_option("--message", mail->message, "The text");
  send->callback(signedIn(context, [&context, mail](ZylService& service) {
    std::string message = mail->message;
    if (message.empty()) {
      message.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    }
    if (!service.sendEmail(mail->to, mail->subject, message)) {
      context.status = failed(service, "sending the e-mail");
    }
  }));
}

}  // namespace brenmoor::cli
