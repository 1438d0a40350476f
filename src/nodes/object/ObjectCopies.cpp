#include "nodes/object/ObjectCopies.h"

#include "nodes/CloneGrid.h"
#include "scene/DrawList.h"
#include "scene/Node.h"

void AddCopiesToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera, const CPort *objectIn,
                         const CObjectCopy *copies, int count) {
  if (!objectIn || !objectIn->IsConnected() || count < 1) return;
  for (CDrawItem *parent = parents.first; parent; parent = parent->next) {
    CDrawItemList copiesOfParent;
    for (int i = 0; i < count; ++i) {
      CDrawItem *item = list.NewItem();
      item->matrix = copies[i].matrix * parent->matrix;
      for (int k = 0; k < 4; ++k) item->color[k] = copies[i].color[k] * parent->color[k];
      copiesOfParent.Append(item);
    }
    CNode::WalkSource(objectIn, list, copiesOfParent, camera);
    parent->children.TakeAll(copiesOfParent);
  }
}

CPortVector *ObjectVectorPort(const char *name, const char *desc, Vec3f def) {
  return new CPortVector(name, desc, def, {0.1f, 0.1f, 0.1f}, {-10000, -10000, -10000}, {10000, 10000, 10000});
}

CPortColor *ObjectColorPort(const char *name, const char *desc, Color4f def) {
  return new CPortColor(name, desc, def, {0, 0, 0, 0}, {1, 1, 1, 1});
}

CMatrix ObjectMatrix(const Vec3f &pos, const Vec3f &rotDegrees, const Vec3f &scale) {
  constexpr float kDegToRad = 0.01745329238474369f;
  return PlacementMatrix(ToVector(pos), ToVector(rotDegrees) * kDegToRad, ToVector(scale));
}
