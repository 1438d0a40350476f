#include "nodes/effect/ShaderNode.h"

#include "core/Paths.h"
#include "core/Random.h"
#include "expr/ExprEvaluator.h"
#include "fx/FxManager.h"
#include "fx/FxText.h"
#include "nodes/effect/FxRuntime.h"
#include "portdata/PDTexture.h"
#include "render/Matrix.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char kShaderDesc[] =
    "Cgfx shader to be used.\nCommon matrices are gW,gWVP,gWIT,gVI,gV,gP,gWV,gVP,gWT,gVT,gPT,gWVPT,gWVT,gVPT. So gWVP "
    "is the WorldViewProjection matrix.\nThere is also "
    "time,in1.x/y/z,in2.x/y/z,in3.x/y/z,color1,color2,tex1,tex2,tex3,tex1size,tex2size,tex3size.\nVSInput contains "
    "pos,col,tex,normal,tangent,binormal";
const char kShaderDefault[] =
    "struct PSInput\r\n{\r\n\tfloat4 hpos : POSITION;\r\n\tfloat4 diffuse : COLOR0;\r\n\tfloat2 tex : "
    "TEXCOORD0;\r\n};\r\n\r\nPSInput VS_Program(VSInput vi) \r\n{\r\n\tPSInput pi;\r\n\tpi.hpos\t\t= mul( gWVP, "
    "float4(vi.pos.xyz, 1.0));\r\n\tpi.tex\t\t= vi.tex;\r\n\tpi.diffuse\t= vi.col*color1*color;\r\n\treturn "
    "pi;\r\n}\r\n\r\nfloat4 PS_Program(PSInput pi) : COLOR\r\n{\r\n\tfloat2 p = -1.0 + 2.0 * pi.tex;\r\n\t// return "
    "tex2D(tex1, pi.tex)*pi.diffuse;\r\n\treturn pi.diffuse*(1.0-length(p));\r\n}";
const char kExpressionDesc[] =
    "Preprocessing expression. Inputs are the same as the node inputs in1.x, in2.y and so on. There is also "
    "time,deltatime,perm (Not reset for the life of the node. Initial value 0) and permrand (Not reset for the life "
    "of the node. Initial value 0.0-1.0). Before the input values will be set they can be changed using this "
    "expression. Use this to moving an expression like 'sin(time)' from the vertex/pixel shader. Please see the "
    "website for detailed description of this port.";

const char *const kHandleNames[CShaderNode::H_Count] = {
    "time", "in1",  "in2",  "in3",  "color", "color1", "color2", "tex1size", "tex2size", "tex3size",
    "tex1", "tex2", "tex3", "gFastPerlinNoiseSampler", "gPermutation1dSampler", "gPermutation2dSampler"};
const char *const kVectorNames[3] = {"in1", "in2", "in3"};
const char *const kColorNames[2] = {"col1", "col2"};
const char *const kAxes[3] = {"x", "y", "z"};
const char *const kChannels[4] = {"r", "g", "b", "a"};
}  // namespace

