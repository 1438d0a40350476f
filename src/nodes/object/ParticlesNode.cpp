#include "nodes/object/ParticlesNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "scene/BatchDrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
constexpr float kDegrees = 0.017453292f;

bool IsZeroSize(float v) { return std::fabs(v) <= 1e-05f; }

// The rotation by `angle` around the unit `axis`, for row vectors.
CMatrix AxisRotation(const CVector3 &axis, float angle) {
  const float c = std::cos(angle), s = std::sin(angle), t = 1.0f - c;
  const float x = axis.x, y = axis.y, z = axis.z;
  CMatrix m;
  m(0, 0) = t * x * x + c;
  m(0, 1) = t * x * y + s * z;
  m(0, 2) = t * x * z - s * y;
  m(1, 0) = t * x * y - s * z;
  m(1, 1) = t * y * y + c;
  m(1, 2) = t * y * z + s * x;
  m(2, 0) = t * x * z + s * y;
  m(2, 1) = t * y * z - s * x;
  m(2, 2) = t * z * z + c;
  return m;
}
}  // namespace

CNodeInfo *CParticlesNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Particles", [] { return static_cast<CNode *>(new CParticlesNode); },
                             "A particle system");
  const Vec3f vstep{0.1f, 0.1f, 0.1f}, vmin{-10000, -10000, -10000}, vmax{10000, 10000, 10000};
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortObject("Object", "Object that will be used as particle if PrimType is set to Object"));
  info->AddInPort(new CPortInt("ParticlesPerSec", "Number of particles added per second", 10, 0, 1000000));
  info->AddInPort(new CPortFloat("Speed", "Initial speed of particles", 1.0f, 0.1f, -100000.0f, 100000.0f));
  info->AddInPort(new CPortVector("Direction", "Direction of particles (Not used by object emitter)", {0, 0, 0}, vstep,
                                  vmin, vmax));
  info->AddInPort(new CPortFloat("SpreadMin", "Minimum angle of inital particle direction. For cone type emitters",
                                 0.0f, 1.0f, 0.0f, 360.0f));
  info->AddInPort(new CPortFloat("SpreadMax", "Maximum angle of inital particle direction. For cone type emitters",
                                 10.0f, 1.0f, 0.0f, 360.0f));
  info->AddInPort(new CPortFloat("TimeToLive", "How long time the particle should live", 3.0f, 0.1f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("TimeToLiveVar", "How long time the particle should live variance", 1.0f, 0.1f,
                                 -10000.0f, 10000.0f));
  info->AddInPort(new CPortColor("ColorBase", "Base color of particle. This is set during particle creation",
                                 {0, 0, 0, 0}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortColor("Color", "Color of particle (Local). Added to base color", {0.8f, 0.9f, 1, 1},
                                 {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortFloat("Size", "The size of the particle when created", 0.1f, 0.1f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("SizeVar", "The size of the particle when created variance", 0.1f, 0.1f, -10000.0f,
                                 10000.0f));
  info->AddInPort(new CPortFloat("SizeLocal", "Size of particle (Local). Added to 'StartSize'", 0.01f, 0.01f, 0.0f,
                                 10000.0f));
  info->AddInPort(new CPortInt("EmitterType", "Type of emitter. Particles will be generated inside the shape", 1, 1, 4))
      ->AddValue(1, "Sphere")
      ->AddValue(2, "Cube")
      ->AddValue(3, "Cylinder");
  info->AddInPort(new CPortVector("EmitterPos", "Position of emitter", {0, 0, 0}, vstep, vmin, vmax));
  info->AddInPort(new CPortVector("EmitterRot", "Rotation of emitter", {0, 0, 0}, vstep, vmin, vmax));
  info->AddInPort(new CPortFloat("EmitterWidth", "Width of emitter. (Used by cube)", 1.0f, 0.01f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("EmitterHeight", "Height of emitter. (Used by cube, cylinder, line)", 1.0f, 0.01f,
                                 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("EmitterDepth", "Depth of emitter. (Used by cube)", 1.0f, 0.01f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("EmitterRadius", "Radius of emitter. (Used by sphere, cylinder)", 1.0f, 0.01f, 0.0f,
                                 10000.0f));
  info->AddInPort(new CPortBool("ScaleByAspect", "Adjust the size of the emitter depending on the aspect of the screen.",
                                false));
  info->AddInPort(PointPrimTypePort(2));
  info->AddInPort(new CPortVector("Gravity", "Direction and strength of gravity", {0, -9.8f, 0}, vstep, vmin, vmax));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CParticlesNode::Init() {
  InitBatchPorts("Effect");
  m_Object = InPort<CPortObject>("Object");
  m_PerSec = InPort<CPortInt>("ParticlesPerSec");
  m_Speed = InPort<CPortFloat>("Speed");
  m_Direction = InPort<CPortVector>("Direction");
  m_SpreadMin = InPort<CPortFloat>("SpreadMin");
  m_SpreadMax = InPort<CPortFloat>("SpreadMax");
  m_TimeToLive = InPort<CPortFloat>("TimeToLive");
  m_TimeToLiveVar = InPort<CPortFloat>("TimeToLiveVar");
  m_ColorBase = InPort<CPortColor>("ColorBase");
  m_Color = InPort<CPortColor>("Color");
  m_Size = InPort<CPortFloat>("Size");
  m_SizeVar = InPort<CPortFloat>("SizeVar");
  m_SizeLocal = InPort<CPortFloat>("SizeLocal");
  m_EmitterType = InPort<CPortInt>("EmitterType");
  m_EmitterPos = InPort<CPortVector>("EmitterPos");
  m_EmitterRot = InPort<CPortVector>("EmitterRot");
  m_Width = InPort<CPortFloat>("EmitterWidth");
  m_Height = InPort<CPortFloat>("EmitterHeight");
  m_Depth = InPort<CPortFloat>("EmitterDepth");
  m_Radius = InPort<CPortFloat>("EmitterRadius");
  m_ScaleByAspect = InPort<CPortBool>("ScaleByAspect");
  m_PrimType = InPort<CPortInt>("PrimType");
  m_Gravity = InPort<CPortVector>("Gravity");
  return true;
}

void CParticlesNode::Update(float, FrameInfo *frame) {
  PublishObject();
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  const float dt = frame->DeltaTime;
  float widthScale = 1.0f, heightScale = 1.0f;
  if (m_ScaleByAspect->m_Value) {
    if (frame->Aspect > 1.0f)
      widthScale = frame->Aspect;
    else if (frame->Aspect > 0.0f)
      heightScale = 1.0f / frame->Aspect;
  }
  // A connection can carry any rate; the pool's bound holds whatever comes.
  const int perSec = std::clamp(m_PerSec->m_Value, 0, MaxParticles);
  m_Accumulator += dt;
  const int n = static_cast<int>(std::min(static_cast<double>(m_Accumulator) * perSec, double{MaxParticles}));
  if (m_FreeCount < n) {
    const int pool = static_cast<int>(m_Pool.size());
    const int grow = std::min(std::max(n, perSec), MaxParticles - pool);
    if (grow > 0) {
      m_Pool.resize(static_cast<size_t>(pool) + grow);
      m_FreeCount += grow;
    }
  }
  if (n > 0) {
    m_Accumulator = 0.0f;
    Emit(n, widthScale, heightScale);
  }
  Simulate(dt);
  if (m_LiveCount > 0) WriteVertices();
}

void CParticlesNode::Emit(int n, float widthScale, float heightScale) {
  const CMatrix r = RotationDegrees(m_EmitterRot->m_Value);
  const CVector3 pos = ToVector(m_EmitterPos->m_Value);
  const float width = m_Width->m_Value * widthScale, height = m_Height->m_Value * heightScale;
  const float depth = m_Depth->m_Value, radius = m_Radius->m_Value;
  const int type = m_EmitterType->m_Value;
  auto localPosition = [&]() -> CVector3 {
    if (type == 1) {
      if (IsZeroSize(radius)) return {};
      const CVector3 dir = RandomUnitVector();
      return dir * (DrawUnsigned() * radius);
    }
    if (type == 2) {
      const bool w = !IsZeroSize(width), h = !IsZeroSize(height), d = !IsZeroSize(depth);
      if (w && !h && !d) return {DrawSigned() * width, 0, 0};
      if (!w && h && !d) return {0, DrawSigned() * height, 0};
      if (!w && !h && d) return {0, 0, DrawSigned() * depth};
      const float x = DrawSigned() * width * 0.5f, y = DrawSigned() * height * 0.5f;
      return {x, y, DrawSigned() * depth * 0.5f};
    }
    return {};  // cylinder and line emit from the origin
  };

  const bool allDirections =
      std::fabs(m_SpreadMin->m_Value * kDegrees) <= 1e-05f && m_SpreadMax->m_Value >= 179.99999f;
  CMatrix cone;
  float c0 = 1.0f, c1 = 1.0f;
  if (!allDirections) {
    // Direction holds three angles: the cone's axis is +y turned by them.
    const CVector3 a = TransformNormal({0, 1, 0}, RotationDegrees(m_Direction->m_Value));
    if (std::fabs(a.x) <= 1e-05f && std::fabs(a.y) <= 1e-05f) {
      cone = ScalingMatrix(a.z, a.z, a.z);
    } else {
      cone = AxisRotation(Normalize(Cross({0, 0, 1}, a)), std::acos(std::clamp(a.z, -1.0f, 1.0f)));
    }
    c0 = std::cos(m_SpreadMin->m_Value * kDegrees);
    c1 = std::cos(m_SpreadMax->m_Value * kDegrees);
  }

  const float speed = m_Speed->m_Value;
  const Color4f base = m_ColorBase->m_Value;
  Particle *records = m_Pool.data();
  const int count = static_cast<int>(m_Pool.size());
  for (int k = 0; k < n; ++k) {
    const int index = TakeFreeRecord(records, count, m_SearchStart);
    if (index < 0) break;
    Particle &p = records[index];
    p.age = 0.0f;
    p.alive = true;
    --m_FreeCount;
    CVector3 dir;
    if (allDirections) {
      dir = RandomUnitVector();
    } else {
      const float theta = std::acos(std::clamp(RandomRange(c0, c1), -1.0f, 1.0f));
      const float phi = RandomRange(0.0f, 6.2831855f);
      const float st = std::sin(theta);
      dir = TransformNormal({st * std::cos(phi), st * std::sin(phi), std::cos(theta)}, cone);
    }
    const CVector3 local = localPosition();
    p.baseColor[0] = base.r, p.baseColor[1] = base.g, p.baseColor[2] = base.b, p.baseColor[3] = base.a;
    p.position = TransformNormal(local, r) + pos;
    p.velocity = TransformNormal(dir * speed, r);
    p.timeToLive = DrawSigned() * m_TimeToLiveVar->m_Value + m_TimeToLive->m_Value;
    p.startSize = DrawSigned() * m_SizeVar->m_Value + m_Size->m_Value;
  }
}

void CParticlesNode::Simulate(float dt) {
  // Unconnected local ports hold one value for every particle: read once.
  const bool localSize = m_SizeLocal->IsConnected(), localColor = m_Color->IsConnected();
  const CVector3 gravity = ToVector(m_Gravity->m_Value);
  m_LiveCount = 0;
  for (Particle &p : m_Pool) {
    if (!p.alive) continue;
    p.age += dt;
    if (!(p.age < p.timeToLive)) {
      p.alive = false;
      ++m_FreeCount;
      continue;
    }
    ++m_LiveCount;
    std::copy(std::begin(p.color), std::end(p.color), p.previousColor);
    p.previousPosition = p.position;
    const float u = p.age / p.timeToLive;
    if (localSize) m_SizeLocal->Update(u);
    p.size = p.startSize + m_SizeLocal->m_Value;
    if (localColor) m_Color->Update(u);
    const Color4f &c = m_Color->m_Value;
    p.color[0] = p.baseColor[0] + c.r;
    p.color[1] = p.baseColor[1] + c.g;
    p.color[2] = p.baseColor[2] + c.b;
    p.color[3] = p.baseColor[3] + c.a;
    p.acceleration = gravity;
    p.position = p.position + p.velocity * dt;
    p.velocity = p.velocity + p.acceleration * dt;
  }
}

void CParticlesNode::WriteVertices() {
  const int type = SizePoints(m_Points, *m_PrimType, static_cast<int>(m_Pool.size()), m_Capacity);
  m_Points.SetCount(m_LiveCount);
  int i = 0;
  for (const Particle &p : m_Pool) {
    if (!p.alive) continue;
    const uint32_t color = PackColorRounded(p.color);
    if (type == PRIM_Point) {
      m_Points.Points()[i] = {p.position.x, p.position.y, p.position.z, color};
    } else if (type == PRIM_Line) {
      const uint32_t previous = PackColorRounded(p.previousColor);
      m_Points.Lines()[i] = {{p.position.x, p.position.y, p.position.z, color},
                             {p.previousPosition.x, p.previousPosition.y, p.previousPosition.z, previous}};
    } else {
      m_Points.Sprites()[i] = {p.position.x, p.position.y, p.position.z, color, p.size, p.size, p.size};
    }
    ++i;
  }
}

void CParticlesNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_LiveCount > 0) AddPointsToDrawList(list, parents, camera, m_EffectPort->m_Value, m_Points, m_LiveCount, m_Object);
}
