#pragma once
// RenderToTexture: draws a render chain into a texture that other nodes
// sample. Drawing is lazy (only when someone reads the texture, at most once
// per frame) and double buffered: ColorNext hands out the buffer that Color
// will draw into next frame, which still holds the picture of the frame
// before, so a chain can read its own previous frame.

#include "portdata/PDTexture.h"
#include "scene/DrawList.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortBool;
class CPortInt;
class CPortRender;
class CPortTexture;
class CRenderTarget;

class CRenderToTextureNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  void FrameFinished() override;
  bool RestoreDevice(CRender *) override { return true; }
  void InvalidateDevice(CRender *render) override;
  // Not a stage: drawn when its texture is read.
  void AddToDrawList(CDrawList &, CDrawItemList &, const CCamera *) override {}

  // The size a buffer gets on this render unit.
  void TextureSize(const CRender &render, int &width, int &height) const;
  const CRenderTarget *Target(int buffer) const { return m_Buffers[buffer].target; }
  int BufferIndex() const { return m_Index; }

 private:
  struct Buffer;
  class CRTTColor : public CPDTexture {
   public:
    CTexture *GetTexture(CRender *render) override;
    CRenderToTextureNode *node = nullptr;
    Buffer *buffer = nullptr;
  };
  // The depth half of a buffer; it is never handed out.
  class CRTTDepth : public CPDTexture {
   public:
    CTexture *GetTexture(CRender *) override { return nullptr; }
    CRenderToTextureNode *node = nullptr;
    Buffer *buffer = nullptr;
  };
  struct Buffer {
    CRTTColor color;
    CRTTDepth depth;
    CRenderTarget *target = nullptr;
    bool rendered = false;
  };
  void Draw(CRender &render, Buffer &buffer, bool clearOnly);
  void Offer(Buffer &buffer, CPortTexture *port, int flags);

  CPortInt *m_Width = nullptr;
  CPortInt *m_Height = nullptr;
  CPortInt *m_WidthCustom = nullptr;
  CPortInt *m_HeightCustom = nullptr;
  CPortBool *m_CreateMipMaps = nullptr;
  CPortRender *m_RenderIn = nullptr;
  CPortTexture *m_ColorOut = nullptr;
  CPortTexture *m_ColorNextOut = nullptr;

  CDrawList m_List;
  bool m_ListFilled = false;
  int m_Index = 0;
  Buffer m_Buffers[2];
};
