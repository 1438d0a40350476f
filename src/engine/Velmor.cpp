#include "engine/Velmor.h"

#include <cstring>
#include <utility>

#include "core/Clock.h"
#include "core/Log.h"
#include "core/Numeric.h"
#include "core/Paths.h"
#include "core/Random.h"
#include "core/Trace.h"
#include "engine/SceneLayered.h"
#include "engine/commands/Commands.h"
#include "platform/MessageQueue.h"
#include "render/Render.h"
#include "scene/Scene.h"

namespace {
constexpr int kMenuFirstScene = 0x94D4;
}  // namespace

CVelmor::CVelmor() : m_Stats(&m_NoStats) {
  TRACE_SCOPE_LOGGED("CVelmor::CVelmor");
  m_Commands = &*m_Script;
  m_NodeFactory->Init();
  RegisterEngineCommands(*m_Script, this);
}

CVelmor::~CVelmor() {
  TRACE_SCOPE_LOGGED("CVelmor::~CVelmor");
  m_Script->Unregister(this);
  Free();
}

bool CVelmor::Init() {
  TRACE_SCOPE_LOGGED("CVelmor::Init");
  m_ActiveScene = nullptr;
  Free();
  if (!m_NodesRegistered && m_RegisterEffectNodes) m_RegisterEffectNodes(*m_NodeFactory);
  m_NodesRegistered = true;
  m_Stats->Init();
  Profiler().Restart();
  if (m_ConfigureSound) m_ConfigureSound(m_CaptureSound, m_MaxSilenceTime);
  return true;
}

void CVelmor::Free() {
  m_Stats->Exit();
  m_ActiveScene = nullptr;
  m_Outgoing = nullptr;
  m_Transitions.clear();
  m_Scenes.clear();
  m_BackgroundScenes.clear();
  m_ForegroundScenes.clear();
  m_PostprocessingScenes.clear();
}

bool CVelmor::Update(float dt) {
  TRACE_SCOPE("CVelmor::Update");
  if (m_Settings.feedsSound && m_UpdateSound) m_UpdateSound();
  if (m_AutoGotoNextScene && m_Settings.timedScenes) {
    ++m_UpdateCount;
    const float elapsed = static_cast<float>(GetClock().Milliseconds() - m_SceneStartTime) / 1000.0f;
    const int change = m_RandomizeScene ? CHANGE_Random : CHANGE_Next;
    if (elapsed > m_SceneRunTime) {
      ActivateAnotherScene(change, 0, true, false);
    } else if (m_UpdateCount < 25 && elapsed > 5.0f) {
      Log("Scene too slow. Switching to new scene. %f fps", static_cast<double>(m_UpdateCount / elapsed));
      ActivateAnotherScene(change, 0, true, true);
    }
  }
  m_Commands->Run();
  if (m_ActiveScene) m_ActiveScene->Update(dt);
  return true;
}

bool CVelmor::Draw(CRender *render) {
  TRACE_SCOPE("CVelmor::Draw");
  if (!render) return true;
  if (m_Outgoing && m_ActiveScene && ++m_HandOverFrames <= MaxHandOverFrames &&
      !m_ActiveScene->PrepareDevice(render, m_HandOverBudgetMs)) {
    m_Outgoing->Draw(render);
    return true;
  }
  EndHandOver();
  if (m_ActiveScene) {
    m_ActiveScene->Draw(render);
  } else {
    const float black[4] = {0, 0, 0, 0};
    render->Clear(black, 1.0f, CLEAR_Color | CLEAR_Depth);
  }
  return true;
}

bool CVelmor::FrameFinished() {
  TRACE_SCOPE("CVelmor::FrameFinished");
  if (m_ActiveScene) m_ActiveScene->FrameFinished();
  m_Stats->FrameFinished();
  Profiler().FrameFinished();
  return true;
}

bool CVelmor::RestoreDevice(CRender *render) {
  if (m_ActiveScene && render) return m_ActiveScene->RestoreDevice(render);
  return true;
}

void CVelmor::InvalidateDevice(CRender *render) {
  if (m_Outgoing && render) m_Outgoing->InvalidateDevice(render);
  m_Outgoing = nullptr;
  if (m_ActiveScene && render) m_ActiveScene->InvalidateDevice(render);
}

void CVelmor::EndHandOver() {
  CSceneBase *old = std::exchange(m_Outgoing, nullptr);
  if (!old || !m_Render) return;
  const auto *from = dynamic_cast<const CSceneLayered *>(old);
  const auto *to = dynamic_cast<const CSceneLayered *>(m_ActiveScene);
  if (!from || !to) return old->InvalidateDevice(m_Render);
  for (CScene *layer : {from->m_Background, from->m_Foreground, from->m_Postprocessing})
    if (layer && !to->Uses(layer)) layer->InvalidateDevice(m_Render);
}

std::string CVelmor::ActiveSceneName() const { return m_ActiveScene ? m_ActiveScene->GetName() : std::string(); }

