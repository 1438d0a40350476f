#include "core/Paths.h"

#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>

namespace {
std::string g_AppPath = ".";
std::string g_UserPath = ".";

void ReplaceAll(std::string &s, const std::string &from, const std::string &to) {
  if (from.empty()) return;
  for (size_t pos = s.find(from); pos != std::string::npos; pos = s.find(from, pos + to.size()))
    s.replace(pos, from.size(), to);
}

bool Exists(const std::string &p) {
  struct stat st;
  return stat(p.c_str(), &st) == 0;
}
}  // namespace

void SetAppPaths(const std::string &appPath, const std::string &userPath) {
  g_AppPath = PathValue(appPath);
  g_UserPath = PathValue(userPath);
  while (g_AppPath.size() > 1 && g_AppPath.back() == '/') g_AppPath.pop_back();
  while (g_UserPath.size() > 1 && g_UserPath.back() == '/') g_UserPath.pop_back();
}
const std::string &AppPath() { return g_AppPath; }
const std::string &UserPath() { return g_UserPath; }

std::string PathValue(const std::string &s) {
  std::string r = s;
  for (char &c : r)
    if (c == '\\') c = '/';
  return r;
}

std::string Expand(const std::string &s) {
  std::string r = s;
  ReplaceAll(r, "[apppath]", g_AppPath + "/");
  ReplaceAll(r, "[userpath]", g_UserPath + "/");
  return PathValue(r);
}

std::string Contract(const std::string &s) {
  std::string r = PathValue(s);
  ReplaceAll(r, g_AppPath + "/", "[apppath]");
  ReplaceAll(r, g_UserPath + "/", "[userpath]");
  return r;
}

std::string JoinPath(const std::string &a, const std::string &b) {
  if (a.empty()) return b;
  if (b.empty()) return a;
  if (a.back() == '/') return b.front() == '/' ? a + b.substr(1) : a + b;
  return b.front() == '/' ? a + b : a + "/" + b;
}

std::string ResolvePath(const std::string &path) {
  if (path.empty() || Exists(path)) return path;
  size_t slash = path.rfind('/');
  std::string dir = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
  std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  // The folder itself may be in the wrong case too.
  std::string resolvedDir = (dir == "." || dir == "/") ? dir : ResolvePath(dir);
  DIR *d = opendir(resolvedDir.c_str());
  if (!d) return path;
  std::string found;
  while (dirent *e = readdir(d))
    if (!strcasecmp(e->d_name, name.c_str())) {
      found = e->d_name;
      break;
    }
  closedir(d);
  if (found.empty()) return path;
  return slash == std::string::npos ? found : JoinPath(resolvedDir, found);
}
