#pragma once
// The numbers that cross the render interface: primitive types, texture
// formats and types, transform slots, render states and blend factors. The
// values are stored in scene files and effect annotations, so they are fixed.

#include <array>

enum PrimitiveType {
  PT_PointList = 1,
  PT_LineList = 2,
  PT_LineStrip = 3,
  PT_TriangleList = 4,
  PT_TriangleStrip = 5,
};

// Vertices (or indices) that `primitiveCount` primitives of `type` read; 0 for
// an unknown type.
int PrimitiveVertexCount(int type, int primitiveCount);

enum TextureFormat { TF_A8R8G8B8 = 1 };

enum TextureType {
  TT_Normal = 0,
  TT_RenderTarget = 1,
  TT_Dynamic = 3,
};

// Bits of CTexture::m_Flags.
enum TextureFlag {
  TEXF_Pooled = 2,
  TEXF_RenderTarget = 4,
  TEXF_HasMipmaps = 8,
  TEXF_Copied = 16,
};

enum TransformType {
  TS_World = 0,
  TS_View = 1,
  TS_Projection = 2,
};

enum ClearFlag {
  CLEAR_Color = 1,
  CLEAR_Depth = 2,
};

enum RenderState {
  RS_Lighting = 1,
  RS_DepthTest = 2,
  RS_DepthWrite = 3,
  RS_AALine = 4,
  RS_Reserved5 = 5,
  RS_Fog = 6,
  RS_AlphaTest = 7,
  RS_Stencil = 8,
  RS_SrcBlend = 9,
  RS_DstBlend = 10,
  RS_CullMode = 11,
  RS_RenderTarget = 12,
  RS_Count = 13,  // size of a state record; index 0 is unused
};

// Flag word naming the on/off states 1 to 8: bit (state - 1). The bit of
// RS_Reserved5 (16) names no state.
enum RenderStateFlag {
  RSF_Lighting = 1,
  RSF_DepthTest = 2,
  RSF_DepthWrite = 4,
  RSF_AALine = 8,
  RSF_Fog = 32,
  RSF_AlphaTest = 64,
  RSF_Stencil = 128,
};

enum CullMode {
  CULL_None = 0,
  CULL_Clockwise = 1,
  CULL_CounterClockwise = 2,
};

enum BlendFactor {
  BLEND_Zero = 0,
  BLEND_One = 1,
  BLEND_SrcColor = 2,
  BLEND_DestColor = 3,
  BLEND_InvSrcColor = 4,
  BLEND_InvDestColor = 5,
  BLEND_SrcAlpha = 6,
  BLEND_DestAlpha = 7,
  BLEND_InvSrcAlpha = 8,
  BLEND_InvDestAlpha = 9,
  BLEND_SrcAlphaSat = 10,
  BLEND_Count = 11,
};

// Display names of the blend factors in value order, as blend ports list them.
extern const char *const g_BlendNames[BLEND_Count];

using RenderStateRecord = std::array<int, RS_Count>;

// The record a renderer starts with: depth test and write on, blending One,
// Zero, no culling, drawing into the window.
RenderStateRecord DefaultRenderStates();
