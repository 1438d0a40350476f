#pragma once
// One node made by the factory and stepped as the graph steps it, at 30
// steps a second, for the tests and benchmarks of a single node type.

#include <memory>

#include "core/Random.h"
#include "nodes/BuiltinNodes.h"
#include "scene/Node.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"

struct SteppedNode {
  explicit SteppedNode(const char *type) {
    InstallBuiltinNodes();
    factory->Init();
    SeedSharedRandom(1);
    node.reset(factory->CreateNode(type));
  }
  // As a file or a host would set the port: the node sees the change.
  void Set(const char *port, const char *value) {
    CPort *p = node->FindInPort(port);
    p->SetText(value);
    p->m_Changed = true;
  }
  void Step(int frames = 1) {
    for (int i = 0; i < frames; ++i) {
      frame.DeltaTime = 0.033333335f;
      frame.Time += frame.DeltaTime;
      node->m_Updated = false;
      node->Update(frame.Time, &frame);
      for (CPort *p : node->m_InPorts) p->m_Changed = false;
    }
  }
  template <typename N>
  N &As() {
    return static_cast<N &>(*node);
  }

  CNodeFactoryRef factory;
  FrameInfo frame;
  std::unique_ptr<CNode> node;
};
