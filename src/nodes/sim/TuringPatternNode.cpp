#include "nodes/sim/TuringPatternNode.h"

#include "nodes/object/SimRandom.h"
#include "render/DeviceCheck.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CTuringPatternNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "TuringPattern", [] { return static_cast<CNode *>(new CTuringPatternNode); },
                             "Turing pattern generator. Think petri dish simulator");
  info->AddInPort(TextureSizePort("Width", "Width of texture", 256));
  info->AddInPort(TextureSizePort("Height", "Height of texture", 256));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

bool CTuringPatternNode::Init() {
  m_Width = InPort<CPortInt>("Width");
  m_Height = InPort<CPortInt>("Height");
  return CGeneratedTextureNode::Init();
}

void CTuringPatternNode::Update(float, FrameInfo *frame) {
  Offer();
  if (m_Updated || !frame) return;
  // The ports are read as they stand: the image doesn't follow a connection.
  if (!m_Stepper.Due(frame->DeltaTime, m_Pattern.Empty())) return;
  m_Pattern.Step(m_Width->m_Value, m_Height->m_Value);
  m_Flags = 0;
  m_Mode = 2;
  if (m_Pattern.Width() != m_TextureWidth || m_Pattern.Height() != m_TextureHeight) m_DirtyUnits = ALL_UNITS;
}

bool CTuringPatternNode::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  int width = 0, height = 0;
  CTuringPattern::FitSize(m_Width->m_Value, m_Height->m_Value, width, height);
  // Named as the failure report names them.
  struct {
    CTexture *&m_Texture;
  } slot{Slot(render)}, *dObjs = &slot;
  if (DEVICE_FAILED(!(dObjs->m_Texture = render->CreateTexture(width, height, 0, TF_A8R8G8B8, TT_Dynamic))))
    return false;
  m_TextureWidth = width;
  m_TextureHeight = height;
  return true;
}

CTexture *CTuringPatternNode::GetTexture(CRender *render) {
  CTexture *texture = CGeneratedTextureNode::GetTexture(render);
  // Until the texture follows a change of size, it keeps its last picture.
  if (!texture || m_Pattern.Width() != m_TextureWidth || m_Pattern.Height() != m_TextureHeight) return texture;
  uint32_t *texels = texture->Lock();
  if (!texels) return texture;
  const std::vector<float> &grid = m_Pattern.Grid();
  for (size_t c = 0; c < grid.size() && c < static_cast<size_t>(m_TextureWidth) * m_TextureHeight; ++c)
    texels[c] = PackColorRounded(grid[c], grid[c], grid[c], 1.0f);
  texture->Unlock();
  return texture;
}
