#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include "core/LineBuffer.h"
#include "core/Log.h"
#include "platform/LineChannel.h"

namespace {
constexpr size_t kMaxClients = 16;

class CUnixSocketChannel final : public ILineChannel {
 public:
  CUnixSocketChannel(int listener, std::string path, size_t maxLine)
      : m_Listener(listener), m_Path(std::move(path)), m_MaxLine(maxLine) {}
  ~CUnixSocketChannel() override {
    for (Client &c : m_Clients) close(c.fd);
    close(m_Listener);
    unlink(m_Path.c_str());
  }

  bool Poll(Line &line) override {
    Accept();
    for (size_t i = 0; i < m_Clients.size(); ++i) {
      Client &c = m_Clients[(m_Next + i) % m_Clients.size()];
      Read(c);
      if (c.lines.Next(line.text, line.oversized)) {
        line.client = c.fd;
        // The next poll starts with the next client, so none is starved.
        m_Next = (m_Next + i + 1) % m_Clients.size();
        return true;
      }
    }
    std::erase_if(m_Clients, [](const Client &c) {
      if (c.open) return false;
      close(c.fd);
      return true;
    });
    return false;
  }

  void Answer(int client, const std::string &text) override {
    const std::string out = text + "\n";
    for (size_t sent = 0; sent < out.size();) {
      const ssize_t n = send(client, out.data() + sent, out.size() - sent, MSG_NOSIGNAL);
      if (n <= 0) return;  // gone, or not reading for the send time-out
      sent += static_cast<size_t>(n);
    }
  }

 private:
  struct Client {
    int fd;
    CLineBuffer lines;
    bool open = true;
  };

  void Accept() {
    for (int fd; m_Clients.size() < kMaxClients && (fd = accept4(m_Listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
      // A client that stops reading holds a frame up for a second at most.
      const timeval timeout{1, 0};
      setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
      m_Clients.push_back({fd, CLineBuffer(m_MaxLine)});
    }
  }

  static void Read(Client &c) {
    char buffer[65536];
    while (c.open) {
      const ssize_t n = recv(c.fd, buffer, sizeof(buffer), MSG_DONTWAIT);
      if (n > 0) {
        c.lines.Append(buffer, static_cast<size_t>(n));
      } else if (n == 0 || (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)) {
        c.open = false;
      } else if (errno != EINTR) {
        return;
      }
    }
  }

  int m_Listener;
  std::string m_Path;
  size_t m_MaxLine;
  std::vector<Client> m_Clients;
  size_t m_Next = 0;
};
}  // namespace

std::unique_ptr<ILineChannel> OpenUnixSocketChannel(const std::string &path, size_t maxLine) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof(address.sun_path)) {
    LogError("Socket path \"%s\" is empty or too long", path.c_str());
    return nullptr;
  }
  memcpy(address.sun_path, path.c_str(), path.size());
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    LogError("Unable to create a socket: %s", strerror(errno));
    return nullptr;
  }
  struct stat existing {};
  if (lstat(path.c_str(), &existing) == 0) {
    const char *refusal = !S_ISSOCK(existing.st_mode) ? "it isn't a socket" : nullptr;
    // A socket that still answers belongs to a program that runs.
    const int probe = refusal ? -1 : socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (probe >= 0 && connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0)
      refusal = "another program listens there";
    if (probe >= 0) close(probe);
    if (refusal) {
      LogError("Not replacing \"%s\": %s", path.c_str(), refusal);
      close(fd);
      return nullptr;
    }
    unlink(path.c_str());
  }
  // Owner-only from the moment the file exists.
  const mode_t oldMask = umask(0177);
  const bool bound = bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
  umask(oldMask);
  if (!bound || listen(fd, 4) != 0) {
    LogError("Unable to listen on \"%s\": %s", path.c_str(), strerror(errno));
    close(fd);
    if (bound) unlink(path.c_str());
    return nullptr;
  }
  Log("Listening for commands on \"%s\"", path.c_str());
  return std::make_unique<CUnixSocketChannel>(fd, path, maxLine);
}
