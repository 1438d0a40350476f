#include "audio/SoundFromFile.h"

#include <memory>

#include "audio/SoundAnalyzer.h"
#include "core/Log.h"
#include "platform/SoundFileSource.h"

bool PlaySoundFile(CSoundAnalyzer &analyzer, const std::string &path) {
  auto source = std::make_unique<CSoundFileSource>(path);
  if (!source->Open()) return LogError("Unable to play sound file \"%s\": %s", path.c_str(), source->ErrorText().c_str());
  analyzer.Capture().SetSource(std::move(source));
  analyzer.m_CaptureSound = true;
  return true;
}
