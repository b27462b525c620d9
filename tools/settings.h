#pragma once
// Where the connection settings come from: options first, then the environment, then a
// profile of the settings file.

#include <string>

namespace brenmoor::cli {

struct Settings {
  std::string url;
  std::string user;
  std::string password;
  std::string account;      // an account id, for explicit sign-in
  std::string accountGuid;  // an account guid, for Connect
};

// What the command line gave besides the settings themselves.
struct SettingsSources {
  Settings options;  // empty strings: not given
  std::string passwordFile;
  std::string profile;  // empty: the default profile
};

// Fills `settings` from the sources in order of precedence. Returns an error text for the
// user (unreadable files, a missing profile, a profile file others can read that holds a
// password), empty on success.
std::string resolveSettings(const SettingsSources& sources, Settings& settings);

// The settings file: $XDG_CONFIG_HOME/brenmoor/config, else ~/.config/brenmoor/config.
std::string settingsFilePath();

// Asks for the password without echo when none was given and standard input is a terminal.
// Returns an error text when a password is still missing.
std::string ensurePassword(Settings& settings);

// The password of the user a command is about (a new user, a registrant), not the signing-in
// one.
struct UserPasswordSources {
  std::string given;  // --user-password
  std::string file;   // --user-password-file
};

// Takes the first of: the option, the file's first line, BRENMOOR_USER_PASSWORD, and a prompt
// without echo when standard input is a terminal (asked twice when `confirm`, for a new
// password). Returns an error text when none of them gives one.
std::string readUserPassword(const UserPasswordSources& sources, const std::string& prompt,
                             bool confirm, std::string& password);

}  // namespace brenmoor::cli
