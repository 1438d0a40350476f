#pragma once
// Where a host's command lines come from while the program runs: clients
// send lines of text, and each line is answered to the client that sent it.
// The program polls it once a frame; nothing here waits.

#include <memory>
#include <string>

class ILineChannel {
 public:
  virtual ~ILineChannel() = default;
  struct Line {
    int client = -1;
    std::string text;
    bool oversized = false;  // longer than the channel takes; text is empty
  };
  // The next complete line from any client, without waiting; false if none.
  virtual bool Poll(Line &line) = 0;
  // One line back to a client; a client that has gone is skipped.
  virtual void Answer(int client, const std::string &text) = 0;
};

// A Unix stream socket at `path`, owner-only (0600) and removed when the
// channel goes. Never a network socket. A socket file left by an earlier
// run is replaced; one a running program listens on, or any other file at
// the path, is not touched. Null, with
// the error logged, when the socket can't be made.
std::unique_ptr<ILineChannel> OpenUnixSocketChannel(const std::string &path, size_t maxLine);
