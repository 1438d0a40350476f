#include "nodes/sim/Fluid2dNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "scene/BatchDrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CFluid2dNode::CreateInfo() {
  auto *info = new CNodeInfo(11, "Fluid2d", [] { return static_cast<CNode *>(new CFluid2dNode); },
                             "A 2d fluid simulation");
  const Vec3f vstep{0.1f, 0.1f, 0.1f}, vmin{-10000, -10000, -10000}, vmax{10000, 10000, 10000};
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortInt("GridCellsX", "Number of grid cells along x axis", 100, 5, 10000000));
  info->AddInPort(new CPortInt("GridCellsY", "Number of grid cells along y axis", 100, 5, 10000000));
  info->AddInPort(new CPortInt("NumParticles", "Amount of particles", 10000, 0, 10000000));
  info->AddInPort(new CPortColor("Color", "Color of particle", {0.5f, 0.6f, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortVector("Gravity", "Direction and strength of gravity", {0, -0.03f, 0}, vstep, vmin, vmax));
  info->AddInPort(new CPortFloat("ParticleSize", "Size of particle", 0.01f, 0.01f, 0.0f, 10000.0f));
  info->AddInPort(PointPrimTypePort(2));
  info->AddInPort(
      new CPortBool("AdjustForAspect", "Adjust the width and height depending on the screen aspect", true));
  info->AddInPort(new CPortObject("Object", "Object that will be used as particle if PrimType is set to Object"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CFluid2dNode::Init() {
  InitBatchPorts("Effect");
  m_GridX = InPort<CPortInt>("GridCellsX");
  m_GridY = InPort<CPortInt>("GridCellsY");
  m_NumParticles = InPort<CPortInt>("NumParticles");
  m_Color = InPort<CPortColor>("Color");
  m_Gravity = InPort<CPortVector>("Gravity");
  m_ParticleSize = InPort<CPortFloat>("ParticleSize");
  m_PrimType = InPort<CPortInt>("PrimType");
  m_AdjustForAspect = InPort<CPortBool>("AdjustForAspect");
  m_Object = InPort<CPortObject>("Object");
  return true;
}

void CFluid2dNode::Update(float, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  if (!m_Stepper.Due(frame->DeltaTime)) return;
  m_Fluid.Resize(m_GridX->m_Value, m_GridY->m_Value, m_NumParticles->m_Value);
  m_Fluid.Step(m_Gravity->m_Value.x, m_Gravity->m_Value.y);
  WriteVertices(frame->Aspect);
  PublishObject();
}

void CFluid2dNode::WriteVertices(float aspect) {
  const auto &particles = m_Fluid.Particles();
  const int count = static_cast<int>(particles.size());
  const int type = SizePoints(m_Points, *m_PrimType, count, m_Capacity);
  m_Points.SetCount(count);
  m_Drawn = count;

  const float w = static_cast<float>(m_Fluid.Width()), h = static_cast<float>(m_Fluid.Height());
  float sx = 1.0f / (w - 4.0f), sy = 1.0f / (h - 4.0f);
  if (m_AdjustForAspect->m_Value && aspect > 0.0f && std::isfinite(aspect)) {
    if (aspect > 1.0f)
      sx *= aspect;
    else
      sy *= 1.0f / aspect;
  }
  const float cx = w * 0.5f, cy = h * 0.5f;
  const uint32_t color = PackColorRounded(m_Color->m_Value);
  const float size = std::isfinite(m_ParticleSize->m_Value) ? std::clamp(m_ParticleSize->m_Value, 0.0f, 10000.0f) : 0.0f;
  for (int k = 0; k < count; ++k) {
    const CFluid2d::Particle &p = particles[k];
    const float x = (p.x - cx) * sx, y = (p.y - cy) * sy;
    if (type == PRIM_Point) {
      m_Points.Points()[k] = {x, y, 0.0f, color};
    } else if (type == PRIM_Line) {
      // The line shows the last step's motion.
      m_Points.Lines()[k] = {{x, y, 0.0f, color}, {(p.x - p.u - cx) * sx, (p.y - p.v - cy) * sy, 0.0f, color}};
    } else {
      m_Points.Sprites()[k] = {x, y, 0.0f, color, size, size, size};
    }
  }
}

void CFluid2dNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_Drawn > 0) AddPointsToDrawList(list, parents, camera, m_EffectPort->m_Value, m_Points, m_Drawn, m_Object);
}
