#pragma once
// Sound from a file instead of the machine's output: for a demo, a test, or
// a machine without a sound server.

#include <string>

class CSoundAnalyzer;

// Makes `analyzer` hear the file (anything libsndfile reads) from its first
// UpdateSound on, paced by the process clock, and turns capture on. False,
// with a logged error, when the file can't be read; the analyzer is then
// left as it was.
bool PlaySoundFile(CSoundAnalyzer &analyzer, const std::string &path);
