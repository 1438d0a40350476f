#pragma once
// Strips of points with a width each (ribbons, lightning), turned into
// camera-independent flat quads in the xy plane and drawn like CRenderQuads.
//
//   m_Volume.Clear();                             // in Update
//   auto *p = m_Volume.AddStrip(n, 1.0f);         // fill n points
//   m_Volume.Finish();

#include <cstddef>
#include <cstdint>
#include <vector>

#include "portdata/RenderQuads.h"

class CRenderVolumeLines : public CQuadBatch {
 public:
  struct StripPoint {
    float x, y, z;
    uint32_t color;
    float width;
    float v;  // texture coordinate V
  };

  CRenderVolumeLines();

  // Forgets every strip; their storage stays.
  void Clear();
  // A strip of `points` records for the caller to fill before the next
  // AddStrip; `u` is the texture coordinate U of the strip's right edge.
  StripPoint *AddStrip(int points, float u);
  // Turns the strips into quads: n points give n - 1.
  void Finish();

 private:
  struct Strip {
    size_t first;
    int count;
    float u;
  };
  std::vector<StripPoint> m_Points;
  size_t m_Used = 0;
  std::vector<Strip> m_Strips;
};
