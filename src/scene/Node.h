#pragma once
// One vertex of a scene graph: owns its ports, computes its out-ports from
// its in-ports, and holds device objects for what it draws.

#include <cstdint>
#include <string>
#include <vector>

#include "scene/FrameInfo.h"

class CPort;
class CNodeInfo;
class CSerialize;
class CRender;
class CDrawList;
struct CDrawItemList;
struct CCamera;

constexpr uint32_t ALL_UNITS = 0xFFFFFFFFu;

class CNode {
 public:
  CNode() = default;
  virtual ~CNode();
  CNode(const CNode &) = delete;
  CNode &operator=(const CNode &) = delete;

  virtual bool Init() { return true; }
  virtual void Update(float time, FrameInfo *frame);
  virtual void FrameFinished() {}
  virtual bool RestoreDevice(CRender *render);
  virtual void InvalidateDevice(CRender *render);
  virtual bool ResetDevice(CRender *render);
  virtual void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera);
  virtual void Serialize(CSerialize &serializer);
  virtual bool IsChanged() const { return m_Changed; }
  // Work on the host side of a device object (a computed picture) that may
  // run beside the frames: started when the scene is about to be shown, so
  // that readying the device (RestoreDevice) finds it done. Whether it is.
  virtual void StartHostWork() {}
  virtual bool HostWorkDone() const { return true; }

  CPort *FindInPort(const char *name) const;
  CPort *FindOutPort(const char *name) const;
  // Updates every in-port in order; true when any reported a change.
  bool UpdateInPorts(float time);
  bool Connect(const char *inPortName, const char *outPortName, CNode *sourceNode);
  void Disconnect(CNode *sourceNode);

  // How the graph runs a node: Update, then mark it updated. A node pulled
  // again while its own pull is still under way (a cycle that no node broke
  // by marking itself updated first) is not run again: the cycle is logged
  // once and cut there.
  void Pull(float time);

  // How the draw list is walked: AddToDrawList behind a guard, so that a
  // cycle of Object or Render connections adds nothing the second time.
  void WalkDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera);
  // Walks the node behind an in-port, if it is connected.
  static void WalkSource(const CPort *inPort, CDrawList &list, CDrawItemList &parents, const CCamera *camera);

  // Typed port lookups for Init. A port that is missing or of another class
  // is a fault of the node type: it logs an error naming type and port, gives
  // null and marks the node, so that creating it fails (CNodeInfo::Instantiate).
  template <typename P>
  P *InPort(const char *name) const {
    return Checked(dynamic_cast<P *>(FindInPort(name)), "in", name);
  }
  template <typename P>
  P *OutPort(const char *name) const {
    return Checked(dynamic_cast<P *>(FindOutPort(name)), "out", name);
  }
  // Whether every typed lookup so far found its port.
  bool PortsFound() const { return !m_PortMissing; }

  bool m_Updated = false;
  bool m_Changed = true;
  uint32_t m_DirtyUnits = ALL_UNITS;
  std::string m_Name;
  const CNodeInfo *m_Info = nullptr;
  std::vector<CPort *> m_InPorts;
  std::vector<CPort *> m_OutPorts;
  FrameInfo *m_Frame = nullptr;

 private:
  template <typename P>
  P *Checked(P *port, const char *direction, const char *name) const {
    if (!port) ReportMissingPort(direction, name);
    return port;
  }
  void ReportMissingPort(const char *direction, const char *name) const;
  void ReportCycle();
  mutable bool m_PortMissing = false;
  int m_PullDepth = 0;
  int m_WalkDepth = 0;
  bool m_CycleReported = false;
};

// The deepest chain of pulls allowed before the graph is cut; far beyond any
// real scene, well inside the thread's stack.
constexpr int MAX_PULL_DEPTH = 2000;
