#include "scene/Dag.h"

#include <bitset>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "core/Clock.h"
#include "core/Log.h"
#include "core/Random.h"
#include "portdata/PDMesh.h"
#include "render/Render.h"
#include "scene/Node.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"
#include "scene/Port.h"
#include "scene/PortPointers.h"

namespace {
// Splits an address on '.' into up to three tokens, skipping empty ones.
int SplitAddress(const char *address, std::string tokens[3]) {
  int n = 0;
  const char *p = address ? address : "";
  while (*p && n < 3) {
    const char *dot = strchr(p, '.');
    size_t len = dot ? static_cast<size_t>(dot - p) : strlen(p);
    if (len) tokens[n++].assign(p, len);
    if (!dot) break;
    p = dot + 1;
  }
  return n;
}

// The bit of render's unit in the nodes' and meshes' dirty masks.
uint32_t UnitBit(const CRender *render) { return 1u << (render->m_RenderUnit & 31); }

template <typename F>
void ForEachMeshPort(const std::vector<CPort *> &ports, F f) {
  for (CPort *p : ports)
    if (p->m_Type == PT_Mesh)
      if (CPDMesh *mesh = static_cast<CPortMesh *>(p)->m_Value) f(mesh);
}
}  // namespace

CDag::CDag() = default;

CDag::~CDag() {
  for (CNode *n : m_Nodes) delete n;
}

std::string CDag::GenerateName(const char *typeName) const {
  // One pass marks which of typeName1 .. typeName999 are taken (a scene of
  // many nodes of one type would otherwise search the graph once a number).
  const std::string_view prefix(typeName);
  std::bitset<1000> taken;
  for (const CNode *n : m_Nodes) {
    const std::string_view name(n->m_Name);
    if (name.size() <= prefix.size() || name.size() > prefix.size() + 3 || !name.starts_with(prefix)) continue;
    const std::string_view digits = name.substr(prefix.size());
    if (digits[0] < '1' || digits[0] > '9') continue;
    int number = 0;
    for (char c : digits) number = c >= '0' && c <= '9' && number >= 0 ? number * 10 + (c - '0') : -1;
    if (number > 0) taken.set(static_cast<size_t>(number));
  }
  for (int i = 1; i <= 999; ++i)
    if (!taken.test(static_cast<size_t>(i))) return std::string(prefix) + std::to_string(i);
  char buf[256];
  snprintf(buf, sizeof(buf), "%s%lu", typeName, static_cast<unsigned long>(NextRandom(SharedRandom())) + 1000ul);
  return buf;
}

CNode *CDag::AddNode(const char *typeName) {
  if (!m_Factory) {
    LogError("No node factory to make a \"%s\" node", typeName);
    return nullptr;
  }
  CNode *node = m_Factory->CreateNode(typeName);
  if (!node) return nullptr;
  node->m_Name = GenerateName(typeName);
  AdoptNode(node);
  return node;
}

void CDag::AdoptNode(CNode *node) {
  node->m_Frame = &m_FrameInfo;
  m_Nodes.push_back(node);
  m_MeshOutPortsStale = true;
  if (!m_Screen && node->m_Info && node->m_Info->m_TypeName == "Screen") m_Screen = node;
}

bool CDag::RemoveNode(const char *name) {
  CNode *node = FindNode(name);
  if (!node) return false;
  if (node == m_Screen) m_Screen = nullptr;
  for (CNode *n : m_Nodes)
    if (n != node) n->Disconnect(node);
  std::erase(m_Nodes, node);
  m_MeshOutPortsStale = true;
  delete node;
  return true;
}

CNode *CDag::FindNode(const char *name) const {
  for (CNode *n : m_Nodes)
    if (n->m_Name == name) return n;
  return nullptr;
}

CPort *CDag::FindInPort(const char *address, std::string *componentOut) const {
  std::string t[3];
  int n = SplitAddress(address, t);
  if (n < 2) return nullptr;
  CNode *node = FindNode(t[0].c_str());
  if (!node) return nullptr;
  if (componentOut) *componentOut = n > 2 ? t[2] : std::string();
  return node->FindInPort(t[1].c_str());
}

CPort *CDag::FindOutPort(const char *address) const {
  std::string t[3];
  if (SplitAddress(address, t) < 2) return nullptr;
  CNode *node = FindNode(t[0].c_str());
  return node ? node->FindOutPort(t[1].c_str()) : nullptr;
}

bool CDag::CreateConnection(const char *outAddress, const char *inAddress) {
  CPort *out = FindOutPort(outAddress);
  std::string component;
  CPort *in = FindInPort(inAddress, &component);
  if (!out || !in) return false;
  // "Node.Viewport.x" reaches one part of a rectangle.
  if (!component.empty())
    if (CPort *sub = in->FindSubPort(component.c_str())) in = sub;
  return ConnectPorts(out, in);
}

bool CDag::RemoveConnection(const char *outAddress, const char *inAddress) {
  CPort *out = FindOutPort(outAddress);
  CPort *in = FindInPort(inAddress);
  if (!out || !in) return false;
  DisconnectPort(in);
  return true;
}

void CDag::Update(float dt) {
  if (!m_Screen) return;
  while (dt + m_Elapsed < m_WarmupTime) {
    Step(WARMUP_STEP, true);
    m_Elapsed += WARMUP_STEP;
  }
  Step(dt, false);
  m_Elapsed += dt;
}

