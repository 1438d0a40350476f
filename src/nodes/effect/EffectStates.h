#pragma once
// The render state ports every effect node has (depth, lines, blending,
// culling) and how they reach the renderer: the Bool ports become one word
// of states to enable and one to disable, applied in Begin with the cull
// and blend ports.

#include <initializer_list>

class CPortBool;
class CPortInt;
class CRender;

// The display names of blend factors and cull modes: the .cgfx node types
// use the renderer's names, Shader its own longer ones.
enum class EEffectStateNames { Renderer, Shader };
void AddBlendValues(CPortInt *port, EEffectStateNames names);
void AddCullValues(CPortInt *port, EEffectStateNames names);

struct EffectFlagPort {
  CPortBool *port;
  int flag;
};

class CEffectStates {
 public:
  // Rebuilds both words from the ports' values, in the given order; a
  // missing port sets neither word.
  void Read(std::initializer_list<EffectFlagPort> ports);
  // Enable, disable, cull mode, then both blend factors, all through the
  // render object's state record.
  void Apply(CRender &render, const CPortInt *srcBlend, const CPortInt *dstBlend, const CPortInt *cullMode) const;

  int m_Enable = 0;
  int m_Disable = 0;
};
