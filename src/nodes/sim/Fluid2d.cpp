#include "nodes/sim/Fluid2d.h"

#include <algorithm>

#include "nodes/object/SimRandom.h"

namespace {
// The wall keeps x within [1, limit]; a position that is no number starts
// again at the wall.
float Confine(float x, float limit) { return x >= 1.0f ? (x <= limit ? x : limit) : 1.0f; }

// Within +-MaxSpeed, 0 for a velocity that is no number.
float LimitSpeed(float u) {
  if (std::fabs(u) <= CFluid2d::MaxSpeed) return u;
  return u > 0.0f ? CFluid2d::MaxSpeed : (u < 0.0f ? -CFluid2d::MaxSpeed : 0.0f);
}

// The quadratic B-spline weights and their gradients around base cell c.
void Weights(float position, int c, float w[3], float g[3]) {
  float d = static_cast<float>(c) - position;
  w[0] = 0.5f * d * d + 1.5f * d + 1.125f;
  g[0] = d + 1.5f;
  d += 1.0f;
  w[1] = 0.75f - d * d;
  g[1] = -2.0f * d;
  d += 1.0f;
  w[2] = 0.5f * d * d - 1.5f * d + 1.125f;
  g[2] = d - 1.5f;
}

// One wall: the particle back inside by a random hair, its speed across 0.
void Wall(float &x, float &u, float high) {
  if (x < 1.0f) {
    x = 1.0f + DrawUnsigned() * 0.01f;
    u = 0.0f;
  } else if (x > high) {
    x = high - DrawUnsigned() * 0.01f;
    u = 0.0f;
  }
}
}  // namespace

void CFluid2d::Resize(int width, int height, int particles) {
  int w = std::clamp(width, 5, MaxSide), h = std::clamp(height, 5, MaxSide);
  while (w * h > MaxNodes) (w >= h ? w : h) /= 2;
  m_W = w;
  m_H = h;

  const int n = std::clamp(particles, 0, MaxParticles);
  if (n > static_cast<int>(m_Particles.size())) {
    m_Particles.resize(n);
    // The liquid starts as a block in the middle 40% of the box. The 0.4 is
    // the difference of the floats 0.7 and 0.3.
    const float spread = 0.7f - 0.3f;
    for (Particle &p : m_Particles) {
      p = Particle{};
      p.x = DrawUnsigned() * (w - 4) * spread + (w - 4) * 0.3f + 2.0f / w;
      p.y = DrawUnsigned() * (h - 4) * spread + (h - 4) * 0.3f + 2.0f / h;
    }
  }
  const size_t nodes = static_cast<size_t>(w) * h;
  if (nodes > m_Nodes.size()) {
    m_Nodes.assign(nodes, Node{});
    m_Active.reserve(nodes);
  }
}

void CFluid2d::Step(float gravityX, float gravityY) {
  auto finite = [](float g) { return std::isfinite(g) ? std::clamp(g, -10000.0f, 10000.0f) : 0.0f; };
  gravityX = finite(gravityX);
  gravityY = finite(gravityY);
  for (int index : m_Active) m_Nodes[index] = Node{};
  m_Active.clear();
  for (Particle &p : m_Particles) Weigh(p);
  Forces();
  for (int index : m_Active) {
    Node &n = m_Nodes[index];
    if (n.mass <= 0.0f) continue;
    n.ax = n.ax / n.mass + gravityX;
    n.ay = n.ay / n.mass + gravityY;
  }
  Transfer();
  for (int index : m_Active) {
    Node &n = m_Nodes[index];
    if (n.mass <= 0.0f) continue;
    n.u /= n.mass;
    n.v /= n.mass;
  }
  Advect();
}

