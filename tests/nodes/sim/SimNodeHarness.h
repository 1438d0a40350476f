#pragma once
// One node made by the factory, its ports set from text, stepped as the
// graph steps it at 30 steps a second, for the tests and benchmarks of a
// single node type.

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "core/Random.h"
#include "nodes/BuiltinNodes.h"
#include "render/Matrix.h"
#include "scene/Node.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"

template <typename N>
struct SimNode {
  using Ports = std::vector<std::pair<const char *, const char *>>;
  // Every run of a test draws the same numbers.
  SimNode(const char *type, const Ports &ports = {}, uint32_t seed = 1) {
    SeedSharedRandom(seed);
    InstallBuiltinNodes();
    factory->Init();
    node.reset(static_cast<N *>(factory->CreateNode(type)));
    all.push_back(node.get());
    Put(node.get(), ports);
    node->m_Frame = &frame;
    frame.Aspect = frame.PrevAspect = 1.0f;
  }
  // A node of `type` feeding the in-port `in` from its first out-port.
  CNode *Feed(const char *in, const char *type, const Ports &ports = {}) {
    CNode *source = all.emplace_back(sources.emplace_back(factory->CreateNode(type)).get());
    Put(source, ports);
    ConnectPorts(source->m_OutPorts[0], node->FindInPort(in));
    return source;
  }
  // Values as a file or an editor gives them: the port reports a change.
  static void Put(CNode *n, const Ports &ports) {
    for (const auto &[name, value] : ports) {
      n->FindInPort(name)->SetText(value);
      n->FindInPort(name)->m_Changed = true;
    }
  }
  void Set(const char *port, const char *value) { Put(node.get(), {{port, value}}); }
  // The value behind an in-port, to give it what no text could.
  template <typename P>
  P &Port(const char *name) {
    return *dynamic_cast<P *>(node->FindInPort(name));
  }
  void Steps(int n = 1, float dt = 0.033333335f) {
    for (int i = 0; i < n; ++i) {
      frame.DeltaTime = dt;
      frame.Time += std::isfinite(dt) ? dt : 0.0f;
      for (CNode *s : all) s->m_Updated = s->m_Changed = false;
      node->Update(frame.Time, &frame);
      frame.PrevAspect = frame.Aspect;
      for (CNode *s : all)
        for (auto *ports : {&s->m_InPorts, &s->m_OutPorts})
          for (CPort *p : *ports) p->m_Changed = false;
    }
  }
  CNodeFactoryRef factory;
  FrameInfo frame;
  // Before the node, so that the node goes first.
  std::vector<std::unique_ptr<CNode>> sources;
  std::unique_ptr<N> node;
  std::vector<CNode *> all;
};

inline bool Finite(const CVector3 &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }
template <typename... T>
bool Finite(T... v) {
  return (std::isfinite(v) && ...);
}
