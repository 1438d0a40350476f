#pragma once
// A graph of nodes with one root, the Screen. It owns its nodes, names them,
// resolves port addresses, and runs the frame: advance the clock, pull from
// the root, generate stale meshes, build the draw list, draw.

#include <cstdint>
#include <string>
#include <vector>

#include "scene/DrawList.h"
#include "scene/FrameInfo.h"

class CNode;
class CNodeFactory;
class CPDMesh;
class CPort;
class CRender;

struct SceneDate {
  uint16_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

class CDag {
 public:
  CDag();
  virtual ~CDag();
  CDag(const CDag &) = delete;
  CDag &operator=(const CDag &) = delete;

  // A new node of the type, made by m_Factory, with a generated unique name;
  // null if there is no factory or it can't make the type. The first
  // "Screen" becomes the root.
  CNode *AddNode(const char *typeName);
  bool RemoveNode(const char *name);
  CNode *FindNode(const char *name) const;
  // "Node.Port" or "Node.Port.component"; empty tokens are skipped.
  CPort *FindInPort(const char *address, std::string *componentOut = nullptr) const;
  CPort *FindOutPort(const char *address) const;
  bool CreateConnection(const char *outAddress, const char *inAddress);
  bool RemoveConnection(const char *outAddress, const char *inAddress);

  virtual void Update(float dt);
  virtual void Draw(CRender *render);
  // Readies what the next Draw on render's unit needs (device objects of
  // nodes marked for it, uploads of generated meshes), node by node, until
  // `budgetMs` milliseconds have passed (at least one node); a node whose
  // host work is still running is left for a later call. True when nothing
  // is left: the next Draw creates nothing.
  bool PrepareDevice(CRender *render, double budgetMs);
  virtual bool RestoreDevice(CRender *render);
  virtual void InvalidateDevice(CRender *render);
  void FrameFinished();
  // Marks every node and mesh for readying and starts their host work.
  void Activate();
  void Deactivate() { m_FrameInfo.Restart = true; }
  virtual void ForceUpdate() {}

  // Adds an existing node under its current name (used by loaders and
  // tests that build nodes themselves). Takes ownership.
  void AdoptNode(CNode *node);
  std::string GenerateName(const char *typeName) const;

  CDrawList m_DrawList;
  std::vector<CNode *> m_Nodes;
  std::string m_Name, m_Desc, m_Author;
  SceneDate m_Created, m_LastModified;
  int32_t m_Version = 0;
  std::string m_File;
  bool m_Modified = false;
  FrameInfo m_FrameInfo;
  uint32_t m_SceneType = 0;
  float m_WarmupTime = 0.0f;
  float m_Elapsed = 0.0f;
  bool m_Save = true;
  bool m_HasFeedback = false;
  CNode *m_Screen = nullptr;
  // Where AddNode and loading get nodes from; set by whoever makes the graph
  // (the engine, a tool, a test). Not owned.
  const CNodeFactory *m_Factory = nullptr;

 protected:
  void Step(float dt, bool warmup);

 private:
  // Whether a node's own device objects (ReadyNode), a mesh (ReadyMesh) or
  // a node with the meshes it makes (PrepareNode) have device work left for
  // the unit `bit`; with `render`, do it.
  static bool ReadyNode(CNode *node, CRender *render, uint32_t bit);
  static bool ReadyMesh(CPDMesh *mesh, CRender *render, uint32_t bit);
  static bool PrepareNode(CNode *node, CRender *render, uint32_t bit);
  // The mesh out-ports of all nodes, so that a frame's mesh generation
  // visits only them; rebuilt when a node joins or leaves (a node's ports
  // are fixed once it is made).
  const std::vector<CPort *> &MeshOutPorts();
  std::vector<CPort *> m_MeshOutPorts;
  bool m_MeshOutPortsStale = true;
};

constexpr float WARMUP_STEP = 0.033333335f;
