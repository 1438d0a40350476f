// How a layered entry draws a frame: background, a depth-only clear,
// foreground, all into the PreviousLayer node's target, then the
// postprocessing scene that reads it, then the target goes back.
#include <gtest/gtest.h>

#include <memory>

#include "engine/LayerTestSupport.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "nodes/texture/PreviousLayerNode.h"
#include "scene/Scene.h"
#include "support/RecordTargets.h"

namespace {
const std::string kPreviousLayer = "<Node Type=\"PreviousLayer\" Name=\"Layer1\" CreateMipMaps=\"1\"/>";

class LayerDraw : public testing::Test {
 protected:
  // Pool scenes as the engine would hold them; each Clear tells its scene.
  LayerDraw() {
    background.reset(Load(ClearScene("bg", "1 0 0 1")));
    foreground.reset(Load(ClearScene("fg", "0 1 0 1")));
    LayerSceneSpec post = ClearScene("post", "0 0 1 1");
    post.nodes += kPreviousLayer;
    postprocessing.reset(Load(post));
  }
  CScene *Load(const LayerSceneSpec &sceneDesc) {
    CScene *scene = engine.LoadScene(Expand(files.Scene(sceneDesc)));
    EXPECT_NE(scene, nullptr) << sceneDesc.name;
    return scene;
  }
  // One frame of `layered` on a unit of 320 x 200 whose viewport is its
  // left half; returns the calls that tell the order.
  std::vector<std::string> Frame(CSceneLayered &layered) {
    layered.Update(0.1f);
    render.ClearCalls();
    render.m_Callbacks.onRender = [&] {
      render.SetViewport(0.0f, 0.0f, 0.5f, 1.0f);
      layered.Draw(&render);
    };
    render.Render3DEnvironment(false);
    layered.FrameFinished();
    return CallsStartingWith(render,
                             {"CreateTarget", "BeginTarget", "EndTarget", "ReleaseTarget", "Clear", "GenerateMipmaps"});
  }

  LayerFiles files;
  CVelmor engine;
  CRecordRender render{320, 200};
  std::unique_ptr<CScene> background, foreground, postprocessing;
};
}  // namespace

TEST_F(LayerDraw, LayersGoIntoTheTargetThatThePostprocessingSceneReads) {
  CSceneLayered layered(background.get(), foreground.get(), postprocessing.get());
  ASSERT_TRUE(layered.Init());
  ASSERT_NE(layered.m_PreviousLayer, nullptr);
  EXPECT_EQ(layered.m_PreviousLayer, postprocessing->FindNode("Layer1"));
  const std::vector<std::string> frame{
      "CreateTarget 160x200",  "BeginTarget 160x200",        "Clear 1 0 0 1 1 3",
      "Clear 0 0 0 1 1 2",     "Clear 0 1 0 1 1 3",          "EndTarget 160x200",
      "GenerateMipmaps tex1",  "Clear 0 0 1 1 1 3",          "ReleaseTarget pooled"};
  EXPECT_EQ(Frame(layered), frame);
  // The postprocessing scene's texture is the target the layers went into.
  EXPECT_EQ(layered.m_PreviousLayer->GetTexture(&render), render.LastTarget()->m_Color);
  EXPECT_TRUE(render.m_Faults.empty());
}

TEST_F(LayerDraw, WithoutAPreviousLayerNodeThePostprocessingSceneIsNotDrawn) {
  std::unique_ptr<CScene> plain(Load(ClearScene("plain", "0 0 1 1")));
  CSceneLayered layered(background.get(), foreground.get(), plain.get());
  layered.Init();
  EXPECT_EQ(layered.m_PreviousLayer, nullptr);
  EXPECT_EQ(Frame(layered), (std::vector<std::string>{"Clear 1 0 0 1 1 3", "Clear 0 0 0 1 1 2", "Clear 0 1 0 1 1 3"}));
}

TEST_F(LayerDraw, MissingLayersAreLeftOut) {
  CSceneLayered backgroundOnly(background.get(), nullptr, nullptr);
  backgroundOnly.Init();
  EXPECT_EQ(Frame(backgroundOnly), std::vector<std::string>{"Clear 1 0 0 1 1 3"});

  // No depth clear without a foreground.
  CSceneLayered processed(background.get(), nullptr, postprocessing.get());
  processed.Init();
  EXPECT_EQ(Frame(processed),
            (std::vector<std::string>{"CreateTarget 160x200", "BeginTarget 160x200", "Clear 1 0 0 1 1 3",
                                      "EndTarget 160x200", "GenerateMipmaps tex1", "Clear 0 0 1 1 1 3",
                                      "ReleaseTarget pooled"}));
}

TEST_F(LayerDraw, WhenNoTargetCanBeHadTheLayersGoStraightToTheScreen) {
  CSceneLayered layered(background.get(), foreground.get(), postprocessing.get());
  layered.Init();
  render.m_FailTargets = true;
  EXPECT_EQ(Frame(layered), (std::vector<std::string>{"CreateTarget 160x200", "Clear 1 0 0 1 1 3",
                                                      "Clear 0 0 0 1 1 2", "Clear 0 1 0 1 1 3"}));
  EXPECT_EQ(layered.m_PreviousLayer->GetTexture(&render), nullptr);
}

TEST_F(LayerDraw, TheLastPreviousLayerNodeOfThePostprocessingSceneIsTheOneUsed) {
  LayerSceneSpec post = ClearScene("twice", "0 0 1 1");
  post.nodes += kPreviousLayer + "<Node Type=\"PreviousLayer\" Name=\"Layer2\"/>";
  std::unique_ptr<CScene> twice(Load(post));
  CSceneLayered layered(background.get(), nullptr, twice.get());
  layered.Init();
  EXPECT_EQ(layered.m_PreviousLayer, twice->FindNode("Layer2"));
  // A PreviousLayer in the background is not looked for.
  CSceneLayered noPost(postprocessing.get(), nullptr, nullptr);
  noPost.Init();
  EXPECT_EQ(noPost.m_PreviousLayer, nullptr);
}
