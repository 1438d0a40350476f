#include "render/VertexFormat.h"

#include <cstddef>

namespace {
constexpr VertexAttribute Position{0, VAT_Float, 3, 0};
constexpr VertexAttribute Normal{2, VAT_Float, 3, 12};

constexpr VertexLayout g_Layouts[] = {
    {VBF_PNTC, 36, 4, {Position, Normal, {8, VAT_Float, 2, 24}, {3, VAT_UByteNormalized, 4, 32}}},
    {VBF_PC, 16, 2, {Position, {3, VAT_UByteNormalized, 4, 12}}},
    {VBF_PCT, 24, 3, {Position, {8, VAT_Float, 2, 12}, {3, VAT_UByteNormalized, 4, 20}}},
    {VBF_PNTBTC,
     64,
     6,
     {Position, Normal, {14, VAT_Float, 3, 24}, {15, VAT_Float, 3, 36}, {8, VAT_Float, 2, 48},
      {3, VAT_UByteNormalized, 4, 56}}},
};

// The records must agree with the table that the GPU setup reads.
static_assert(sizeof(VertexPC) == 16 && offsetof(VertexPC, color) == 12);
static_assert(sizeof(VertexPCT) == 24 && offsetof(VertexPCT, u) == 12 && offsetof(VertexPCT, color) == 20);
static_assert(sizeof(VertexPNTC) == 36 && offsetof(VertexPNTC, nx) == 12 && offsetof(VertexPNTC, u) == 24 &&
              offsetof(VertexPNTC, color) == 32);
static_assert(sizeof(VertexPNTBTC) == 64 && offsetof(VertexPNTBTC, tx) == 24 && offsetof(VertexPNTBTC, bx) == 36 &&
              offsetof(VertexPNTBTC, u) == 48 && offsetof(VertexPNTBTC, color) == 56);
}  // namespace

const VertexLayout *GetVertexLayout(int format) {
  for (const VertexLayout &layout : g_Layouts)
    if (layout.format == format) return &layout;
  return nullptr;
}

int VertexStride(int format) {
  const VertexLayout *layout = GetVertexLayout(format);
  return layout ? layout->stride : 0;
}
