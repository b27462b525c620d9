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

}  // namespace brenmoor::cli
