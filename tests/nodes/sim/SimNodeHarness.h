#pragma once
// One node of a simulation type made by the factory, its ports set from
// text, stepped as the graph steps it.

#include <memory>
#include <utility>
#include <vector>

#include "core/Random.h"
#include "nodes/BuiltinNodes.h"
#include "scene/Node.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"

template <typename N>
struct SimNode {
  using Ports = std::vector<std::pair<const char *, const char *>>;
  // Every run of a test draws the same numbers.
  SimNode(const char *type, const Ports &ports, uint32_t seed = 1) {
    SeedSharedRandom(seed);
    InstallBuiltinNodes();
    factory->Init();
    node.reset(static_cast<N *>(factory->CreateNode(type)));
    Set(ports);
    node->m_Frame = &frame;
    frame.Aspect = frame.PrevAspect = 1.0f;
  }
  // A node of `type` feeding the in-port `in` from its first out-port.
  CNode *Feed(const char *in, const char *type, const Ports &ports = {}) {
    CNode *source = sources.emplace_back(factory->CreateNode(type)).get();
    Put(source, ports);
    ConnectPorts(source->m_OutPorts[0], node->FindInPort(in));
    return source;
  }
  // Values as a file or an editor gives them: the port reports a change.
  static void Put(CNode *n, const Ports &ports) {
    for (const auto &[name, value] : ports) {
      CPort *p = n->FindInPort(name);
      p->SetText(value);
      p->m_Changed = true;
    }
  }
  void Set(const Ports &ports) { Put(node.get(), ports); }
  void Steps(int n, float dt = 0.033333335f) {
    for (int i = 0; i < n; ++i) {
      frame.DeltaTime = dt;
      frame.Time += dt;
      for (auto &s : sources) s->m_Updated = s->m_Changed = false;
      node->m_Updated = false;
      node->Update(frame.Time, &frame);
      frame.PrevAspect = frame.Aspect;
      for (CNode *n : All()) {
        for (CPort *p : n->m_InPorts) p->m_Changed = false;
        for (CPort *p : n->m_OutPorts) p->m_Changed = false;
      }
    }
  }
  std::vector<CNode *> All() {
    std::vector<CNode *> all{node.get()};
    for (auto &n : sources) all.push_back(n.get());
    return all;
  }
  CNodeFactoryRef factory;
  FrameInfo frame;
  // Before the node, so that the node goes first.
  std::vector<std::unique_ptr<CNode>> sources;
  std::unique_ptr<N> node;
};
