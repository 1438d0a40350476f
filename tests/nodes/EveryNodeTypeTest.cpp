// Every node type the factory knows, built in or made from an effect file,
// goes through the life a scene gives it: made by the factory, fed and shown
// in a graph, updated and drawn for a few frames with a device loss in the
// middle, and deleted, with no error logged, no misuse of the renderer, no
// buffer left when its device objects go (and, under the sanitizers, no
// memory fault). Nothing here names a type
// under test: a type is covered by being registered.
#include <gtest/gtest.h>
#include <unistd.h>

#include "core/Random.h"
#include "fx/FxManager.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/EffectTestSupport.h"
#include "nodes/effect/FxNode.h"
#include "render/RecordRender.h"
#include "scene/Dag.h"
#include "scene/Node.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"
#include "scene/Port.h"
#include "support/LogCapture.h"

namespace {
// What the harness uses to feed a pointer in-port of each kind, and how it
// makes each kind of pointer out-port visible.
const char *Producer(int portType) {
  switch (portType) {
    case PT_Render: return "Clear";
    case PT_Object: return "MeshObject";
    case PT_Effect: return "Shader";
    case PT_Texture: return "RenderToTexture";
    case PT_Mesh: return "Cube";
    default: return nullptr;
  }
}

bool IsPointer(const CPort *port) { return Producer(port->m_Type) != nullptr; }

CPort *FirstPort(const std::vector<CPort *> &ports, int type) {
  for (CPort *p : ports)
    if (p->m_Type == type) return p;
  return nullptr;
}

// Wires a node into a graph whose root is a Screen.
class CHarness {
 public:
  explicit CHarness(CDag &dag) : m_Dag(dag), m_Screen(Add("Screen")) {}

  CNode *Add(const char *type) {
    CNode *node = m_Dag.AddNode(type);
    EXPECT_NE(node, nullptr) << type;
    return node;
  }
  // Gives every pointer in-port a producer of its kind, fed in turn, a few
  // levels deep.
  // An object in-port beside an effect in-port is left open: such a node
  // draws its own primitives and puts the object only in some of them.
  void Feed(CNode *node, int depth = 3) {
    if (!node || depth == 0) return;
    const bool ownPrimitives = FirstPort(node->m_InPorts, PT_Effect) != nullptr;
    for (CPort *in : node->m_InPorts)
      if (IsPointer(in) && !in->IsConnected() && !(ownPrimitives && in->m_Type == PT_Object)) {
        CNode *producer = Add(Producer(in->m_Type));
        if (!producer) continue;
        ConnectPorts(FirstPort(producer->m_OutPorts, in->m_Type), in);
        Feed(producer, depth - 1);
      }
  }
  // Takes the node's first pointer out-port to the Screen through the node
  // types that consume it: a texture into a shader, an effect or a mesh
  // into a mesh object, an object into a render stage.
  // False for a node with no pointer out-port.
  bool Show(CNode *node) {
    CPort *out = nullptr;
    for (CPort *p : node->m_OutPorts)
      if (IsPointer(p)) {
        out = p;
        break;
      }
    if (!out) return false;
    const char *consumer = out->m_Type == PT_Render    ? nullptr
                           : out->m_Type == PT_Object  ? "RenderObject"
                           : out->m_Type == PT_Texture ? "Shader"
                                                       : "MeshObject";
    if (!consumer) return ConnectPorts(out, FirstPort(m_Screen->m_InPorts, PT_Render));
    CNode *next = Add(consumer);
    if (!next) return false;
    ConnectPorts(out, FirstPort(next->m_InPorts, out->m_Type));
    Feed(next);
    return Show(next);
  }

 private:
  CDag &m_Dag;
  CNode *m_Screen;
};

// Types read their files (pictures, fonts, effects) from the installation
// folder, which the program makes its current folder.
struct EveryNodeType : testing::Test {
  EveryNodeType() {
    EXPECT_TRUE(getcwd(m_Cwd, sizeof(m_Cwd)));
    EXPECT_EQ(chdir(AssetsDir().c_str()), 0);
    SeedSharedRandom(7);  // as the program does at start
    InstallBuiltinNodes();
    factory->Init();
    CNEFx::AddNodesToFactory(*factory, (AssetsDir() + "nodes/effect").c_str());
    effects.Init(nullptr);
    render.m_FxManager = &effects;
  }
  ~EveryNodeType() override {
    effects.Free();
    EXPECT_EQ(chdir(m_Cwd), 0);
  }

  CNodeFactoryRef factory;
  CFxManager effects;
  CRecordRender render{96, 64};
  char m_Cwd[4096] = {};
};
}  // namespace

TEST_F(EveryNodeType, LivesThroughFramesAndADeviceLossWithoutErrorsOrMisuse) {
  const std::vector<CNodeInfo *> &types = factory->Types();
  ASSERT_GT(types.size(), 30u) << "the built-in types and the shipped effects";
  for (const CNodeInfo *type : types) {
    SCOPED_TRACE(type->m_TypeName);
    LogCapture log;
    render.ClearCalls();
    {
      CDag dag;
      dag.m_Factory = &*factory;
      CHarness harness(dag);
      CNode *node = harness.Add(type->m_TypeName.c_str());
      if (!node) continue;
      harness.Feed(node);
      const bool shown = harness.Show(node);
      const bool stage = FirstPort(node->m_OutPorts, PT_Render) != nullptr;
      dag.Activate();
      ASSERT_TRUE(dag.RestoreDevice(&render));
      render.m_Callbacks.onRender = [&] { dag.Draw(&render); };
      bool drew = false;
      for (int frame = 0; frame < 4; ++frame) {
        // Long frames, so that what comes over time (emitters, spawners) has
        // come by the last one.
        dag.Update(0.3f);
        // A value node that nothing shown reads is pulled as a reader would.
        if (!node->m_Updated) node->Pull(dag.m_FrameInfo.Time);
        render.Render3DEnvironment(false);
        dag.FrameFinished();
        drew = drew || !render.Calls("Draw").empty() || (stage && !render.Calls("Clear").empty());
        EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
        render.ClearCalls();
        if (frame == 1) {
          dag.InvalidateDevice(&render);
          ASSERT_TRUE(dag.RestoreDevice(&render));
        }
      }
      // What it shows reaches the screen in some frame (a system that
      // emits over time may start empty): primitives, or for a stage at
      // least the Clear at the far end of its chain.
      EXPECT_TRUE(drew || !shown);
      dag.InvalidateDevice(&render);
      render.m_Callbacks.onRender = nullptr;
      // Every buffer made for the scene went with its device objects.
      EXPECT_EQ(render.LiveCount("vb") + render.LiveCount("ib"), 0);
    }
    EXPECT_TRUE(log.errors.empty()) << [&] { std::string all; for (auto &l : log.lines) all += l + "\n"; return all; }();
    EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
  }
}
