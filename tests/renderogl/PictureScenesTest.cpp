// Scenes drawn through the GL backend, checked by their pixels.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "core/Paths.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "portdata/Font.h"
#include "renderogl/GLTestSupport.h"
#include "scene/Scene.h"
#include "support/TempDir.h"

namespace {
constexpr int kWidth = 128, kHeight = 96;

using Rgb = std::array<int, 3>;

const char kPassUv[] = R"(
float4x4 gWVP : WORLDVIEWPROJECTION;
struct UvOut { float4 hpos : POSITION; float2 uv : TEXCOORD0; };
UvOut UvVS(float3 pos : POSITION, float2 uv : TEXCOORD0) {
  UvOut o;
  o.hpos = mul(gWVP, float4(pos, 1.0));
  o.uv = uv;
  return o;
}
)";

// Each frame adds a quarter to every channel of what the texture held.
const std::string kFeedbackStep = std::string(kPassUv) + R"(
string Info : VELMORINFO <string Description = "Last picture plus a step";> = "";
texture gLast : DIFFUSE <string UIName = "Last"; string UIDesc = "Picture to step from";>;
sampler2D gLastSampler = sampler_state { Texture = <gLast>; MinFilter = Nearest; MagFilter = Nearest; };
float4 StepPS(float2 uv : TEXCOORD0) : COLOR { return float4(tex2D(gLastSampler, uv).rgb + 0.25, 1.0); }
technique Step { pass p0 { VertexProgram = compile glslv UvVS(); FragmentProgram = compile glslf StepPS(); } }
)";

// A one-dimensional sampler left open, times a tint.
const std::string kRampTint = std::string(kPassUv) + R"(
string Info : VELMORINFO <string Description = "A 1D ramp times a tint";> = "";
float4 gTint : DIFFUSE <string UIName = "Color"; string UIDesc = "Tint";> = {1.0, 1.0, 1.0, 1.0};
texture gRamp : DIFFUSE <string UIName = "Ramp"; string UIDesc = "Ramp";>;
sampler1D gRampSampler = sampler_state { Texture = <gRamp>; MinFilter = Linear; MagFilter = Linear; };
float4 RampPS(float2 uv : TEXCOORD0) : COLOR { return tex1D(gRampSampler, uv.x) * gTint; }
technique Ramp { pass p0 { VertexProgram = compile glslv UvVS(); FragmentProgram = compile glslf RampPS(); } }
)";

std::string SceneFile(const std::string &nodes, const std::string &connections, const std::string &name = "picture") {
  return "<Velmor><Transitions/><Scenes><Scene Name=\"" + name + "\"><Nodes>" + nodes + "</Nodes><Connections>" +
         connections + "</Connections></Scene></Scenes></Velmor>";
}

int Byte(double v) { return static_cast<int>(std::lround(std::clamp(v, 0.0, 1.0) * 255.0)); }

bool Near(const Rgb &pixel, const Rgb &expected, int tolerance = 4) {
  for (int i = 0; i < 3; ++i)
    if (std::abs(pixel[i] - expected[i]) > tolerance) return false;
  return true;
}

using Points = std::initializer_list<std::pair<int, int>>;

class Pictures : public testing::Test {
 protected:
  void SetUp() override {
    VELMOR_REQUIRE_DISPLAY();
    SetAppPaths(m_Dir / "app", m_Dir / "user");
    m_Dir.Write("effects/FeedbackStep.cgfx", kFeedbackStep);
    m_Dir.Write("effects/RampTint.cgfx", kRampTint);
    InstallBuiltinNodes();
    m_Window = std::make_unique<GLWindow>(kWidth, kHeight);
    ASSERT_TRUE(m_Window->Ok());
    m_Engine = std::make_unique<CVelmor>();
    const std::string shipped = std::string(VELMOR_SOURCE_ROOT) + "/assets/nodes/effect", own = m_Dir / "effects";
    m_Engine->m_RegisterEffectNodes = [shipped, own](CNodeFactory &factory) {
      CNEFx::AddNodesToFactory(factory, shipped.c_str());
      CNEFx::AddNodesToFactory(factory, own.c_str());
    };
    ASSERT_TRUE(m_Engine->Init());
  }

  void TearDown() override {
    if (m_Scene) m_Scene->InvalidateDevice(&m_Window->render);
    m_Scene.reset();
    m_Engine.reset();
    m_Window.reset();
    SetAppPaths(".", ".");
  }

