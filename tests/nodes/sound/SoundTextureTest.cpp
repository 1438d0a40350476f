// SoundTexture: one row per analysed frame and none in silence, drawn with
// the oldest row first so that the newest is the texture's last.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "audio/SoundReader.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/sound/SoundTextureNode.h"
#include "render/RecordRender.h"
#include "render/Resources.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"

namespace {
// A sound whose spectrum is flat at a level set per analysed frame.
struct SteppedSound : ISoundReader {
  bool music = true;
  int frame = 0;
  float level = 0.0f;
  bool HasMusic() const override { return music; }
  float Level() const override { return level; }
  float GetWaveform(int, float) const override { return 0.0f; }
  float GetSpectrum(int channel, float) const override { return channel == 1 ? level * 0.5f : level; }
  float Band(int, int, int) const override { return 0.0f; }
  int FrameCounter() const override { return frame; }
};

uint32_t Red(uint32_t texel) { return texel & 0xFF; }
}  // namespace

TEST(SoundTexture, AddsOneRowPerAnalysedFrameAndShowsTheNewestLast) {
  InstallBuiltinNodes();
  CNodeFactoryRef factory;
  factory->Init();
  std::unique_ptr<CSoundTextureNode> node(static_cast<CSoundTextureNode *>(factory->CreateNode("SoundTexture")));
  node->FindInPort("History")->SetText("3");
  SteppedSound sound;
  SetSoundReader(&sound);
  FrameInfo frame;
  CRecordRender render;

  // Each step: music?, the analyser's frame counter, its level, and the
  // write row afterwards. The ring (3 rows) wraps on the fourth frame.
  const struct { bool music; int frame; float level; int writeRow; } steps[] = {
      {true, 1, 0.2f, 1}, {true, 1, 0.9f, 1}, {true, 2, 0.4f, 2}, {false, 3, 0.9f, 2},
               {true, 4, 0.6f, 0}, {true, 5, 0.8f, 1}};
  for (const auto &s : steps) {
    sound.music = s.music, sound.frame = s.frame, sound.level = s.level;
    node->m_Updated = false;
    node->Update(0.0f, &frame);
    EXPECT_EQ(node->WriteRow(), s.writeRow) << "after frame " << s.frame;
  }
  EXPECT_EQ(node->m_Mode, 2);

  ASSERT_TRUE(node->RestoreDevice(&render));
  CTexture *texture = node->GetTexture(&render);
  ASSERT_NE(texture, nullptr);
  ASSERT_EQ(texture->m_Width, 256);
  ASSERT_EQ(texture->m_Height, 3);
  const uint32_t *texels = texture->Lock();
  // Rows oldest first: frames 2, 4, 5; red is the mean of left and right.
  const float expected[] = {0.4f, 0.6f, 0.8f};
  for (int row = 0; row < 3; ++row)
    EXPECT_EQ(Red(texels[row * 256 + 7]), static_cast<uint32_t>(std::lround(expected[row] * 0.75f * 255.0f))) << row;
  EXPECT_EQ((texels[7] >> 8) & 0xFF, static_cast<uint32_t>(std::lround(0.4f * 255.0f))) << "green is the left channel";
  texture->Unlock();

  // History 1 is a one-row texture of mode 1; a new History clears the ring.
  node->FindInPort("History")->SetText("1");
  node->m_Updated = false;
  node->Update(0.0f, &frame);
  EXPECT_EQ(node->m_Mode, 1);
  EXPECT_EQ(node->Ring(), std::vector<uint32_t>(256, 0u));
  node->InvalidateDevice(&render);
  SetSoundReader(nullptr);
}
