#include "terminal.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <iostream>

#include "exit_codes.h"

namespace brenmoor::cli {
namespace {

termios savedTerminal{};
volatile sig_atomic_t echoIsOff = 0;
volatile sig_atomic_t interrupted = 0;

void onInterrupt(int) {
  if (echoIsOff) tcsetattr(STDIN_FILENO, TCSANOW, &savedTerminal);
  const char newline = '\n';
  (void)!write(STDERR_FILENO, &newline, 1);
  _exit(kInterrupted);
}

void raiseFlag(int) {
  interrupted = 1;
}

void handleInterrupt(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
}

}  // namespace

void exitOnInterrupt() {
  handleInterrupt(onInterrupt);
}

InterruptCatcher::InterruptCatcher() {
  interrupted = 0;
  handleInterrupt(raiseFlag);
}

InterruptCatcher::~InterruptCatcher() {
  handleInterrupt(onInterrupt);
}

bool InterruptCatcher::caught() const {
  return interrupted != 0;
}

bool readHiddenLine(const std::string& prompt, std::string& line) {
  std::cerr << prompt << std::flush;
  if (tcgetattr(STDIN_FILENO, &savedTerminal) != 0) return false;
  termios quiet = savedTerminal;
  quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  quiet.c_lflag |= ECHONL;
  echoIsOff = 1;
  if (tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet) != 0) {
    echoIsOff = 0;
    return false;
  }
  const bool read = static_cast<bool>(std::getline(std::cin, line));
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &savedTerminal);
  echoIsOff = 0;
  return read;
}

}  // namespace brenmoor::cli
