#pragma once
// The one HTTP request the program makes: the weekly upload of the usage
// statistics. The logic above it sees only this seam; tests use a server of
// their own on 127.0.0.1 or a fake.

#include <string>

class IHttpPoster {
 public:
  virtual ~IHttpPoster() = default;
  // Whether the endpoint can be reached at all: some network is up, or the
  // endpoint is on this machine.
  virtual bool IsConnected(const std::string &url) = 0;
  // Starts one POST of `body` as "text/xml" to `url` on a detached thread of
  // its own and returns at once. Nobody waits for the request or looks at
  // its outcome. False when it could not be started.
  virtual bool PostAsync(const std::string &url, const std::string &body) = 0;
};

// libcurl, with short time-outs and no proxy: a dead endpoint costs the
// thread a few seconds and the program nothing.
class CCurlPoster final : public IHttpPoster {
 public:
  bool IsConnected(const std::string &url) override;
  bool PostAsync(const std::string &url, const std::string &body) override;

  static constexpr long ConnectTimeoutMs = 3000;
  static constexpr long TotalTimeoutMs = 10000;
};
