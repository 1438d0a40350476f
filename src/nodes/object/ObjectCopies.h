#pragma once
// What the node types that copy or move objects share: the copy record, the
// way copies go under every parent of the draw list, and their port rows.

#include "render/Matrix.h"
#include "scene/PortValues.h"

class CDrawList;
class CPort;
struct CDrawItemList;
struct CCamera;

struct CObjectCopy {
  CMatrix matrix;
  float color[4] = {1, 1, 1, 1};

  static CObjectCopy Of(const CMatrix &matrix, const Color4f &c) { return {matrix, {c.r, c.g, c.b, c.a}}; }
};

// Under each parent, one item per copy (copy's matrix times the parent's,
// colors multiplied), all handed at once as parents to the node behind
// `objectIn`, then moved behind the parent's children. Nothing when nothing
// is connected there.
void AddCopiesToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera, const CPort *objectIn,
                         const CObjectCopy *copies, int count);

// Port rows: vectors step 0.1 within +-10000, colors within 0..1.
CPortVector *ObjectVectorPort(const char *name, const char *desc, Vec3f def);
CPortColor *ObjectColorPort(const char *name, const char *desc, Color4f def = {1, 1, 1, 1});

inline CVector3 ToVector(const Vec3f &v) { return {v.x, v.y, v.z}; }
// The placement of a Pos, Rot (degrees) and Scale triple.
CMatrix ObjectMatrix(const Vec3f &pos, const Vec3f &rotDegrees, const Vec3f &scale);
