#include "nodes/texture/CopyTextureNode.h"

#include <algorithm>
#include <string>

#include "core/Numeric.h"
#include "fx/FxManager.h"
#include "fx/FxText.h"
#include "nodes/effect/FxRuntime.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char kShaderDesc[] =
    "Cgfx shader to be used.\nThere is also "
    "time,in1.x/y/z,in2.x/y/z,in3.x/y/z,color1,color2,tex1,tex2,tex3,tex1size,tex2size,tex3size.\nVSInput contains "
    "pos,col,tex,normal,tangent,binormal";
const char kShaderDefault[] =
    "struct PSInput\r\n{\r\n\tfloat4 hpos : POSITION;\r\n\tfloat4 diffuse : COLOR0;\r\n\tfloat2 tex : "
    "TEXCOORD0;\r\n};\r\n\r\nPSInput VS_Program(VSInput vi) \r\n{\r\n\tPSInput pi;\r\n\tpi.hpos\t\t= mul( gWVP, "
    "float4(vi.pos.xyz, 1.0));\r\n\tpi.tex\t\t= vi.tex;\r\n\tpi.diffuse\t= vi.col*color1;\r\n\treturn "
    "pi;\r\n}\r\n\r\nfloat4 PS_Program(PSInput pi) : COLOR\r\n{\r\n\t//float2 p = -1.0 + 2.0 * pi.tex;\r\n\treturn "
    "tex2D(tex1, pi.tex);\r\n}";
const char *const kHandleNames[CCopyTextureNode::H_Count] = {
    "in1",  "in2",  "in3",      "color1",   "color2",   "time",  "tex1", "tex2", "tex3", "tex1size", "tex2size",
    "tex3size", "gFastPerlinNoiseSampler", "gPermutation1dSampler", "gPermutation2dSampler"};
const float kFractions[] = {0.5f, 0.25f, 0.125f, 0.0625f, 0.03125f};
}  // namespace

CNodeInfo *CCopyTextureNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "CopyTexture", [] { return static_cast<CNode *>(new CCopyTextureNode); },
                             "Copies one texture to another");
  info->AddInPort(new CPortInt("TextureSize", "Size of the texture to copy to", 2, 1, 6))
      ->AddValue(1, "50% of source size")
      ->AddValue(2, "25% of source size")
      ->AddValue(3, "12.5% of source size")
      ->AddValue(4, "6.25% of source size")
      ->AddValue(5, "3.125% of source size");
  info->AddInPort(new CPortBool("CreateMipMaps", "Create mip maps for the new texture", false));
  const Vec3f step{0.001f, 0.001f, 0.001f}, lo{-10000, -10000, -10000}, hi{10000, 10000, 10000};
  for (int i = 1; i <= 3; ++i) {
    const std::string n = std::to_string(i);
    info->AddInPort(new CPortVector(("In" + n).c_str(), ("Input vector " + n).c_str(), {}, step, lo, hi));
  }
  for (int i = 1; i <= 2; ++i) {
    const std::string n = std::to_string(i);
    info->AddInPort(new CPortColor(("Color" + n).c_str(), ("Input color " + n).c_str(), {1, 1, 1, 1}, {0, 0, 0, 0},
                                   {1, 1, 1, 1}));
  }
  info->AddInPort(new CPortString("Shader", kShaderDesc, kShaderDefault));
  info->AddInPort(new CPortTexture("Texture", "Texture"));
  info->AddInPort(new CPortTexture("Texture2", "Texture 2"));
  info->AddInPort(new CPortTexture("Texture3", "Texture 3"));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

bool CCopyTextureNode::Init() {
  m_TextureSize = InPort<CPortInt>("TextureSize");
  m_CreateMipMaps = InPort<CPortBool>("CreateMipMaps");
  for (int i = 0; i < 3; ++i) m_InVectors[i] = InPort<CPortVector>(("In" + std::to_string(i + 1)).c_str());
  for (int i = 0; i < 2; ++i) m_Colors[i] = InPort<CPortColor>(("Color" + std::to_string(i + 1)).c_str());
  m_Shader = InPort<CPortString>("Shader");
  m_Textures[0] = m_TextureIn = InPort<CPortTexture>("Texture");
  m_Textures[1] = InPort<CPortTexture>("Texture2");
  m_Textures[2] = InPort<CPortTexture>("Texture3");
  m_TextureOut = OutPort<CPortTexture>("Texture");
  LoadShaderHeader();
  return true;
}

void CCopyTextureNode::Update(float, FrameInfo *frame) {
  Offer();
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  for (int i = 0; i < 3; ++i) std::copy_n(&m_InVectors[i]->m_Value.x, 3, m_In[i]);
  for (int i = 0; i < 2; ++i) std::copy_n(&m_Colors[i]->m_Value.r, 4, m_Color[i]);
  m_Time = frame->Time;
  bool dirty = m_Shader->m_Changed || (m_TextureIn->IsConnected() && m_TextureIn->m_Changed);
  for (int i = 1; i < 3; ++i) {
    const CPortTexture *port = m_Textures[i];
    if (port->IsConnected() && (port->m_Changed || ConnectedTextureDimension(port) != m_Dimensions[i])) dirty = true;
  }
  if (dirty) m_DirtyUnits = ALL_UNITS;
}

