#include "nodes/render/RenderToTextureNode.h"

#include <algorithm>

#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/RenderTarget.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// Fractions of the render unit by the Width and Height values 0 to 5. The
// 4th is not a power of two: scenes are tuned to the sizes it gives.
const float kSizeFactors[] = {1.0f, 0.5f, 0.25f, 0.125f, 0.06225f, 0.03125f};

CPortInt *SizePort(const char *name, const char *desc) {
  auto *port = new CPortInt(name, desc, 0, -1, 5);
  port->AddValue(-1, "Custom size in pixels")
      ->AddValue(0, "100% of render size")
      ->AddValue(1, "50% of render size")
      ->AddValue(2, "25% of render size")
      ->AddValue(3, "12.5% of render size")
      ->AddValue(4, "6.25% of render size")
      ->AddValue(5, "3.125% of render size");
  return port;
}

constexpr int kTextureFlags = 0x20;
}  // namespace

CNodeInfo *CRenderToTextureNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "RenderToTexture", [] { return static_cast<CNode *>(new CRenderToTextureNode); },
                             "Converts a render port to a texture port.\nNote that the buffer isn't permanent so there "
                             "is no garantee that the content will be keep between frames");
  info->AddInPort(SizePort("Width", "Width of texture"));
  info->AddInPort(SizePort("Height", "Height of texture"));
  info->AddInPort(new CPortInt("WidthCustom", "Width of texture in pixels. Width must be set to 'Custom'", 256, 1, 4096));
  info->AddInPort(
      new CPortInt("HeightCustom", "Height of texture in pixels. Height must be set to 'Custom'", 256, 2, 4096));
  info->AddInPort(new CPortBool("CreateMipMaps",
                                "Create mip maps for the new texture. If you only use the full size of the texture "
                                "then turn this off for a performance boost",
                                true));
  info->AddInPort(new CPortRender("Render", "Render"));
  info->AddOutPort(new CPortTexture("Color", "Color texture"));
  info->AddOutPort(new CPortTexture("ColorNext",
                                    "The next color texture we are going to render to. Use this texture before its "
                                    "overwritten/reused in the next frame"));
  return info;
}

bool CRenderToTextureNode::Init() {
  m_Width = InPort<CPortInt>("Width");
  m_Height = InPort<CPortInt>("Height");
  m_WidthCustom = InPort<CPortInt>("WidthCustom");
  m_HeightCustom = InPort<CPortInt>("HeightCustom");
  m_CreateMipMaps = InPort<CPortBool>("CreateMipMaps");
  m_RenderIn = InPort<CPortRender>("Render");
  m_ColorOut = OutPort<CPortTexture>("Color");
  m_ColorNextOut = OutPort<CPortTexture>("ColorNext");
  for (Buffer &b : m_Buffers) {
    b.color.node = b.depth.node = this;
    b.color.buffer = b.depth.buffer = &b;
  }
  return true;
}

void CRenderToTextureNode::Offer(Buffer &buffer, CPortTexture *port, int flags) {
  buffer.color.m_Flags = flags;
  buffer.color.m_Mode = 2;
  if (port) port->SetTexture(&buffer.color);
}

void CRenderToTextureNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  Buffer &current = m_Buffers[m_Index];
  Buffer &next = m_Buffers[1 - m_Index];
  current.rendered = false;
  // Last frame's value: the in-ports are pulled below.
  int flags = kTextureFlags | (m_CreateMipMaps && m_CreateMipMaps->m_Value ? TEXF_HasMipmaps : 0);
  Offer(current, m_ColorOut, flags);
  if (m_ColorNextOut && m_ColorNextOut->IsConnected()) {
    // Holds last frame's picture: never drawn into before it is swapped in.
    next.rendered = true;
    Offer(next, m_ColorNextOut, flags);
  } else if (m_ColorNextOut) {
    m_ColorNextOut->SetTexture(nullptr);
  }
  // Marked before the pull, so that the chain upstream may read this node's
  // own textures: that is how feedback works.
  m_Updated = true;
  UpdateInPorts(frame->Time);
  for (CPortInt *size : {m_Width, m_Height, m_WidthCustom, m_HeightCustom})
    if (size && size->m_Changed) m_DirtyUnits = ALL_UNITS;
  m_List.Reset();
  if (m_RenderIn && m_RenderIn->IsConnected()) {
    WalkSource(m_RenderIn, m_List, m_List.Head(), nullptr);
    m_ListFilled = true;
  }
}

void CRenderToTextureNode::FrameFinished() { m_Index = 1 - m_Index; }

void CRenderToTextureNode::TextureSize(const CRender &render, int &width, int &height) const {
  auto size = [](const CPortInt *mode, const CPortInt *custom, int unit) {
    int m = mode ? mode->m_Value : 0;
    if (m == -1) return custom ? custom->m_Value : unit;
    if (m < 0 || m > 5) return unit;
    return static_cast<int>(static_cast<float>(unit) * kSizeFactors[m]);
  };
  width = std::max(1, size(m_Width, m_WidthCustom, render.m_UnitRect.Width()));
  height = std::max(2, size(m_Height, m_HeightCustom, render.m_UnitRect.Height()));
}

void CRenderToTextureNode::Draw(CRender &render, Buffer &buffer, bool clearOnly) {
  if (!m_ListFilled) return;
  if (!buffer.target) {
    int width, height;
    TextureSize(render, width, height);
    buffer.target = render.CreateRenderTarget(width, height, DEPTH_Stencil);
    if (!buffer.target || !buffer.target->m_Color) {
      buffer.target = nullptr;
      return;
    }
    // Kept until the device objects go, not given back each frame.
    buffer.target->m_Color->m_Flags &= ~TEXF_Pooled;
  }
  CCamera camera = *render.GetCamera();
  buffer.target->Begin(render);
  if (clearOnly) {
    const float transparent[4] = {0, 0, 0, 0};
    render.Clear(transparent, 1.0f, CLEAR_Color | CLEAR_Depth);
  } else {
    m_List.Draw(&render);
  }
  buffer.target->End(render);
  render.SetCamera(camera);
  if (m_CreateMipMaps && m_CreateMipMaps->m_Value) buffer.target->m_Color->GenerateMipmaps();
}

CTexture *CRenderToTextureNode::CRTTColor::GetTexture(CRender *render) {
  if (!buffer->rendered) {
    buffer->rendered = true;
    node->Draw(*render, *buffer, false);
  }
  if (!buffer->target) node->Draw(*render, *buffer, true);
  return buffer->target ? buffer->target->m_Color : nullptr;
}

void CRenderToTextureNode::InvalidateDevice(CRender *render) {
  for (Buffer &b : m_Buffers) {
    if (!b.target) continue;
    if (b.target->m_Color) {
      b.target->m_Color->m_Flags |= TEXF_Pooled;
      render->ReleaseTexture(b.target->m_Color);
    }
    b.rendered = false;
    b.target = nullptr;
  }
}
