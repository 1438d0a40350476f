#include "nodes/effect/EffectTestSupport.h"

#include <cstdlib>

std::string AssetsDir() {
  const char *root = getenv("VELMOR_SOURCE_DIR");
  if (root && *root) return std::string(root) + "/assets/";
  std::string here = __FILE__;
  return here.substr(0, here.rfind("/tests/")) + "/assets/";
}
