#include "audio/SoundReader.h"

namespace {
CSilentSoundReader g_Silence;
const ISoundReader *g_Reader = &g_Silence;
}  // namespace

const ISoundReader &GetSoundReader() { return *g_Reader; }
void SetSoundReader(const ISoundReader *reader) { g_Reader = reader ? reader : &g_Silence; }
