#include "nodes/effect/ShaderText.h"

#include <algorithm>

#include "fx/FxText.h"
#include "portdata/PDTexture.h"
#include "scene/PortPointers.h"

namespace {
const char *const kFastNoiseFunctions[] = {"_noisefast", "_noisegradientfast", "_fbmfast", "_turbulencefast",
                                           "_ridgedmffast"};

// Engine values a text may use, declared only when it names them.
const ShaderDeclaration kDeclarations[] = {
    {"gWIT", "float4x4 gWIT:WORLDINVERSETRANSPOSE;\n"},
    {"gWVP", "float4x4 gWVP:WORLDVIEWPROJECTION;\n"},
    {"gVI", "float4x4 gVI:VIEWINVERSE;\n"},
    {"gW", "float4x4 gW:WORLD;\n"},
    {"gV", "float4x4 gV:VIEW;\n"},
    {"gP", "float4x4 gP:PROJECTION;\n"},
    {"gWV", "float4x4 gWV:WORLDVIEW;\n"},
    {"gVP", "float4x4 gVP:VIEWPROJECTION;\n"},
    {"gWT", "float4x4 gWT:WORLDTRANSPOSE;\n"},
    {"gVT", "float4x4 gVT:VIEWTRANSPOSE;\n"},
    {"gPT", "float4x4 gPT:PROJECTIONTRANSPOSE;\n"},
    {"gWVPT", "float4x4 gWVPT:WORLDVIEWPROJECTIONTRANSPOSE;\n"},
    {"gWVT", "float4x4 gWVT:WORLDVIEWTRANSPOSE;\n"},
    {"gVPT", "float4x4 gVPT:VIEWPROJECTIONTRANSPOSE;\n"},
    {"time", "float time;\n"},
    {"in1", "float3 in1;\n"},
    {"in2", "float3 in2;\n"},
    {"in3", "float3 in3;\n"},
    {"color", "float4 color;\n"},
    {"color1", "float4 color1;\n"},
    {"color2", "float4 color2;\n"},
    {"tex1size", "float2 tex1size;\n"},
    {"tex2size", "float2 tex2size;\n"},
    {"tex3size", "float2 tex3size;\n"},
};
const char *const kSamplerNames[3] = {"tex1", "tex2", "tex3"};

const char kVertexInput[] =
    "struct VSInput{float3 pos:ATTR0;float4 col:ATTR3;float2 tex:ATTR8;float4 normal:ATTR2;float4 tangent:ATTR14;"
    "float4 binormal:ATTR15;};";
const char kDefaultTechnique[] =
    "\ntechnique Tech1{pass Pass1{VertexShader = compile glslv VS_Program();PixelShader = compile glslf "
    "PS_Program();}};";

const CPDTexture *ConnectedTexture(const CPortTexture *port) {
  return port && port->IsConnected() ? port->m_Value : nullptr;
}
}  // namespace

int ConnectedTextureDimension(const CPortTexture *port) {
  const CPDTexture *texture = ConnectedTexture(port);
  return texture ? texture->m_Mode : 0;
}

const ShaderTextRecipe &ShaderNodeRecipe() {
  static const ShaderTextRecipe recipe{kDeclarations, 3, kVertexInput, false};
  return recipe;
}

std::string ComposeShaderText(const std::string &userText, ShaderTextures &textures, const ShaderTextRecipe &recipe) {
  for (int &d : textures.dimensions) d = 0;
  if (userText.empty()) return {};
  std::string prefix;
  for (const char *name : kFastNoiseFunctions) {
    if (userText.find(name) == std::string::npos) continue;
    prefix += "sampler3D gFastPerlinNoiseSampler = sampler_state { MinFilter = Linear; MagFilter = Linear; "
              "WrapS = Repeat; WrapT = Repeat; WrapR = Repeat; };\n";
    break;
  }
  prefix += "sampler1D gPermutation1dSampler = sampler_state { MinFilter = Point; MagFilter = Point; WrapS = Repeat; };\n";
  prefix += "sampler2D gPermutation2dSampler = sampler_state { MinFilter = Point; MagFilter = Point; WrapS = Repeat; "
            "WrapT = Repeat; };\n";
  prefix += GetShaderHeader();
  for (const auto &d : recipe.declarations) AddDeclaration(userText, prefix, d.name, d.declaration);
  for (int i = 0; i < std::min(recipe.samplers, 3); ++i) {
    const CPDTexture *texture = ConnectedTexture(textures.ports[i]);
    FxTextureInfo info;
    if (texture) info = {texture->m_Mode, static_cast<unsigned>(texture->m_Flags)};
    textures.dimensions[i] = AddSampler(userText, prefix, texture ? &info : nullptr, kSamplerNames[i]);
  }
  prefix += recipe.tail;
  std::string text = prefix + userText;
  if (recipe.alwaysAppendTechnique || text.find("technique") == std::string::npos) text += kDefaultTechnique;
  return text;
}