  std::vector<std::vector<uint8_t>> Play(const std::string &nodes, const std::string &links, int frames) {
    if (m_Scene) m_Scene->InvalidateDevice(&m_Window->render);
    m_Scene.reset(m_Engine->LoadScene(m_Dir.Write("app/scenes/picture.vms", SceneFile(nodes, links))));
    EXPECT_TRUE(m_Scene) << "scene did not load";
    return m_Scene ? Frames(*m_Scene, frames) : Frames(frames);
  }
  // The picture of each frame, read before the swap leaves the back buffer
  // undefined; black pictures when it failed, so that checks read no further
  // than the window.
  std::vector<std::vector<uint8_t>> Frames(CSceneBase &scene, int frames, float dt = 1.0f / 30) {
    std::vector<std::vector<uint8_t>> pictures;
    CRender &render = m_Window->render;
    scene.Activate();
    EXPECT_TRUE(render.SwitchToRenderUnit(0));
    scene.RestoreDevice(&render);
    m_Window->client.onRender = [&] {
      scene.Draw(&render);
      pictures.push_back(m_Window->Pixels());
    };
    for (int frame = 0; frame < frames; ++frame) {
      scene.Update(dt);
      render.Render3DEnvironment(false);
      scene.FrameFinished();
    }
    m_Window->client.onRender = nullptr;
    EXPECT_EQ(static_cast<int>(pictures.size()), frames);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    return static_cast<int>(pictures.size()) == frames ? pictures : Frames(frames);
  }
  std::vector<std::vector<uint8_t>> Frames(int frames) {
    return std::vector<std::vector<uint8_t>>(static_cast<size_t>(frames), std::vector<uint8_t>(m_Window->Pixels().size()));
  }

  Rgb At(const std::vector<uint8_t> &picture, int x, int y) const { return m_Window->Pixel(picture, x, y); }
  void ExpectAt(const std::vector<uint8_t> &picture, Points points, const Rgb &expected, int tolerance = 4) {
    for (auto [x, y] : points)
      EXPECT_TRUE(Near(At(picture, x, y), expected, tolerance))
          << x << "," << y << ": " << testing::PrintToString(At(picture, x, y)) << ", expected "
          << testing::PrintToString(expected);
  }

  TempDir m_Dir;
  std::unique_ptr<GLWindow> m_Window;
  std::unique_ptr<CVelmor> m_Engine;
  std::unique_ptr<CScene> m_Scene;
};

// A full-screen rectangle drawn by `effect` (its node named Fx1), nothing else.
std::string RectNodes(const std::string &effect) {
  return R"(<Node Type="Screen" Name="Screen1"/><Node Type="RenderRect" Name="Rect1"/>)" + effect;
}
const char kRectLinks[] =
    R"(<Connection Out="Rect1.Render" In="Screen1.Render"/><Connection Out="Fx1.Effect" In="Rect1.Effect"/>)";
}  // namespace

// The default text lights each point by one minus its distance from the
// centre, in texture units stretched to -1..1 across the rectangle.
TEST_F(Pictures, ShaderDefaultTextDrawsARadialFalloffOnARenderRect) {
  auto pictures = Play(R"(<Node Type="Screen" Name="Screen1"/><Node Type="Clear" Name="Clear1" Color="0 0 0 1"/>
    <Node Type="RenderRect" Name="Rect1"/><Node Type="Shader" Name="Fx1"/>)",
                       std::string(kRectLinks) + R"(<Connection Out="Clear1.Render" In="Rect1.Render"/>)", 2);
  for (auto [x, y] : Points{{kWidth / 2, kHeight / 2}, {kWidth / 4, kHeight / 2}, {kWidth / 2, kHeight / 4},
                            {kWidth * 3 / 4, kHeight * 3 / 4}, {kWidth * 7 / 8, kHeight / 2}, {kWidth / 8, kHeight / 8},
                            {kWidth * 5 / 8, kHeight * 3 / 8}, {2, 2}, {kWidth - 3, kHeight - 3}}) {
    const double u = -1.0 + 2.0 * (x + 0.5) / kWidth, v = -1.0 + 2.0 * (y + 0.5) / kHeight;
    const int grey = Byte(1.0 - std::hypot(u, v));
    ExpectAt(pictures.back(), {{x, y}}, {grey, grey, grey}, 5);
  }
}

