#pragma once
// What the program was started to do, from its command line. The classic
// switches (/s /c /p N /t /a /r /e /f, with "/" or "-") are read as such;
// the Linux saver conventions are translated into them first.

#include <string>
#include <vector>

#include "platform/WindowMessage.h"

struct CommandLine {
  int mode = 0;
  WindowHandle parentWindow = 0;
  std::string file;
  std::string movieFile;
};

// Translates the Linux conventions into classic switches: -root/--root (into
// $XSCREENSAVER_WINDOW as a preview child, or full screen when unset),
// -window-id/--window-id ID (decimal or 0x hex), -window/--window (test
// window). `xscreensaverWindow` is the environment variable's value or null.
// Other arguments are kept as they are.
std::vector<std::string> TranslateLinuxSwitches(const std::vector<std::string> &args, const char *xscreensaverWindow);

// Parses a command line that follows the program's name.
CommandLine ParseCommandLine(const std::string &line);

// Joins arguments into one line, quoting those with blanks.
std::string JoinArguments(const std::vector<std::string> &args);
