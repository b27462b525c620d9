#include "settings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "terminal.h"

namespace brenmoor::cli {
namespace {

using Profile = std::map<std::string, std::string>;

std::string trim(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// Reads the file through one descriptor, so that the mode checked is that of what was read.
std::string readFile(const std::string& path, struct stat& info, std::string& error) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0 || fstat(fd, &info) != 0) {
    if (fd >= 0) close(fd);
    error = "cannot read " + path;
    return "";
  }
  std::string text;
  char buffer[4096];
  ssize_t n;
  while ((n = read(fd, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<size_t>(n));
  close(fd);
  if (n < 0) error = "cannot read " + path;
  return text;
}

// Lines "[name]" start a profile, "key = value" set one of its settings; keys before any
// "[name]" belong to the default profile, and so do those under "[default]".
std::string parseProfiles(const std::string& path, const std::string& text,
                          std::map<std::string, Profile>& profiles) {
  static const char* const kKeys[] = {"url", "user", "password", "account", "account-guid"};
  std::istringstream lines(text);
  std::string line, current = "default";
  for (int number = 1; std::getline(lines, line); ++number) {
    line = trim(line);
    if (line.empty() || line[0] == '#' || line[0] == ';') continue;
    const std::string where = path + ":" + std::to_string(number) + ": ";
    if (line.front() == '[' && line.back() == ']') {
      current = trim(line.substr(1, line.size() - 2));
      profiles[current];
      continue;
    }
    const auto equals = line.find('=');
    if (equals == std::string::npos) return where + "expected [profile] or key = value";
    const std::string key = trim(line.substr(0, equals));
    if (std::find(std::begin(kKeys), std::end(kKeys), key) == std::end(kKeys)) {
      return where + "unknown key \"" + key + "\" (url, user, password, account, account-guid)";
    }
    profiles[current][key] = trim(line.substr(equals + 1));
  }
  return "";
}

std::string loadProfile(const std::string& wanted, Profile& profile) {
  const std::string path = settingsFilePath();
  struct stat info {};
  if (path.empty() || (wanted.empty() && access(path.c_str(), F_OK) != 0)) return "";
  std::string error;
  const std::string text = readFile(path, info, error);
  if (!error.empty()) return error + (wanted.empty() ? "" : " for --profile " + wanted);
  std::map<std::string, Profile> profiles;
  error = parseProfiles(path, text, profiles);
  if (!error.empty()) return error;
  bool holdsPassword = false;
  for (const auto& [name, settings] : profiles) holdsPassword |= settings.contains("password");
  if (holdsPassword && (info.st_mode & 077) != 0) {
    return path + " holds a password but others may read it; make it private with: chmod 600 " +
           path;
  }
  const std::string name = wanted.empty() ? "default" : wanted;
  const auto found = profiles.find(name);
  if (found != profiles.end()) {
    profile = found->second;
  } else if (!wanted.empty()) {
    return "no profile [" + wanted + "] in " + path;
  }
  return "";
}

std::string readPasswordFile(const std::string& path, const std::string& option,
                             std::string& password) {
  struct stat info {};
  std::string error;
  const std::string text = readFile(path, info, error);
  if (!error.empty()) return error + " (" + option + ")";
  password = text.substr(0, text.find_first_of("\r\n"));
  return "";
}

// The first of the values that is not empty.
std::string firstGiven(std::initializer_list<std::string> values) {
  for (const auto& value : values) {
    if (!value.empty()) return value;
  }
  return "";
}

}  // namespace

std::string settingsFilePath() {
  const std::string config = environment("XDG_CONFIG_HOME");
  if (!config.empty() && config.front() == '/') return config + "/brenmoor/config";
  const std::string home = environment("HOME");
  return home.empty() ? "" : home + "/.config/brenmoor/config";
}

std::string resolveSettings(const SettingsSources& sources, Settings& settings) {
  Profile profile;
  std::string error = loadProfile(sources.profile, profile);
  if (!error.empty()) return error;
  std::string fromFile;
  if (!sources.passwordFile.empty()) {
    error = readPasswordFile(sources.passwordFile, "--password-file", fromFile);
    if (!error.empty()) return error;
  }
  const Settings& given = sources.options;
  settings.url = firstGiven({given.url, environment("BRENMOOR_URL"), profile["url"]});
  settings.user = firstGiven({given.user, environment("BRENMOOR_USER"), profile["user"]});
  settings.password =
      firstGiven({given.password, fromFile, environment("BRENMOOR_PASSWORD"), profile["password"]});
  settings.account =
      firstGiven({given.account, environment("BRENMOOR_ACCOUNT"), profile["account"]});
  settings.accountGuid = firstGiven({given.accountGuid, profile["account-guid"]});
  return "";
}

std::string ensurePassword(Settings& settings) {
  if (settings.user.empty()) {
    return "this command signs in: give --user (or BRENMOOR_USER, or a profile)";
  }
  if (!settings.password.empty()) return "";
  if (isatty(STDIN_FILENO)) {
    if (!readHiddenLine("Password for " + settings.user + ": ", settings.password)) {
      return "could not read the password from the terminal";
    }
    if (!settings.password.empty()) return "";
  }
  return "this command needs a password: --password-file FILE, BRENMOOR_PASSWORD, a profile, "
         "or a terminal to ask on";
}

}  // namespace brenmoor::cli

namespace brenmoor::cli {

std::string readUserPassword(const UserPasswordSources& sources, const std::string& prompt,
                             bool confirm, std::string& password) {
  std::string fromFile;
  if (!sources.file.empty()) {
    const std::string error = readPasswordFile(sources.file, "--user-password-file", fromFile);
    if (!error.empty()) return error;
  }
  password = firstGiven({sources.given, fromFile, environment("BRENMOOR_USER_PASSWORD")});
  if (!password.empty()) return "";
  if (!isatty(STDIN_FILENO)) {
    return "this command needs the user's password: --user-password-file FILE, "
           "BRENMOOR_USER_PASSWORD, or a terminal to ask on";
  }
  std::string again;
  if (!readHiddenLine(prompt, password) || password.empty() ||
      (confirm && !readHiddenLine("Again: ", again))) {
    return "could not read the password from the terminal";
  }
  if (confirm && again != password) return "the two passwords differ";
  return "";
}

}  // namespace brenmoor::cli
