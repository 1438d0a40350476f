// RenderToTexture: the size table, lazy drawing into two buffers, the
// ColorNext feedback texture and giving the targets back.
#include <gtest/gtest.h>

#include <memory>

#include "nodes/BuiltinNodes.h"
#include "nodes/render/RenderToTextureNode.h"
#include "scene/NodeFactory.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/RecordTargets.h"

namespace {
struct RenderToTexture : testing::Test {
  RenderToTexture() {
    InstallBuiltinNodes();
    factory->Init();
    rtt.reset(static_cast<CRenderToTextureNode *>(factory->CreateNode("RenderToTexture")));
    clear.reset(factory->CreateNode("Clear"));
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
    std::vector<std::string> calls = CallsStartingWith(render, {"BeginTarget", "Clear", "EndTarget", "ReleaseTarget"});
    render.ClearCalls();
    return calls;
  }

  CNodeFactoryRef factory;
  CRecordRender render{200, 100};
  FrameInfo frame;
  std::unique_ptr<CRenderToTextureNode> rtt;
  std::unique_ptr<CNode> clear;
};
}  // namespace

TEST_F(RenderToTexture, SizesFollowTheTableOfTheRenderUnit) {
  render.SetUnits({{0, 0, 1600, 32}});
  auto size = [&](const char *width, const char *height) {
    rtt->FindInPort("Width")->SetText(width);
    rtt->FindInPort("Height")->SetText(height);
    int w, h;
    rtt->TextureSize(render, w, h);
    return std::pair{w, h};
  };
  EXPECT_EQ(size("4", "5"), std::pair(99, 2));  // 6.225%, not 6.25%; 1 pixel raised to the least height
  EXPECT_EQ(size("0", "1"), std::pair(1600, 16));
  rtt->FindInPort("WidthCustom")->SetText("300");
  EXPECT_EQ(size("-1", "1").first, 300);
}

TEST_F(RenderToTexture, DrawsOnlyWhenReadAndOncePerFrame) {
  rtt->Disconnect(clear.get());
  Frame();
  EXPECT_EQ(Read("Color"), nullptr) << "without a render chain nothing is drawn";
  ASSERT_TRUE(rtt->Connect("Render", "Render", clear.get()));
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
  rtt->m_DirtyUnits = 0;
  Frame();
  EXPECT_EQ(Read("Color"), first);

  // A new size asks for new device objects; an unchanged frame didn't.
  EXPECT_EQ(rtt->m_DirtyUnits, 0u);
  CPort *height = rtt->FindInPort("HeightCustom");
  height->SetText("64");
  height->m_Changed = true;  // as an editor's change does
  Frame();
  EXPECT_EQ(rtt->m_DirtyUnits, ALL_UNITS);
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

  // Invalidating gives both targets back to the pool.
  rtt->InvalidateDevice(&render);
  EXPECT_EQ(Calls(), (std::vector<std::string>{"ReleaseTarget pooled", "ReleaseTarget pooled"}));
  EXPECT_FALSE(rtt->Target(0) || rtt->Target(1));
}