void CDag::Step(float dt, bool warmup) {
  FrameInfo &f = m_FrameInfo;
  if (f.Restart && m_HasFeedback) {
    m_Elapsed = 0.0f;
    f.Time = 0.0f;
  }
  for (CNode *n : m_Nodes) {
    n->m_Updated = false;
    n->m_Changed = false;
  }
  f.Time += dt;
  f.Warmup = warmup;
  f.DeltaTime = dt;

  m_Screen->m_Frame = &f;
  m_Screen->Pull(f.Time);

  // Meshes are generated once, after every input of the frame is known.
  ForEachMeshPort(MeshOutPorts(), [](CPDMesh *mesh) {
    if (!mesh->m_Dirty) return;
    mesh->CreateMesh(*mesh);
    mesh->m_DirtyUnits = ALL_UNITS;
    mesh->m_Dirty = false;
  });
  f.PrevAspect = f.Aspect;
  for (CNode *n : m_Nodes) {
    if (!n->m_Updated) continue;
    for (CPort *p : n->m_InPorts) p->m_Changed = false;
    for (CPort *p : n->m_OutPorts) p->m_Changed = false;
  }
  f.Restart = false;
  if (!warmup) {
    m_DrawList.Reset();
    m_Screen->WalkDrawList(m_DrawList, m_DrawList.Head(), nullptr);
  }
}

const std::vector<CPort *> &CDag::MeshOutPorts() {
  if (m_MeshOutPortsStale) {
    m_MeshOutPorts.clear();
    for (CNode *n : m_Nodes)
      for (CPort *p : n->m_OutPorts)
        if (p->m_Type == PT_Mesh) m_MeshOutPorts.push_back(p);
    m_MeshOutPortsStale = false;
  }
  return m_MeshOutPorts;
}

bool CDag::ReadyNode(CNode *node, CRender *render, uint32_t bit) {
  if (!(node->m_DirtyUnits & bit)) return false;
  if (render) {
    node->m_DirtyUnits &= ~bit;
    node->ResetDevice(render);
  }
  return true;
}

bool CDag::ReadyMesh(CPDMesh *mesh, CRender *render, uint32_t bit) {
  if (!(mesh->m_DirtyUnits & bit)) return false;
  if (render) {
    mesh->m_DirtyUnits &= ~bit;
    mesh->MeshUpdateDevice(render);
  }
  return true;
}

bool CDag::PrepareNode(CNode *node, CRender *render, uint32_t bit) {
  bool work = ReadyNode(node, render, bit);
  ForEachMeshPort(node->m_OutPorts, [&](CPDMesh *mesh) { work = ReadyMesh(mesh, render, bit) || work; });
  return work;
}

void CDag::Draw(CRender *render) {
  if (!m_Screen) return;
  m_FrameInfo.Aspect = render->GetAspect();
  const uint32_t bit = UnitBit(render);
  // Nodes first, then meshes: a node's reset may give up the device copy of
  // the mesh it makes, which is uploaded again after it.
  for (CNode *n : m_Nodes) ReadyNode(n, render, bit);
  ForEachMeshPort(MeshOutPorts(), [&](CPDMesh *mesh) { ReadyMesh(mesh, render, bit); });
  m_DrawList.Draw(render);
}

bool CDag::PrepareDevice(CRender *render, double budgetMs) {
  if (!m_Screen) return true;
  const uint32_t bit = UnitBit(render);
  IClock &clock = GetClock();
  const int64_t start = clock.Counter();
  // A clock without a rate sets no limit.
  const double budgetTicks = budgetMs * static_cast<double>(clock.Frequency()) / 1000.0;
  bool first = true, waiting = false;
  for (CNode *n : m_Nodes) {
    if (!PrepareNode(n, nullptr, bit)) continue;
    if (!n->HostWorkDone()) {
      waiting = true;
      continue;
    }
    if (!first && budgetTicks > 0.0 && static_cast<double>(clock.Counter() - start) >= budgetTicks) return false;
    first = false;
    PrepareNode(n, render, bit);
  }
  return !waiting;
}

bool CDag::RestoreDevice(CRender *render) {
  m_FrameInfo.Aspect = render->GetAspect();
  const uint32_t bit = UnitBit(render);
  for (CNode *n : m_Nodes) {
    n->m_DirtyUnits &= ~bit;
    if (!n->RestoreDevice(render)) return false;
    ForEachMeshPort(n->m_InPorts, [&](CPDMesh *mesh) { mesh->MeshRestoreDevice(render); });
  }
  return true;
}

void CDag::InvalidateDevice(CRender *render) {
  for (CNode *n : m_Nodes) {
    n->InvalidateDevice(render);
    ForEachMeshPort(n->m_InPorts, [&](CPDMesh *mesh) { mesh->MeshInvalidateDevice(render); });
    // Draw uploads every produced mesh, used or not: release them from the
    // producer's side too (releasing twice is harmless).
    ForEachMeshPort(n->m_OutPorts, [&](CPDMesh *mesh) { mesh->MeshInvalidateDevice(render); });
  }
}

void CDag::FrameFinished() {
  for (CNode *n : m_Nodes) n->FrameFinished();
}

void CDag::Activate() {
  for (CNode *n : m_Nodes) {
    n->m_DirtyUnits = ALL_UNITS;
    ForEachMeshPort(n->m_OutPorts, [](CPDMesh *mesh) { mesh->m_Dirty = true; });
    n->StartHostWork();
  }
}
