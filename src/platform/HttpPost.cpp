#include "platform/HttpPost.h"

#include <curl/curl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <system_error>
#include <thread>

namespace {
bool IsLocalUrl(const std::string &url) {
  const size_t scheme = url.find("://");
  const std::string host = url.substr(scheme == std::string::npos ? 0 : scheme + 3);
  for (const char *local : {"127.", "localhost", "[::1]"})
    if (host.rfind(local, 0) == 0) return true;
  return false;
}

void Post(const std::string &url, const std::string &body) {
  CURL *curl = curl_easy_init();
  if (!curl) return;
  curl_slist *headers = curl_slist_append(nullptr, "Content-Type: text/xml");
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);  // time-outs without SIGALRM: we are not the main thread
  curl_easy_setopt(curl, CURLOPT_PROXY, "");      // direct, as the upload always went
  curl_easy_setopt(curl, CURLOPT_USERAGENT, "Velmor 1.8");
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, CCurlPoster::ConnectTimeoutMs);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, CCurlPoster::TotalTimeoutMs);
  curl_easy_perform(curl);  // the outcome is nobody's business: the upload counts as done
  curl_slist_free_all(headers);
  curl_easy_cleanup(curl);
}
}  // namespace

bool CCurlPoster::IsConnected(const std::string &url) {
  if (IsLocalUrl(url)) return true;
  ifaddrs *list = nullptr;
  if (getifaddrs(&list) != 0) return false;
  bool up = false;
  for (ifaddrs *a = list; a && !up; a = a->ifa_next)
    up = a->ifa_addr && (a->ifa_flags & IFF_UP) && (a->ifa_flags & IFF_RUNNING) && !(a->ifa_flags & IFF_LOOPBACK);
  freeifaddrs(list);
  return up;
}

bool CCurlPoster::PostAsync(const std::string &url, const std::string &body) {
  // Set up before any thread uses libcurl: its TLS library registers a
  // clean-up at exit, and one that runs while the upload thread is still
  // initialising it crashes the ending process.
  static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  if (!ready) return false;
  try {
    // The thread owns its copies of url and body, so they outlive it even
    // when the process ends first.
    std::thread(Post, url, body).detach();
  } catch (const std::system_error &) {
    return false;
  }
  return true;
}
