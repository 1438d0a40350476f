#pragma once
// A grey image on a torus that grows stripes and spots: at each step every
// cell looks at rings of nine samples at four radii, and moves by the
// scales between the one where its neighbourhood varies least and the one
// where it varies most. The image is rescaled to 0..1 after each step.

#include <vector>

#include "core/Random.h"

class CTuringPattern {
 public:
  // Sides are powers of two (the wrap is a mask) of at most 512 x 512
  // cells, which keeps a step's 72 passes within a frame.
  static constexpr int MaxCells = 1 << 18;

  // The sides a request gets: each rounded down to a power of two, at least
  // 1, the longer halved until the limit holds.
  static void FitSize(int width, int height, int &w, int &h);

  explicit CTuringPattern(uint32_t seed) { SeedRandomState(m_State, seed); }
  // One step at the fitted size. A grid that grows is filled anew with
  // draws; one that shrinks is read with the new width.
  void Step(int width, int height);

  int Width() const { return m_W; }
  int Height() const { return m_H; }
  bool Empty() const { return m_Grid.empty(); }
  const std::vector<float> &Grid() const { return m_Grid; }

 private:
  void Rings(int scale, float base);

  int m_W = 0, m_H = 0;
  RandomState m_State;
  std::vector<float> m_Grid;
  // Four planes of W * H cells each, one per scale.
  std::vector<float> m_Mean, m_Step, m_Variation;
};
