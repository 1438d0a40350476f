#pragma once
// A node of the simulation family from the catalogue, run frame by frame as
// the graph would, the shared generator seeded as a run of the program is.

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "core/Random.h"
#include "nodes/BuiltinNodes.h"
#include "scene/NodeFactory.h"
#include "scene/FrameInfo.h"
#include "scene/Port.h"

template <typename N>
struct SimHarness {
  SimHarness(const char *type, std::vector<std::pair<const char *, const char *>> ports = {}) {
    SeedSharedRandom(1);
    InstallBuiltinNodes();
    factory->Init();
    node.reset(static_cast<N *>(factory->CreateNode(type)));
    for (const auto &[name, value] : ports) node->FindInPort(name)->SetText(value);
  }
  // The value behind an in-port, to give it what no text could.
  template <typename P>
  P &Port(const char *name) {
    return *dynamic_cast<P *>(node->FindInPort(name));
  }
  void Frames(int n, float dt = 0.033333335f) {
    for (int i = 0; i < n; ++i) {
      frame.DeltaTime = dt;
      frame.Time += std::isfinite(dt) ? dt : 0.0f;
      node->m_Updated = false;
      node->Update(frame.Time, &frame);
      for (CPort *p : node->m_InPorts) p->m_Changed = false;
    }
  }
  CNodeFactoryRef factory;
  FrameInfo frame;
  std::unique_ptr<N> node;
};

template <typename... T>
bool Finite(T... v) {
  return (std::isfinite(v) && ...);
}
