// velmor-tool analyze: what a track will drive. The file goes through the
// same capture framing and analysis as live sound, on a clock that follows
// the file's own time, and every analysed frame becomes one line.

#include "audio/SoundAnalyzer.h"
#include "core/FakeClock.h"
#include "core/Log.h"
#include "platform/SoundFileSource.h"
#include "tool/ToolCommand.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {
// Update steps of 20 ms: comfortably above the capture's poll interval, so
// that every step polls, as in a program running at 50 frames a second.
constexpr double StepSeconds = 0.020;
constexpr float StepFps = 50.0f;

struct Row {
  double time;
  float level;
  float bands[2][3];
};

struct Collector {
  std::vector<Row> rows;
  int64_t pairs = 0;  // stereo pairs of the file analysed so far
};

void OnFrame(const CSoundAnalyzer &a, void *user) {
  auto *c = static_cast<Collector *>(user);
  c->pairs += a.LastCount();
  Row row{static_cast<double>(c->pairs) / CSoundFileSource::OutputRate, a.m_Level, {}};
  for (int ch = 0; ch < 2; ++ch)
    for (int b = 0; b < 3; ++b) row.bands[ch][b] = a.m_Bands[0][ch][b];
  c->rows.push_back(row);
}

void ErrorsToStderr(const char *text, bool isError, void *) {
  if (isError) fprintf(stderr, "velmor-tool analyze: %s\n", text);
}

int RunAnalyze(int argc, char **argv) {
  const char *path = nullptr;
  bool csv = false;
  for (int i = 1; i < argc; ++i) {
    if (!strcmp(argv[i], "--csv"))
      csv = true;
    else if (!path && argv[i][0] != '-')
      path = argv[i];
    else {
      fprintf(stderr, "velmor-tool analyze: unexpected argument '%s'\nusage: velmor-tool analyze FILE.wav [--csv]\n", argv[i]);
      return 2;
    }
  }
  if (!path) {
    fprintf(stderr, "usage: velmor-tool analyze FILE.wav [--csv]\n");
    return 2;
  }

  CScopedFakeClock fileTime;
  SetLogSink(&ErrorsToStderr, nullptr);
  auto source = std::make_unique<CSoundFileSource>(path);
  if (!source->Open()) {
    fprintf(stderr, "velmor-tool analyze: %s\n", source->ErrorText().c_str());
    SetLogSink(nullptr, nullptr);
    return 1;
  }
  CSoundFileSource *file = source.get();
  auto analyzer = std::make_unique<CSoundAnalyzer>();
  analyzer->m_CaptureSound = true;
  analyzer->Capture().SetSource(std::move(source));
  Collector collector;
  analyzer->SetFrameObserver(&OnFrame, &collector);

  if (csv) printf("time,level,left_low,left_mid,left_high,right_low,right_mid,right_high,music\n");
  analyzer->UpdateSound(StepFps);  // starts capture: the file starts playing now
  int result = 0;
  while (!file->AtEnd()) {
    if (!analyzer->Capture().IsRunning()) {
      result = 1;
      break;
    }
    fileTime.clock.Advance(StepSeconds);
    analyzer->UpdateSound(StepFps);
    // The music flag is the one of the update that analysed the frame.
    const int music = analyzer->HasMusic() ? 1 : 0;
    for (const Row &r : collector.rows)
      printf("%.4f,%.6f,%.6f,%.6f,%.6f,%.6f,%.6f,%.6f,%d\n", r.time, r.level, r.bands[0][0], r.bands[0][1],
             r.bands[0][2], r.bands[1][0], r.bands[1][1], r.bands[1][2], music);
    collector.rows.clear();
  }
  analyzer.reset();
  SetLogSink(nullptr, nullptr);
  return result;
}
}  // namespace

VELMOR_TOOL_COMMAND(analyze, "analyze", 6, "FILE.wav [--csv]",
                    "print the sound analysis of a file, one line per analysed frame", &RunAnalyze);
