#include "scene/Node.h"

#include <cstring>

#include "core/Log.h"
#include "scene/NodeInfo.h"
#include "scene/Port.h"
#include "scene/Serialize.h"

namespace {
// The nodes whose pull is under way, outermost first. Fixed storage: pulls
// run every frame and must not allocate.
CNode *g_PullStack[MAX_PULL_DEPTH];
int g_PullDepth = 0;
bool g_DepthReported = false;
}  // namespace

CNode::~CNode() {
  for (CPort *p : m_InPorts) delete p;
  for (CPort *p : m_OutPorts) delete p;
}

void CNode::Update(float, FrameInfo *) {}
bool CNode::RestoreDevice(CRender *) { return true; }
void CNode::InvalidateDevice(CRender *) {}
bool CNode::ResetDevice(CRender *render) {
  InvalidateDevice(render);
  RestoreDevice(render);
  return true;
}
void CNode::AddToDrawList(CDrawList &, CDrawItemList &, const CCamera *) {}

void CNode::Serialize(CSerialize &s) {
  s.EnterElement("Node");
  s.Serialize("Type", m_Info ? m_Info->m_TypeName : std::string());
  m_Name = s.Serialize("Name", m_Name);
  for (CPort *p : m_InPorts) p->Serialize(s);
  if (s.m_Mode == SM_Catalogue)
    for (CPort *p : m_OutPorts) p->Serialize(s);
  s.LeaveElement();
}

static CPort *FindPort(const std::vector<CPort *> &ports, const char *name) {
  for (CPort *p : ports)
    if (p->m_Name == name) return p;
  return nullptr;
}

void CNode::ReportMissingPort(const char *direction, const char *name) const {
  m_PortMissing = true;
  LogError("Node type \"%s\" has no %s port \"%s\" of the kind it expects", m_Info ? m_Info->m_TypeName.c_str() : "?",
           direction, name);
}

CPort *CNode::FindInPort(const char *name) const { return FindPort(m_InPorts, name); }
CPort *CNode::FindOutPort(const char *name) const { return FindPort(m_OutPorts, name); }

bool CNode::UpdateInPorts(float time) {
  bool any = false;
  for (CPort *p : m_InPorts) {
    // An unconnected plain value port (bool .. string) keeps its own value:
    // nothing to pull. Rects (connected part by part) and pointer ports
    // (which clear their value) always run.
    if (!p->m_Source && p->m_Type <= PT_String) {
      if (p->m_Changed) m_Changed = any = true;
      continue;
    }
    p->Update(time);
    if (p->m_Changed) {
      m_Changed = true;
      any = true;
    }
  }
  return any;
}

bool CNode::Connect(const char *inPortName, const char *outPortName, CNode *sourceNode) {
  if (!sourceNode) return LogError("Connection node is null (%s -> %s)", outPortName, inPortName);
  CPort *in = FindInPort(inPortName);
  if (!in) return LogError("Unknown in port (%s -> %s)", outPortName, inPortName);
  CPort *out = sourceNode->FindOutPort(outPortName);
  if (!out) return LogError("Unknown out port (%s -> %s)", outPortName, inPortName);
  return ConnectPorts(out, in);
}

void CNode::Disconnect(CNode *sourceNode) {
  for (CPort *p : m_InPorts)
    if (p->m_Source && p->m_Source->m_Node == sourceNode) p->m_Source = nullptr;
}

void CNode::Pull(float time) {
  if (m_PullDepth > 0 && !m_Updated) {
    ReportCycle();
    return;
  }
  if (g_PullDepth >= MAX_PULL_DEPTH) {
    if (!g_DepthReported)
      LogError("Graph is deeper than %ld nodes at \"%s\"; the rest is not evaluated", static_cast<long>(MAX_PULL_DEPTH),
               m_Name.c_str());
    g_DepthReported = true;
    return;
  }
  g_PullStack[g_PullDepth++] = this;
  ++m_PullDepth;
  Update(time, m_Frame);
  --m_PullDepth;
  --g_PullDepth;
  m_Updated = true;
}

void CNode::WalkDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_WalkDepth > 0 || g_PullDepth >= MAX_PULL_DEPTH) return;
  ++m_WalkDepth;
  ++g_PullDepth;
  AddToDrawList(list, parents, camera);
  --g_PullDepth;
  --m_WalkDepth;
}

void CNode::WalkSource(const CPort *inPort, CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (inPort && inPort->m_Source && inPort->m_Source->m_Node)
    inPort->m_Source->m_Node->WalkDrawList(list, parents, camera);
}

void CNode::ReportCycle() {
  if (m_CycleReported) return;
  m_CycleReported = true;
  // Names from this node's first pull up to the node that pulled it again.
  std::string path;
  int first = g_PullDepth - 1;
  while (first > 0 && g_PullStack[first] != this) --first;
  for (int i = first; i < g_PullDepth; ++i) {
    path += g_PullStack[i]->m_Name;
    path += " -> ";
  }
  path += m_Name;
  LogError("Cycle in graph: %s. The connection back to \"%s\" is not evaluated", path.c_str(), m_Name.c_str());
}
