#pragma once
// The text a Shader node compiles: the noise samplers, the shared shader
// header, declarations of whatever engine values the user's text names, the
// samplers of connected textures and the vertex layout, in front of the
// user's text, and a default technique behind it when it has none.

#include <span>
#include <string>

class CPortTexture;

struct ShaderTextures {
  CPortTexture *ports[3] = {};  // Texture1..3, feeding tex1..tex3
  int dimensions[3] = {};       // of the samplers declared; 0: none declared
};

struct ShaderDeclaration {
  const char *name, *declaration;
};

// What a node type puts around its users' texts: the engine values a text
// may name, how many texture ports feed tex1.., the text that follows the
// samplers (the vertex layout and samplers of the node's own), and whether
// the default technique follows even a text that has one.
struct ShaderTextRecipe {
  std::span<const ShaderDeclaration> declarations;
  int samplers = 3;
  const char *tail = "";
  bool alwaysAppendTechnique = false;
};
// The Shader node's own.
const ShaderTextRecipe &ShaderNodeRecipe();

// The whole effect text for `userText` (empty for an empty text). Fills
// `textures.dimensions` with what was declared for each port.
std::string ComposeShaderText(const std::string &userText, ShaderTextures &textures,
                              const ShaderTextRecipe &recipe = ShaderNodeRecipe());

// The dimension a texture port would be declared with now: 0 when nothing
// with a texture is connected.
int ConnectedTextureDimension(const CPortTexture *port);