// The camera sits at z -2 looking along +z with a 45 degree vertical field;
// the renderer's projection makes clip w the view depth plus one. The face
// nearest the camera, at depth 2 - size / 2, is the silhouette. Around it the
// Clear node's colour fills the screen.
TEST_F(Pictures, CubeUnderRenderObjectCoversItsProjectedSquareOverTheClearColor) {
  const Rgb green{0, 255, 0};
  auto pictures = Play(R"(<Node Type="Screen" Name="Screen1"/><Node Type="Clear" Name="Clear1" Color="0.25 0.5 0.75 1"/>
    <Node Type="RenderObject" Name="Object1"/><Node Type="MeshObject" Name="Mesh1"/><Node Type="Cube" Name="Cube1"/>
    <Node Type="FlatColor" Name="Flat1" Color="0 1 0 1"/>)",
                       R"(<Connection Out="Clear1.Render" In="Object1.Render"/>
    <Connection Out="Object1.Render" In="Screen1.Render"/><Connection Out="Mesh1.Object" In="Object1.Object"/>
    <Connection Out="Cube1.Mesh" In="Mesh1.Mesh"/><Connection Out="Flat1.Effect" In="Mesh1.Effect"/>)",
                       2);
  const double size = 1.0, camDistance = 2.0, fov = 45.0 * M_PI / 180.0;
  const double w = (camDistance - size / 2) + 1.0;
  const double halfNdc = (size / 2) / (std::tan(fov / 2) * w);
  // Horizontally the aspect in the projection cancels the wider viewport.
  const double expectedSide = 2.0 * halfNdc * kHeight / 2;

  const auto &picture = pictures.back();
  int across = 0, down = 0, left = kWidth, top = kHeight;
  for (int x = 0; x < kWidth; ++x)
    if (Near(At(picture, x, kHeight / 2), green)) ++across, left = std::min(left, x);
  for (int y = 0; y < kHeight; ++y)
    if (Near(At(picture, kWidth / 2, y), green)) ++down, top = std::min(top, y);
  EXPECT_NEAR(across, expectedSide, 2.0);
  EXPECT_NEAR(down, expectedSide, 2.0);
  EXPECT_NEAR(left + across / 2.0, kWidth / 2.0, 1.5);
  EXPECT_NEAR(top + down / 2.0, kHeight / 2.0, 1.5);
  // Multiples of 1/255 would be exact; these round to the nearest byte.
  ExpectAt(picture, {{0, 0}, {kWidth - 1, 0}, {0, kHeight - 1}, {kWidth - 1, kHeight - 1}, {kWidth / 2, 3}},
           {64, 128, 191}, 2);
}

// A wide slab above the horizon fills the top half red over a blue Clear.
// Drawn straight to the screen and through a texture the picture must agree,
// and a target drawn without mip maps must not read as black through the
// Textured effect's sampler, which filters with them.
TEST_F(Pictures, RenderToTextureKeepsTheTopOnTop) {
  const std::string kSlab = R"(<Node Type="Clear" Name="Clear1" Color="0 0 1 1"/>
    <Node Type="RenderObject" Name="Object1" Pos="0 10 0"/><Node Type="MeshObject" Name="Mesh1"/>
    <Node Type="Cube" Name="Cube1" Size="40 20 0.01"/><Node Type="FlatColor" Name="Flat1" Color="1 0 0 1"/>)";
  const std::string kSlabLinks = R"(<Connection Out="Clear1.Render" In="Object1.Render"/>
    <Connection Out="Mesh1.Object" In="Object1.Object"/><Connection Out="Cube1.Mesh" In="Mesh1.Mesh"/>
    <Connection Out="Flat1.Effect" In="Mesh1.Effect"/>)";
  const std::string kRtt = R"(<Node Type="Textured" Name="Fx1" DepthTest="false" DepthWrite="false"/>)";
  const std::string kRttLinks = std::string(kRectLinks) + R"(<Connection Out="Object1.Render" In="Rtt1.Render"/>
      <Connection Out="Rtt1.Color" In="Fx1.Texture"/>)";
  const struct { const char *how; std::string nodes, links; } ways[] = {
      {"on the screen", R"(<Node Type="Screen" Name="Screen1"/>)",
       R"(<Connection Out="Object1.Render" In="Screen1.Render"/>)"},
      {"through RenderToTexture", RectNodes(kRtt + R"(<Node Type="RenderToTexture" Name="Rtt1"/>)"), kRttLinks},
      {"through RenderToTexture without mip maps",
       RectNodes(kRtt + R"(<Node Type="RenderToTexture" Name="Rtt1" CreateMipMaps="false"/>)"), kRttLinks},
  };
  for (const auto &way : ways) {
    SCOPED_TRACE(way.how);
    auto pictures = Play(way.nodes + kSlab, kSlabLinks + way.links, 2);
    for (int x : {4, kWidth / 2, kWidth - 5}) {
      ExpectAt(pictures.back(), {{x, 3}, {x, kHeight / 4}, {x, kHeight / 2 - 4}}, {255, 0, 0});
      ExpectAt(pictures.back(), {{x, kHeight / 2 + 4}, {x, kHeight * 3 / 4}, {x, kHeight - 4}}, {0, 0, 255});
    }
  }
}

