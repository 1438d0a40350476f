// Two RandR virtual monitors: a window and render unit each, one wide picture.
#include "GLTestSupport.h"
#include "support/LogCapture.h"
// After GoogleTest: Xlib defines None and Bool as macros.
#include "e2e/VirtualMonitors.h"

#include <FreeImage.h>

#include <filesystem>

namespace {
constexpr int kW = 64, kH = 48;

// Two side-by-side monitors that exist while this object lives.
struct VirtualMonitors {
  Display *display = XOpenDisplay(nullptr);
  bool ok = display && AddVirtualMonitors(display, "VELMOR-", {{0, 0, kW, kH}, {kW, 0, kW, kH}});
  ~VirtualMonitors() {
    if (display) DeleteVirtualMonitors(display, "VELMOR-", 2), XCloseDisplay(display);
  }
};

// Red left of x = 0 and green right of it, far in front of the camera.
void DrawHalves(CRender &r, GLuint program) {
  const float black[4] = {0, 0, 0, 1};
  r.Clear(black, 1.0f, CLEAR_Color | CLEAR_Depth);
  r.SetTransform(TS_World, CMatrix::Identity());
  r.SetCamera(CCamera());
  CVertexBuffer *vb = r.CreateVertexBuffer(12, 0, VBF_PC);
  auto *v = static_cast<VertexPC *>(vb->Lock());
  for (int half = 0; half < 2; ++half) {
    const uint32_t color = half ? 0xFF00FF00u : 0xFF0000FFu;
    const float x0 = half ? 0 : -50, x1 = x0 + 50;
    const VertexPC quad[6] = {{x0, -50, 10, color}, {x1, -50, 10, color}, {x1, 50, 10, color},
                              {x0, -50, 10, color}, {x1, 50, 10, color},  {x0, 50, 10, color}};
    std::copy(quad, quad + 6, v + half * 6);
  }
  vb->Unlock();
  glUseProgram(program);
  r.SetVertexBuffer(vb);
  r.DrawPrimitive(PT_TriangleList, 0, 4);
  glUseProgram(0);
  vb->Release();
}

const std::array<int, 3> kRed{255, 0, 0}, kGreen{0, 255, 0};
}  // namespace

class TwoMonitors : public testing::Test {
 protected:
  void SetUp() override {
    VELMOR_REQUIRE_DISPLAY();
    ASSERT_TRUE(monitors.ok);
    ASSERT_TRUE(render.Init());
    ASSERT_EQ(render.m_MonitorCount, 2);
  }
  void TearDown() override {
    render.Cleanup3DEnvironment();
    render.DestroyScreen();
  }
  VirtualMonitors monitors;  // before the renderer: it must see them
  CRenderOGL render;
  CRenderClientFunctions client;  // outlives the renderer's cleanup in TearDown
};

TEST_F(TwoMonitors, EachMonitorGetsAWindowAndItsShareOfTheView) {
  EXPECT_EQ(render.m_Monitors[0].m_DeviceName, "VELMOR-0");
  EXPECT_EQ(render.m_Monitors[1].m_Rect, (CRect{kW, 0, 2 * kW, kH}));
  ASSERT_TRUE(render.CreateScreen(kFullScreenMode, 0, true));
  ASSERT_EQ(render.m_Windows.size(), 2u);
  EXPECT_EQ(render.m_Windows[1].monitor, &render.m_Monitors[1]);
  render.SetClient(&client);
  ASSERT_TRUE(render.Initialize3DEnvironment(kFullScreenMode)) << GetFirstError();
  PinGLDriver();
  ASSERT_EQ(render.UnitCount(), 2);
  EXPECT_EQ(render.m_VirtualRect, (CRect{0, 0, 2 * kW, kH}));
  GLuint program = ColorProgram();
  std::vector<std::vector<uint8_t>> seen;
  client.onRender = [&] {
    DrawHalves(render, program);
    std::vector<uint8_t> bytes(static_cast<size_t>(((kW * 3 + 3) & ~3) * kH));
    render.ReadPixels(bytes.data());
    seen.push_back(bytes);
  };
  auto pixel = [&](int unit, int x) { return PixelOf(seen[static_cast<size_t>(unit)], kW, kH, x, kH / 2); };

  render.Render3DEnvironment(false);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_TRUE(pixel(0, 8) == kRed && pixel(0, kW - 8) == kRed) << "the left monitor shows the left half";
  EXPECT_TRUE(pixel(1, 8) == kGreen && pixel(1, kW - 8) == kGreen) << "the right monitor shows the right half";
  // The picture of the last frame puts each unit at its monitor's place.
  std::filesystem::path folder = std::filesystem::temp_directory_path() / "velmor-two-monitors";
  std::filesystem::remove_all(folder);
  // Mesa's software GLX keeps a window's back buffer only while the context
  // stays on it, so only the unit drawn last (the first the picture reads)
  // can be checked by pixel here; the second part is checked by size.
  render.SwitchToRenderUnit(0);
  DrawHalves(render, program);
  std::string name = render.Screenshot((folder / "wide.png").string());
  FIBITMAP *image = FreeImage_Load(FIF_PNG, name.c_str(), 0);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(FreeImage_GetWidth(image), static_cast<unsigned>(2 * kW));
  EXPECT_EQ(FreeImage_GetHeight(image), static_cast<unsigned>(kH));
  RGBQUAD left, right;
  FreeImage_GetPixelColor(image, 8, kH / 2, &left);
  FreeImage_GetPixelColor(image, 2 * kW - 8, kH / 2, &right);
  EXPECT_EQ(left.rgbRed, 255);
  EXPECT_EQ(right.rgbRed, 0) << "the left unit's picture stays in its half";
  FreeImage_Unload(image);
  std::filesystem::remove_all(folder);
  glDeleteProgram(program);
}

TEST_F(TwoMonitors, LeaveBlackMonitorHasAWindowButNoUnit) {
  render.m_Monitors[1].LeaveBlack = true;
  render.m_Monitors[0].Width = 640;  // without BPP no mode is set
  render.m_Monitors[0].Height = 480;
  LogCapture log;
  ASSERT_TRUE(render.CreateScreen(kFullScreenMode, 0, true));
  ASSERT_TRUE(render.Initialize3DEnvironment(kFullScreenMode)) << GetFirstError();
  PinGLDriver();
  EXPECT_EQ(render.UnitCount(), 1);
  EXPECT_EQ(render.UnitOfWindow(1), -1);
  EXPECT_EQ(render.m_VirtualRect, (CRect{0, 0, kW, kH}));
  EXPECT_TRUE(render.IsRenderWindow(render.GetWindowHandle(0)));
  EXPECT_FALSE(render.IsRenderWindow(render.GetWindowHandle(1)));
  for (const std::string &line : log.lines) EXPECT_EQ(line.find("Changing display mode"), std::string::npos);
}
