#pragma once
// How nodes that own a batch renderer take part in the draw list.

class CDrawList;
struct CDrawItemList;
struct CCamera;
class CPDEffect;
class CPort;
class CBatchRender;
class CRenderPoints;
struct CMatrix;

// Under each parent, one item that draws `batch` with `effect`, with the
// parent's matrix and color. A null effect adds nothing. `count` sets how
// many items the next Draw shows; below 1 shows all. `local`, when given,
// places the batch within the parent: local first, then the parent's matrix.
void AddBatchToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera, CPDEffect *effect,
                        CBatchRender &batch, int count = 0, const CMatrix *local = nullptr);

// Points with the object behind `objectPort`, when the port holds one: the
// object is drawn once per shown point of a sprite type, scaled by the
// point's size, moved to its position, in the parent's color times the
// point's; point and line types then add nothing. Without an object this is
// AddBatchToDrawList.
void AddPointsToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera, CPDEffect *effect,
                         CRenderPoints &points, int count, const CPort *objectPort);
