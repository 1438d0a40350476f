// Project documents: any bytes as the project the engine starts with; its
// scene references may name the shipped scenes.
#include "FuzzSupport.h"
#include "engine/Velmor.h"
#include "nodes/BuiltinNodes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static CFuzzFolder folder;
  static bool installed = (InstallBuiltinNodes(), true);
  (void)installed;
  StartRequest request;
  request.file = folder.Write("fuzz.vmp", data, size);
  CVelmor engine;
  engine.Start(request);
  return 0;
}
