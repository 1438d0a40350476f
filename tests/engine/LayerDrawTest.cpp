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

TEST_F(LayerDraw, LayersGoIntoTheTargetThatThePostprocessingSceneReadsAndMissingOnesAreLeftOut) {
  std::unique_ptr<CScene> plain(Load(ClearScene("plain", "0 0 1 1")));
  const std::string bg = "Clear 1 0 0 1 1 3", depth = "Clear 0 0 0 1 1 2", fg = "Clear 0 1 0 1 1 3";
  const std::string post = "Clear 0 0 1 1 1 3", create = "CreateTarget 160x200", begin = "BeginTarget 160x200";
  // The target's mipmaps are made (its texture's name varies with the case).
  const std::vector<std::string> after = {"EndTarget 160x200", "GenerateMipmaps", post, "ReleaseTarget pooled"};
  auto join = [](std::vector<std::string> a, const std::vector<std::string> &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  };
  const struct {
    CScene *foreground, *postprocessing;
    bool targetsFail;
    std::vector<std::string> frame;
  } cases[] = {
      {foreground.get(), postprocessing.get(), false, join({create, begin, bg, depth, fg}, after)},
      // Without a PreviousLayer node the postprocessing scene is not drawn.
      {foreground.get(), plain.get(), false, {bg, depth, fg}},
      {nullptr, nullptr, false, {bg}},
      // No depth clear without a foreground.
      {nullptr, postprocessing.get(), false, join({create, begin, bg}, after)},
      // When no target can be had the layers go straight to the screen.
      {foreground.get(), postprocessing.get(), true, {create, bg, depth, fg}},
  };
  for (const auto &c : cases) {
    CSceneLayered layered(background.get(), c.foreground, c.postprocessing);
    ASSERT_TRUE(layered.Init());
    render.m_FailTargets = c.targetsFail;
    std::vector<std::string> frame = Frame(layered);
    for (std::string &call : frame)
      if (call.rfind("GenerateMipmaps", 0) == 0) call = "GenerateMipmaps";
    EXPECT_EQ(frame, c.frame) << "case " << (&c - cases);
    EXPECT_TRUE(render.m_Faults.empty());
    if (!layered.m_PreviousLayer) continue;
    EXPECT_EQ(layered.m_PreviousLayer, postprocessing->FindNode("Layer1"));
    // The postprocessing scene's texture is the target the layers went into.
    EXPECT_EQ(layered.m_PreviousLayer->GetTexture(&render), c.targetsFail ? nullptr : render.LastTarget()->m_Color);
  }
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
