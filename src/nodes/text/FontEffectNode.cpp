#include "nodes/text/FontEffectNode.h"

#include <algorithm>

#include "fx/FxManager.h"
#include "fx/FxText.h"
#include "nodes/effect/FxRuntime.h"
#include "portdata/PDTexture.h"
#include "render/Matrix.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/DrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char kShaderDesc[] =
    "Cgfx shader to be used.\nInputs are in1.x/y/z,color1,color2,color3,texfont,tex1,tex2,tex1size,tex2size.\n"
    "VSInput contains pos,col,tex";
// The picture's alpha is cut at one half with a narrow soft edge.
const char kShaderDefault[] =
    "struct PSInput\r\n{\r\n\tfloat4 hpos : POSITION;\r\n\tfloat4 diffuse : COLOR0;\r\n\tfloat2 tex : "
    "TEXCOORD0;\r\n};\r\n\r\nPSInput VS_Program(VSInput vi) \r\n{\r\n\tPSInput pi;\r\n\tpi.hpos\t\t= mul( gWVP, "
    "float4(vi.pos.xyz, 1.0));\r\n\tpi.tex\t\t= vi.tex;\r\n\tpi.diffuse\t= vi.col*color*color1;\r\n\treturn "
    "pi;\r\n}\r\n\r\nfloat4 PS_Program(PSInput pi) : COLOR\r\n{\r\n\tfloat4 c = tex2D( texfont, pi.tex );\r\n\tfloat "
    "dist = c.a;\r\n\tc.a = smoothstep(0.475,0.525,dist);\r\n\treturn c*pi.diffuse;\r\n}";

const ShaderDeclaration kDeclarations[] = {
    {"gWVP", "float4x4 gWVP:WORLDVIEWPROJECTION;\n"},
    {"time", "float time;\n"},
    {"in1", "float3 in1;\n"},
    {"color", "float4 color;\n"},
    {"color1", "float4 color1;\n"},
    {"color2", "float4 color2;\n"},
    {"color3", "float4 color3;\n"},
    {"tex1size", "float2 tex1size;\n"},
    {"tex2size", "float2 tex2size;\n"},
};
const ShaderTextRecipe kRecipe{
    kDeclarations, 2,
    "sampler texfont = sampler_state { MinFilter = LinearMipMapLinear; MagFilter = Linear; WrapS = ClampToEdge; "
    "WrapT = ClampToEdge; };\nstruct VSInput{float3 pos:ATTR0;float4 col:ATTR3;float2 tex:ATTR8;};",
    true};

const char *const kHandleNames[CFontEffectNode::H_Count] = {
    "time",     "in1",      "color", "color1", "color2", "color3", "texfont", "tex1size",
    "tex2size", "tex1",     "tex2",  "gFastPerlinNoiseSampler", "gPermutation1dSampler", "gPermutation2dSampler"};
}  // namespace

void CFontEffectNode::AddBlendPorts(CNodeInfo *info) {
  AddBlendValues(info->AddInPort(new CPortInt("SrcBlend", "Source blend mode", 6, 0, 11)), EEffectStateNames::Shader);
  AddBlendValues(info->AddInPort(new CPortInt("DstBlend", "Destination blend mode", 8, 0, 11)),
                 EEffectStateNames::Shader);
  AddCullValues(info->AddInPort(new CPortInt("CullMode", "Cull mode", 2, 0, 2)), EEffectStateNames::Shader);
}

