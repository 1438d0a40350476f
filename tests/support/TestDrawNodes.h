#pragma once
// Node types that take part in the draw list, for graph tests: a root that
// collects objects, a group that adds a translation, a drawer with an effect
// and a mesh generator. Everything they do is noted in one shared log.

#include <string>
#include <typeinfo>
#include <vector>

#include "portdata/PDEffect.h"
#include "portdata/PDMesh.h"
#include "portdata/PDObject.h"
#include "render/Matrix.h"
#include "render/RecordRender.h"
#include "scene/DrawList.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

// The recorder behind `render`, if it is one. Called for every effect call of
// every item: the exact type is checked first, which is far cheaper than a
// dynamic_cast; subclasses of the recorder still take the cast.
inline CRecordRender *AsRecorder(CRender *render) {
  if (render && typeid(*render) == typeid(CRecordRender)) return static_cast<CRecordRender *>(render);
  return dynamic_cast<CRecordRender *>(render);
}

// An effect with a number of passes that notes its calls in the recorder.
class CTestEffect : public CPDEffect {
 public:
  CTestEffect(const char *name, int passes) : m_Name(name), m_Passes(passes) {}
  PassHandle Begin() override {
    Note("Begin");
    return m_Passes > 0 ? Pass(0) : nullptr;
  }
  void BeginPass(PassHandle p) override { Note("BeginPass", Index(p)); }
  PassHandle NextPass(PassHandle p) override { return Index(p) + 1 < m_Passes ? Pass(Index(p) + 1) : nullptr; }
  void EndPass(PassHandle p) override { Note("EndPass", Index(p)); }
  void End() override { Note("End"); }
  void SetLight(int, const float *) override {}
  void SetColor(const float *c) override { Note("SetColor", static_cast<int>(c[0] * 100)); }
  void SetMatrix(int, const CMatrix &m) override { Note("SetMatrix", static_cast<int>(m.m[12])); }
  void Commit() override { Note("Commit"); }

 private:
  PassHandle Pass(int i) const { return reinterpret_cast<const char *>(this) + i; }
  int Index(PassHandle p) const { return static_cast<int>(static_cast<const char *>(p) - reinterpret_cast<const char *>(this)); }
  void Note(const char *what, int arg = -1) {
    auto *r = AsRecorder(m_Render);
    if (r && r->m_Recording) {
      if (arg < 0)
        r->Record("%s.%s", m_Name.c_str(), what);
      else
        r->Record("%s.%s %d", m_Name.c_str(), what, arg);
    }
  }
  std::string m_Name;
  int m_Passes;
};

// Draws itself as an object with the effect the test gives it.
class CTestDrawNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(2, "TestDraw", [] { return static_cast<CNode *>(new CTestDrawNode); }, "");
    info->AddInPort(new CPortFloat("Red", "", 1, 0.01f, 0, 1));
    info->AddOutPort(new CPortObject("Object", ""));
    return info;
  }
  void Update(float time, FrameInfo *) override {
    if (m_Updated) return;
    UpdateInPorts(time);
    static_cast<CPortObject *>(m_OutPorts[0])->m_Value = this;
  }
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override {
    if (!effect) return;
    for (CDrawItem *p = parents.first; p; p = p->next) {
      CDrawItem *item = list.NewItem();
      item->matrix = p->matrix;
      item->color[0] = static_cast<CPortFloat *>(m_InPorts[0])->m_Value;
      item->m_Effect = effect;
      item->m_Object = this;
      item->m_Camera = camera;
      p->children.Append(item);
    }
  }
  void Draw(CRender *render) override {
    if (auto *r = AsRecorder(render)) r->Record("Draw %s", m_Name.c_str());
  }
  CPDEffect *effect = nullptr;
};

// Translates everything behind its two object inputs by X along x.
class CTestGroupNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(2, "TestGroup", [] { return static_cast<CNode *>(new CTestGroupNode); }, "");
    info->AddInPort(new CPortObject("Object1", ""));
    info->AddInPort(new CPortObject("Object2", ""));
    info->AddInPort(new CPortFloat("X", "", 0, 1, -100, 100));
    info->AddOutPort(new CPortObject("Object", ""));
    return info;
  }
  void Update(float time, FrameInfo *) override {
    if (m_Updated) return;
    UpdateInPorts(time);
    static_cast<CPortObject *>(m_OutPorts[0])->m_Value = this;
  }
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override {
    for (CDrawItem *p = parents.first; p; p = p->next) {
      CDrawItem *item = list.NewItem();
      item->matrix = TranslationMatrix(static_cast<CPortFloat *>(m_InPorts[2])->m_Value, 0, 0) * p->matrix;
      CDrawItemList temp;
      temp.Append(item);
      for (int i = 0; i < 2; ++i) WalkSource(m_InPorts[i], list, temp, camera);
      p->children.TakeAll(temp);
    }
  }
};

// The root: pulls and collects up to two objects; counts its steps.
class CTestRootNode : public CNode {
 public:
  static CNodeInfo *CreateInfo(const char *type = "Screen") {
    auto *info = new CNodeInfo(1, type, [] { return static_cast<CNode *>(new CTestRootNode); }, "");
    info->AddInPort(new CPortObject("Object1", ""));
    info->AddInPort(new CPortObject("Object2", ""));
    return info;
  }
  void Update(float time, FrameInfo *frame) override {
    UpdateInPorts(time);
    if (!record) return;
    times.push_back(frame->Time);
    warmups.push_back(frame->Warmup);
  }
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override {
    ++drawListBuilds;
    for (int i = 0; i < 2; ++i) WalkSource(m_InPorts[i], list, parents, camera);
  }
  std::vector<float> times;
  std::vector<bool> warmups;
  int drawListBuilds = 0;
  bool record = true;  // off where a benchmark counts allocations
};

// A mesh generator that counts generations and device updates.
class CTestMeshNode : public CNode, public CPDMesh {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(3, "TestMesh", [] { return static_cast<CNode *>(new CTestMeshNode); }, "");
    info->AddInPort(new CPortFloat("Size", "", 1, 0.1f, 0, 10));
    info->AddOutPort(new CPortMesh("Mesh", ""));
    return info;
  }
  void Update(float time, FrameInfo *) override {
    if (m_Updated) return;
    if (UpdateInPorts(time)) m_Dirty = true;
    static_cast<CPortMesh *>(m_OutPorts[0])->m_Value = this;
  }
  bool CreateMesh(CPDMesh &) override {
    ++generated;
    return true;
  }
  bool MeshUpdateDevice(CRender *) override {
    ++deviceUpdates;
    return true;
  }
  bool RestoreDevice(CRender *) override {
    ++restores;
    return !failRestore;
  }
  void StartHostWork() override { ++hostWorkStarts; }
  bool HostWorkDone() const override { return hostWorkDone; }
  int generated = 0, deviceUpdates = 0, restores = 0, hostWorkStarts = 0;
  bool failRestore = false, hostWorkDone = true;
};

// A node that uses a mesh, so the graph pulls the generator.
class CTestMeshUserNode : public CNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(2, "TestMeshUser", [] { return static_cast<CNode *>(new CTestMeshUserNode); }, "");
    info->AddInPort(new CPortMesh("Mesh", ""));
    info->AddOutPort(new CPortObject("Object", ""));
    return info;
  }
  void Update(float time, FrameInfo *) override {
    if (m_Updated) return;
    UpdateInPorts(time);
  }
};
