// RenderToTexture: the size table, lazy drawing into two buffers, the
// ColorNext feedback texture and giving the targets back.
#include <gtest/gtest.h>

#include <memory>

#include "nodes/BuiltinNodes.h"
#include "nodes/render/RenderToTextureNode.h"
#include "render/RecordRender.h"
#include "render/RenderTypes.h"
#include "renderogl/TextureManager.h"
#include "scene/NodeFactory.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// Targets made of recorder textures; Begin, End and Release are noted.
class CFakeTargets : public CRenderTargetSource {
 public:
  ~CFakeTargets() override {
    for (auto &t : targets) {
      t->m_Color->Release();
      delete t->m_Color;
    }
  }
  CRenderTarget *Create(CRender &render, int width, int height) override {
    auto target = std::make_unique<CRenderTarget>();
    target->m_Width = width;
    target->m_Height = height;
    target->m_Color = render.CreateTexture(width, height, 0, TF_A8R8G8B8, TT_RenderTarget);
    target->m_Color->m_Flags |= TEXF_Pooled;
    targets.push_back(std::move(target));
    return targets.back().get();
  }
  void Begin(CRenderTarget &target, CRender &render) override { Note(render, "BeginTarget", target); }
  void End(CRenderTarget &target, CRender &render) override { Note(render, "EndTarget", target); }
  void Release(CRender &render, CTexture *color) override {
    static_cast<CRecordRender &>(render).Record("Release %s", (color->m_Flags & TEXF_Pooled) ? "pooled" : "kept");
  }
  void Note(CRender &render, const char *what, const CRenderTarget &target) {
    static_cast<CRecordRender &>(render).Record("%s %dx%d", what, target.m_Width, target.m_Height);
  }
  std::vector<std::unique_ptr<CRenderTarget>> targets;
};

struct RenderToTexture : testing::Test {
  RenderToTexture() {
    InstallBuiltinNodes();
    factory->Init();
    rtt.reset(static_cast<CRenderToTextureNode *>(factory->CreateNode("RenderToTexture")));
    clear.reset(factory->CreateNode("Clear"));
    rtt->SetTargetSource(&targets);
    rtt->m_Frame = clear->m_Frame = &frame;
    clear->FindInPort("Color")->SetText("1 0 0 1");
    EXPECT_TRUE(rtt->Connect("Render", "Render", clear.get()));
  }
  void Frame() {
    rtt->m_Updated = false;
    rtt->Update(frame.Time, &frame);
    for (CPort *p : rtt->m_InPorts) p->m_Changed = false;
  }
  CTexture *Read(const char *port) {
    CPDTexture *t = rtt->OutPort<CPortTexture>(port)->m_Value;
    return t ? t->GetTexture(&render) : nullptr;
  }
  std::vector<std::string> Calls() {
    std::vector<std::string> calls;
    for (const std::string &c : render.m_Calls)
      for (const char *kept : {"BeginTarget", "Clear", "EndTarget", "Release"})
        if (c.rfind(kept, 0) == 0) calls.push_back(c);
    render.ClearCalls();
    return calls;
  }

  CNodeFactoryRef factory;
  CFakeTargets targets;
  CRecordRender render{200, 100};
  FrameInfo frame;
  std::unique_ptr<CRenderToTextureNode> rtt;
  std::unique_ptr<CNode> clear;
};
}  // namespace

TEST_F(RenderToTexture, SizesFollowTheTableOfTheRenderUnit) {
  int w, h;
  render.SetUnits({{0, 0, 1600, 32}});
  rtt->FindInPort("Width")->SetText("4");
  rtt->FindInPort("Height")->SetText("5");
  rtt->TextureSize(render, w, h);
  EXPECT_EQ(w, 99);  // 6.225%, not 6.25%
  EXPECT_EQ(h, 2);   // 1 pixel, raised to the least height
  rtt->FindInPort("Width")->SetText("0");
  rtt->FindInPort("Height")->SetText("1");
  rtt->TextureSize(render, w, h);
  EXPECT_EQ(w, 1600);
  EXPECT_EQ(h, 16);
  rtt->FindInPort("Width")->SetText("-1");
  rtt->FindInPort("WidthCustom")->SetText("300");
  rtt->TextureSize(render, w, h);
  EXPECT_EQ(w, 300);
}