CNodeInfo *CShaderNode::CreateInfo() {
  auto *info = new CNodeInfo(5, "Shader", [] { return static_cast<CNode *>(new CShaderNode); }, "A customer cgfx shader");
  info->AddInPort(new CPortBool("DepthTest", "Test any written values against the depth buffer", true));
  info->AddInPort(new CPortBool("DepthWrite", "Write to the depth buffer when rendering new objects", true));
  info->AddInPort(new CPortBool(
      "AALine", "Draw lines using antialiasing.\nAlso set SrcBlend to 'Source Alpha' when enabling this", false));
  AddBlendValues(info->AddInPort(new CPortInt("SrcBlend", "Source blend mode", 1, 0, 11)), EEffectStateNames::Shader);
  AddBlendValues(info->AddInPort(new CPortInt("DstBlend", "Destination blend mode", 0, 0, 11)),
                 EEffectStateNames::Shader);
  AddCullValues(info->AddInPort(new CPortInt("CullMode", "Cull mode", 2, 0, 2)), EEffectStateNames::Shader);
  const Vec3f step{0.001f, 0.001f, 0.001f}, min{-10000, -10000, -10000}, max{10000, 10000, 10000};
  info->AddInPort(new CPortVector("In1", "Input vector 1", {}, step, min, max));
  info->AddInPort(new CPortVector("In2", "Input vector 2", {}, step, min, max));
  info->AddInPort(new CPortVector("In3", "Input vector 3", {}, step, min, max));
  info->AddInPort(new CPortColor("Color1", "Input color 1", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortColor("Color2", "Input color 2", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortString("Shader", kShaderDesc, kShaderDefault));
  info->AddInPort(new CPortInt("RandomSeed", "Random seed to be used by the rand() and srand() functions", 1, 1, 100000));
  info->AddInPort(new CPortString("Expression", kExpressionDesc, ""));
  info->AddInPort(new CPortTexture("Texture1", "Texture 1"));
  info->AddInPort(new CPortTexture("Texture2", "Texture 2"));
  info->AddInPort(new CPortTexture("Texture3", "Texture 3"));
  info->AddOutPort(new CPortEffect("Effect", "Effect"));
  return info;
}

CShaderNode::CShaderNode() : m_Eval(std::make_unique<CExprEvaluator>()) {}

CShaderNode::~CShaderNode() = default;

bool CShaderNode::Init() {
  m_DepthTest = InPort<CPortBool>("DepthTest");
  m_DepthWrite = InPort<CPortBool>("DepthWrite");
  m_AALine = InPort<CPortBool>("AALine");
  m_SrcBlend = InPort<CPortInt>("SrcBlend");
  m_DstBlend = InPort<CPortInt>("DstBlend");
  m_CullMode = InPort<CPortInt>("CullMode");
  m_InPorts3[0] = InPort<CPortVector>("In1");
  m_InPorts3[1] = InPort<CPortVector>("In2");
  m_InPorts3[2] = InPort<CPortVector>("In3");
  m_ColorPorts[0] = InPort<CPortColor>("Color1");
  m_ColorPorts[1] = InPort<CPortColor>("Color2");
  m_Shader = InPort<CPortString>("Shader");
  m_RandomSeed = InPort<CPortInt>("RandomSeed");
  m_Expression = InPort<CPortString>("Expression");
  m_Textures[0] = InPort<CPortTexture>("Texture1");
  m_Textures[1] = InPort<CPortTexture>("Texture2");
  m_Textures[2] = InPort<CPortTexture>("Texture3");
  m_EffectOut = OutPort<CPortEffect>("Effect");
  // The installation's header, whatever the current folder.
  LoadShaderHeader(Expand("[apppath]nodedata/shader.cgh").c_str());

  for (int v = 0; v < 3; ++v)
    for (int a = 0; a < 3; ++a)
      m_Eval->AddAddress(std::string(kVectorNames[v]) + "." + kAxes[a], &m_Vars.in[v][a], 0.0);
  for (int c = 0; c < 2; ++c)
    for (int k = 0; k < 4; ++k)
      m_Eval->AddAddress(std::string(kColorNames[c]) + "." + kChannels[k], &m_Vars.col[c][k], 0.0);
  m_Eval->AddAddress("time", &m_Vars.time, 0.0);
  m_Eval->AddAddress("deltatime", &m_Vars.deltatime, 0.0);
  m_Eval->AddAddress("perm", &m_Vars.perm, 0.0);
  m_Eval->AddAddress("permrand", &m_Vars.permrand, 0.0);
  m_Vars.permrand = RandomUnsigned(SharedRandom());
  m_Eval->Attach();
  return true;
}

void CShaderNode::Update(float, FrameInfo *frame) {
  if (m_EffectOut) m_EffectOut->m_Value = this;
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  if (m_Expression && m_Expression->m_Changed) {
    // Compiling resets every variable; perm and permrand outlive texts.
    double perm = m_Vars.perm, permrand = m_Vars.permrand;
    m_Eval->Compile(m_Expression->m_Value);
    m_Vars.perm = perm;
    m_Vars.permrand = permrand;
  }
  for (int v = 0; v < 3; ++v)
    if (m_InPorts3[v]) std::copy_n(&m_InPorts3[v]->m_Value.x, 3, m_In[v]);
  for (int c = 0; c < 2; ++c)
    if (m_ColorPorts[c]) std::copy_n(&m_ColorPorts[c]->m_Value.r, 4, m_Color[c]);
  m_Time = frame->Time;
  if (m_RandomSeed) m_Eval->SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));
  if (m_Eval->m_Compiled) RunExpression(*frame);

  if ((m_Shader && m_Shader->m_Changed) || TexturesChanged()) m_DirtyUnits = ALL_UNITS;
  m_States.Read({{m_DepthTest, RSF_DepthTest}, {m_DepthWrite, RSF_DepthWrite}, {m_AALine, RSF_AALine}});
}

