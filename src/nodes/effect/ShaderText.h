#pragma once
// The text a Shader node compiles: the noise samplers, the shared shader
// header, declarations of whatever engine values the user's text names, the
// samplers of connected textures and the vertex layout, in front of the
// user's text, and a default technique behind it when it has none.

#include <string>

class CPortTexture;

struct ShaderTextures {
  CPortTexture *ports[3] = {};  // Texture1..3, feeding tex1..tex3
  int dimensions[3] = {};       // of the samplers declared; 0: none declared
};

// The whole effect text for `userText` (empty for an empty text). Fills
// `textures.dimensions` with what was declared for each port.
std::string ComposeShaderText(const std::string &userText, ShaderTextures &textures);

// The dimension a texture port would be declared with now: 0 when nothing
// with a texture is connected.
int ConnectedTextureDimension(const CPortTexture *port);
