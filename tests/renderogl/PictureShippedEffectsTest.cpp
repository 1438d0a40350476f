// Every effect file we install works where pictures are made: it compiles
// and a technique validates on the GL in use. How its parameters become the
// ports of its node type is pinned by the effect node tests.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "fx/FxManager.h"
#include "renderogl/GLTestSupport.h"

TEST(PictureShippedEffects, EachCompilesAndValidatesOnThisGL) {
  VELMOR_REQUIRE_DISPLAY();
  GLWindow window(64, 48);
  ASSERT_TRUE(window.Ok());
  ASSERT_NE(window.render.m_FxManager, nullptr);
  int effects = 0;
  for (const auto &e : std::filesystem::directory_iterator(std::string(VELMOR_SOURCE_ROOT) + "/assets/nodes/effect")) {
    if (e.path().extension() != ".cgfx") continue;
    SCOPED_TRACE(e.path().filename().string());
    ++effects;
    std::unique_ptr<CFx> fx(window.render.m_FxManager->LoadEffect(e.path().c_str()));
    ASSERT_TRUE(fx) << "does not compile";
    std::unique_ptr<FxTechniqueRecord> technique(fx->GetBestTechnique());
    EXPECT_TRUE(technique) << "no technique validates on this GL";
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  }
  EXPECT_GE(effects, 10);
}
