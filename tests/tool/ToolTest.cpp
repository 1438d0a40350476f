// velmor-tool as scripts see it: exact output lines and exit codes.
#include "support/TempDir.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace {
// Width and height from a PNG's header.
std::pair<int, int> PngSize(const std::string &file) {
  std::string data = TempDir::Read(file);
  if (data.size() < 24 || data.compare(1, 3, "PNG") != 0) return {0, 0};
  auto be = [&](size_t at) {
    return (uint8_t(data[at]) << 24) | (uint8_t(data[at + 1]) << 16) | (uint8_t(data[at + 2]) << 8) | uint8_t(data[at + 3]);
  };
  return {static_cast<int>(be(16)), static_cast<int>(be(20))};
}
}  // namespace

TEST(ToolCheck, ShippedFilesPassAndProblemsAreListedPerFile) {
  Result ok = Tool(Assets(), "check scenes/plasma.vms projects/screensaver.vmp");
  EXPECT_EQ(ok.status, 0);
  EXPECT_EQ(ok.out, "scenes/plasma.vms: ok\nprojects/screensaver.vmp: ok\n");

  TempDir dir;
  dir.Write("bad.vms", Scene("<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"Bogus\" Name=\"B\"/>"
                             "<Node Type=\"Expression\" Name=\"E\" Expression=\"out1 = (1 +\"/>",
                             "<Connection Out=\"Nope.Value\" In=\"Screen1.Render\"/>"));
  Result bad = Tool(Assets(), "check " + (dir / "bad.vms") + " scenes/huedrift.vms");
  EXPECT_EQ(bad.status, 1);
  const std::string f = dir / "bad.vms";
  EXPECT_NE(bad.out.find(f + ": Unknown node type \"Bogus\"!\n"), std::string::npos) << bad.out;
  EXPECT_NE(bad.out.find(f + ": Failed to create connection from \"Nope.Value\" to \"Screen1.Render\"\n"), std::string::npos);
  EXPECT_NE(bad.out.find(f + ": Unmatched Parenthesis\n"), std::string::npos);
  EXPECT_NE(bad.out.find("scenes/huedrift.vms: ok\n"), std::string::npos);
}

// From a scene author's own folder: the installation's effect types are
// known, the user's names are relative to that folder, files that can't be
// loaded are named, and the folder is left as it was.
TEST(ToolCheck, WorksFromAnyFolderAndNamesFilesThatCannotBeLoaded) {
  TempDir dir;
  dir.Write("cut.vms", Scene("<Node Type=\"Screen\" Name=\"Screen1\"/>", "").substr(0, 60));
  dir.Write("empty.vms", "");
  dir.Write("binary.vms", std::string("\x89PNG\r\n\x1a\n\0\0\xff\xfe", 12));
  dir.Write("other.vms", "<Velmor><Scenes/></Velmor>");
  for (const char *file : {"cut.vms", "empty.vms", "binary.vms", "other.vms", "missing.vms"}) {
    Result r = Tool(dir.Path(), std::string("check ") + file);
    EXPECT_EQ(r.status, 1) << file;
    EXPECT_EQ(r.out, std::string(file) + ": Unable to load scene file \"" + file + "\".\n");
  }
  const std::string scenes = Assets() + "/scenes/";
  Result shipped = Tool(dir.Path(), "check " + scenes + "plasma.vms '" + scenes + "layerplasma.vms;" + scenes +
                                        "layerhelix.vms;" + scenes + "layerscan.vms'");
  EXPECT_EQ(shipped.status, 0) << shipped.out;
  EXPECT_EQ(std::count(shipped.out.begin(), shipped.out.end(), '\n'), 2) << shipped.out;
  std::vector<std::string> left;
  for (const auto &entry : std::filesystem::directory_iterator(dir.Path())) left.push_back(entry.path().filename());
  EXPECT_EQ(left.size(), 4u) << "the tool wrote into the user's folder";
}

// The plain listing checks the code its passes reach, so that exit status 0
// means the effect translates.
TEST(ToolFx, ListingFailsAnEffectWhoseCodeDoesNotTranslate) {
  TempDir dir;
  const std::string head = "float4 PS() : COLOR { float4 v = 1;\n";
  const std::string tail = "technique T { pass P { FragmentProgram = compile fp40 PS(); } }\n";
  dir.Write("good.cgfx", head + "return v[3]; }\n" + tail);
  dir.Write("bad.cgfx", head + "return v[4]; }\n" + tail);
  Result good = Tool(dir.Path(), "fx good.cgfx");
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.out, "technique T\n  pass P\n    FragmentProgram = compile fp40 PS()\n");
  EXPECT_EQ(Tool(dir.Path(), "fx bad.cgfx", dir / "err.txt").status, 1);
  EXPECT_NE(TempDir::Read(dir / "err.txt").find("bad.cgfx(2): index 4 is out of range for float4"), std::string::npos);
}

