#pragma once
// A two-dimensional liquid in a box, solved the material point way: the
// particles carry position and velocity, and a grid of nodes is rebuilt
// from them at every step (quadratic B-spline weights, a pressure from the
// interpolated density, walls as springs). Only the nodes the particles
// touch are cleared, and nothing is allocated once the sizes are reached.
//
// Positions are in grid units; the walls keep every particle within
// [1, W - 2], so a particle's nine nodes are always inside the grid.

#include <cstddef>
#include <vector>

class CFluid2d {
 public:
  // Limits on what a port can size: a grid of 1M nodes, 1M particles.
  static constexpr int MaxSide = 4096;
  static constexpr int MaxNodes = 1 << 20;
  static constexpr int MaxParticles = 1000000;
  // A particle moves at most this many cells a step: beyond it the scheme
  // has no meaning, and any force, however wild, stays a number.
  static constexpr float MaxSpeed = 4.0f;

  struct Particle {
    float x, y;  // grid units
    float u, v;  // grid units per step
    int cx, cy;  // base cell of the weights
    float px[3], py[3], gx[3], gy[3];
  };
  struct Node {
    float mass, d, gx, gy, u, v, ax, ay;
    bool active;
  };

  // The grid and particle count for the next step, within the limits. More
  // particles than held place all of them anew in the central block (with
  // the shared generator); fewer change nothing.
  void Resize(int width, int height, int particles);
  // One step under a gravity in grid units per step squared.
  void Step(float gravityX, float gravityY);

  int Width() const { return m_W; }
  int Height() const { return m_H; }
  const std::vector<Particle> &Particles() const { return m_Particles; }
  const Node &NodeAt(int i, int j) const { return m_Nodes[static_cast<std::size_t>(j) * m_W + i]; }

 private:
  void Weigh(Particle &p);
  void Forces();
  void Transfer();
  void Advect();
  float Density(const Particle &p) const;
  Node &At(int i, int j) { return m_Nodes[static_cast<std::size_t>(j) * m_W + i]; }
  // Visits the nine nodes of a particle's weights: f(node, i, j, phi) with
  // phi = px[i] * py[j].
  template <typename F>
  void ForNine(const Particle &p, F &&f) {
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 3; ++i) f(At(p.cx + i, p.cy + j), i, j, p.px[i] * p.py[j]);
  }

  int m_W = 0, m_H = 0;
  float m_MaterialMass = 1.0f;
  std::vector<Particle> m_Particles;
  std::vector<Node> m_Nodes;
  std::vector<int> m_Active;  // indices of the nodes touched this step
};
