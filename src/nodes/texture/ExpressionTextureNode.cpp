#include "nodes/texture/ExpressionTextureNode.h"

#include <string>

#include "core/Random.h"
#include "expr/ExprEvaluator.h"
#include "nodes/ExpressionPorts.h"
#include "render/Color.h"
#include "render/Render.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CExpressionTextureNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "ExpressionTexture", [] { return static_cast<CNode *>(new CExpressionTextureNode); },
                             "Uses a expression to create a texture");
  info->AddInPort(TextureSizePort("Width", "Width of texture", 256));
  info->AddInPort(TextureSizePort("Height", "Height of texture", 1));
  info->AddInPort(TextureSizePort("Depth", "Depth of texture", 1));
  AddExpressionInputPorts(*info, false);
  info->AddInPort(new CPortString(
      "Expression",
      "Expression to be evaluated. Inputs are x,y,z,in1,in2,in3,in4,in5,perm (Not reset for the life of the node. "
      "Initial value 0) and permrand (Not reset for the life of the node. Initial value 0.0-1.0).. Outputs are named "
      "col.r,col.g,col.b and col.a. Please see the website for detailed description of this port. Some of the "
      "allowed values are abs, mod, min, max, sqrt, sin, cos, tan, atan, log, lb, exp, ceil, floor, deg, rad, if, "
      "select, equal, above, below, clip, clamp, and, or, not.",
      "out.r = out.g = out.b = out.a = 1.0"));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

CExpressionTextureNode::CExpressionTextureNode() : m_Evaluator(std::make_unique<CExprEvaluator>()) { m_Flags = 8; }
CExpressionTextureNode::~CExpressionTextureNode() = default;

bool CExpressionTextureNode::Init() {
  m_Width = InPort<CPortInt>("Width");
  m_Height = InPort<CPortInt>("Height");
  m_Depth = InPort<CPortInt>("Depth");
  for (int i = 0; i < 5; ++i) m_In[i] = InPort<CPortFloat>(("In" + std::to_string(i + 1)).c_str());
  m_RandomSeed = InPort<CPortInt>("RandomSeed");
  m_Expression = InPort<CPortString>("Expression");

  CExprEvaluator &e = *m_Evaluator;
  const char *axes[] = {"x", "y", "z", "width", "height", "depth"};
  double *axis[] = {&m_Vars.x, &m_Vars.y, &m_Vars.z, &m_Vars.width, &m_Vars.height, &m_Vars.depth};
  for (int i = 0; i < 6; ++i) e.AddAddress(axes[i], axis[i], 0.0);
  m_Vars.permrand = RandomUnsigned(SharedRandom());
  e.AddAddress("perm", &m_Vars.perm, 0.0);
  e.AddAddress("permrand", &m_Vars.permrand, m_Vars.permrand);
  for (int i = 0; i < 5; ++i) e.AddAddress("in" + std::to_string(i + 1), &m_Vars.in[i], 1.0);
  e.AddAddress("time", &m_Vars.time, 1.0);
  const char *channels[] = {"col.r", "col.g", "col.b", "col.a"};
  for (int i = 0; i < 4; ++i) e.AddAddress(channels[i], &m_Vars.col[i], 0.0);
  e.Attach();
  return CGeneratedTextureNode::Init();
}

TextureSize CExpressionTextureNode::Size() const {
  return ClampTextureSize(m_Width->m_Value, m_Height->m_Value, m_Depth->m_Value, MAX_COMPUTED_TEXELS);
}

void CExpressionTextureNode::Update(float time, FrameInfo *frame) {
  Offer();
  if (m_Updated) return;
  if (!UpdateInPorts(frame->Time)) return;
  if (m_Expression->m_Changed) {
    // A new text resets every variable; perm and permrand outlive texts.
    const double perm = m_Vars.perm, permrand = m_Vars.permrand;
    m_Evaluator->Compile(m_Expression->m_Value);
    m_Vars.perm = perm;
    m_Vars.permrand = permrand;
  }
  if (!m_Evaluator->m_Compiled) return;
  for (int i = 0; i < 5; ++i) m_Vars.in[i] = m_In[i]->m_Value;
  m_Vars.time = time;
  const TextureSize size = Size();
  m_Vars.width = size.width;
  m_Vars.height = size.height;
  m_Vars.depth = size.depth;
  SetVolumeMode(size);
  m_DirtyUnits = ALL_UNITS;
}

bool CExpressionTextureNode::RestoreDevice(CRender *render) {
  const TextureSize size = Size();
  CTexture *texture = CreateSized(render, size);
  if (!texture) return false;
  m_Evaluator->SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));
  const float dx = 1.0f / size.width, dy = 1.0f / size.height, dz = 1.0f / size.depth;
  uint32_t *out = texture->Lock();
  float z = 0;
  for (int k = 0; k < size.depth; ++k, z += dz) {
    float y = 0;
    for (int j = 0; j < size.height; ++j, y += dy) {
      float x = 0;
      for (int i = 0; i < size.width; ++i, x += dx) {
        m_Vars.x = x;
        m_Vars.y = y;
        m_Vars.z = z;
        for (double &c : m_Vars.col) c = 0;
        m_Evaluator->Evaluate();
        *out++ = PackColor(static_cast<float>(m_Vars.col[0]), static_cast<float>(m_Vars.col[1]),
                           static_cast<float>(m_Vars.col[2]), static_cast<float>(m_Vars.col[3]));
      }
    }
  }
  texture->Unlock();
  return true;
}