CSceneBase *CVelmor::ActivateAnotherScene(int mode, int index, bool activate, bool tooSlow) {
  TRACE_SCOPE_LOGGED("CVelmor::ActivateAnotherScene");
  m_UpdateCount = 0;
  m_SceneStartTime = GetClock().Milliseconds();
  m_SceneRunTime = RandomRange(static_cast<float>(m_SceneMinRunTime), static_cast<float>(m_SceneMaxRunTime));
  if (m_Scenes.empty()) return nullptr;
  const int count = static_cast<int>(m_Scenes.size());
  const auto *active = dynamic_cast<const CSceneLayered *>(m_ActiveScene);
  std::vector<SceneChoiceEntry> entries;
  entries.reserve(m_Scenes.size());
  for (const auto &s : m_Scenes) {
    const auto *layered = dynamic_cast<const CSceneLayered *>(s.get());
    entries.push_back({s->m_RandomProbability, s->m_IsLayered,
                       layered && active && layered != active && layered->IsNeighbour(active)});
  }
  const SceneChoice choice =
      ChooseScene(entries, {mode, index, m_SceneIndex, active != nullptr, tooSlow}, SharedRandom(), m_TotalProbability);
  m_SceneIndex = choice.index;
  m_TotalProbability = choice.totalProbability;
  const float offset = choice.offset;

  int at = m_SceneIndex < 0 ? 0 : (m_SceneIndex >= count ? count - 1 : m_SceneIndex);
  auto it = m_Scenes.begin();
  std::advance(it, at);
  CSceneBase *scene = it->get();
  if (scene->m_ShowTimeMax > 0.0f) m_SceneRunTime = scene->m_ShowTimeMax;

  Log("New scene: '%s' from '%s' (%ld / %ld). Next scene in %ldm %lds. Offset: %.2f / %.2f", scene->GetName().c_str(),
      scene->GetFile().c_str(), static_cast<long>(m_SceneIndex + 1), static_cast<long>(count),
      static_cast<long>(SatInt(m_SceneRunTime / 60.0f)), static_cast<long>(SatInt(m_SceneRunTime) % 60),
      static_cast<double>(offset), static_cast<double>(m_TotalProbability));

  if (activate) {
    SetActiveScene(scene);
    m_ActiveScene->ForceUpdate();
    Update(0.0f);
  } else {
    m_Stats->SceneEnd();
    m_Stats->SceneBegin(scene->GetName(), Contract(scene->GetFile()));
  }
  return scene;
}

void CVelmor::SetActiveScene(CSceneBase *scene) {
  TRACE_SCOPE_LOGGED("CVelmor::SetActiveScene");
  m_Stats->SceneEnd();
  if (m_ActiveScene) m_ActiveScene->Deactivate();
  // The old scene stays on screen until the new one has what it needs,
  // so that the switch doesn't stall a frame; without a renderer, or
  // with no picture to keep, it goes at once.
  EndHandOver();
  if (m_HandOverBudgetMs > 0.0 && m_Render && scene && m_ActiveScene && scene != m_ActiveScene) {
    m_Outgoing = m_ActiveScene;
    m_HandOverFrames = 0;
  } else {
    InvalidateDevice(m_Render);
  }
  m_ActiveScene = scene;
  if (!scene) return;
  scene->Activate();
  m_Stats->SceneBegin(scene->GetName(), Contract(scene->GetFile()));
}

CSceneBase *CVelmor::FindScene(const std::string &file, const std::string &name, int *indexOut) {
  int i = 0;
  for (const auto &s : m_Scenes) {
    if (s->GetFile() == file && (name.empty() || name == s->GetName())) {
      if (indexOut) *indexOut = i;
      return s.get();
    }
    ++i;
  }
  if (indexOut) *indexOut = -1;
  return nullptr;
}

int CVelmor::StandaloneIndex(int presetIndex) const {
  int seen = 0, i = 0;
  for (const auto &s : m_Scenes) {
    if (!s->m_IsLayered && seen++ == presetIndex) return i;
    ++i;
  }
  return -1;
}

void CVelmor::GetPresetName(int index, char *out) {
  out[0] = 0;
  if (m_Scenes.empty()) return;
  // Past the end: the last entry of the play list, layered or not.
  int at = StandaloneIndex(index);
  if (at < 0) at = static_cast<int>(m_Scenes.size()) - 1;
  auto it = m_Scenes.begin();
  std::advance(it, at);
  std::string name = (*it)->GetName();
  strncpy(out, name.c_str(), 255);
  out[255] = 0;
}

int CVelmor::GetPresetCount() {
  int n = 0;
  for (const auto &s : m_Scenes) n += s->m_IsLayered ? 0 : 1;
  return n;
}

void CVelmor::SelectPreset(int index) { ActivateAnotherScene(CHANGE_Index, index, true, false); }
void CVelmor::NextPreset() { ActivateAnotherScene(m_RandomizeScene ? CHANGE_Random : CHANGE_Next, 0, true, false); }
void CVelmor::PreviousPreset() {
  ActivateAnotherScene(m_RandomizeScene ? CHANGE_Random : CHANGE_Previous, 0, true, false);
}

void CVelmor::SetAutoChange(bool enabled, bool changeNow) {
  if (changeNow) ActivateAnotherScene(CHANGE_Random, 0, true, false);
  if (enabled == m_AutoGotoNextScene) return;
  m_AutoGotoNextScene = enabled;
  m_RandomizeScene = true;
  if (enabled && !changeNow) ActivateAnotherScene(CHANGE_Random, 0, true, false);
}

void CVelmor::MenuSelected(int id) {
  const int scene = id - kMenuFirstScene;
  if (scene < 0 || scene >= static_cast<int>(m_Scenes.size())) return;
  Log("Selected: %ld", static_cast<long>(scene));
  SelectPreset(scene);
}

void CVelmor::ReactivateScene() {
  if (m_ActiveScene) m_ActiveScene->Activate();
}

void CVelmor::OpenConfiguration() {
  // There is no separate configuration program on this platform: settings
  // live in config.xml, which the user edits.
  fprintf(stderr, "Velmor: Failed to launch the configuration\n");
  LogError("Failed to launch the configuration");
  MessageQueue().Post(WindowMessage{m_Render ? m_Render->GetWindowHandle(0) : 0, WM_CLOSE, 0, 0});
}
