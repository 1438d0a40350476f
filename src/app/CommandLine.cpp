#include "app/CommandLine.h"

#include <cctype>
#include <cstdlib>

#include "app/AppTypeWin.h"
#include "core/Log.h"

namespace {
bool Is(const std::string &a, const char *name) { return a == std::string("-") + name || a == std::string("--") + name; }

// Reads a window id in decimal or 0x hex; 0 when it isn't one.
WindowHandle ParseWindowId(const std::string &text) {
  char *end = nullptr;
  unsigned long long v = strtoull(text.c_str(), &end, 0);
  return (end && *end == 0 && end != text.c_str()) ? static_cast<WindowHandle>(v) : 0;
}

// The first run of digits after any other characters, as a decimal number.
WindowHandle ParseParent(const std::string &rest) {
  size_t i = 0;
  while (i < rest.size() && !isdigit(static_cast<unsigned char>(rest[i]))) ++i;
  WindowHandle v = 0;
  while (i < rest.size() && isdigit(static_cast<unsigned char>(rest[i]))) v = v * 10 + static_cast<WindowHandle>(rest[i++] - '0');
  return v;
}

// A file argument: quoted to the next quote, else to the next blank.
std::string ReadFileArgument(const std::string &line, size_t &pos) {
  while (pos < line.size() && line[pos] == ' ') ++pos;
  if (pos >= line.size()) return std::string();
  size_t end;
  std::string word;
  if (line[pos] == '"') {
    end = line.find('"', pos + 1);
    word = line.substr(pos + 1, end == std::string::npos ? std::string::npos : end - pos - 1);
    pos = end == std::string::npos ? line.size() : end + 1;
  } else {
    end = line.find(' ', pos);
    word = line.substr(pos, end == std::string::npos ? std::string::npos : end - pos);
    pos = end == std::string::npos ? line.size() : end;
  }
  return word;
}
}  // namespace

std::vector<std::string> TranslateLinuxSwitches(const std::vector<std::string> &args, const char *xscreensaverWindow) {
  std::vector<std::string> out;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string &a = args[i];
    if (Is(a, "root")) {
      WindowHandle w = xscreensaverWindow ? ParseWindowId(xscreensaverWindow) : 0;
      out.push_back(w ? "/p" + std::to_string(w) : "/s");
    } else if (Is(a, "window-id") && i + 1 < args.size()) {
      out.push_back("/p" + std::to_string(ParseWindowId(args[++i])));
    } else if (Is(a, "window")) {
      out.push_back("/t");
    } else {
      out.push_back(a);
    }
  }
  return out;
}

std::string JoinArguments(const std::vector<std::string> &args) {
  std::string line;
  for (const std::string &a : args) {
    if (!line.empty()) line += ' ';
    line += a.find(' ') != std::string::npos ? "\"" + a + "\"" : a;
  }
  return line;
}

CommandLine ParseCommandLine(const std::string &line) {
  CommandLine cl;
  const size_t sw = line.find_first_of("/-");
  if (sw == std::string::npos || sw + 1 >= line.size()) return cl;  // no switch: configuration
  const char letter = static_cast<char>(tolower(static_cast<unsigned char>(line[sw + 1])));
  size_t pos = sw + 2;
  switch (letter) {
    case 'c':
      cl.mode = MODE_Config;
      cl.parentWindow = ParseParent(line.substr(pos));
      break;
    case 'p':
      cl.mode = MODE_Preview;
      cl.parentWindow = ParseParent(line.substr(pos));
      break;
    case 'a':
      cl.mode = MODE_Password;
      cl.parentWindow = ParseParent(line.substr(pos));
      break;
    case 'f':
    case 't':
      cl.mode = letter == 'f' ? MODE_FullScreen : MODE_Test;
      cl.file = ReadFileArgument(line, pos);
      if (!cl.file.empty()) Log("File specified: \"%s\"", cl.file.c_str());
      break;
    case 'r': {
      cl.mode = MODE_Record;
      // Two plain words: no quoting here.
      auto word = [&] {
        while (pos < line.size() && line[pos] == ' ') ++pos;
        size_t end = line.find(' ', pos);
        std::string w = line.substr(pos, end == std::string::npos ? std::string::npos : end - pos);
        pos = end == std::string::npos ? line.size() : end;
        return w;
      };
      cl.movieFile = word();
      cl.file = word();
      Log("Record mode active: \"%s\" -> \"%s\"", cl.file.c_str(), cl.movieFile.c_str());
      break;
    }
    case 'e':
      cl.mode = MODE_Screenshot;
      break;
    default:
      cl.mode = MODE_FullScreen;
      break;
  }
  return cl;
}
