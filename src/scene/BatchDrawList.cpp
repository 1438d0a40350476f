#include "scene/BatchDrawList.h"

#include "portdata/RenderPoints.h"
#include "scene/DrawList.h"
#include "scene/Node.h"
#include "scene/PortPointers.h"

void AddBatchToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera, CPDEffect *effect,
                        CBatchRender &batch, int count, const CMatrix *local) {
  if (!effect) return;
  batch.SetDrawCount(count);
  for (CDrawItem *p = parents.first; p; p = p->next) {
    CDrawItem *item = list.NewItem();
    item->matrix = local ? *local * p->matrix : p->matrix;
    for (int c = 0; c < 4; ++c) item->color[c] = p->color[c];
    item->m_Object = &batch;
    item->m_Effect = effect;
    item->m_Camera = camera;
    p->children.Append(item);
  }
}

void AddPointsToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera, CPDEffect *effect,
                         CRenderPoints &points, int count, const CPort *objectPort) {
  const auto *port = static_cast<const CPortObject *>(objectPort);
  if (!port || !port->m_Value || !port->m_Source) {
    AddBatchToDrawList(list, parents, camera, effect, points, count);
    return;
  }
  if (points.PrimitiveType() == PRIM_Point || points.PrimitiveType() == PRIM_Line) return;
  const int shown = count < 1 ? points.Count() : (count < points.Count() ? count : points.Count());
  const CRenderPoints::Sprite *sprites = points.Sprites();
  for (CDrawItem *p = parents.first; p; p = p->next) {
    CDrawItemList clones;
    for (int i = 0; i < shown; ++i) {
      const CRenderPoints::Sprite &s = sprites[i];
      CDrawItem *item = list.NewItem();
      item->matrix = ScalingMatrix(s.sx, s.sy, s.sz) * TranslationMatrix(s.x, s.y, s.z) * p->matrix;
      for (int c = 0; c < 4; ++c) item->color[c] = p->color[c] * static_cast<float>((s.color >> (8 * c)) & 0xFF) / 255.0f;
      clones.Append(item);
    }
    CNode::WalkSource(objectPort, list, clones, camera);
    p->children.TakeAll(clones);
  }
}
