// Subcommands about the registrants of a project.

#include <memory>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {

void addRegistrantCommands(CLI::App& app, Context& context) {
  auto* registrants = app.add_subcommand("registrants", "The registrants of a project");
  registrants->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 registrants list PROJECT --sort lastName\n"
      "  brenmoor --profile work --account 1001 registrants add PROJECT ada@example.com "
      "--first-name Ada\n"
      "  brenmoor --profile work --account 1001 registrants update PROJECT --email "
      "ada@example.com \\\n"
      "      --first-name Ada --last-name King\n"
      "Passwords (--set-password) come from --user-password-file, BRENMOOR_USER_PASSWORD or a "
      "prompt\nwithout echo.");
  registrants->require_subcommand(1);

  struct Args {
    std::string project, guid, email, firstName, lastName, customXml, sortBy;
    int16_t max = 0;
    UserPasswordSources password;
    bool setPassword = false;
  };
  auto args = std::make_shared<Args>();
  const auto addIdentity = [args](CLI::App& command) {
    command.add_option("project", args->project, "Project guid")->required();
    command.add_option("--guid", args->guid, "The registrant's user guid");
    command.add_option("--email", args->email, "The registrant's e-mail address");
  };
  // The library refuses too, but with a message box where a usage error belongs.
  const auto identified = [args, &context] {
    if (!args->guid.empty() || !args->email.empty()) return true;
    context.status = usageError("name the registrant with --guid or --email");
    return false;
  };
  const auto addDetails = [args](CLI::App& command) {
    command.add_option("--first-name", args->firstName);
    command.add_option("--last-name", args->lastName);
    command.add_option("--custom-xml", args->customXml, "Custom data kept as text");
    command.add_option("--user-password-file", args->password.file,
                       "Read the registrant's password from the first line of FILE");
    command.add_option("--user-password", args->password.given,
                       "The registrant's password (visible to other users in the process list)");
  };
  // True when no password is wanted or one was read; the environment alone does not ask for one.
  const auto readPassword = [args, &context](std::string& password) {
    const UserPasswordSources& given = args->password;
    if (!args->setPassword && given.file.empty() && given.given.empty()) return true;
    const std::string error =
        readUserPassword(args->password, "Registrant's password: ", true, password);
    if (!error.empty()) context.status = usageError(error);
    return error.empty();
  };

  auto* list = registrants->add_subcommand("list", "One registrant per line: guid, e-mail, name");
  list->add_option("project", args->project, "Project guid")->required();
  list->add_option("--max", args->max, "At most this many (default: all)");
  list->add_option("--sort", args->sortBy, "Order")
      ->check(CLI::IsMember({"email", "lastName", "created"}));
  list->callback(signedIn(context, [&context, args](ZylService& service) {
    auto all = service.getRegistrationList(args->project, args->max, args->sortBy);
    if (!all) return void(context.status = failed(service, "listing registrants"));
    printList(context.output, toJson(*all), {"guid", "email", "firstName", "lastName", "created"});
  }));

  auto* add = registrants->add_subcommand(
      "add", "Register someone for a project and print the registrant's guid");
  add->add_option("project", args->project, "Project guid")->required();
  add->add_option("email", args->email)->required();
  add->add_option("--guid", args->guid, "The user guid to register");
  addDetails(*add);
  add->add_flag("--set-password", args->setPassword, "Give the registrant a password");
  add->callback(signedIn(context, [&context, args, readPassword](ZylService& service) {
    std::string password;
    if (!readPassword(password)) return;
    const std::string guid =
        service.addRegisteredUser(args->project, args->guid, args->email, args->firstName,
                                  args->lastName, password, args->customXml);
    if (guid.empty()) return void(context.status = failed(service, "registering"));
    printValue(context.output, "guid", guid);
  }));

  auto* remove = registrants->add_subcommand("delete", "Remove a registrant by guid or e-mail");
  addIdentity(*remove);
  remove->callback(signedIn(context, [&context, args, identified](ZylService& service) {
    if (!identified()) return;
    if (!service.deleteRegisteredUser(args->project, args->guid, args->email)) {
      context.status = failed(service, "removing the registrant");
    }
  }));

  auto* update = registrants->add_subcommand(
      "update", "Change a registrant's name, custom data or (--set-password) password");
  addIdentity(*update);
  addDetails(*update);
  update->add_flag("--set-password", args->setPassword, "Change the password");
  update->callback(
      signedIn(context, [&context, args, identified, readPassword](ZylService& service) {
        if (!identified()) return;
        const Args& a = *args;
        std::string password;
        if (!readPassword(password)) return;
        const bool named = !a.firstName.empty() || !a.lastName.empty();
        if (named && (a.firstName.empty() || a.lastName.empty())) {
          // The service sets both names at once: one alone would blank the other.
          return void(context.status = usageError("give both --first-name and --last-name"));
        }
        if (!named && a.customXml.empty() && password.empty()) {
          return void(context.status = usageError("nothing to change: give a name, --custom-xml or "
                                                  "a password"));
        }
        const bool done = (!named || service.updateRegisteredUserName(a.project, a.guid, a.email,
                                                                      a.firstName, a.lastName)) &&
                          (a.customXml.empty() || service.updateRegisteredUserCustomXML(
                                                      a.project, a.guid, a.email, a.customXml)) &&
                          (password.empty() || service.updateRegisteredUserPassword(
                                                   a.project, a.guid, a.email, password));
        if (!done) context.status = failed(service, "updating the registrant");
      }));
}

}  // namespace brenmoor::cli
