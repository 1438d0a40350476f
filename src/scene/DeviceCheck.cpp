#include "scene/DeviceCheck.h"

#include <string>

bool DeviceCheckFailed(const char *expression, const char *file, long line) {
  // The source path from the source root, without its extension, is what a
  // report needs to find the line.
  std::string path = file;
  if (size_t src = path.rfind("/src/"); src != std::string::npos) path = path.substr(src + 5);
  if (size_t dot = path.rfind('.'); dot != std::string::npos) path.resize(dot);
  return LogError("FAILED : \"%s\" in \"%s\"(%ld)", expression, path.c_str(), line);
}
