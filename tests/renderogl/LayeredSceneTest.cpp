// A layered entry on GL: a red background, a green cube in the upper half as
// foreground (its own blue Clear is stripped as for every foreground), and a
// postprocessing scene that draws the layers below through the Textured
// effect with a tint. The picture must show both layers, tinted, upright.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "core/Paths.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "renderogl/GLTestSupport.h"
#include "scene/Scene.h"
#include "support/TempDir.h"

namespace {
std::string EffectFolder() {
  const char *root = getenv("VELMOR_SOURCE_DIR");
  std::string here = __FILE__;
  return (root && *root ? std::string(root) : here.substr(0, here.rfind("/tests/"))) + "/assets/nodes/effect";
}

std::string SceneFile(const std::string &name, const std::string &nodes, const std::string &connections) {
  return "<Velmor><Transitions/><Scenes><Scene Name=\"" + name + "\"><Nodes>" + nodes + "</Nodes><Connections>" +
         connections + "</Connections></Scene></Scenes></Velmor>";
}

const char *const kBackground = R"(<Node Type="Screen" Name="Screen1"/><Node Type="Clear" Name="Clear1" Color="1 0 0 1"/>)";
const char *const kBackgroundLinks = R"(<Connection Out="Clear1.Render" In="Screen1.Render"/>)";

const char *const kForeground = R"(<Node Type="Screen" Name="Screen1"/><Node Type="Clear" Name="Clear1" Color="0 0 1 1"/>
  <Node Type="RenderObject" Name="Object1" CamPos="0 0 -3.2" Pos="0 0.8 0"/><Node Type="MeshObject" Name="Mesh1"/>
  <Node Type="Cube" Name="Cube1"/><Node Type="FlatColor" Name="Flat1" Color="0 1 0 1"/>)";
const char *const kForegroundLinks = R"(<Connection Out="Clear1.Render" In="Object1.Render"/>
  <Connection Out="Object1.Render" In="Screen1.Render"/><Connection Out="Mesh1.Object" In="Object1.Object"/>
  <Connection Out="Cube1.Mesh" In="Mesh1.Mesh"/><Connection Out="Flat1.Effect" In="Mesh1.Effect"/>)";

const char *const kPostprocessing = R"(<Node Type="Screen" Name="Screen1"/><Node Type="RenderRect" Name="Rect1"/>
  <Node Type="Textured" Name="Textured1" Color="0.5 0.5 1 1" DepthTest="false" DepthWrite="false"/><Node Type="PreviousLayer" Name="Layer1" CreateMipMaps="1"/>)";
const char *const kPostprocessingLinks = R"(<Connection Out="Rect1.Render" In="Screen1.Render"/>
  <Connection Out="Textured1.Effect" In="Rect1.Effect"/><Connection Out="Layer1.Color" In="Textured1.Texture"/>)";

bool Near(const std::array<int, 3> &pixel, const std::array<int, 3> &expected) {
  for (int i = 0; i < 3; ++i)
    if (std::abs(pixel[i] - expected[i]) > 4) return false;
  return true;
}
}  // namespace

TEST(LayeredScene, PostprocessingDrawsTheLayersBelowThroughPreviousLayer) {
  VELMOR_REQUIRE_DISPLAY();
  TempDir dir;
  SetAppPaths(dir / "app", dir / "user");
  constexpr int kWidth = 160, kHeight = 120;
  GLWindow window(kWidth, kHeight);
  ASSERT_TRUE(window.Ok());
  InstallBuiltinNodes();
  {
    CVelmor engine;
    const std::string effects = EffectFolder();
    engine.m_RegisterEffectNodes = [&](CNodeFactory &factory) { CNEFx::AddNodesToFactory(factory, effects.c_str()); };
    ASSERT_TRUE(engine.Init());
    auto load = [&](const char *name, const char *nodes, const char *links) {
      return std::unique_ptr<CScene>(
          engine.LoadScene(dir.Write(std::string("app/scenes/") + name + ".vms", SceneFile(name, nodes, links))));
    };
    engine.m_BackgroundScenes.push_back(load("bg", kBackground, kBackgroundLinks));
    engine.m_ForegroundScenes.push_back(load("fg", kForeground, kForegroundLinks));
    engine.m_PostprocessingScenes.push_back(load("post", kPostprocessing, kPostprocessingLinks));
    for (auto *pool : {&engine.m_BackgroundScenes, &engine.m_ForegroundScenes, &engine.m_PostprocessingScenes})
      ASSERT_NE(pool->front(), nullptr);
    engine.PrepareLayeredScenes();
    engine.BuildCombinations();
    ASSERT_EQ(engine.m_Scenes.size(), 1u);
    CSceneBase &layered = *engine.m_Scenes.front();

    CRender &render = window.render;
    layered.Activate();
    ASSERT_TRUE(render.SwitchToRenderUnit(0));
    layered.RestoreDevice(&render);
    std::vector<uint8_t> pixels;
    // Read before the swap: the back buffer is undefined after it.
    window.client.onRender = [&] {
      layered.Draw(&render);
      pixels = window.Pixels();
    };
    for (int frame = 0; frame < 3; ++frame) {
      layered.Update(1.0f / 30);
      render.Render3DEnvironment(false);
      layered.FrameFinished();
    }
    const auto top = window.Pixel(pixels, kWidth / 2, kHeight / 5);
    const auto bottom = window.Pixel(pixels, kWidth / 2, kHeight * 4 / 5);
    const auto corner = window.Pixel(pixels, 2, 2);
    // The cube, green halved by the tint; the background, red halved; no blue
    // from the foreground's stripped Clear anywhere.
    EXPECT_TRUE(Near(top, {0, 128, 0})) << top[0] << " " << top[1] << " " << top[2];
    EXPECT_TRUE(Near(bottom, {128, 0, 0})) << bottom[0] << " " << bottom[1] << " " << bottom[2];
    EXPECT_TRUE(Near(corner, {128, 0, 0})) << corner[0] << " " << corner[1] << " " << corner[2];
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    layered.InvalidateDevice(&render);
  }
  SetAppPaths(".", ".");
}