void CShaderNode::RunExpression(const FrameInfo &frame) {
  for (int v = 0; v < 3; ++v) std::copy_n(m_In[v], 3, m_Vars.in[v]);
  for (int c = 0; c < 2; ++c) std::copy_n(m_Color[c], 4, m_Vars.col[c]);
  m_Vars.time = frame.Time;
  m_Vars.deltatime = frame.DeltaTime;
  m_Eval->Evaluate();
  for (int v = 0; v < 3; ++v)
    for (int a = 0; a < 3; ++a) m_In[v][a] = static_cast<float>(m_Vars.in[v][a]);
  for (int c = 0; c < 2; ++c)
    for (int k = 0; k < 4; ++k) m_Color[c][k] = static_cast<float>(m_Vars.col[c][k]);
  m_Time = static_cast<float>(m_Vars.time);
}

// A texture connected, replaced or changed in kind since the text was
// composed needs a new text (sampler2D or sampler3D, mipmaps, wrapping).
bool CShaderNode::TexturesChanged() const {
  for (int i = 0; i < 3; ++i) {
    const CPortTexture *port = m_Textures[i];
    if (!port || !port->IsConnected()) continue;
    if (port->m_Changed || ConnectedTextureDimension(port) != m_ComposedDimensions[i]) return true;
  }
  return false;
}

bool CShaderNode::RestoreDevice(CRender *render) {
  ReleaseEffect();
  for (int i = 0; i < 3; ++i) {
    m_Composed.ports[i] = m_Textures[i];
    m_ComposedDimensions[i] = ConnectedTextureDimension(m_Textures[i]);
  }
  m_ComposedText = ComposeShaderText(m_Shader ? m_Shader->m_Value : std::string(), m_Composed);
  if (m_ComposedText.empty()) return true;
  return CompileEffect(render, m_ComposedText, kHandleNames, H_Count, H_color);
}

void CShaderNode::InvalidateDevice(CRender *) { ReleaseEffect(); }

PassHandle CShaderNode::Begin() {
  if (!m_Technique || !m_Render) return nullptr;
  m_States.Apply(*m_Render, m_SrcBlend, m_DstBlend, m_CullMode);
  for (int v = 0; v < 3; ++v)
    if (m_Handles[H_in1 + v]) m_Handles[H_in1 + v]->SetValuefr(m_In[v], 3);
  for (int c = 0; c < 2; ++c)
    if (m_Handles[H_color1 + c]) m_Handles[H_color1 + c]->SetValuefr(m_Color[c], 4);
  if (m_Handles[H_time]) m_Handles[H_time]->SetValuefr(&m_Time, 1);
  BindTextures(m_Textures, 3, H_tex1size, H_tex1, H_FastNoise);
  return FxFirstPass(m_Technique);
}
