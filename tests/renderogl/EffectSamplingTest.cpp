// Effects sample what render targets hold, whatever the sampler's filter
// asks for: a target drawn without mip maps must not read as black.
#include "core/Log.h"
#include "core/Paths.h"
#include "engine/Velmor.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "renderogl/GLTestSupport.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

#include <unistd.h>

TEST(EffectSampling, TargetsWithAndWithoutMipMapsShowTheirColour) {
  VELMOR_REQUIRE_DISPLAY();
  const std::string assets = std::string(VELMOR_SOURCE_ROOT) + "/assets";
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof(cwd)), nullptr);
  ASSERT_EQ(chdir(assets.c_str()), 0);
  SetAppPaths(assets, assets);
  InstallBuiltinNodes();
  GLWindow window(64, 48);
  ASSERT_TRUE(window.Ok()) << GetFirstError();
  TempDir dir;
  for (const char *mipmaps : {"false", "true"}) {
    SCOPED_TRACE(mipmaps);
    LogCapture log;
    // A target cleared to green, shown full screen through the Textured
    // effect, whose sampler filters with mip maps.
    const std::string file = dir.Write(
        std::string("rtt-") + mipmaps + ".vms",
        std::string("<Velmor><Transitions/><Scenes><Scene Name=\"R\"><Nodes>"
                    "<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"RenderRect\" Name=\"Rect\"/>"
                    "<Node Type=\"Textured\" Name=\"Tex\" DepthTest=\"false\" DepthWrite=\"false\"/>"
                    "<Node Type=\"RenderToTexture\" Name=\"Rtt\" CreateMipMaps=\"") +
            mipmaps +
            "\"/><Node Type=\"Clear\" Name=\"Green\" Color=\"0 1 0 1\"/></Nodes><Connections>"
            "<Connection Out=\"Rect.Render\" In=\"Screen1.Render\"/><Connection Out=\"Tex.Effect\" In=\"Rect.Effect\"/>"
            "<Connection Out=\"Rtt.Color\" In=\"Tex.Texture\"/><Connection Out=\"Green.Render\" In=\"Rtt.Render\"/>"
            "</Connections><SceneCompatibility><GoodScenes/><BadScenes/></SceneCompatibility></Scene></Scenes></Velmor>");
    CVelmor engine;
    engine.m_RegisterEffectNodes = [](CNodeFactory &f) { CNEFx::AddNodesToFactory(f); };
    engine.Init();
    engine.SetRender(&window.render);
    engine.m_AutoGotoNextScene = false;
    ASSERT_TRUE(engine.AddScene(file));
    engine.ActivateAnotherScene(CHANGE_Index, 0, true, false);
    window.client.onRender = [&] { engine.Draw(&window.render); };
    for (int frame = 0; frame < 3; ++frame) {
      engine.Update(0.04f);
      window.render.Render3DEnvironment(false);
    }
    engine.Update(0.04f);
    window.render.SwitchToRenderUnit(0);
    engine.Draw(&window.render);
    const auto pixels = window.Pixels();
    for (auto [x, y] : {std::pair{32, 24}, std::pair{2, 2}, std::pair{61, 45}})
      EXPECT_EQ(window.Pixel(pixels, x, y), (std::array<int, 3>{0, 255, 0})) << x << "," << y;
    engine.SetActiveScene(nullptr);
    window.client.onRender = nullptr;
    EXPECT_TRUE(log.errors.empty()) << log.errors.front();
  }
  SetAppPaths(".", ".");
  ASSERT_EQ(chdir(cwd), 0);
}
