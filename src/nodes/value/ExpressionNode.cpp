#include "nodes/value/ExpressionNode.h"

#include "nodes/ExpressionPorts.h"

#include "core/Random.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CExpressionNode::CreateInfo() {
  auto *info = new CNodeInfo(
      7, "Expression", [] { return static_cast<CNode *>(new CExpressionNode); },
      "Math expression evaluator. Please see the website for a detailed description of this node");
  AddExpressionInputPorts(*info, false);
  info->AddInPort(new CPortString(
      "Expression",
      "Expression to be evaluated. Inputs are in1,in2,in3,in4,in5,time(local or scene), scenetime (always scene "
      "runtime), deltatime (not correct when connected to local port), perm (Not reset for the life of the node. "
      "Initial value 0) and permrand (Not reset for the life of the node. Initial value 0.0-1.0).. Outputs are named "
      "out1,out2 and out3. Please see the website for detailed description of this port. Some of the allowed values "
      "are abs, mod, min, max, sqrt, sin, cos, tan, atan, log, lb, exp, ceil, floor, deg, rad, if, select, equal, "
      "above, below, clip, clamp, and, or, not.",
      "out1=sin(time)/2"));
  info->AddOutPort(new CPortFloat("Out1", "Computed value", 0.0f, 0.01f, 0.0f, 1.0f));
  info->AddOutPort(new CPortFloat("Out2", "Computed value", 0.0f, 0.01f, 0.0f, 1.0f));
  info->AddOutPort(new CPortFloat("Out3", "Computed value", 0.0f, 0.01f, 0.0f, 1.0f));
  return info;
}

bool CExpressionNode::Init() {
  static const char *const inPorts[5] = {"In1", "In2", "In3", "In4", "In5"};
  static const char *const inNames[5] = {"in1", "in2", "in3", "in4", "in5"};
  static const char *const outPorts[3] = {"Out1", "Out2", "Out3"};
  static const char *const outNames[3] = {"out1", "out2", "out3"};
  for (int i = 0; i < 5; ++i) m_Inputs[i] = InPort<CPortFloat>(inPorts[i]);
  m_RandomSeed = InPort<CPortInt>("RandomSeed");
  m_Expression = InPort<CPortString>("Expression");
  for (int i = 0; i < 3; ++i) m_Outputs[i] = OutPort<CPortFloat>(outPorts[i]);

  // The variables the text sees, in this order.
  m_PermRandStart = RandomRange(0.0f, 1.0f);
  for (int i = 0; i < 5; ++i) m_Eval.AddAddress(inNames[i], &m_In[i], 1.0);
  m_Eval.AddAddress("time", &m_Time, 1.0);
  m_Eval.AddAddress("deltatime", &m_DeltaTime, 1.0);
  m_Eval.AddAddress("scenetime", &m_SceneTime, 1.0);
  m_Eval.AddAddress("perm", &m_Perm, 0.0);
  m_Eval.AddAddress("permrand", &m_PermRand, m_PermRandStart);
  for (int i = 0; i < 3; ++i) m_Eval.AddAddress(outNames[i], &m_Out[i], 0.0);
  m_Eval.Attach();
  return true;
}

// Unguarded: under local evaluation `time` is the local value while
// `scenetime` stays the scene's.
void CExpressionNode::Update(float time, FrameInfo *frame) {
  UpdateInPorts(time);
  if (m_Expression->m_Changed) {
    // A new text starts over: its variables (perm included) go back to their
    // defaults, and permrand to the number this node drew at the start.
    m_Eval.Compile(m_Expression->m_Value);
    m_PermRand = m_PermRandStart;
  }
  if (m_Eval.m_Compiled) {
    for (int i = 0; i < 5; ++i) m_In[i] = m_Inputs[i]->m_Value;
    m_Time = time;
    m_SceneTime = frame->Time;
    m_DeltaTime = frame->DeltaTime;
    // The same seed each evaluation: rand() repeats its sequence unless the
    // text reseeds.
    m_Eval.SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));
    for (double &out : m_Out) out = 0.0;
    m_Eval.Evaluate();
  }
  // A text that failed (now or before) leaves the outputs at 0.
  for (int i = 0; i < 3; ++i) {
    m_Outputs[i]->m_Value = m_Eval.m_Compiled ? static_cast<float>(m_Out[i]) : 0.0f;
    m_Outputs[i]->m_Changed = true;
  }
}
