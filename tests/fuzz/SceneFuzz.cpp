// Scene documents: any bytes as a scene file, read and freed. The reader
// alone is linked, not the node library: one node type `Ports` carries an
// in-port and an out-port of every value type, so that node attributes and
// connections reach each port's text form.
#include "FuzzSupport.h"
#include "scene/Node.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"
#include "scene/Scene.h"

namespace {
class CPortsNode : public CNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(7, "Ports", [] { return static_cast<CNode *>(new CPortsNode); }, "every port type");
    for (const char *name : {"Bool", "OutBool"}) Add(info, name, new CPortBool(name, "", false));
    for (const char *name : {"Int", "OutInt"}) Add(info, name, new CPortInt(name, "", 0, -100, 100));
    for (const char *name : {"Float", "OutFloat"}) Add(info, name, new CPortFloat(name, "", 0, 0.1f, -1e4f, 1e4f));
    for (const char *name : {"Vector", "OutVector"})
      Add(info, name, new CPortVector(name, "", {0, 0, 0}, {1, 1, 1}, {-1e4f, -1e4f, -1e4f}, {1e4f, 1e4f, 1e4f}));
    for (const char *name : {"Color", "OutColor"})
      Add(info, name, new CPortColor(name, "", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
    for (const char *name : {"String", "OutString"}) Add(info, name, new CPortString(name, "", ""));
    for (const char *name : {"Rect", "OutRect"})
      Add(info, name, new CPortRect(name, "", {0, 0, 1, 1}, {1, 1, 1, 1}, {-1e4f, -1e4f, -1e4f, -1e4f}, {1e4f, 1e4f, 1e4f, 1e4f}));
    return info;
  }
  bool Init() override { return true; }
  void Update(float, FrameInfo *) override {}

 private:
  static void Add(CNodeInfo *info, const char *name, CPort *port) {
    if (name[0] == 'O') info->AddOutPort(port);
    else info->AddInPort(port);
  }
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static CFuzzFolder folder;
  static CNodeFactoryRef factory;
  static bool registered = (factory->AddNodeType(CPortsNode::CreateInfo()), true);
  (void)registered;
  CScene scene;
  scene.m_File = folder.Write("fuzz.vms", data, size);
  scene.LoadExternal();
  return 0;
}
