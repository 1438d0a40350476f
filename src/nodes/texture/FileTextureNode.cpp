#include "nodes/texture/FileTextureNode.h"

#include <FreeImage.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "core/Log.h"
#include "core/Paths.h"
#include "render/DeviceCheck.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
void ImageMessage(FREE_IMAGE_FORMAT format, const char *message) {
  const char *name = FreeImage_GetFormatFromFIF(format);
  Log("Error loading image: %s (%s)", name ? name : "", message ? message : "");
}

bool CanOpen(const std::string &path) {
  FILE *f = fopen(path.c_str(), "rb");
  if (f) fclose(f);
  return f != nullptr;
}

// The file as found on disk, or its ".dds" twin when it can't be opened.
std::string Locate(const std::string &name) {
  const std::string path = ResolvePath(PathValue(Expand(name)));
  if (CanOpen(path)) return path;
  std::string twin = path;
  const size_t dot = twin.rfind('.'), slash = twin.rfind('/');
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) twin.erase(dot);
  return ResolvePath(twin + ".dds");
}

FIBITMAP *Open(const std::string &path) {
  if (!CanOpen(path)) return nullptr;  // a twin that isn't there either
  FREE_IMAGE_FORMAT format = FreeImage_GetFileType(path.c_str(), 0);
  if (format == FIF_UNKNOWN) format = FreeImage_GetFIFFromFilename(path.c_str());
  if (format == FIF_UNKNOWN || !FreeImage_FIFSupportsReading(format)) return nullptr;
  return FreeImage_Load(format, path.c_str(), 0);
}
}  // namespace

CNodeInfo *CNTFile::CreateInfo() {
  auto *info = new CNodeInfo(4, "FileTexture", [] { return static_cast<CNode *>(new CNTFile); },
                             "Loads in a texture from disk. Handles various formats including but not limited to "
                             "jpeg, png, bmp, gif, tga.");
  info->AddInPort(new CPortString("Filename", "Filename of the texture we should use", "data/marbletiled.dds"));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

CNTFile::CNTFile() { m_Flags = 0; }

bool CNTFile::Init() {
  m_Filename = InPort<CPortString>("Filename");
  return CGeneratedTextureNode::Init();
}

bool CNTFile::LoadImage(const std::string &name, std::vector<uint32_t> &texels, int &width, int &height) {
  if (name.empty()) return false;
  FreeImage_SetOutputMessage(&ImageMessage);
  FIBITMAP *image = Open(Locate(name));
  if (!image) return LogError("Unable to load image \"%s\"", name.c_str());
  // Larger pictures than a texture may be are scaled down to fit.
  const int w = static_cast<int>(FreeImage_GetWidth(image)), h = static_cast<int>(FreeImage_GetHeight(image));
  const double fit = std::min(1.0, static_cast<double>(MAX_TEXTURE_SIDE) / std::max({w, h, 1}));
  if (fit < 1.0) {
    FIBITMAP *smaller = FreeImage_Rescale(image, std::max(1, static_cast<int>(w * fit)),
                                          std::max(1, static_cast<int>(h * fit)), FILTER_BILINEAR);
    FreeImage_Unload(image);
    image = smaller;
    if (!image) return LogError("Unable to load image \"%s\"", name.c_str());
  }
  FIBITMAP *rgba = FreeImage_ConvertTo32Bits(image);
  FreeImage_Unload(image);
  if (!rgba) return LogError("Unable to load image \"%s\"", name.c_str());
  width = static_cast<int>(FreeImage_GetWidth(rgba));
  height = static_cast<int>(FreeImage_GetHeight(rgba));
  texels.resize(static_cast<size_t>(width) * height);
  FreeImage_ConvertToRawBits(reinterpret_cast<BYTE *>(texels.data()), rgba, width * 4, 32, FI_RGBA_RED_MASK,
                             FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK, TRUE);  // top row first
  FreeImage_Unload(rgba);
  // FreeImage keeps B, G, R, A in memory; textures take R, G, B, A.
  for (uint32_t &t : texels) t = (t & 0xFF00FF00u) | ((t >> 16) & 0xFFu) | ((t & 0xFFu) << 16);
  return true;
}

void CNTFile::Load() {
  if (m_Filename->m_Value == m_Tried) return;
  m_Tried = m_Filename->m_Value;
  std::vector<uint32_t> texels;
  int width = 0, height = 0;
  // A file that doesn't load leaves texture, flags and mode as they are.
  if (!LoadImage(m_Tried, texels, width, height)) return;
  m_Texels = std::move(texels);
  m_ImageWidth = width;
  m_ImageHeight = height;
  m_Loaded = true;
  m_Flags = TEXF_HasMipmaps;
  m_Mode = height > 1 ? 2 : 1;
  m_DirtyUnits = ALL_UNITS;
}

void CNTFile::Update(float, FrameInfo *frame) {
  Offer();
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  if (m_Filename->m_Changed) Load();
}

bool CNTFile::RestoreDevice(CRender *render) {
  Load();
  CTexture *&texture = Slot(render);
  struct {
    CTexture *&m_Texture;
  } slot{texture}, *dObjs = &slot;
  if (!m_Loaded) {
    if (DEVICE_FAILED(!(dObjs->m_Texture = render->CreateTexture(32, 32, 0, TF_A8R8G8B8, TT_Normal)))) return false;
    std::memset(texture->Lock(), 0, 4096);
    texture->Unlock();
    return true;
  }
  // Named as the failure report names the picture.
  struct {
    int GetWidth() const { return w; }
    int GetHeight() const { return h; }
    int w, h;
  } fiBm{m_ImageWidth, m_ImageHeight};
  if (DEVICE_FAILED(!(dObjs->m_Texture = render->CreateTexture(fiBm.GetWidth(), fiBm.GetHeight(), 0, TF_A8R8G8B8, TT_Normal))))
    return false;
  texture->Fill(m_Texels.data());
  return true;
}