// The texture feeds the rectangle drawn into it: ColorNext holds the last
// frame's picture (cleared to black before the first), and each frame adds
// a quarter. The screen shows each frame's result.
TEST_F(Pictures, ColorNextFeedbackBuildsOnTheLastFrame) {
  auto pictures = Play(
      RectNodes(R"(<Node Type="Textured" Name="Fx1" DepthTest="false" DepthWrite="false"/>
    <Node Type="RenderToTexture" Name="Rtt1"/><Node Type="RenderRect" Name="Rect2"/>
    <Node Type="FeedbackStep" Name="Step1" DepthTest="false" DepthWrite="false"/>)"),
      std::string(kRectLinks) + R"(<Connection Out="Rtt1.Color" In="Fx1.Texture"/>
    <Connection Out="Rect2.Render" In="Rtt1.Render"/><Connection Out="Step1.Effect" In="Rect2.Effect"/>
    <Connection Out="Rtt1.ColorNext" In="Step1.Last"/>)",
      5);
  for (int frame = 0; frame < 5; ++frame) {
    SCOPED_TRACE("frame " + std::to_string(frame));
    const int grey = Byte(0.25 * (frame + 1));
    ExpectAt(pictures[frame], {{kWidth / 2, kHeight / 2}, {3, 3}, {kWidth - 4, kHeight - 4}}, {grey, grey, grey}, 6);
  }
}

// An effect that multiplies a texture with a colour shows the colour when
// nothing is connected, for 2D and 1D samplers alike.
TEST_F(Pictures, OpenTexturePortsSampleWhite) {
  for (const char *type : {"Textured", "RampTint"}) {
    SCOPED_TRACE(type);
    auto pictures = Play(RectNodes(std::string(R"(<Node Type=")") + type +
                                   R"(" Name="Fx1" Color="0.2 0.6 0.8 1" DepthTest="false"/>)"),
                         kRectLinks, 2);
    ExpectAt(pictures.back(), {{kWidth / 2, kHeight / 2}, {5, 5}, {kWidth - 6, kHeight - 6}}, {51, 153, 204}, 3);
  }
}

// A layered entry: a red background, a green cube in the upper half as
// foreground (its own blue Clear is stripped as for every foreground), and a
// postprocessing scene that draws the layers below through the Textured
// effect with a tint. The picture must show both layers, tinted, upright.
TEST_F(Pictures, LayeredPostprocessingDrawsTheLayersBelowThroughPreviousLayer) {
  const struct { std::list<std::unique_ptr<CScene>> *pool; const char *name, *nodes, *links; } layers[] = {
      {&m_Engine->m_BackgroundScenes, "bg", R"(<Node Type="Screen" Name="Screen1"/><Node Type="Clear" Name="Clear1" Color="1 0 0 1"/>)",
       R"(<Connection Out="Clear1.Render" In="Screen1.Render"/>)"},
      {&m_Engine->m_ForegroundScenes, "fg", R"(<Node Type="Screen" Name="Screen1"/><Node Type="Clear" Name="Clear1" Color="0 0 1 1"/>
  <Node Type="RenderObject" Name="Object1" CamPos="0 0 -3.2" Pos="0 0.8 0"/><Node Type="MeshObject" Name="Mesh1"/>
  <Node Type="Cube" Name="Cube1"/><Node Type="FlatColor" Name="Flat1" Color="0 1 0 1"/>)",
       R"(<Connection Out="Clear1.Render" In="Object1.Render"/>
  <Connection Out="Object1.Render" In="Screen1.Render"/><Connection Out="Mesh1.Object" In="Object1.Object"/>
  <Connection Out="Cube1.Mesh" In="Mesh1.Mesh"/><Connection Out="Flat1.Effect" In="Mesh1.Effect"/>)"},
      {&m_Engine->m_PostprocessingScenes, "post", R"(<Node Type="Screen" Name="Screen1"/><Node Type="RenderRect" Name="Rect1"/>
  <Node Type="Textured" Name="Textured1" Color="0.5 0.5 1 1" DepthTest="false" DepthWrite="false"/>
  <Node Type="PreviousLayer" Name="Layer1" CreateMipMaps="1"/>)",
       R"(<Connection Out="Rect1.Render" In="Screen1.Render"/>
  <Connection Out="Textured1.Effect" In="Rect1.Effect"/><Connection Out="Layer1.Color" In="Textured1.Texture"/>)"},
  };
  for (const auto &layer : layers) {
    layer.pool->emplace_back(m_Engine->LoadScene(
        m_Dir.Write(std::string("app/scenes/") + layer.name + ".vms", SceneFile(layer.nodes, layer.links, layer.name))));
    ASSERT_NE(layer.pool->back(), nullptr) << layer.name;
  }
  m_Engine->PrepareLayeredScenes();
  m_Engine->BuildCombinations();
  ASSERT_EQ(m_Engine->m_Scenes.size(), 1u);
  CSceneBase &layered = *m_Engine->m_Scenes.front();
  auto pictures = Frames(layered, 3);
  // The cube, green halved by the tint; the background, red halved; no blue
  // from the foreground's stripped Clear anywhere.
  ExpectAt(pictures.back(), {{kWidth / 2, kHeight / 5}}, {0, 128, 0});
  ExpectAt(pictures.back(), {{kWidth / 2, kHeight * 4 / 5}, {2, 2}}, {128, 0, 0});
  layered.InvalidateDevice(&m_Window->render);
}

