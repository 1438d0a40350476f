#include "scene/DrawList.h"

#include <algorithm>

#include "portdata/PDEffect.h"
#include "portdata/PDMesh.h"
#include "portdata/PDObject.h"
#include "portdata/PDRender.h"
#include "render/Render.h"

void CDrawItemList::Append(CDrawItem *item) {
  item->next = nullptr;
  item->prev = last;
  if (last)
    last->next = item;
  else
    first = item;
  last = item;
}

void CDrawItemList::TakeAll(CDrawItemList &other) {
  if (!other.first) return;
  if (last) {
    last->next = other.first;
    other.first->prev = last;
  } else {
    first = other.first;
  }
  last = other.last;
  other.first = other.last = nullptr;
}

CDrawList::CDrawList() { Reset(); }
CDrawList::~CDrawList() = default;

void CDrawList::Reset() {
  m_Block = 0;
  m_Used = 0;
  m_Root = CDrawItem();
  m_Head = CDrawItemList();
  m_Head.Append(&m_Root);
}

CDrawItem *CDrawList::NewItem() {
  while (m_Block < m_Blocks.size() && m_Used >= m_BlockSizes[m_Block]) {
    ++m_Block;
    m_Used = 0;
  }
  if (m_Block == m_Blocks.size()) {
    size_t size = m_BlockSizes.empty() ? 100 : m_BlockSizes.back() * 2;
    m_Blocks.emplace_back(new CDrawItem[size]);
    m_BlockSizes.push_back(size);
    m_Used = 0;
  }
  CDrawItem *item = &m_Blocks[m_Block][m_Used++];
  item->next = item->prev = nullptr;
  item->matrix = CMatrix::Identity();
  item->children = CDrawItemList();
  item->m_Stage = nullptr;
  item->m_Object = nullptr;
  item->m_Effect = nullptr;
  item->m_Mesh = nullptr;
  item->m_Camera = nullptr;
  return item;
}

size_t CDrawList::PoolCapacity() const {
  size_t n = 0;
  for (size_t s : m_BlockSizes) n += s;
  return n;
}

void CDrawList::Collect(CDrawItem *item) {
  for (CDrawItem *c = item->children.first; c; c = c->next) Collect(c);
  if (!item->m_Effect) return;
  for (size_t g = 0; g < m_GroupCount; ++g)
    if (m_Groups[g].effect == item->m_Effect) {
      m_Groups[g].items.push_back(item);
      return;
    }
  if (m_GroupCount == m_Groups.size()) m_Groups.push_back(Group{nullptr, {}});
  Group &g = m_Groups[m_GroupCount++];
  g.effect = item->m_Effect;
  g.items.clear();
  g.items.push_back(item);
}

void CDrawList::Draw(CRender *render) {
  CDrawItem *top = m_Root.children.first;
  if (top && top->m_Stage) {
    top->m_Stage->Render(render);
    return;
  }
  m_GroupCount = 0;
  Collect(&m_Root);
  const CCamera *lastCamera = nullptr;
  for (size_t gi = 0; gi < m_GroupCount; ++gi) {
    Group &g = m_Groups[gi];
    CPDEffect *effect = g.effect;
    effect->m_Render = render;
    for (PassHandle pass = effect->Begin(); pass; pass = effect->NextPass(pass)) {
      effect->BeginPass(pass);
      for (CDrawItem *item : g.items) {
        if (item->m_Camera && item->m_Camera != lastCamera) {
          render->SetCamera(*item->m_Camera);
          lastCamera = item->m_Camera;
        }
        effect->SetColor(item->color);
        effect->SetMatrix(0, item->matrix);
        render->SetTransform(TS_World, item->matrix);
        effect->Commit();
        if (item->m_Mesh) item->m_Mesh->Draw(render);
        if (item->m_Object) item->m_Object->Draw(render);
      }
      effect->EndPass(pass);
    }
    effect->End();
  }
}

void AppendObjectItems(CDrawList &list, CDrawItemList &parents, const CCamera *camera, CPDObject *object,
                       CPDEffect *effect) {
  if (!effect) return;
  for (CDrawItem *parent = parents.first; parent; parent = parent->next) {
    CDrawItem *item = list.NewItem();
    item->matrix = parent->matrix;
    std::copy_n(parent->color, 4, item->color);
    item->m_Object = object;
    item->m_Effect = effect;
    item->m_Camera = camera;
    parent->children.Append(item);
  }
}
