#include "engine/DemoEngine.h"

#include "nodes/value/SinNode.h"
#include "platform/MessageQueue.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

namespace {
// Prints its input each time it is pulled.
class CPrintNode : public CNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(7, "Print", [] { return static_cast<CNode *>(new CPrintNode); }, "Prints its input");
    info->AddInPort(new CPortFloat("Value", "Value to print", 0.0f, 0.01f, -10000.0f, 10000.0f));
    return info;
  }
  bool Init() override {
    m_Input = InPort<CPortFloat>("Value");
    return true;
  }
  void Update(float time, FrameInfo *frame) override {
    UpdateInPorts(time);
    if (m_Out)
      fprintf(m_Out, "step %4d  time %8.4f  dt %.4f  Sin.Value %.6f\n", ++m_Count, frame->Time, frame->DeltaTime,
              m_Input->m_Value);
  }
  FILE *m_Out = nullptr;

 private:
  CPortFloat *m_Input = nullptr;
  int m_Count = 0;
};
}  // namespace

CDemoEngine::CDemoEngine(FILE *out, int maxSteps) : m_MaxSteps(maxSteps) {
  m_Infos.emplace_back(CSinNode::CreateInfo());
  m_Infos.emplace_back(CPrintNode::CreateInfo());
  CNode *sin = m_Infos[0]->Instantiate();
  sin->m_Name = "Sin1";
  sin->FindInPort("Frequency")->SetText("0.5");
  auto *print = static_cast<CPrintNode *>(m_Infos[1]->Instantiate());
  print->m_Name = "Print1";
  print->m_Out = out;
  print->Connect("Value", "Value", sin);
  m_Nodes = {sin, print};
  m_Root = print;
}

CDemoEngine::~CDemoEngine() {
  for (CNode *n : m_Nodes) delete n;
}

bool CDemoEngine::Update(float dt) {
  for (CNode *n : m_Nodes) n->m_Updated = false;
  m_Frame.Time += dt;
  m_Frame.DeltaTime = dt;
  m_Root->m_Frame = &m_Frame;
  m_Root->Pull(m_Frame.Time);
  if (++m_Steps >= m_MaxSteps && m_MaxSteps > 0 && !m_CloseSent) {
    m_CloseSent = true;
    MessageQueue().Post(WindowMessage{0, WM_CLOSE, 0, 0});
  }
  return true;
}