TEST(ToolEval, PrintsPortsAtATimeInTheOrderAsked) {
  TempDir dir;
  dir.Write("s.vms", Scene("<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"Clear\" Name=\"Clear1\"/>"
                           "<Node Type=\"Sin\" Name=\"Sin1\" Min=\"-2\" Max=\"4\" Frequency=\"0.5\"/>"
                           "<Node Type=\"RGBAToColor\" Name=\"C\"/>",
                           "<Connection Out=\"Clear1.Render\" In=\"Screen1.Render\"/>"
                           "<Connection Out=\"C.Color\" In=\"Clear1.Color\"/><Connection Out=\"Sin1.Value\" In=\"C.Red\"/>"));
  // Period 2 s: the wave is at its maximum at t = 1.
  Result r = Tool(dir.Path(), "eval s.vms --time 1 --port Sin1.Value --port C.Red --port Clear1.Color");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "Sin1.Value=4\nC.Red=4\nClear1.Color=4 1 1 1\n");
  // A layered list as the program takes it: its ports are found in its layers.
  EXPECT_EQ(Tool(dir.Path(), "eval 's.vms;s.vms;s.vms' --time 1 --port Sin1.Value").out, "Sin1.Value=4\n");
  EXPECT_EQ(Tool(dir.Path(), "eval s.vms --time 1 --port Nope.Value").status, 1);
  EXPECT_EQ(Tool(dir.Path(), "eval s.vms --port Sin1.Value").status, 2);  // no --time
}

TEST(ToolRender, WritesPicturesOfTheAskedSize) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: render needs an X server";
  TempDir dir;
  Result one = Tool(Assets(), "render scenes/huedrift.vms --time 0.5 --size 96x64 -o " + (dir / "h.png"));
  ASSERT_EQ(one.status, 0);
  EXPECT_EQ(one.out, (dir / "h.png") + "\n");
  EXPECT_EQ(PngSize(dir / "h.png"), std::make_pair(96, 64));
  Result seq = Tool(Assets(), "render scenes/spinningcube.vms --time 0 --frames 2 --fps 10 --size 64x48 -o " +
                                  (dir / "c_%04d.png"));
  ASSERT_EQ(seq.status, 0);
  EXPECT_EQ(seq.out, (dir / "c_0000.png") + "\n" + (dir / "c_0001.png") + "\n");
  EXPECT_NE(TempDir::Read(dir / "c_0000.png"), TempDir::Read(dir / "c_0001.png"));  // the cube turned
}

TEST(ToolCatalogue, ListsBuiltInAndEffectFileTypes) {
  Result r = Tool(Assets(), "catalogue");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out.rfind("<NodeTypes>", 0), 0u);
  EXPECT_NE(r.out.find("<NodeInfo Type=\"Sin\" Desc=\"Sin math function\" Group=\"7\">"), std::string::npos);
  EXPECT_NE(r.out.find("<NodeInfo Type=\"SpecularLit\""), std::string::npos);
  EXPECT_NE(r.out.find("<Port Type=\"Effect\" Name=\"Effect\""), std::string::npos);
}

TEST(ToolInfo, NamesTheDisplayTheMonitorsAndTheGL) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: info needs an X server";
  Result r = Tool(Assets(), "info");
  ASSERT_EQ(r.status, 0);
  EXPECT_EQ(r.out.rfind(std::string("display: ") + getenv("DISPLAY") + "\n", 0), 0u) << r.out;
  EXPECT_NE(r.out.find("\nmonitor 0: "), std::string::npos);
  EXPECT_NE(r.out.find("\ngl version: "), std::string::npos);
  EXPECT_NE(r.out.find("\ngl 2.0: yes\n"), std::string::npos);
  EXPECT_NE(r.out.find("\nframebuffer objects: yes\n"), std::string::npos);
}

TEST(ToolCheck, AMissingPictureIsAProblem) {
  TempDir dir;
  dir.Write("pictures.vms", Scene("<Node Type=\"FileTexture\" Name=\"F\" Filename=\"data/nothing.png\"/>", ""));
  Result r = Tool(Assets(), "check " + (dir / "pictures.vms"));
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, dir / "pictures.vms" + ": Unable to load image \"data/nothing.png\"\n");
}
