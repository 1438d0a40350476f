#pragma once
// Device resources as the renderer hands them out. Each backend derives its
// own; code above the renderer sees only these.

#include <cstdint>

class CRenderTarget;

class CTexture {
 public:
  virtual ~CTexture() = default;

  // The host pixel array: TexelCount() packed texels (see Color.h).
  virtual uint32_t *Lock() = 0;
  // Uploads the whole host array to the device.
  virtual void Unlock() = 0;
  // Frees the host array and the device object; the owner still deletes
  // the object itself.
  virtual void Release() = 0;
  // Copies width * height texels through Lock and Unlock.
  virtual void Fill(const uint32_t *pixels);
  virtual void Reserved1() {}
  virtual void Reserved2() {}
  // Builds the mipmap chain on the device and sets TEXF_HasMipmaps.
  virtual void GenerateMipmaps() = 0;

  // 1, 2 or 3, from the sizes: height below 2 is 1D, depth above 1 is 3D.
  int Dimension() const;
  // Texels of the host array, height and depth counted as 1 when 0.
  int TexelCount() const;

  int m_DeviceSlot = 0;  // device slot current when the renderer made it
  int m_Width = 0;
  int m_Height = 0;
  int m_Depth = 0;
  int m_Format = 0;
  int m_Flags = 0;                          // TextureFlag bits
  CRenderTarget *m_RenderTarget = nullptr;  // set while attached to one, not owned
};

class CVertexBuffer {
 public:
  virtual ~CVertexBuffer() = default;
  // Write-only pointer to the whole buffer; earlier contents are gone, so
  // the device never waits for draws that still read them.
  virtual void *Lock() = 0;
  virtual void Unlock() = 0;
  // Frees the device object and deletes this object.
  virtual void Release() = 0;

  int m_Size = 0;  // vertices
  int m_Flags = 0;
  int m_Format = 0;
  int m_Stride = 0;  // bytes, from the format
};

class CIndexBuffer {
 public:
  virtual ~CIndexBuffer() = default;
  // Write-only pointer to the whole buffer; earlier contents are gone.
  virtual uint16_t *Lock() = 0;
  virtual void Unlock() = 0;
  // Frees the device object and deletes this object.
  virtual void Release() = 0;

  int m_Size = 0;  // indices
  int m_Flags = 0;
};

// Releases a vertex or index buffer that can't hold `size` entries (and
// nulls the pointer), so that the caller makes one that can; a large enough
// buffer is kept for reuse.
template <typename Buffer>
void ReleaseIfSmaller(Buffer *&buffer, int size) {
  if (buffer && buffer->m_Size < size) {
    buffer->Release();
    buffer = nullptr;
  }
}
