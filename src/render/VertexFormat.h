#pragma once
// Vertex layouts as the GPU reads them. Offsets, strides and attribute
// indices are binding: effects bind their inputs to these generic attribute
// indices, and a backend walks the layout table to set up its pointers.

#include <cstdint>

enum VertexFormat {
  VBF_PNTC = 1,
  VBF_PC = 2,
  VBF_PCT = 3,
  VBF_PNTBTC = 4,
};

// Flags of CreateVertexBuffer and CreateIndexBuffer; 0 is static.
enum { VBF_DYNAMIC = 1 };
enum { IBF_DYNAMIC = 1 };

// Indices are always 16 bits.
using Index16 = uint16_t;

enum VertexAttributeType {
  VAT_Float = 0,        // `components` floats
  VAT_UByteNormalized,  // 4 unsigned bytes read as 0..1
};

struct VertexAttribute {
  int index;  // generic vertex attribute index
  int type;   // VertexAttributeType
  int components;
  int offset;  // bytes from the start of the vertex
};

constexpr int MaxVertexAttributes = 6;

struct VertexLayout {
  int format;
  int stride;
  int count;  // attributes used in `attributes`
  VertexAttribute attributes[MaxVertexAttributes];
};

// Every generic index any format uses: a draw disables those its format lacks.
constexpr int g_VertexAttributeIndices[] = {0, 2, 3, 8, 14, 15};

// Layout of a format, or null for a value that names none.
const VertexLayout *GetVertexLayout(int format);
// Bytes per vertex, 0 for an unknown format.
int VertexStride(int format);

// Vertex records matching the layouts, for code that fills locked buffers.
// Colors are packed (see Color.h).
struct VertexPC {
  float x, y, z;
  uint32_t color;
};

struct VertexPCT {
  float x, y, z;
  float u, v;
  uint32_t color;
};

struct VertexPNTC {
  float x, y, z;
  float nx, ny, nz;
  float u, v;
  uint32_t color;
};

struct VertexPNTBTC {
  float x, y, z;
  float nx, ny, nz;
  float tx, ty, tz;  // tangent
  float bx, by, bz;  // binormal
  float u, v;
  uint32_t color;
  uint32_t padding;
};
