#pragma once
// The exit statuses of brenmoor, one per class of failure, so that scripts can tell a server
// that is down from a wrong password.

namespace brenmoor::cli {

enum ExitCode : int {
  kSuccess = 0,
  kCallFailed = 1,
  kUsage = 2,
  kUnreachable = 3,
  kSignInRefused = 4,
  kIncompatible = 5,
  kInterrupted = 130,  // 128 + SIGINT, as shells report it
};

// The status for a call that failed with the service's lastErrID.
inline int exitCodeFor(int lastErrID) {
  switch (lastErrID) {
    case 1:
    case 2:
    case 3: return kUnreachable;
    case 4: return kSignInRefused;
    case 5: return kIncompatible;
    default: return kCallFailed;
  }
}

inline constexpr const char* kExitCodesHelp =
    "Exit status:\n"
    "  0    success\n"
    "  1    a call failed (the library's error number and message on standard error), a user\n"
    "       that users check refuses, an upload that left files out\n"
    "  2    usage error (options, settings, profile file)\n"
    "  3    cannot reach the server (time-out, unusable address, refused connection)\n"
    "  4    sign-in refused (wrong user name or password)\n"
    "  5    the server does not accept this version of the library\n"
    "  130  interrupted (Ctrl-C; an upload in progress is cancelled first)";

}  // namespace brenmoor::cli