bool CCopyTextureNode::RestoreDevice(CRender *render) {
  ReleaseEffect();
  // Samplers are declared from what the texture ports carry: before the
  // first update they carry nothing yet, so the text waits for it.
  for (const CPortTexture *port : m_Textures)
    if (port->IsConnected() && !port->m_Value) {
      m_DirtyUnits = ALL_UNITS;
      return true;
    }
  for (int i = 0; i < 3; ++i) {
    m_Composed.ports[i] = m_Textures[i];
    m_Dimensions[i] = ConnectedTextureDimension(m_Textures[i]);
  }
  // Composed as a Shader node's text is; a technique of its own comes first.
  const std::string text = ComposeShaderText(m_Shader->m_Value, m_Composed);
  if (text.empty() || !render->m_FxManager) return true;
  m_Fx = render->m_FxManager->ParseEffect(text.c_str());
  if (!m_Fx) return true;  // logged; no technique, GetTexture gives null
  m_Technique = m_Fx->GetBestTechnique();
  for (int h = 0; h < H_Count; ++h) m_Handles[h] = m_Fx->GetNamedParameter(kHandleNames[h]);
  return MakeQuad(render, 0.5f);
}

void CCopyTextureNode::ForgetHandles() {
  for (CFxParameter *&h : m_Handles) h = nullptr;
}

void CCopyTextureNode::CopySize(int &width, int &height) const {
  const int size = m_TextureSize->m_Value;
  if (size >= 1 && size <= 5) {
    width = SatInt(width * kFractions[size - 1]);
    height = SatInt(height * kFractions[size - 1]);
  }
  width = std::max(width, 1);
  height = std::max(height, 1);
}

CTexture *CCopyTextureNode::Extra(CRender *render, int index) const {
  const CPortTexture *port = m_Textures[index];
  if (!port->IsConnected() || !port->m_Value || !m_Handles[H_tex1 + index]) return nullptr;
  return port->m_Value->GetTexture(render);
}

CTexture *CCopyTextureNode::GetTexture(CRender *render) {
  CVertexBuffer *quad = m_Quad[render->m_DeviceSlot];
  if (!quad || !m_Technique) return nullptr;
  CTexture *src = Source(render);
  if (!src) return nullptr;
  const CCamera camera = FilterCamera();
  CTexture *textures[3] = {src, Extra(render, 1), Extra(render, 2)};
  int width = src->m_Width, height = std::max(src->m_Height, 1);
  CopySize(width, height);

  CRenderTarget *target = m_Targets.Begin(*render, width, height);
  if (target) {
    render->SetTransform(TS_World, CMatrix::Identity());
    render->SetTransform(TS_View, camera.m_View);
    render->SetState(RS_DepthTest, 0);
    render->SetState(RS_DepthWrite, 0);
    render->SetCullMode(CULL_None);
    render->SetBlendModes(BLEND_One, BLEND_Zero);
    for (int i = 0; i < 3; ++i)
      if (m_Handles[H_in1 + i]) m_Handles[H_in1 + i]->SetValuefr(m_In[i], 3);
    for (int i = 0; i < 2; ++i)
      if (m_Handles[H_color1 + i]) m_Handles[H_color1 + i]->SetValuefr(m_Color[i], 4);
    if (m_Handles[H_time]) m_Handles[H_time]->SetValuefr(&m_Time, 1);
    for (int i = 0; i < 3; ++i) {
      if (m_Handles[H_tex1 + i]) FxSetupSampler(*m_Fx, *m_Handles[H_tex1 + i], textures[i]);
      if (!textures[i] || !m_Handles[H_tex1size + i]) continue;
      const float size[2] = {static_cast<float>(textures[i]->m_Width), static_cast<float>(textures[i]->m_Height)};
      m_Handles[H_tex1size + i]->SetValuefr(size, 2);
    }
    for (int h = H_FastNoise; h <= H_Permutation2d; ++h)
      if (m_Handles[h]) FxSetupSampler(*m_Fx, *m_Handles[h], FxNoiseTexture(*render, h - H_FastNoise));
    // Only the first pass of the technique is drawn.
    if (PassHandle pass = FxFirstPass(m_Technique)) {
      FxSetPassState(*m_Fx, pass);
      render->SetCamera(camera);
      std::fill_n(m_Fx->m_World, 16, 0.0f);
      for (int i = 0; i < 4; ++i) m_Fx->m_World[i * 5] = 1.0f;
      FxSetMatrixParameters(*m_Fx, *render);
      FxCommitChanges(*m_Fx);
      render->SetVertexBuffer(quad);
      render->DrawPrimitive(PT_TriangleList, 0, 2);
      FxResetPassState(*m_Fx, pass);
    }
    m_Targets.End(*render, *target);
  }
  for (CTexture *t : textures) m_Targets.Release(*render, t);
  if (!target) return nullptr;
  CTexture *color = m_Targets.Color(*target);
  if (m_CreateMipMaps->m_Value) color->GenerateMipmaps();
  return color;
}