// A word written by TextWriter, placed straight in clip space by its shader,
// lights pixels only inside the box that the font lays it out in.
TEST_F(Pictures, TextWriterWordLightsOnlyItsLaidOutBox) {
  std::optional<ScopedCwd> cwd(VELMOR_SOURCE_ROOT "/assets");  // where the fonts are
  const char kClipShader[] =
      "struct PSInput{float4 hpos:POSITION;float4 diffuse:COLOR0;float2 tex:TEXCOORD0;};"
      "PSInput VS_Program(VSInput vi){PSInput pi;pi.hpos=float4(vi.pos.xy,0.0,1.0);pi.tex=vi.tex;"
      "pi.diffuse=vi.col;return pi;}"
      "float4 PS_Program(PSInput pi):COLOR{float4 c=tex2D(texfont,pi.tex);c.a=smoothstep(0.475,0.525,c.a);"
      "return c*pi.diffuse;}";
  auto pictures = Play(R"(<Node Type="Screen" Name="Screen1"/><Node Type="Clear" Name="Clear1" Color="0 0 0 1"/>
    <Node Type="RenderObject" Name="Object1"/><Node Type="TextWriter" Name="Text1" TextLines="Hi!" TextAlign="0"
     Pos="-0.7 -0.3 0" UseCharsPerSec="false" CharExpressionTime="0" CullMode="0" Shader=")" +
                           std::string(kClipShader) + "\"/>",
                       R"(<Connection Out="Clear1.Render" In="Object1.Render"/>
    <Connection Out="Object1.Render" In="Screen1.Render"/><Connection Out="Text1.Object" In="Object1.Object"/>)",
                       2);
  CFont font;
  font.SetFont("nodedata/fonts/font1.fnt", 8);
  font.WriteLines(-0.7f, -0.3f, 0, "Hi!", 3, 0);
  cwd.reset();
  ASSERT_EQ(font.Batch().Count(), 3);
  float x0 = 1, x1 = -1, y0 = 1, y1 = -1;
  for (int q = 0; q < 3; ++q)
    for (const VertexPCT &v : font.Batch().Quads()[q].v)
      x0 = std::min(x0, v.x), x1 = std::max(x1, v.x), y0 = std::min(y0, v.y), y1 = std::max(y1, v.y);
  // Clip space to pixels from the top left, a pixel of slack around the box.
  const int left = static_cast<int>((x0 + 1) / 2 * kWidth) - 1, right = static_cast<int>((x1 + 1) / 2 * kWidth) + 1;
  const int top = static_cast<int>((1 - y1) / 2 * kHeight) - 1, bottom = static_cast<int>((1 - y0) / 2 * kHeight) + 1;
  int inside = 0, outside = 0;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if (const Rgb p = At(pictures.back(), x, y); p[0] + p[1] + p[2] >= 3 * 128)
        (x >= left && x <= right && y >= top && y <= bottom ? inside : outside)++;
  EXPECT_GT(inside, 30);
  EXPECT_EQ(outside, 0) << "box " << left << ".." << right << " x " << top << ".." << bottom;
}
