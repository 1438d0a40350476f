// Blur and CopyTexture on the GL, read back from their targets.
#include "GLTestSupport.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/texture/CopyTextureNode.h"
#include "portdata/PDTexture.h"
#include "renderogl/TextureManager.h"
#include "renderogl/TextureOGL.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// Offers a texture the test fills.
class CSourceTexture : public CNode, public CPDTexture {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(4, "Source", [] { return static_cast<CNode *>(new CSourceTexture); }, "");
    info->AddOutPort(new CPortTexture("Texture", ""));
    return info;
  }
  void Update(float, FrameInfo *) override { static_cast<CPortTexture *>(m_OutPorts[0])->SetTexture(this); }
};

// RGBA bytes of a texture, rows from the top.
std::vector<uint8_t> ReadBack(CTexture *t) {
  std::vector<uint8_t> bytes(static_cast<size_t>(t->m_Width) * t->m_Height * 4);
  glBindTexture(GL_TEXTURE_2D, dynamic_cast<CTextureOGL *>(t)->m_Name);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
  glBindTexture(GL_TEXTURE_2D, 0);
  return bytes;
}

struct TextureFilter : testing::Test {
  void SetUp() override {
    VELMOR_REQUIRE_DISPLAY();
    InstallBuiltinNodes();
    factory->Init();
    gl = std::make_unique<GLWindow>(64, 64);
    ASSERT_TRUE(gl->Ok());
  }
  void TearDown() override {
    if (filter) filter->InvalidateDevice(&gl->render);
    if (source && source->m_Textures[0]) {
      source->m_Textures[0]->Release();
      delete source->m_Textures[0];
    }
    gl.reset();
  }
  // A source of `width` x `height` texels of color(x, y), and the filter on it.
  template <typename Color>
  void Make(const char *type, int width, int height, Color &&color) {
    CTexture *t = gl->render.CreateTexture(width, height, 0, TF_A8R8G8B8, TT_Normal);
    uint32_t *texels = t->Lock();
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) texels[y * width + x] = color(x, y);
    t->Unlock();
    sourceNode.reset(sourceInfo->Instantiate());
    source = static_cast<CSourceTexture *>(sourceNode.get());
    source->m_Textures[0] = t;
    source->m_Frame = &frame;
    filter.reset(factory->CreateNode(type));
    filter->m_Frame = &frame;
    ASSERT_TRUE(filter->Connect("Texture", "Texture", source));
  }
  // The filter's texture of this frame.
  CTexture *Read() {
    filter->Update(0, &frame);
    EXPECT_TRUE(filter->RestoreDevice(&gl->render));
    CPDTexture *out = filter->OutPort<CPortTexture>("Texture")->m_Value;
    return out ? out->GetTexture(&gl->render) : nullptr;
  }

  ScopedCwd cwd{VELMOR_SOURCE_ROOT "/assets"};  // where nodedata/blur.cgfx is found
  CNodeFactoryRef factory;
  std::unique_ptr<GLWindow> gl;
  std::unique_ptr<CNodeInfo> sourceInfo{CSourceTexture::CreateInfo()};
  std::unique_ptr<CNode> sourceNode;
  CSourceTexture *source = nullptr;
  std::unique_ptr<CNode> filter;
  FrameInfo frame;
};
}  // namespace

TEST_F(TextureFilter, BlurSoftensAHardEdgeAndKeepsTheMean) {
  // Black left, white right; the top row is green as well, to see which way up it comes out.
  Make("Blur", 32, 8, [](int x, int y) { return (x < 16 ? 0xFF000000u : 0xFFFFFFFFu) | (y == 0 ? 0xFF00u : 0u); });
  filter->FindInPort("Dir")->SetText("0");
  filter->FindInPort("Width")->SetText("8");  // two passes along x
  CTexture *blurred = Read();
  ASSERT_TRUE(blurred);
  ASSERT_EQ(blurred->m_Width, 32);
  const std::vector<uint8_t> px = ReadBack(blurred);
  auto red = [&](int x, int y) { return static_cast<int>(px[(y * 32 + x) * 4]); };
  int sum = 0;
  for (int x = 0; x < 32; ++x) sum += red(x, 4);
  EXPECT_NEAR(sum / 32.0, 127.5, 4) << "the mean stays";
  EXPECT_TRUE(red(0, 4) == 0 && red(31, 4) == 255) << "the ends stay as they were";
  for (int x : {13, 14, 15, 16, 17, 18}) EXPECT_TRUE(red(x, 4) > 10 && red(x, 4) < 245) << x << ": " << red(x, 4);
  EXPECT_LT(red(14, 4), red(17, 4));
  EXPECT_EQ(px[1], 255) << "the top row stays on top";
  EXPECT_EQ(px[(7 * 32 + 1) * 4 + 1], 0);
  CTextureManager::ReleaseTexture(gl->render.m_TextureManager, gl->render, blurred);
}

TEST_F(TextureFilter, CopyTextureDrawsAtTheChosenFractionTheRightWayUp) {
  // Red above, green below.
  Make("CopyTexture", 100, 60, [](int, int y) { return y < 30 ? 0xFF0000FFu : 0xFF00FF00u; });
  CTexture *copy = Read();
  ASSERT_TRUE(copy);
  EXPECT_EQ(std::pair(copy->m_Width, copy->m_Height), std::pair(25, 15));
  const std::vector<uint8_t> px = ReadBack(copy);
  auto texel = [&](int x, int y) {
    const uint8_t *p = &px[(y * 25 + x) * 4];
    return std::array<int, 3>{p[0], p[1], p[2]};
  };
  EXPECT_EQ(texel(3, 1), (std::array<int, 3>{255, 0, 0}));
  EXPECT_EQ(texel(20, 13), (std::array<int, 3>{0, 255, 0}));
  CTextureManager::ReleaseTexture(gl->render.m_TextureManager, gl->render, copy);
}
