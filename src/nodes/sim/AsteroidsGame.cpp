#include "nodes/sim/AsteroidsGame.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "portdata/RenderLines.h"

namespace {
constexpr float kDegrees = 0.017453292f;
constexpr float kTurnSpeed = 200.0f;  // degrees per second at full turn

// (x, y) turned by `a` degrees.
void Rotate(float x, float y, float a, float &ox, float &oy) {
  const float c = std::cos(a * kDegrees), s = std::sin(a * kDegrees);
  ox = x * c + y * s;
  oy = y * c - x * s;
}

float Dist2(float ax, float ay, float bx, float by) { return (ax - bx) * (ax - bx) + (ay - by) * (ay - by); }

// A speed of both components drawn, never so small that the rock stalls.
void DrawVelocity(float scale, float &vx, float &vy) {
  vx = scale * DrawSigned();
  vy = scale * DrawSigned();
  if (vx * vx + vy * vy < 0.0001f) {
    vx = 0.1f;
    vy = 0.1f * DrawSigned();
  }
}
}  // namespace

void CAsteroidsGame::SetSlots(int asteroids, int fragments) {
  m_Asteroids = std::clamp(asteroids, 1, MaxRockSlots);
  m_Fragments = std::clamp(fragments, 1, MaxRockSlots / m_Asteroids);
  m_Rocks.assign(static_cast<size_t>(m_Asteroids) * m_Fragments, Rock{});
}

void CAsteroidsGame::SetField(float width, float height) {
  m_Width = std::isnan(width) ? 1.0f : std::clamp(width, 0.0001f, 100000.0f);
  m_Height = std::isnan(height) ? 1.0f : std::clamp(height, 0.0001f, 100000.0f);
}

void CAsteroidsGame::MakeRock(Rock &rock, int cls) {
  rock = Rock{};
  rock.cls = cls;
  rock.rotation = RandomRange(0.0f, 360.0f);
  rock.spin = RandomRange(-100.0f, 100.0f);
  rock.radius = cls == Large ? RandomRange(0.025f, 0.035f) : 0.015f;
  float cx[RockSegments + 1], cy[RockSegments + 1];
  for (int i = 1; i <= RockSegments; ++i)
    Rotate(0.0f, rock.radius * RandomRange(0.85f, 1.15f), 12.0f * i, cx[i], cy[i]);
  cx[0] = cx[RockSegments];
  cy[0] = cy[RockSegments];
  for (int i = 0; i < RockSegments; ++i) rock.outline[i] = {cx[i], cy[i], cx[i + 1], cy[i + 1]};
}

void CAsteroidsGame::LaunchRock(Rock &rock, float x, float y, float speed) {
  rock.x = x;
  rock.y = y;
  DrawVelocity(speed, rock.vx, rock.vy);
  rock.state = Flying;
}

void CAsteroidsGame::ResetLevel() {
  for (Bullet &b : m_Bullets) b.alive = 0;
  for (Rock &r : m_Rocks) r.state = Empty;
  for (int i = 0; i < m_Asteroids; ++i) {
    Rock &r = m_Rocks[i];
    MakeRock(r, Large);
    const float x = DrawUnsigned() * m_Width;
    LaunchRock(r, x, DrawUnsigned() * m_Height, 0.2f);
  }
  JumpShip();
}

void CAsteroidsGame::JumpShip() {
  for (int attempt = 0; attempt < 100; ++attempt) {
    m_Ship.x = RandomRange(0.2f, 0.8f) * m_Width;
    m_Ship.y = RandomRange(0.2f, 0.8f) * m_Height;
    const bool clear = std::none_of(m_Rocks.begin(), m_Rocks.end(), [&](const Rock &r) {
      return r.state == Flying && Dist2(r.x, r.y, m_Ship.x, m_Ship.y) < r.radius * r.radius;
    });
    if (clear) return;
  }
  m_Ship.x = m_Width * 0.5f;
  m_Ship.y = m_Height * 0.5f;
}

int CAsteroidsGame::RockCount() const {
  return static_cast<int>(std::count_if(m_Rocks.begin(), m_Rocks.end(), [](const Rock &r) { return r.state != Empty; }));
}

void CAsteroidsGame::Step(float dt) {
  m_Ship.sinceHit += dt;
  if (m_Ship.sinceHit > 10.0f) {
    m_Ship.sinceHit = 0;
    JumpShip();
  }
  TurnAndShoot(dt);
  m_Ship.x += m_Ship.vx * dt;
  m_Ship.y += m_Ship.vy * dt;
  if (m_Ship.shotDelay > 0) m_Ship.shotDelay -= dt;
  for (Bullet &b : m_Bullets) {
    if (!b.alive) continue;
    b.px = b.x;
    b.py = b.y;
    b.x += b.vx * dt;
    b.y += b.vy * dt;
    if (b.x < 0 || b.y < 0 || b.x > m_Width || b.y > m_Height) b.alive = 0;
  }
  for (Rock &r : m_Rocks) MoveRock(r, dt);
  Collide();
}