TEST_F(RenderToTexture, ChangingTheSizeAsksForNewDeviceObjects) {
  Frame();
  rtt->m_DirtyUnits = 0;
  Frame();
  EXPECT_EQ(rtt->m_DirtyUnits, 0u);
  CPort *height = rtt->FindInPort("HeightCustom");
  height->SetText("64");
  height->m_Changed = true;  // as an editor's change does
  Frame();
  EXPECT_EQ(rtt->m_DirtyUnits, ALL_UNITS);
}

TEST_F(RenderToTexture, DrawsOnlyWhenReadAndOncePerFrame) {
  Frame();
  EXPECT_TRUE(Calls().empty());
  EXPECT_FALSE(rtt->Target(0));  // nobody read it: no target either

  CTexture *first = Read("Color");
  ASSERT_TRUE(first);
  EXPECT_EQ(Read("Color"), first);
  EXPECT_EQ(Calls(), (std::vector<std::string>{"BeginTarget 200x100", "Clear 1 0 0 1 1 3", "EndTarget 200x100"}));
  EXPECT_FALSE(first->m_Flags & TEXF_Pooled);  // kept across frames
  EXPECT_TRUE(first->m_Flags & TEXF_HasMipmaps);
  EXPECT_EQ(rtt->OutPort<CPortTexture>("Color")->m_Value->m_Flags, 0x28);

  // The next frame draws into the other buffer.
  rtt->FrameFinished();
  Frame();
  CTexture *second = Read("Color");
  EXPECT_NE(second, first);
  EXPECT_EQ(Calls().size(), 3u);
  rtt->FrameFinished();
  Frame();
  EXPECT_EQ(Read("Color"), first);
}

TEST_F(RenderToTexture, ColorNextHoldsLastFramesPicture) {
  auto *next = rtt->OutPort<CPortTexture>("ColorNext");
  next->m_Connected = true;  // as a reader's connection does
  rtt->FindInPort("CreateMipMaps")->SetText("false");
  Frame();  // flags follow the port's value of the frame before
  Frame();
  EXPECT_EQ(next->m_Value->m_Flags, 0x20);

  // First frame: nothing drawn yet, so the next buffer is only cleared.
  CTexture *previous = Read("ColorNext");
  ASSERT_TRUE(previous);
  EXPECT_EQ(Calls(), (std::vector<std::string>{"BeginTarget 200x100", "Clear 0 0 0 0 1 3", "EndTarget 200x100"}));
  CTexture *current = Read("Color");
  EXPECT_EQ(Calls().size(), 3u);

  // After the swap the picture just drawn is on ColorNext, and Color draws
  // over the buffer ColorNext showed.
  rtt->FrameFinished();
  Frame();
  EXPECT_EQ(Read("ColorNext"), current);
  EXPECT_TRUE(Calls().empty());
  EXPECT_EQ(Read("Color"), previous);
  EXPECT_EQ(Calls(), (std::vector<std::string>{"BeginTarget 200x100", "Clear 1 0 0 1 1 3", "EndTarget 200x100"}));
}

TEST_F(RenderToTexture, InvalidatingGivesBothTargetsBackToThePool) {
  rtt->OutPort<CPortTexture>("ColorNext")->m_Connected = true;
  Frame();
  Read("Color");
  Read("ColorNext");
  Calls();
  rtt->InvalidateDevice(&render);
  EXPECT_EQ(Calls(), (std::vector<std::string>{"Release pooled", "Release pooled"}));
  EXPECT_FALSE(rtt->Target(0));
  EXPECT_FALSE(rtt->Target(1));
}

TEST_F(RenderToTexture, WithoutARenderChainNothingIsDrawn) {
  rtt->Disconnect(clear.get());
  Frame();
  EXPECT_EQ(Read("Color"), nullptr);
  EXPECT_TRUE(Calls().empty());
}
