#include "nodes/render/RenderObjectNode.h"

#include "render/Matrix.h"
#include "render/Render.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
constexpr float kDegrees = 0.01745329238474369f;

CPortVector *VectorPort(const char *name, const char *desc, float def, float step) {
  return new CPortVector(name, desc, {def, def, def}, {step, step, step}, {-10000, -10000, -10000},
                         {10000, 10000, 10000});
}

CMatrix Rotation(const Vec3f &degrees) {
  return RotationMatrix(degrees.x * kDegrees, degrees.y * kDegrees, degrees.z * kDegrees);
}
}  // namespace

CNodeInfo *CRenderObjectNode::CreateInfo() {
  auto *info = new CNodeInfo(1, "RenderObject", [] { return static_cast<CNode *>(new CRenderObjectNode); },
                             "Renders a single object at a location");
  info->AddInPort(new CPortRender("Render", "Render"));
  info->AddInPort(new CPortObject("Object", "The object to render"));
  info->AddInPort(new CPortColor("Col", "Object color", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(VectorPort("Pos", "Object position", 0.0f, 0.1f));
  info->AddInPort(VectorPort("Rot", "Object rotation", 0.0f, 0.1f));
  info->AddInPort(VectorPort("Scale", "Object scale", 1.0f, 0.01f));
  auto *camPos = VectorPort("CamPos", "Camera position", 0.0f, 0.1f);
  camPos->m_Value = {0.0f, 0.0f, -2.0f};
  info->AddInPort(camPos);
  info->AddInPort(VectorPort("CamRot", "Camera rotation", 0.0f, 0.1f));
  info->AddInPort(new CPortFloat("CamFov", "Camera FOV", 45.0f, 1.0f, 0.1f, 179.0f));
  info->AddInPort(new CPortBool("ScaleByAspect", "Adjust the size of the object depending on the aspect of the screen.", false));
  info->AddOutPort(new CPortRender("Render", "Render"));
  return info;
}

bool CRenderObjectNode::Init() {
  CStageNode::Init();
  m_Object = InPort<CPortObject>("Object");
  m_Col = InPort<CPortColor>("Col");
  m_Pos = InPort<CPortVector>("Pos");
  m_Rot = InPort<CPortVector>("Rot");
  m_Scale = InPort<CPortVector>("Scale");
  m_CamPos = InPort<CPortVector>("CamPos");
  m_CamRot = InPort<CPortVector>("CamRot");
  m_CamFov = InPort<CPortFloat>("CamFov");
  m_ScaleByAspect = InPort<CPortBool>("ScaleByAspect");
  m_Camera.m_Fov = 45.0f;
  m_Camera.m_Near = 0.1f;
  m_Camera.m_Far = 2000.0f;
  m_Camera.m_ProjectionType = PROJ_Perspective;
  LookAt(m_Camera, {0, 0, 1}, {0, 0, 0}, {0, 1, 0});
  return true;
}

void CRenderObjectNode::Update(float time, FrameInfo *frame) {
  CStageNode::Update(time, frame);
  m_Aspect = frame->Aspect;
  m_CamFov->Update(time);
  m_Camera.m_Fov = m_CamFov->m_Value;
  m_CamRot->Update(time);
  const CMatrix m = Rotation(m_CamRot->m_Value);
  m_CamPos->Update(time);
  const CVector3 eye{m_CamPos->m_Value.x, m_CamPos->m_Value.y, m_CamPos->m_Value.z};
  const CVector3 target = TransformNormal({0, 0, 1}, m) + eye;
  const CVector3 up = TransformNormal({0, 1, 0}, m);
  LookAt(m_Camera, target, eye, up);
  if (m_ScaleByAspect->m_Value)
    for (int i = 0; i < 3; ++i) m_Camera.m_View.m[i] *= m_Aspect;
}

void CRenderObjectNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_RenderIn->m_Source) CStageNode::AddToDrawList(list, parents, camera);
  if (!m_Object->IsConnected()) return;
  m_List.Reset();
  const Vec3f &s = m_Scale->m_Value;
  CMatrix world = ScalingMatrix(s.x, s.y, s.z) * Rotation(m_Rot->m_Value);
  world.m[12] = m_Pos->m_Value.x;
  world.m[13] = m_Pos->m_Value.y;
  world.m[14] = m_Pos->m_Value.z;
  CDrawItem &root = m_List.Root();
  root.matrix = world;
  const Color4f &c = m_Col->m_Value;
  root.color[0] = c.r;
  root.color[1] = c.g;
  root.color[2] = c.b;
  root.color[3] = c.a;
  WalkSource(m_Object, m_List, m_List.Head(), &m_Camera);
}

void CRenderObjectNode::Render(CRender *render) {
  RenderUpstream(render);
  m_List.Draw(render);
}
