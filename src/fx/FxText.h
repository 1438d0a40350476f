#pragma once
// Text composition for effects built at run time: the shared shader header,
// and declarations added only when the user's text uses a name.

#include "fx/FxPreprocessor.h"

#include <string>

// No real effect or include file comes near this size.
constexpr size_t MaxFxFileBytes = size_t{1} << 20;
// A whole regular file of at most MaxFxFileBytes, bytes as they are; false
// otherwise, with the reason in `why` when given.
bool ReadFxFile(const std::string &path, std::string &text, std::string *why = nullptr);
// Includes resolved against the folder of the effect file (`folder` ends
// with '/' or is empty), then against nodedata/; absolute names and names
// with ".." are refused. A text composed at run time has no folder (""):
// its includes come from nodedata/ alone.
FxIncludeCallback FxFolderIncludes(const std::string &folder);
// The folder part of a path, with its '/', or "".
std::string FxFolderOf(const std::string &path);

// Reads nodedata/shader.cgh (relative to the working folder) once through
// FilterShaderHeader; a missing file leaves the header empty and is tried
// again on the next call.
void LoadShaderHeader(const char *path = "nodedata/shader.cgh");
const std::string &GetShaderHeader();
void ResetShaderHeader();  // for tests
// Drops blank lines, indentation and // comments of the file's bytes; the
// very last byte of the file is never copied.
std::string FilterShaderHeader(const std::string &bytes);

// Appends `declaration` to `prefix` when `text` uses `name`: an occurrence
// followed by anything but an ASCII letter or digit.
void AddDeclaration(const std::string &text, std::string &prefix, const char *name, const char *declaration);

// The texture connected to a node's texture port: its dimension (1, 2, 3)
// and flags (0x100: mipmapped; 0x24: clamped).
struct FxTextureInfo {
  long dimension = 2;
  unsigned flags = 0;
};
// Declares a sampler for `texture` (null: nothing connected) unless the text
// declares one itself; returns the dimension declared, else 0.
int AddSampler(const std::string &text, std::string &prefix, const FxTextureInfo *texture, const char *name);
