// velmor-tool host as an editor drives it: one command document per line
// in, that frame's reply document as one line out, every command's success
// and error reply, and nothing saved unless a save command says so.
#include "support/TempDir.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>
// After GoogleTest: Xlib defines None and Bool as macros.
#include <X11/Xlib.h>

namespace {
struct Row {
  std::string request;   // one line of stdin; $F: the scene file, $D: the folder
  std::string expected;  // a fragment of that line's reply
};

std::string Fill(std::string text, const TempDir &dir, const std::string &file) {
  for (const auto &[mark, value] : {std::pair<std::string, std::string>{"$F", file}, {"$D", dir.Path()}})
    for (size_t at; (at = text.find(mark)) != std::string::npos;) text.replace(at, 2, value);
  return text;
}

std::vector<std::string> Lines(const std::string &text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Runs the rows in one session; each reply line must hold its fragment.
void RunRows(const TempDir &dir, const std::string &args, const std::string &file, const std::vector<Row> &rows) {
  std::string input;
  for (const Row &row : rows) input += Fill(row.request, dir, file) + "\n";
  dir.Write("commands.txt", input);
  Result r = Tool(dir.Path(), "host " + args + " < commands.txt");
  EXPECT_EQ(r.status, 0);
  const std::vector<std::string> replies = Lines(r.out);
  ASSERT_EQ(replies.size(), rows.size()) << r.out;
  for (size_t i = 0; i < rows.size(); ++i)
    EXPECT_NE(replies[i].find(Fill(rows[i].expected, dir, file)), std::string::npos)
        << "request: " << rows[i].request << "\nreply: " << replies[i];
}

const std::string kSceneText = Scene(
    "<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"Clear\" Name=\"Clear1\"/>",
    "<Connection Out=\"Clear1.Render\" In=\"Screen1.Render\"/>");
}  // namespace

TEST(ToolHost, EveryCommandAnswersWithItsReplyOrItsError) {
  TempDir dir;
  const std::string file = dir.Write("t.vms", kSceneText);
  const std::string big = "<c><NodeGet Name=\"" + std::string(size_t{1} << 20, 'x') + "\"/></c>";
  RunRows(dir, "t.vms", "t.vms", {
      // The channel itself: errors come back and the session goes on.
      {"<c><Bogus A=\"1\"/></c>", "<vms><Bogus A=\"1\" Error=\"Unknown command\" />"},
      {"<c><Bogus", "<Request Error=\"Malformed XML\" />"},
      {big, "<Request Error=\"Line too long\" />"},
      // A scene file given to the tool plays as the document's scene: no file of its own.
      {"<c><SceneActive/><NodeSet Name=\"Clear1\"/></c>", "<SceneActivated File=\"\" Name=\"T\" /><Node Name=\"Clear1\" />"},
      // Nodes, ports and connections on the active scene.
      {"<c><NodeCreate Type=\"Sin\" Name=\"S\"/></c>", "<NodeCreated Type=\"Sin\" Name=\"S\" />"},
      {"<c><NodeCreate Type=\"Sin\"/></c>", "<NodeCreated Type=\"Sin\" Name=\"Sin"},
      {"<c><NodeCreate Type=\"Sin\" Name=\"S\"/></c>", "Error=\"A node with that name already exists\""},
      {"<c><NodeCreate Type=\"sin\"/></c>", "Error=\"Unknown node type\""},
      {"<c><NodeGet Name=\"S\"/></c>", "<Node Name=\"S\" SceneFile=\"\"><Port Name=\"Min\" Value=\"0\" /><Port Name=\"Max\""},
      {"<c><NodeGet Name=\"Nope\"/></c>", "Error=\"A node with that name doesn't exists\""},
      {"<c><PortSet Name=\"S.Max\" Value=\"2.5\"/></c>", "<Port Name=\"S.Max\" Value=\"2.5\" />"},
      {"<c><PortSet Name=\"S.Max\" Value=\"lots\"/></c>", "Error=\"Bad value for that port\""},
      {"<c><PortSet Name=\"S.Nope\" Value=\"1\"/></c>", "Error=\"A node,port or component with that name doesn't exists\""},
      {"<c><PortGet Name=\"S.Max\"/></c>", "<Port Name=\"S.Max\" Value=\"2.5\" />"},
      {"<c><PortGet Name=\"S.Nope\"/></c>", "Error=\"A node,attribute or component with that name doesn't exists\""},
      {"<c><ConnectionCreate From=\"Sin1.Value\" To=\"S.Offset\"/></c>", "<ConnectionCreated From=\"Sin1.Value\" To=\"S.Offset\" />"},
      {"<c><ConnectionCreate From=\"Sin1.Value\" To=\"S.Nope\"/></c>", "Error=\"Unable to create connection\""},
      {"<c><ConnectionRemove From=\"Sin1.Value\" To=\"S.Offset\"/></c>", "<ConnectionRemoved From=\"Sin1.Value\" To=\"S.Offset\" />"},
      {"<c><ConnectionRemove From=\"Sin1.Value\" To=\"S.Nope\"/></c>", "Error=\"Unable to remove connection\""},
      {"<c><ConnectionsBreak Node1=\"S\" Node2=\"Sin1\"/></c>", "<ConnectionsBroken Node1=\"S\" Node2=\"Sin1\" />"},
      {"<c><ConnectionsBreak Node1=\"S\" Node2=\"Nope\"/></c>", "Error=\"Unable to find one of the nodes\""},
      {"<c><NodeRemove Name=\"S\"/></c>", "<NodeRemoved Name=\"S\" />"},
      {"<c><NodeRemove Name=\"S\"/></c>", "Error=\"A node with that name doesn't exists\""},
      {"<c><NodeTypesGet/></c>", "<NodeInfo Type=\"Sin\" Desc="},
      // Configuration and the display: without --gl there is no window.
      {"<c><ConfigSet LockFPS=\"0\" CaptureSound=\"1\"/><ConfigGet/></c>", "CaptureSound=\"1\" LockFPS=\"1\" />"},
      {"<c><RenderInfoGet/></c>", "<RenderInfo />"},
      {"<c><WinCreate ParentHWND=\"0\"/></c>", "Error=\"Unable to create window\""},
      {"<c><WinCapture/></c>", "Error=\"Failed to save screen capture\""},
      // Scenes.
      {"<c><SceneCreate Name=\"A\"/></c>", "<SceneCreated Name=\"A\" />"},
      {"<c><SceneCreate Name=\"A\"/></c>", "Error=\"A scene with that name already exists\""},
      {"<c><SceneCreate/></c>", "<SceneCreated Name=\"NewScene1\" />"},
      {"<c><SceneCreate Name=\"B\" Template=\"$F\"/></c>", "<SceneCreated Name=\"B\" />"},
      {"<c><SceneCreate Template=\"$D/none.vms\"/></c>", "Error=\"Failed to load the template\""},
      {"<c><SceneActivate Name=\"A\" File=\"\"/><NodeGet Name=\"Clear1\"/></c>", "<SceneActivated File=\"\" Name=\"A\" /><Node Name=\"Clear1\" SceneFile=\"\">"},
      {"<c><SceneActivate Name=\"Z\" File=\"\"/></c>", "Error=\"A scene with that name doesn't exists\""},
      {"<c><SceneGet Name=\"A\" File=\"\"/></c>", "<Node Type=\"Clear\" Name=\"Clear1\""},
      {"<c><SceneGet Name=\"Z\" File=\"\"/></c>", "Error=\"A scene with that name doesn't exists\""},
      {"<c><SceneUpdate Name=\"A\" File=\"\" NewName=\"A2\" Author=\"me\"/></c>", "<SceneUpdated File=\"\" Name=\"A\" NewFile=\"\" NewName=\"A2\" Author=\"me\" Desc=\"\" Created="},
      {"<c><SceneUpdate Name=\"A\" File=\"\"/></c>", "Error=\"A scene with that name doesn't exists\""},
      {"<c><ScenesGet/></c>", "<Scenes><Scene File=\"\" Name=\"T\" /><Scene File=\"\" Name=\"A2\" />"},
      {"<c><SceneSave File=\"\" Name=\"A2\" DiskFile=\"$D/a.vms\"/></c>", "<SceneSaved File=\"\" Name=\"A2\" DiskFile=\"$D/a.vms\" />"},
      {"<c><SceneLoad File=\"$D/a.vms\" Name=\"A2\"/></c>", "<SceneLoaded File=\"$D/a.vms\" Name=\"A2\" />"},
      {"<c><SceneLoad File=\"$D/none.vms\"/></c>", "Error=\"Failed to load the scene\""},
      {"<c><SceneRemove Name=\"B\" File=\"\"/></c>", "<SceneRemoved File=\"\" Name=\"B\" />"},
      {"<c><SceneRemove Name=\"B\" File=\"\"/></c>", "Error=\"A scene with that name/file doesn't exists\""},
      {"<c><ScenesSave File=\"$D/all.vms\"/></c>", "<ScenesSaved File=\"$D/all.vms\" />"},
      {"<c><ProjectSave Filename=\"$D/p.vmp\"/></c>", "<ProjectSaved Filename=\"$D/p.vmp\" />"},
      // Projects: an empty engine has no active scene to work on.
      {"<c><ProjectCreate/><SceneActive/><NodeCreate Type=\"Sin\"/></c>", "<ProjectCreated /><SceneActivated File=\"\" Name=\"\" /><NodeCreate Type=\"Sin\" Error=\"No active scene set\" />"},
      {"<c><ProjectLoad Filename=\"$D/all.vms\"/><ScenesGet/></c>", "<ProjectLoaded Filename=\"$D/all.vms\" /><Scenes><Scene File=\"$D/all.vms\" Name=\"T\" />"},
      {"<c><ProjectLoad Filename=\"$D/none.vmp\"/></c>", "Error=\"Load failed\""},
  });
  // What the user had is as it was; the saves wrote what they named.
  EXPECT_EQ(TempDir::Read(file), kSceneText);
  EXPECT_NE(TempDir::Read(dir / "a.vms").find("Name=\"A2\""), std::string::npos);
  EXPECT_EQ(TempDir::Read(dir / "a.vms").find("Name=\"T\""), std::string::npos);
  EXPECT_NE(TempDir::Read(dir / "all.vms").find("Name=\"NewScene1\""), std::string::npos);
}

// On a window: capture, display information and a window inside a host's.
TEST(ToolHost, WithAWindowCapturesAndReportsTheDisplay) {
  Display *display = getenv("DISPLAY") ? XOpenDisplay(nullptr) : nullptr;
  if (!display) GTEST_SKIP() << "no X display";
  const Window parent = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 64, 48, 0, 0, 0);
  XMapWindow(display, parent);
  XSync(display, 0);
  TempDir dir;
  dir.Write("t.vms", kSceneText);
  setenv("XDG_CONFIG_HOME", dir.Path().c_str(), 1);
  RunRows(dir, "t.vms --gl", "t.vms", {
      {"<c><RenderInfoGet/></c>", "<RenderInfo><Monitor Name=\""},
      {"<c><RenderInfoGet/></c>", "<SelectedMode Index=\""},
      {"<c><WinCapture/></c>", "<WinCaptured FileName=\"$D/velmor/Screenshots/"},
      {"<c><WinCreate ParentHWND=\"" + std::to_string(parent) + "\"/></c>", "<WinCreated Id=\"1\" hwnd=\""},
      {"<c><WinCreate ParentHWND=\"1\"/></c>", "Error=\"Unable to create window\""},
  });
  unsetenv("XDG_CONFIG_HOME");
  XDestroyWindow(display, parent);
  XCloseDisplay(display);
}
