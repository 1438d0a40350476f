#include "render/DeviceCheck.h"

#include <string>

#include "core/Log.h"

bool ReportDeviceFailure(const char *expression, const char *file, long line) {
  std::string path = file;
  if (size_t src = path.rfind("src/"); src != std::string::npos) path.erase(0, src + 4);
  if (size_t dot = path.rfind('.'); dot != std::string::npos && path.find('/', dot) == std::string::npos)
    path.erase(dot);
  for (char &c : path)
    if (c == '/') c = '\\';
  LogError("FAILED : \"%s\" in \"%s\"(%ld)", expression, path.c_str(), line);
  return true;
}
