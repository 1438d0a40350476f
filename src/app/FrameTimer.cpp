#include "app/FrameTimer.h"

#include "core/Clock.h"
#include "scene/SceneBase.h"

namespace {
constexpr size_t kBufferBytes = 1 << 16;
constexpr float kFlushSeconds = 2.0f;

// A CSV field: quoted when it holds a comma or a quote.
std::string CsvField(const std::string &text) {
  if (text.find_first_of(",\"\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}
}  // namespace

void CFrameTimer::Start() {
  IClock &clock = GetClock();
  m_HighResolution = clock.HasHighResolution();
  m_Frequency = m_HighResolution ? clock.Frequency() : 1000;
  if (m_Frequency <= 0) m_Frequency = 1;
  Tick();
  m_Delta = 0.0f;
}

void CFrameTimer::Tick() {
  IClock &clock = GetClock();
  int64_t now = m_HighResolution ? clock.Counter() : static_cast<int64_t>(clock.Milliseconds());
  m_Delta = static_cast<float>(static_cast<double>(now - m_LastCounter) / static_cast<double>(m_Frequency));
  m_LastCounter = now;
}

bool CFrameTimeLog::Open(const std::string &path) {
  Close();
  m_File = fopen(path.c_str(), "w");
  if (!m_File) return false;
  setvbuf(m_File, nullptr, _IOFBF, kBufferBytes);
  fputs("time,ms,scene\n", m_File);
  m_Timer.Start();
  return true;
}

void CFrameTimeLog::Close() {
  if (m_File) fclose(m_File);
  m_File = nullptr;
  m_InFrame = false;
}

void CFrameTimeLog::BeginFrame() {
  if (!m_File || m_InFrame) return;
  m_InFrame = true;
  m_Timer.Tick();
  m_SinceFlush += m_Timer.GetDelta();  // the time between frames counts towards the next write
}

void CFrameTimeLog::EndFrame(const CSceneBase *scene) {
  if (!m_InFrame) return;
  m_InFrame = false;
  m_Timer.Tick();
  if (scene != m_Scene) {  // the file name is made once a scene, not every frame
    m_Scene = scene;
    // A scene played from its own file, not a project's, knows its name only.
    const std::string file = scene ? scene->GetFile() : std::string();
    m_SceneField = CsvField(file.empty() && scene ? scene->GetName() : file);
  }
  const float seconds = m_Timer.GetDelta();
  fprintf(m_File, "%.4f,%.3f,%s\n", scene ? static_cast<double>(scene->GetTime()) : 0.0, seconds * 1000.0,
          m_SceneField.c_str());
  m_SinceFlush += seconds;
  if (m_SinceFlush >= kFlushSeconds) {
    fflush(m_File);
    m_SinceFlush = 0.0f;
  }
}
