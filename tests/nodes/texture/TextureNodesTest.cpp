// The generated textures: gradient shapes and stops, tiling noise, the file
// texture's orientation, its .dds twin and its blank stand-in, and sizes
// held to what a texture may be.
#include <FreeImage.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <thread>
#include <vector>

#include "nodes/BuiltinNodes.h"
#include "nodes/texture/FileTextureNode.h"
#include "nodes/texture/GeneratedTexture.h"
#include "scene/NodeFactory.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/LogCapture.h"
#include "support/RecordTargets.h"
#include "support/TempDir.h"

namespace {
struct Textures : testing::Test {
  Textures() {
    InstallBuiltinNodes();
    factory->Init();
  }
  // A node of the type with its ports set, updated once and made on the
  // recorder; its texture, or null. A width is set as a connection delivers
  // it, past the port's range.
  using Ports = std::vector<std::pair<const char *, const char *>>;
  // A null type keeps the node there is.
  CRecordTexture *Make(const char *type, const Ports &ports, int width = 0) {
    if (type) node.reset(factory->CreateNode(type));
    node->m_Frame = &frame;
    for (const auto &[port, text] : ports) node->FindInPort(port)->SetText(text);
    if (width) node->InPort<CPortInt>("Width")->m_Value = width;
    node->Update(0, &frame);
    if (!node->ResetDevice(&render)) return nullptr;
    CPDTexture *out = node->OutPort<CPortTexture>("Texture")->m_Value;
    return out ? dynamic_cast<CRecordTexture *>(out->GetTexture(&render)) : nullptr;
  }
  static uint32_t At(const CRecordTexture *t, int x, int y) { return t->m_Pixels[y * t->m_Width + x]; }
  static int Channel(uint32_t texel, int c) { return (texel >> (8 * c)) & 0xFF; }

  CNodeFactoryRef factory;
  CRecordRender render;
  FrameInfo frame;
  std::unique_ptr<CNode> node;
};

// Red, green and blue of a texel within a tolerance.
void ExpectRGB(uint32_t texel, int r, int g, int b, const char *where) {
  for (int c : {0, 1, 2}) EXPECT_NEAR(Textures::Channel(texel, c), (std::array{r, g, b})[c], 10) << where << " " << c;
}
}  // namespace

TEST_F(Textures, GradientShapesRunFromTheFirstStopThroughTheMiddleToTheLast) {
  // Black at 0, red at the middle, blue from 1.
  const struct { const char *type, *width, *height; int start[2], middle[2], end[2]; } shapes[] = {
      {"0", "256", "1", {0, 0}, {127, 0}, {255, 0}},
      {"1", "64", "64", {32, 32}, {54, 32}, {0, 0}},   // radial: the centre out to the corners
      {"2", "64", "64", {63, 32}, {32, 0}, {0, 32}},   // conical: right, up, round to the left
      {"3", "64", "64", {32, 32}, {47, 32}, {0, 0}},   // square
  };
  for (const auto &s : shapes) {
    CRecordTexture *t = Make("Gradient", {{"GradientType", s.type}, {"Width", s.width}, {"Height", s.height},
                                          {"Color1", "0 0 0 1"}, {"Color2Peak", "0.5"}, {"Color2", "1 0 0 1"},
                                          {"Color3", "0 0 1 1"}, {"Color4", "0 0 1 1"}, {"Color5", "0 0 1 1"}});
    ASSERT_TRUE(t);
    SCOPED_TRACE(s.type);
    ExpectRGB(At(t, s.start[0], s.start[1]), 0, 0, 0, "start");
    ExpectRGB(At(t, s.middle[0], s.middle[1]), 255, 0, 0, "middle stop");
    ExpectRGB(At(t, s.end[0], s.end[1]), 0, 0, 255, "end");
  }
  EXPECT_EQ(node->OutPort<CPortTexture>("Texture")->m_Value->m_Mode, 2);
  // Defaults: one row from transparent black to white; past every peak the background.
  CRecordTexture *t = Make("Gradient", {});
  EXPECT_EQ(t->Dimension(), 1);
  EXPECT_EQ(At(t, 0, 0), 0u);
  EXPECT_EQ(At(t, 255, 0), 0xFEFEFEFEu);
  t = Make("Gradient", {{"Color2Peak", "0.5"}, {"Color3Peak", "0.5"}, {"Color4Peak", "0.5"}, {"Color5Peak", "0.5"},
                        {"BackgroundColor", "0 1 0 1"}});
  EXPECT_EQ(At(t, 255, 0), 0xFF00FF00u);
}