void CAsteroidsGame::TurnAndShoot(float dt) {
  // Bullets fly at speed 1, so the distance is the flight time to aim ahead by.
  const Rock *target = nullptr;
  float best = 0, tx = 0, ty = 0;
  for (const Rock &r : m_Rocks) {
    if (r.state != Flying) continue;
    const float d = std::sqrt(Dist2(r.x, r.y, m_Ship.x, m_Ship.y));
    const float px = r.x + r.vx * d, py = r.y + r.vy * d;
    const float d2 = Dist2(px, py, m_Ship.x, m_Ship.y);
    if (!target || d2 < best) {
      target = &r;
      best = d2;
      tx = px;
      ty = py;
    }
  }
  if (!target) return;
  float ux = m_Ship.x - tx, uy = m_Ship.y - ty;
  const float len = std::sqrt(ux * ux + uy * uy);
  if (len > 0) {
    ux /= len;
    uy /= len;
  }
  const float a = m_Ship.angle * kDegrees;
  const float fx = std::sin(a), fy = std::cos(a);
  const float p = fx * ux + fy * uy, q = std::cos(a) * ux - std::sin(a) * uy;
  // Far off target it turns at full speed; near it, it eases in.
  if (p > 0)
    m_Ship.angle += q * kTurnSpeed * dt;
  else
    m_Ship.angle += q > 0 ? kTurnSpeed * dt : -kTurnSpeed * dt;
  if (std::fabs(p - 1) > 0.005f || m_Ship.shotDelay > 0) return;
  m_Ship.shotDelay = 0.25f;
  if (best >= 0.25f) return;
  for (Bullet &b : m_Bullets)
    if (!b.alive) {
      b.alive = 1;
      b.x = b.px = m_Ship.x - fx * m_Ship.size;
      b.y = b.py = m_Ship.y - fy * m_Ship.size;
      b.vx = -fx;
      b.vy = -fy;
      return;
    }
}

void CAsteroidsGame::MoveRock(Rock &r, float dt) {
  if (r.state == Flying) {
    r.x += r.vx * dt;
    r.y += r.vy * dt;
    r.rotation += r.spin * dt;
    // A rock leaves only when half its radius is out, and comes back on the other side.
    auto wrap = [&](float &v, float size) {
      const float h = r.radius * 0.5f;
      if (v - h > size) v -= size + r.radius;
      if (v + h < 0) v += size + r.radius;
    };
    wrap(r.x, m_Width);
    wrap(r.y, m_Height);
  } else if (r.state == Exploding) {
    r.timer -= dt;
    if (r.timer < 0) r.state = Empty;
    for (int i = 0; i < RockSegments; ++i) {
      Segment &s = r.outline[i];
      const float dx = r.segVel[i][0] * dt, dy = r.segVel[i][1] * dt;
      const float mx = (s.x1 + s.x2) * 0.5f + dx, my = (s.y1 + s.y2) * 0.5f + dy;
      float hx, hy;
      Rotate((s.x2 - s.x1) * 0.5f, (s.y2 - s.y1) * 0.5f, r.segSpin[i] * dt, hx, hy);
      s = {mx - hx, my - hy, mx + hx, my + hy};
    }
  }
}

void CAsteroidsGame::Explode(Rock &rock) {
  m_Ship.sinceHit = 0;
  rock.state = Exploding;
  rock.timer = 2.0f;
  for (int i = 0; i < RockSegments; ++i) {
    rock.segVel[i][0] = 0.15f * DrawSigned();
    rock.segVel[i][1] = 0.15f * DrawSigned();
    rock.segSpin[i] = 300.0f * DrawSigned();
  }
  if (rock.cls != Large) return;
  // Copies: the slot search below may hand out any rock, and the vector never moves.
  const float x = rock.x, y = rock.y, r = rock.radius;
  for (int f = 0; f < m_Fragments; ++f) {
    auto slot = std::find_if(m_Rocks.begin(), m_Rocks.end(), [](const Rock &k) { return k.state == Empty; });
    if (slot == m_Rocks.end()) return;
    MakeRock(*slot, Small);
    const float fx = x + 0.9f * r * DrawSigned();
    LaunchRock(*slot, fx, y + 0.9f * r * DrawSigned(), 0.15f);
  }
}

void CAsteroidsGame::Collide() {
  for (Rock &r : m_Rocks) {
    if (r.state != Flying) continue;
    const float reach = m_Ship.size + r.radius;
    if (Dist2(m_Ship.x, m_Ship.y, r.x, r.y) < reach * reach) JumpShip();
    // Every remaining bullet is tested even after a hit in this pass.
    for (Bullet &b : m_Bullets) {
      if (!b.alive) continue;
      const float sx = b.x - b.px, sy = b.y - b.py, l2 = sx * sx + sy * sy;
      const float t = l2 > 0 ? std::clamp(((r.x - b.px) * sx + (r.y - b.py) * sy) / l2, 0.0f, 1.0f) : 0.0f;
      if (Dist2(b.px + t * sx, b.py + t * sy, r.x, r.y) >= r.radius * r.radius) continue;
      Explode(r);
      b.alive = 0;
    }
  }
}

void CAsteroidsGame::BuildLines(CRenderLines &lines, const float shipCol[4], const float bulletCol[4],
                                const float rockCol[4]) const {
  lines.SetSize(LineCapacity());
  auto placed = [&](const Segment &s, float x, float y, float angle, const float col[4]) {
    float ax, ay, bx, by;
    Rotate(s.x1, s.y1, angle, ax, ay);
    Rotate(s.x2, s.y2, angle, bx, by);
    lines.AddLine(ax + x, ay + y, 0, bx + x, by + y, 0, col);
  };
  const float s = m_Ship.size;
  const Segment hull[4] = {{0, -s, s, s}, {s, s, 0, s / 2}, {0, s / 2, -s, s}, {-s, s, 0, -s}};
  for (const Segment &seg : hull) placed(seg, m_Ship.x, m_Ship.y, m_Ship.angle, shipCol);
  for (const Bullet &b : m_Bullets)
    if (b.alive) lines.AddLine(b.x, b.y, 0, b.px, b.py, 0, bulletCol);
  for (const Rock &r : m_Rocks)
    if (r.state != Empty)
      for (const Segment &seg : r.outline) placed(seg, r.x, r.y, r.rotation, rockCol);
}
