// Sound from a file through velmor-tool: the sound nodes of a scene run with
// --audio read what `analyze` reports for the same file at the same time,
// and a seeded render repeats itself.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/ToolRun.h"
#include "tool/ToolWav.h"

namespace {
// 600 Hz for the first quarter of every half second: the analysis' low band,
// which the beat follows, begins near 390 Hz.
double BassPulses(double t) { return std::fmod(t, 0.5) < 0.25 ? 0.9 * std::sin(6.2831853 * 600 * t) : 0.0; }

struct AnalyzedFrame {
  double time, level;
  int music;
};

std::vector<AnalyzedFrame> Analyze(const std::string &dir, const std::string &wav) {
  std::istringstream in(Tool(dir, "analyze " + wav + " --csv").out);
  std::vector<AnalyzedFrame> rows;
  std::string line;
  std::getline(in, line);  // header
  while (std::getline(in, line)) {
    double f[8];
    int music = 0;
    if (sscanf(line.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf,%d", &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6],
               &f[7], &music) == 9)
      rows.push_back({f[0], f[1], music});
  }
  return rows;
}

// NAME=value lines of eval.
std::map<std::string, double> Eval(const std::string &dir, const std::string &wav, double time) {
  std::istringstream in(Tool(dir, "eval s.vms --audio " + wav + " --time " + std::to_string(time) +
                                      " --port Beat1.BeatStrength --port Spectrum1.Mono --port Waveform1.AvgLeftChannel")
                            .out);
  std::map<std::string, double> values;
  for (std::string line; std::getline(in, line);)
    if (size_t eq = line.find('='); eq != std::string::npos) values[line.substr(0, eq)] = atof(line.c_str() + eq + 1);
  return values;
}

// Whether `level` is that of a frame the analysis finished in the 60 ms
// before `time` (the file's packets and the scene's steps don't meet on the
// same frame boundaries).
bool LevelOfARecentFrame(const std::vector<AnalyzedFrame> &rows, double time, double level) {
  for (const AnalyzedFrame &r : rows)
    if (r.time <= time + 1e-3 && r.time >= time - 0.06 && std::fabs(r.level - level) <= 1e-4 * (1 + r.level))
      return true;
  return false;
}
}  // namespace

TEST(ToolSound, SoundNodesReadTheFileAsAnalyzeDoes) {
  TempDir dir;
  // Beat, Spectrum and Waveform feed the clear color so that the screen pulls
  // them; their NoMusic values are -1. The spectrum is read at the scene
  // time, so from 1 s on at its highest frequency.
  dir.Write("s.vms", Scene("<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"Clear\" Name=\"Clear1\"/>"
                           "<Node Type=\"RGBAToColor\" Name=\"C\"/><Node Type=\"Beat\" Name=\"Beat1\" NoMusic=\"-1\"/>"
                           "<Node Type=\"Spectrum\" Name=\"Spectrum1\" NoMusicMono=\"-1\"/>"
                           "<Node Type=\"Waveform\" Name=\"Waveform1\" NoMusicLeft=\"-1\"/>",
                           "<Connection Out=\"Clear1.Render\" In=\"Screen1.Render\"/>"
                           "<Connection Out=\"C.Color\" In=\"Clear1.Color\"/>"
                           "<Connection Out=\"Beat1.BeatStrength\" In=\"C.Red\"/>"
                           "<Connection Out=\"Spectrum1.Mono\" In=\"C.Green\"/>"
                           "<Connection Out=\"Waveform1.AvgLeftChannel\" In=\"C.Blue\"/>"));
  std::mt19937 noise(16);
  std::uniform_real_distribution<double> uniform(-0.8, 0.8);
  WriteWav(dir, "silence.wav", 2.0, [](double) { return 0.0; });
  WriteWav(dir, "bass.wav", 2.0, &BassPulses);
  WriteWav(dir, "noise.wav", 2.0, [&](double) { return uniform(noise); });

  const std::vector<AnalyzedFrame> silence = Analyze(dir.Path(), "silence.wav");
  ASSERT_FALSE(silence.empty());
  for (const AnalyzedFrame &r : silence) EXPECT_EQ(r.music, 0);
  auto quiet = Eval(dir.Path(), "silence.wav", 1.1);
  EXPECT_EQ(quiet["Beat1.BeatStrength"], -1);
  EXPECT_EQ(quiet["Spectrum1.Mono"], -1);
  EXPECT_EQ(quiet["Waveform1.AvgLeftChannel"], -1);

  const std::vector<AnalyzedFrame> bass = Analyze(dir.Path(), "bass.wav"), hiss = Analyze(dir.Path(), "noise.wav");
  auto on = Eval(dir.Path(), "bass.wav", 1.1), off = Eval(dir.Path(), "bass.wav", 1.4);
  auto white = Eval(dir.Path(), "noise.wav", 1.2);
  EXPECT_TRUE(LevelOfARecentFrame(bass, 1.1, on["Beat1.BeatStrength"])) << on["Beat1.BeatStrength"];
  EXPECT_TRUE(LevelOfARecentFrame(bass, 1.4, off["Beat1.BeatStrength"])) << off["Beat1.BeatStrength"];
  EXPECT_TRUE(LevelOfARecentFrame(hiss, 1.2, white["Beat1.BeatStrength"])) << white["Beat1.BeatStrength"];
  EXPECT_GT(on["Beat1.BeatStrength"], 0.02) << "the beat rises on a pulse";
  EXPECT_LT(off["Beat1.BeatStrength"], 0.5 * on["Beat1.BeatStrength"]) << "and falls between pulses";
  // At the top of the spectrum: the bass has nothing, the noise has plenty.
  EXPECT_LT(on["Spectrum1.Mono"], 0.01);
  EXPECT_GT(white["Spectrum1.Mono"], 10 * on["Spectrum1.Mono"] + 0.01);
  EXPECT_EQ(on["Waveform1.AvgLeftChannel"], 0) << "with music the averages are 0";
}

TEST(ToolSound, ASeededRenderRepeatsAndMovesOn) {
  TempDir dir;
  const std::string track = dir / "bass.wav";
  WriteWav(dir, "bass.wav", 2.0, &BassPulses);
  auto render = [&](const char *time, const char *out) {
    Result r = Tool(Assets(), std::string("render scenes/musicsparks.vms --seed 5 --size 160x120 --audio ") + track +
                                  " --time " + time + " -o " + (dir / out));
    EXPECT_EQ(r.status, 0) << out;
    return TempDir::Read(dir / out);
  };
  const std::string a = render("1", "a.png"), b = render("1", "b.png"), c = render("1.3", "c.png");
  ASSERT_FALSE(a.empty());
  EXPECT_EQ(a, b);
  EXPECT_NE(a, c);
}