TEST_F(Textures, NoiseTilesAcrossEveryEdge) {
  CRecordTexture *t = Make("NoiseTexture", {{"Width", "64"}, {"Height", "64"}, {"NoiseR", "3"}, {"NoiseG", "0"},
                                            {"NoiseB", "10"}, {"NoiseA", "15"}});
  ASSERT_TRUE(t);
  for (int c : {0, 2, 3}) {
    // The step from the last column (row) to the first is no larger than a
    // step between neighbours inside the picture.
    double inside = 0, acrossX = 0, acrossY = 0;
    for (int k = 0; k < 64; ++k) {
      for (int i = 0; i + 1 < 64; ++i) inside += std::abs(Channel(At(t, i, k), c) - Channel(At(t, i + 1, k), c));
      acrossX += std::abs(Channel(At(t, 63, k), c) - Channel(At(t, 0, k), c));
      acrossY += std::abs(Channel(At(t, k, 63), c) - Channel(At(t, k, 0), c));
    }
    inside /= 63;
    EXPECT_GT(inside, 0.5) << "channel " << c << " is not flat";
    EXPECT_LT(acrossX, 2.5 * inside + 64) << "channel " << c;
    EXPECT_LT(acrossY, 2.5 * inside + 64) << "channel " << c;
  }
  EXPECT_EQ(Channel(At(t, 17, 5), 1), 127) << "no noise is 0.5";
}

TEST_F(Textures, NoiseComputedAheadIsTheNoiseOfThePortsWhenTheTextureIsMade) {
  const Ports ports = {{"Width", "32"}, {"Height", "32"}, {"NoiseR", "10"}, {"NoiseB", "14"}};
  const std::vector<uint32_t> direct = Make("NoiseTexture", ports)->m_Pixels;
  // Started ahead with these ports, or with the defaults that a connection
  // changes before the texture is made.
  for (const bool portsChange : {false, true}) {
    node.reset(factory->CreateNode("NoiseTexture"));
    if (!portsChange)
      for (const auto &[port, text] : ports) node->FindInPort(port)->SetText(text);
    node->StartHostWork();
    while (!node->HostWorkDone()) std::this_thread::yield();
    EXPECT_EQ(Make(nullptr, ports)->m_Pixels, direct) << (portsChange ? "ports changed" : "same ports");
  }
}

TEST_F(Textures, SizesFromPortsAreHeldToWhatATextureMayBe) {
  const struct { const char *type; Ports ports; int width, w, h, d; } cases[] = {
      {"NoiseTexture", {{"Height", "1"}, {"Depth", "4096"}}, 4096, 4096, 1, 1},  // one row: the depth doesn't count
      {"ExpressionTexture", {{"Height", "2"}, {"Depth", "2"}}, 300, 128, 2, 2},  // a volume
      {"Gradient", {{"Height", "7"}}, 100000, 4096, 7, 1},
  };
  for (const auto &c : cases) {
    CRecordTexture *t = Make(c.type, c.ports, c.width);
    ASSERT_TRUE(t) << c.type;
    EXPECT_EQ((std::array{t->m_Width, std::max(t->m_Height, 1), std::max(t->m_Depth, 1)}), (std::array{c.w, c.h, c.d}))
        << c.type;
  }
  const TextureSize volume = ClampTextureSize(4096, 4096, 4096), picture = ClampTextureSize(4096, 4096, 1);
  EXPECT_EQ(volume.width * volume.height * volume.depth, 128 * 128 * 128);
  EXPECT_EQ(picture.width * picture.height, 4096 * 4096);
  const TextureSize computed = ClampTextureSize(4096, 4096, 1, MAX_COMPUTED_TEXELS);
  EXPECT_EQ(computed.width * computed.height, 1024 * 1024);
}

TEST_F(Textures, FileTextureTopRowFirstDdsTwinAndBlankStandIn) {
  TempDir dir;
  // A 2 x 2 picture, red above blue; FreeImage keeps rows bottom up.
  FIBITMAP *picture = FreeImage_Allocate(2, 2, 24);
  RGBQUAD red{0, 0, 255, 0}, blue{255, 0, 0, 0};
  for (unsigned x = 0; x < 2; ++x) {
    FreeImage_SetPixelColor(picture, x, 1, &red);
    FreeImage_SetPixelColor(picture, x, 0, &blue);
  }
  ASSERT_TRUE(FreeImage_Save(FIF_PNG, picture, (dir / "picture.png").c_str(), 0));
  FreeImage_Unload(picture);
  CRecordTexture *t = Make("FileTexture", {{"Filename", (dir / "picture.png").c_str()}});
  ASSERT_TRUE(t);
  EXPECT_EQ(At(t, 0, 0), 0xFF0000FFu) << "top row first";
  EXPECT_EQ(At(t, 1, 1), 0xFFFF0000u);

  // Asked for a picture that isn't there, the .dds beside it is read.
  const std::string marble = std::string(VELMOR_SOURCE_ROOT) + "/assets/data/marbletiled";
  std::vector<uint32_t> dds, twin;
  int w = 0, h = 0, tw = 0, th = 0;
  ASSERT_TRUE(CNTFile::LoadImage(marble + ".dds", dds, w, h));
  ASSERT_TRUE(CNTFile::LoadImage(marble + ".jpg", twin, tw, th));
  EXPECT_EQ(std::pair(w, h), std::pair(256, 256));
  EXPECT_EQ(twin, dds);

  LogCapture log;
  t = Make("FileTexture", {{"Filename", (dir / "missing.png").c_str()}});
  ASSERT_TRUE(t);
  EXPECT_EQ(std::pair(t->m_Width, t->m_Height), std::pair(32, 32));
  EXPECT_EQ(At(t, 31, 31), 0u);
  EXPECT_EQ(log.errors, std::vector<std::string>{"Unable to load image \"" + (dir / "missing.png") + "\""});
}