void CFontEffectNode::AddShaderPorts(CNodeInfo *info) {
  info->AddInPort(new CPortVector("In1", "Input vector 1", {}, {0.001f, 0.001f, 0.001f}, {-10000, -10000, -10000},
                                  {10000, 10000, 10000}));
  info->AddInPort(new CPortColor("Color1", "Color 1", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortColor("Color2", "Color 2", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortColor("Color3", "Color 3", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortString("Shader", kShaderDesc, kShaderDefault));
  info->AddInPort(new CPortTexture("Texture1", "Texture 1"));
  info->AddInPort(new CPortTexture("Texture2", "Texture 2"));
  info->AddOutPort(new CPortObject("Object", "Object"));
}

bool CFontEffectNode::Init() {
  m_SrcBlend = InPort<CPortInt>("SrcBlend");
  m_DstBlend = InPort<CPortInt>("DstBlend");
  m_CullMode = InPort<CPortInt>("CullMode");
  m_In1 = InPort<CPortVector>("In1");
  m_ColorPorts[0] = InPort<CPortColor>("Color1");
  m_ColorPorts[1] = InPort<CPortColor>("Color2");
  m_ColorPorts[2] = InPort<CPortColor>("Color3");
  m_Shader = InPort<CPortString>("Shader");
  m_Textures[0] = InPort<CPortTexture>("Texture1");
  m_Textures[1] = InPort<CPortTexture>("Texture2");
  m_ObjectOut = OutPort<CPortObject>("Object");
  // Text is drawn over whatever is there, never hidden by depth.
  m_States.m_Disable = RSF_DepthTest | RSF_DepthWrite;
  LoadShaderHeader();
  return true;
}

void CFontEffectNode::ReadEffectInputs(const FrameInfo &frame) {
  if (m_ObjectOut) m_ObjectOut->m_Value = this;
  if (m_In1) std::copy_n(&m_In1->m_Value.x, 3, m_In1Value);
  for (int c = 0; c < 3; ++c)
    if (m_ColorPorts[c]) std::copy_n(&m_ColorPorts[c]->m_Value.r, 4, m_Color[c]);
  m_Time = frame.Time;
  if ((m_Shader && m_Shader->m_Changed) || TexturesChanged()) m_DirtyUnits = ALL_UNITS;
}

bool CFontEffectNode::TexturesChanged() const {
  for (int i = 0; i < 2; ++i) {
    const CPortTexture *port = m_Textures[i];
    if (!port || !port->IsConnected()) continue;
    if (port->m_Changed || ConnectedTextureDimension(port) != m_ComposedDimensions[i]) return true;
  }
  return false;
}

bool CFontEffectNode::RestoreDevice(CRender *render) {
  ReleaseEffect();
  for (int i = 0; i < 2; ++i) {
    m_Composed.ports[i] = m_Textures[i];
    m_ComposedDimensions[i] = ConnectedTextureDimension(m_Textures[i]);
  }
  m_ComposedText = ComposeShaderText(m_Shader ? m_Shader->m_Value : std::string(), m_Composed, kRecipe);
  if (m_ComposedText.empty()) return true;
  return CompileEffect(render, m_ComposedText, kHandleNames, H_Count, H_color) && m_Font.RestoreDevice(render);
}

void CFontEffectNode::InvalidateDevice(CRender *render) {
  ReleaseEffect();
  m_Font.InvalidateDevice(render);
}

void CFontEffectNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  AppendObjectItems(list, parents, camera, &m_Font, this);
}

PassHandle CFontEffectNode::Begin() {
  if (!m_Technique || !m_Render) return nullptr;
  m_States.Apply(*m_Render, m_SrcBlend, m_DstBlend, m_CullMode);
  if (m_Handles[H_in1]) m_Handles[H_in1]->SetValuefr(m_In1Value, 3);
  for (int c = 0; c < 3; ++c)
    if (m_Handles[H_color1 + c]) m_Handles[H_color1 + c]->SetValuefr(m_Color[c], 4);
  if (m_Handles[H_time]) m_Handles[H_time]->SetValuefr(&m_Time, 1);
  if (m_Handles[H_texfont]) FxSetupSampler(*m_Fx, *m_Handles[H_texfont], m_Font.GetTexture(m_Render));
  BindTextures(m_Textures, 2, H_tex1size, H_tex1, H_FastNoise);
  return FxFirstPass(m_Technique);
}
