#pragma once
// The self-playing game behind the Asteroids node: a ship that stays put,
// turns towards where a rock will be and shoots; rocks that drift, wrap
// around the field, and break into smaller rocks when hit. Coordinates run
// from 0 to the field size. Nothing is allocated while a level runs: every
// slot a fragment could need exists from the start.

#include <cstdint>
#include <vector>

class CRenderLines;

class CAsteroidsGame {
 public:
  static constexpr int NumBullets = 10;
  static constexpr int RockSegments = 30;
  // Bound on rock slots (large rocks times fragments) whatever a file asks.
  static constexpr int MaxRockSlots = 4096;

  enum { Large = 0, Small = 1 };
  enum { Empty = 0, Flying = 1, Exploding = 2 };

  struct Ship {
    float x = 0, y = 0, vx = 0, vy = 0;
    float sinceHit = 0;
    float angle = 0;  // degrees; the nose points along -y at 0
    float size = 0.01f;
    float shotDelay = 0;
  };
  struct Bullet {
    int32_t alive = 0;
    float x = 0, y = 0, px = 0, py = 0, vx = 0, vy = 0;
  };
  struct Segment {
    float x1, y1, x2, y2;
  };
  struct Rock {
    int cls = Large, state = Empty;
    float x = 0, y = 0, rotation = 0, spin = 0, radius = 0, timer = 0;
    Segment outline[RockSegments] = {};
    float segVel[RockSegments][2] = {};
    float segSpin[RockSegments] = {};
    float vx = 0, vy = 0;
  };

  // Slots for `asteroids` large rocks of `fragments` pieces each, all
  // empty; both limited so that the product stays within MaxRockSlots.
  void SetSlots(int asteroids, int fragments);
  void SetField(float width, float height);
  // Every rock slot empty, every bullet dead, `asteroids` fresh large rocks
  // and the ship at a safe place.
  void ResetLevel();
  // One update's play after the level bookkeeping: the ship's clock and
  // jump, turn and shot, motion, collisions.
  void Step(float dt);
  // The ship's rule on its own: aim at the nearest predicted rock, turn,
  // and fire when lined up.
  void TurnAndShoot(float dt);
  void JumpShip();
  // Rocks that aren't empty.
  int RockCount() const;
  // Ship, bullets and rocks as lines at z = 0, in field coordinates.
  void BuildLines(CRenderLines &lines, const float shipCol[4], const float bulletCol[4],
                  const float rockCol[4]) const;
  int LineCapacity() const { return RockSegments * static_cast<int>(m_Rocks.size()) + 14; }

  Ship m_Ship;
  Bullet m_Bullets[NumBullets];
  std::vector<Rock> m_Rocks;
  int m_Asteroids = 1, m_Fragments = 1;
  float m_Width = 1, m_Height = 1;

 private:
  void MakeRock(Rock &rock, int cls);
  void LaunchRock(Rock &rock, float x, float y, float speed);
  void MoveRock(Rock &rock, float dt);
  void Collide();
  void Explode(Rock &rock);
};
