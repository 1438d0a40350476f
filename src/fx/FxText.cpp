#include "fx/FxText.h"

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {
std::string g_ShaderHeader;
}

std::string FilterShaderHeader(const std::string &bytes) {
  std::string out;
  bool lineStart = true, lineEmpty = true;
  size_t end = bytes.empty() ? 0 : bytes.size() - 1;
  size_t i = 0;
  while (i < end) {
    char c = bytes[i];
    if (c == '\r' || c == '\n') {
      while (i < end && (bytes[i] == '\r' || bytes[i] == '\n')) ++i;
      if (!lineEmpty) out += '\n';
      lineStart = lineEmpty = true;
    } else if (c == '/' && i + 1 < end && bytes[i + 1] == '/') {
      while (i < end && bytes[i] != '\r' && bytes[i] != '\n') ++i;
      lineStart = lineEmpty = true;
    } else if ((c == ' ' || c == '\t') && lineStart) {
      ++i;
    } else {
      out += c;
      if (c != ' ' && c != '\t') lineEmpty = false;
      lineStart = false;
      ++i;
    }
  }
  return out;
}

bool ReadFxFile(const std::string &path, std::string &text, std::string *why) {
  auto fail = [why](std::string reason) {
    if (why) *why = std::move(reason);
    return false;
  };
  std::error_code error;
  if (!std::filesystem::exists(path, error)) return fail("");
  // A device or a pipe could be read forever; a real effect is a small file.
  if (!std::filesystem::is_regular_file(path, error)) return fail("not a file");
  uintmax_t size = std::filesystem::file_size(path, error);
  if (!error && size > MaxFxFileBytes) return fail("larger than " + std::to_string(MaxFxFileBytes >> 20) + " MB");
  std::ifstream in(path, std::ios::binary);
  if (error || !in) return fail("cannot be read");
  text.assign(static_cast<size_t>(size), '\0');
  in.read(text.data(), static_cast<std::streamsize>(size));
  text.resize(static_cast<size_t>(in.gcount()));
  return true;
}

FxIncludeCallback FxFolderIncludes(const std::string &folder) {
  return [folder](const std::string &name, std::string &text) {
    std::filesystem::path relative(name);
    bool up = false;
    for (const auto &part : relative) up = up || part == "..";
    if (up || relative.empty() || relative.is_absolute()) {
      text = "include files come only from the effect's folder and nodedata";
      return false;
    }
    std::string why;
    if (!folder.empty() && (ReadFxFile(folder + name, text, &why) || !why.empty())) {
      if (!why.empty()) text = why;
      return why.empty();
    }
    return ReadFxFile("nodedata/" + name, text, &text);
  };
}

std::string FxFolderOf(const std::string &path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

void LoadShaderHeader(const char *path) {
  std::string bytes;
  if (g_ShaderHeader.empty() && ReadFxFile(path, bytes)) g_ShaderHeader = FilterShaderHeader(bytes);
}

const std::string &GetShaderHeader() { return g_ShaderHeader; }

void ResetShaderHeader() { g_ShaderHeader.clear(); }

void AddDeclaration(const std::string &text, std::string &prefix, const char *name, const char *declaration) {
  std::string n = name;
  if (n.empty()) return;
  for (size_t at = text.find(n); at != std::string::npos; at = text.find(n, at + n.size())) {
    size_t after = at + n.size();
    if (after >= text.size() || !std::isalnum(static_cast<unsigned char>(text[after]))) {
      prefix += declaration;
      return;
    }
  }
}

int AddSampler(const std::string &text, std::string &prefix, const FxTextureInfo *texture, const char *name) {
  if (!texture) return 0;
  if (text.find(std::string(name) + " = sampler_state") != std::string::npos) return 0;
  const char *wrap = (texture->flags & 0x24) ? "ClampToEdge" : "Repeat";
  char line[200];
  snprintf(line, sizeof line,
           "sampler%ldD %s = sampler_state { MinFilter = %s; MagFilter = %s; WrapS = %s; WrapT = %s; };\n",
           texture->dimension, name, (texture->flags & 0x100) ? "LinearMipMapLinear" : "Linear", "Linear", wrap,
           wrap);
  AddDeclaration(text, prefix, name, line);
  return static_cast<int>(texture->dimension);
}