void CFluid2d::Weigh(Particle &p) {
  p.x = Confine(p.x, static_cast<float>(m_W - 2));
  p.y = Confine(p.y, static_cast<float>(m_H - 2));
  p.cx = static_cast<int>(p.x - 0.5f);
  p.cy = static_cast<int>(p.y - 0.5f);
  Weights(p.x, p.cx, p.px, p.gx);
  Weights(p.y, p.cy, p.py, p.gy);
  ForNine(p, [&](Node &n, int i, int j, float phi) {
    if (!n.active) {
      n.active = true;
      m_Active.push_back(static_cast<int>(&n - m_Nodes.data()));
    }
    n.mass += phi * m_MaterialMass;
    n.d += phi;
    n.gx += p.gx[i] * p.py[j];
    n.gy += p.px[i] * p.gy[j];
  });
}

// The density at the particle by bicubic Hermite interpolation over the
// cell that holds it, from the weight sums and their gradients.
float CFluid2d::Density(const Particle &p) const {
  const int cx = static_cast<int>(p.x), cy = static_cast<int>(p.y);
  const Node &n00 = NodeAt(cx, cy), &n10 = NodeAt(cx + 1, cy);
  const Node &n01 = NodeAt(cx, cy + 1), &n11 = NodeAt(cx + 1, cy + 1);
  const float a = n10.d - n00.d, b = n01.d - n00.d;
  const float c20 = 3 * a - n10.gx - 2 * n00.gx, c30 = n10.gx - 2 * a + n00.gx;
  const float c02 = 3 * b - n01.gy - 2 * n00.gy, c03 = n01.gy - 2 * b + n00.gy;
  const float s1 = n00.d + n00.gy + c02 + c03, s2 = n00.d + n00.gx + c20 + c30;
  const float c21 = 3 * n11.d - 2 * n01.gx - n11.gx - 3 * s1 - c20;
  const float c31 = n01.gx + n11.gx - 2 * n11.d + 2 * s1 - c30;
  const float c12 = 3 * n11.d - 2 * n10.gy - n11.gy - 3 * s2 - c02;
  const float c13 = n10.gy + n11.gy - 2 * n11.d + 2 * s2 - c03;
  const float c11 = n01.gx - c13 - c12 - n00.gx;
  const float s = p.x - cx, t = p.y - cy;
  return n00.d + n00.gx * s + n00.gy * t + c20 * s * s + c02 * t * t + c30 * s * s * s + c03 * t * t * t +
         c21 * s * s * t + c31 * s * s * s * t + c12 * s * t * t + c13 * s * t * t * t + c11 * s * t;
}

void CFluid2d::Forces() {
  const float right = static_cast<float>(m_W - 5), top = static_cast<float>(m_H - 5);
  for (Particle &p : m_Particles) {
    // No lower limit: a thin region pulls.
    const float pressure = std::min(Density(p) - 1.0f, 2.0f);
    auto wall = [&](float x, float high) {
      return x < 4.0f ? (4.0f - x) * m_MaterialMass : (x > high ? (high - x) * m_MaterialMass : 0.0f);
    };
    const float fx = wall(p.x, right), fy = wall(p.y, top);
    ForNine(p, [&](Node &n, int i, int j, float phi) {
      n.ax += phi * fx - p.gx[i] * p.py[j] * pressure;
      n.ay += phi * fy - p.px[i] * p.gy[j] * pressure;
    });
  }
}

void CFluid2d::Transfer() {
  for (Particle &p : m_Particles) {
    ForNine(p, [&](Node &n, int, int, float phi) {
      p.u += phi * n.ax;
      p.v += phi * n.ay;
    });
    ForNine(p, [&](Node &n, int, int, float phi) {
      n.u += phi * m_MaterialMass * p.u;
      n.v += phi * m_MaterialMass * p.v;
    });
  }
}

void CFluid2d::Advect() {
  const float right = static_cast<float>(m_W - 2), top = static_cast<float>(m_H - 2);
  for (Particle &p : m_Particles) {
    float gu = 0.0f, gv = 0.0f;
    ForNine(p, [&](Node &n, int, int, float phi) {
      gu += phi * n.u;
      gv += phi * n.v;
    });
    p.u = LimitSpeed(gu);
    p.v = LimitSpeed(gv);
    p.x += p.u;
    p.y += p.v;
    Wall(p.x, p.u, right);
    Wall(p.y, p.v, top);
  }
}
