#include "nodes/sound/SoundChannelNode.h"

#include "audio/SoundReader.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

void CSoundChannelNode::AddChannelPorts(CNodeInfo &info, const char *monoDesc, const char *leftDesc,
                                        const char *rightDesc) {
  const char *noMusic = "Value to use if no music is playing";
  info.AddInPort(new CPortFloat("NoMusicLeft", noMusic, 0.0f, 0.01f, -10000.0f, 10000.0f));
  info.AddInPort(new CPortFloat("NoMusicRight", noMusic, 0.0f, 0.01f, -10000.0f, 10000.0f));
  info.AddInPort(new CPortFloat("NoMusicMono", noMusic, 0.0f, 0.01f, -10000.0f, 10000.0f));
  info.AddInPort(new CPortFloat("Amplification", "How much to amplify the values", 1.0f, 0.01f, 0.0f, 10000.0f));
  info.AddOutPort(new CPortFloat("Mono", monoDesc, 0.0f, 0.01f, 0.0f, 1.0f));
  info.AddOutPort(new CPortFloat("LeftChannel", leftDesc, 0.0f, 0.01f, 0.0f, 1.0f));
  info.AddOutPort(new CPortFloat("RightChannel", rightDesc, 0.0f, 0.01f, 0.0f, 1.0f));
}

bool CSoundChannelNode::Init() {
  m_NoMusicLeft = InPort<CPortFloat>("NoMusicLeft");
  m_NoMusicRight = InPort<CPortFloat>("NoMusicRight");
  m_NoMusicMono = InPort<CPortFloat>("NoMusicMono");
  m_Amplification = InPort<CPortFloat>("Amplification");
  m_Mono = OutPort<CPortFloat>("Mono");
  m_Left = OutPort<CPortFloat>("LeftChannel");
  m_Right = OutPort<CPortFloat>("RightChannel");
  return true;
}

void CSoundChannelNode::Update(float time, FrameInfo *) {
  // Local evaluation asks again at every position, so the in-ports follow
  // the position too.
  UpdateInPorts(time);
  const ISoundReader &sound = GetSoundReader();
  const bool music = sound.HasMusic();
  if (music) {
    const float a = m_Amplification->m_Value;
    m_Left->m_Value = Sample(sound, 0, time) * a;
    m_Right->m_Value = Sample(sound, 1, time) * a;
    m_Mono->m_Value = (m_Left->m_Value + m_Right->m_Value) * 0.5f;
  } else {
    m_Left->m_Value = m_NoMusicLeft->m_Value;
    m_Right->m_Value = m_NoMusicRight->m_Value;
    m_Mono->m_Value = m_NoMusicMono->m_Value;
  }
  m_Left->m_Changed = m_Right->m_Changed = m_Mono->m_Changed = true;
  UpdateExtra(sound, music);
}
