#pragma once
// The frame's tree of things to draw. Items come from a pool that keeps its
// blocks between frames, so a running scene allocates nothing here.

#include <memory>
#include <vector>

#include "render/Matrix.h"

class CPDRender;
class CPDObject;
class CPDEffect;
class CPDMesh;
class CRender;
struct CCamera;
struct CDrawItem;

// An intrusive list of items: a parent's children, or the parents a node
// appends under (a node that clones does so once per parent).
struct CDrawItemList {
  CDrawItem *first = nullptr;
  CDrawItem *last = nullptr;
  void Append(CDrawItem *item);
  // Moves every item of `other` to the end of this list.
  void TakeAll(CDrawItemList &other);
  bool Empty() const { return first == nullptr; }
};

struct CDrawItem {
  CDrawItem *next = nullptr;
  CDrawItem *prev = nullptr;
  CMatrix matrix;
  CDrawItemList children;
  CPDRender *m_Stage = nullptr;
  CPDObject *m_Object = nullptr;
  CPDEffect *m_Effect = nullptr;
  CPDMesh *m_Mesh = nullptr;
  float color[4] = {1, 1, 1, 1};
  const CCamera *m_Camera = nullptr;
};

class CDrawList {
 public:
  CDrawList();
  ~CDrawList();
  CDrawList(const CDrawList &) = delete;
  CDrawList &operator=(const CDrawList &) = delete;

  // Empties the list; the pool keeps its blocks.
  void Reset();
  // A fresh item: identity matrix, no links or pointers. Its color is
  // whatever the slot held last: a node that cares sets it.
  CDrawItem *NewItem();
  // The list holding the root item, which is where a graph's root appends.
  CDrawItemList &Head() { return m_Head; }
  CDrawItem &Root() { return m_Root; }
  // Runs the top stage if the root's first child is one; otherwise draws
  // every item with an effect, grouped by effect in order of first use.
  void Draw(CRender *render);

  size_t PoolCapacity() const;

 private:
  struct Group {
    CPDEffect *effect;
    std::vector<CDrawItem *> items;
  };
  void Collect(CDrawItem *item);

  std::vector<std::unique_ptr<CDrawItem[]>> m_Blocks;
  std::vector<size_t> m_BlockSizes;
  size_t m_Block = 0, m_Used = 0;
  CDrawItem m_Root;
  CDrawItemList m_Head;
  std::vector<Group> m_Groups;  // reused between frames
  size_t m_GroupCount = 0;
};

// Gives each parent a child that draws `object` with `effect`, with the
// parent's matrix and color: how a node that draws a batch of its own joins
// the frame. A null effect adds nothing.
void AppendObjectItems(CDrawList &list, CDrawItemList &parents, const CCamera *camera, CPDObject *object,
                       CPDEffect *effect);
