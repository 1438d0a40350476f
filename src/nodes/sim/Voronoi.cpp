#include "nodes/sim/Voronoi.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr int LE = 0, RE = 1;
// Beyond this a float sweep loses the precision its tests rely on.
constexpr float kMaxCoordinate = 1.0e6f;

struct Site {
  float x, y;
  int index;  // -1 for a Voronoi vertex
};

// The bisector a * x + b * y = c, with a or b equal to 1.
struct SweepEdge {
  float a, b, c;
  Site *ep[2];
  Site *reg[2];
  bool written;
};

struct HalfEdge {
  HalfEdge *left, *right;
  SweepEdge *edge;  // null for the two ends of the beach line
  Site *vertex;     // the circle event, while queued
  HalfEdge *pqNext;
  float ystar;
  int pm;
  bool deleted;
};

// Blocks that stay between runs; Reset hands them out again from the start.
template <typename T>
class CPool {
 public:
  T *New() {
    const size_t block = m_Used / kBlock;
    if (block == m_Blocks.size()) m_Blocks.push_back(std::make_unique<T[]>(kBlock));
    return &m_Blocks[block][m_Used++ % kBlock];
  }
  void Reset() { m_Used = 0; }

 private:
  static constexpr size_t kBlock = 4096;
  std::vector<std::unique_ptr<T[]>> m_Blocks;
  size_t m_Used = 0;
};

// value's share of [origin, origin + extent) in `size` buckets; NaN goes first.
int Bucket(float value, float origin, float extent, int size) {
  const float f = (value - origin) / extent * static_cast<float>(size);
  if (!(f >= 0.0f)) return 0;
  if (f >= static_cast<float>(size - 1)) return size - 1;
  return static_cast<int>(f);
}

bool Before(float y1, float x1, float y2, float x2) { return y1 < y2 || (y1 == y2 && x1 < x2); }
}  // namespace

struct CVoronoi::Sweep {
  std::vector<Site> sites;
  CPool<Site> vertices;
  CPool<SweepEdge> edges;
  CPool<HalfEdge> halfEdges;
  std::vector<HalfEdge *> elHash;
  std::vector<HalfEdge> pqHash;
  int pqCount = 0, pqMin = 0;
  HalfEdge *leftEnd = nullptr, *rightEnd = nullptr;
  Site *bottom = nullptr;
  float xmin = 0, ymin = 0, deltaX = 1, deltaY = 1;
  float boxX0 = 0, boxX1 = 0, boxY0 = 0, boxY1 = 0, minDistance2 = 0;
  std::vector<Edge> *out = nullptr;

  void Run();

  HalfEdge *NewHalfEdge(SweepEdge *e, int pm) {
    HalfEdge *he = halfEdges.New();
    *he = HalfEdge{nullptr, nullptr, e, nullptr, nullptr, 0.0f, pm, false};
    return he;
  }
  static void Insert(HalfEdge *lb, HalfEdge *he) {
    he->left = lb;
    he->right = lb->right;
    lb->right->left = he;
    lb->right = he;
  }
  static void Delete(HalfEdge *he) {
    he->left->right = he->right;
    he->right->left = he->left;
    he->deleted = true;
  }
  HalfEdge *GetHash(int b) {
    if (b < 0 || b >= static_cast<int>(elHash.size())) return nullptr;
    HalfEdge *he = elHash[b];
    if (he && he->deleted) return elHash[b] = nullptr;
    return he;
  }
  Site *LeftReg(HalfEdge *he) const {
    if (!he->edge) return bottom;
    return he->pm == LE ? he->edge->reg[LE] : he->edge->reg[RE];
  }
  Site *RightReg(HalfEdge *he) const {
    if (!he->edge) return bottom;
    return he->pm == LE ? he->edge->reg[RE] : he->edge->reg[LE];
  }

  SweepEdge *Bisect(Site *s1, Site *s2) {
    SweepEdge *e = edges.New();
    const float dx = s2->x - s1->x, dy = s2->y - s1->y;
    float c = s1->x * dx + s1->y * dy + (dx * dx + dy * dy) * 0.5f;
    float a, b;
    if (std::fabs(dx) > std::fabs(dy)) {
      a = 1.0f, b = dy / dx, c /= dx;
    } else {
      b = 1.0f, a = dx / dy, c /= dy;
    }
    *e = SweepEdge{a, b, c, {nullptr, nullptr}, {s1, s2}, false};
    return e;
  }

  Site *Intersect(HalfEdge *el1, HalfEdge *el2) {
    SweepEdge *e1 = el1->edge, *e2 = el2->edge;
    if (!e1 || !e2 || e1->reg[1] == e2->reg[1]) return nullptr;
    const float d = e1->a * e2->b - e1->b * e2->a;
    if (-1.0e-10f < d && d < 1.0e-10f) return nullptr;
    const float xint = (e1->c * e2->b - e2->c * e1->b) / d;
    const float yint = (e2->c * e1->a - e1->c * e2->a) / d;
    HalfEdge *el = el2;
    SweepEdge *e = e2;
    if (Before(e1->reg[1]->y, e1->reg[1]->x, e2->reg[1]->y, e2->reg[1]->x)) el = el1, e = e1;
    const bool rightOfSite = xint >= e->reg[1]->x;
    if ((rightOfSite && el->pm == LE) || (!rightOfSite && el->pm == RE)) return nullptr;
    Site *v = vertices.New();
    *v = Site{xint, yint, -1};
    return v;
  }

  // Whether p lies right of the half-edge's parabola arc boundary.
  static bool RightOf(const HalfEdge *el, float px, float py) {
    const SweepEdge *e = el->edge;
    const Site *top = e->reg[1];
    const bool rightOfSite = px > top->x;
    if (rightOfSite && el->pm == LE) return true;
    if (!rightOfSite && el->pm == RE) return false;
    bool above;
    if (e->a == 1.0f) {
      const float dyp = py - top->y, dxp = px - top->x;
      bool fast = false;
      if ((!rightOfSite && e->b < 0.0f) || (rightOfSite && e->b >= 0.0f)) {
        above = dyp >= e->b * dxp;
        fast = above;
      } else {
        above = px + py * e->b > e->c;
        if (e->b < 0.0f) above = !above;
        if (!above) fast = true;
      }
      if (!fast) {
        const float dxs = top->x - e->reg[0]->x;
        above = e->b * (dxp * dxp - dyp * dyp) < dxs * dyp * (1.0f + 2.0f * dxp / dxs + e->b * e->b);
        if (e->b < 0.0f) above = !above;
      }
    } else {
      const float yl = e->c - e->a * px, t1 = py - yl, t2 = px - top->x, t3 = yl - top->y;
      above = t1 * t1 > t2 * t2 + t3 * t3;
    }
    return el->pm == LE ? above : !above;
  }

  HalfEdge *LeftBound(float px, float py) {
    const int size = static_cast<int>(elHash.size());
    const int bucket = Bucket(px, xmin, deltaX, size);
    HalfEdge *he = GetHash(bucket);
    // The two ends sit in the first and last bucket for good, so this ends.
    for (int i = 1; !he; ++i)
      if (!(he = GetHash(bucket - i))) he = GetHash(bucket + i);
    if (he == leftEnd || (he != rightEnd && RightOf(he, px, py))) {
      do he = he->right;
      while (he != rightEnd && RightOf(he, px, py));
      he = he->left;
    } else {
      do he = he->left;
      while (he != leftEnd && !RightOf(he, px, py));
    }
    if (bucket > 0 && bucket < size - 1) elHash[bucket] = he;
    return he;
  }

  HalfEdge *PQBucket(HalfEdge *he) {
    const int b = Bucket(he->ystar, ymin, deltaY, static_cast<int>(pqHash.size()));
    if (b < pqMin) pqMin = b;
    return &pqHash[b];
  }
  void PQInsert(HalfEdge *he, Site *v, float offset) {
    he->vertex = v;
    he->ystar = v->y + offset;
    HalfEdge *last = PQBucket(he), *next;
    while ((next = last->pqNext) && (he->ystar > next->ystar || (he->ystar == next->ystar && v->x > next->vertex->x)))
      last = next;
    he->pqNext = last->pqNext;
    last->pqNext = he;
    ++pqCount;
  }
  void PQDelete(HalfEdge *he) {
    if (!he->vertex) return;
    HalfEdge *last = PQBucket(he);
    while (last->pqNext != he) last = last->pqNext;
    last->pqNext = he->pqNext;
    --pqCount;
    he->vertex = nullptr;
  }
  HalfEdge *PQMin() {
    while (!pqHash[pqMin].pqNext) ++pqMin;
    return pqHash[pqMin].pqNext;
  }
  HalfEdge *PQExtractMin() {
    HalfEdge *curr = PQMin();
    pqHash[pqMin].pqNext = curr->pqNext;
    --pqCount;
    return curr;
  }

  void EndPoint(SweepEdge *e, int lr, Site *s) {
    e->ep[lr] = s;
    if (e->ep[RE - lr]) Write(e);
  }
  void Write(SweepEdge *e);
};

static float Distance(const Site *a, const Site *b) { return std::hypot(a->x - b->x, a->y - b->y); }

void CVoronoi::Sweep::Write(SweepEdge *e) {
  if (e->written) return;
  e->written = true;
  const Site *s0 = e->reg[0], *s1 = e->reg[1];
  const float sx = s1->x - s0->x, sy = s1->y - s0->y;
  if (sx * sx + sy * sy < minDistance2) return;
  // The ends in the order that runs along the line; a missing one is the border.
  const Site *p = e->ep[LE], *q = e->ep[RE];
  if (e->a == 1.0f && e->b >= 0.0f) std::swap(p, q);
  // t runs along the line, u = c - k * t across it: t is y for a = 1, else x.
  const bool alongY = e->a == 1.0f;
  const float k = alongY ? e->b : e->a;
  const float t0 = alongY ? boxY0 : boxX0, tEnd = alongY ? boxY1 : boxX1;
  const float u0 = alongY ? boxX0 : boxY0, uEnd = alongY ? boxX1 : boxY1;
  float t1 = t0, t2 = tEnd;
  if (p && (alongY ? p->y : p->x) > t0) t1 = alongY ? p->y : p->x;
  if (q && (alongY ? q->y : q->x) < tEnd) t2 = alongY ? q->y : q->x;
  if (t1 > tEnd || t2 < t0) return;
  float u1 = e->c - k * t1, u2 = e->c - k * t2;
  if ((u1 > uEnd && u2 > uEnd) || (u1 < u0 && u2 < u0)) return;
  if (u1 > uEnd || u1 < u0) u1 = u1 > uEnd ? uEnd : u0, t1 = (e->c - u1) / k;
  if (u2 > uEnd || u2 < u0) u2 = u2 > uEnd ? uEnd : u0, t2 = (e->c - u2) / k;
  float x1 = alongY ? u1 : t1, y1 = alongY ? t1 : u1, x2 = alongY ? u2 : t2, y2 = alongY ? t2 : u2;
  // Rounding of the border crossing may step a hair outside.
  x1 = std::clamp(x1, boxX0, boxX1), x2 = std::clamp(x2, boxX0, boxX1);
  y1 = std::clamp(y1, boxY0, boxY1), y2 = std::clamp(y2, boxY0, boxY1);
  if (std::fabs(x1 - x2) < 1e-05f && std::fabs(y1 - y2) < 1e-05f) return;
  if ((s0->y - y1) * (x2 - x1) - (s0->x - x1) * (y2 - y1) < 0.0f) std::swap(x1, x2), std::swap(y1, y2);
  out->push_back({x1, y1, x2, y2, s0->index});
  out->push_back({x2, y2, x1, y1, s1->index});
}

void CVoronoi::Sweep::Run() {
  const int n = static_cast<int>(sites.size());
  const int root = static_cast<int>(std::sqrt(static_cast<float>(n + 4)));
  vertices.Reset();
  edges.Reset();
  halfEdges.Reset();
  elHash.assign(static_cast<size_t>(2 * root), nullptr);
  pqHash.assign(static_cast<size_t>(4 * root), HalfEdge{});
  pqCount = pqMin = 0;
  leftEnd = NewHalfEdge(nullptr, LE);
  rightEnd = NewHalfEdge(nullptr, LE);
  leftEnd->right = rightEnd;
  rightEnd->left = leftEnd;
  elHash.front() = leftEnd;
  elHash.back() = rightEnd;

  bottom = &sites[0];
  int next = 1;
  for (;;) {
    Site *newSite = next < n ? &sites[next] : nullptr;
    HalfEdge *first = pqCount > 0 ? PQMin() : nullptr;
    if (newSite && (!first || Before(newSite->y, newSite->x, first->ystar, first->vertex->x))) {
      HalfEdge *lbnd = LeftBound(newSite->x, newSite->y);
      HalfEdge *rbnd = lbnd->right;
      Site *bot = RightReg(lbnd);
      SweepEdge *e = Bisect(bot, newSite);
      HalfEdge *bisector = NewHalfEdge(e, LE);
      Insert(lbnd, bisector);
      if (Site *p = Intersect(lbnd, bisector)) {
        PQDelete(lbnd);
        PQInsert(lbnd, p, Distance(p, newSite));
      }
      lbnd = bisector;
      bisector = NewHalfEdge(e, RE);
      Insert(lbnd, bisector);
      if (Site *p = Intersect(bisector, rbnd)) PQInsert(bisector, p, Distance(p, newSite));
      ++next;
    } else if (first) {
      HalfEdge *lbnd = PQExtractMin();
      HalfEdge *llbnd = lbnd->left, *rbnd = lbnd->right, *rrbnd = rbnd->right;
      Site *bot = LeftReg(lbnd), *top = RightReg(rbnd);
      Site *v = lbnd->vertex;
      EndPoint(lbnd->edge, lbnd->pm, v);
      EndPoint(rbnd->edge, rbnd->pm, v);
      Delete(lbnd);
      PQDelete(rbnd);
      Delete(rbnd);
      int pm = LE;
      if (bot->y > top->y) std::swap(bot, top), pm = RE;
      SweepEdge *e = Bisect(bot, top);
      HalfEdge *bisector = NewHalfEdge(e, pm);
      Insert(llbnd, bisector);
      EndPoint(e, RE - pm, v);
      if (Site *p = Intersect(llbnd, bisector)) {
        PQDelete(llbnd);
        PQInsert(llbnd, p, Distance(p, bot));
      }
      if (Site *p = Intersect(bisector, rrbnd)) PQInsert(bisector, p, Distance(p, bot));
    } else {
      break;
    }
  }
  // Borders still open when the sweep ends run to the box.
  for (HalfEdge *he = leftEnd->right; he != rightEnd; he = he->right) Write(he->edge);
}

CVoronoi::CVoronoi() : m_Sweep(std::make_unique<Sweep>()) {}
CVoronoi::~CVoronoi() = default;

void CVoronoi::GenerateVoronoi(const Point *points, int n, float minX, float maxX, float minY, float maxY,
                               float minSiteDistance) {
  m_Edges.clear();
  Sweep &s = *m_Sweep;
  s.sites.clear();
  for (int i = 0; i < n; ++i)
    if (std::isfinite(points[i].x) && std::isfinite(points[i].y))
      s.sites.push_back({std::clamp(points[i].x, -kMaxCoordinate, kMaxCoordinate),
                         std::clamp(points[i].y, -kMaxCoordinate, kMaxCoordinate), i});
  std::sort(s.sites.begin(), s.sites.end(),
            [](const Site &a, const Site &b) { return Before(a.y, a.x, b.y, b.x); });
  // A second site on the same spot would bisect nothing.
  s.sites.erase(std::unique(s.sites.begin(), s.sites.end(),
                            [](const Site &a, const Site &b) { return a.x == b.x && a.y == b.y; }),
                s.sites.end());
  if (s.sites.size() < 2 || !(minX == minX) || !(maxX == maxX) || !(minY == minY) || !(maxY == maxY)) return;

  s.boxX0 = std::min(minX, maxX), s.boxX1 = std::max(minX, maxX);
  s.boxY0 = std::min(minY, maxY), s.boxY1 = std::max(minY, maxY);
  s.minDistance2 = minSiteDistance * minSiteDistance;
  float x0 = s.sites[0].x, x1 = x0;
  for (const Site &site : s.sites) x0 = std::min(x0, site.x), x1 = std::max(x1, site.x);
  s.xmin = x0;
  s.ymin = s.sites.front().y;
  s.deltaX = x1 > x0 ? x1 - x0 : 1.0f;
  s.deltaY = s.sites.back().y > s.ymin ? s.sites.back().y - s.ymin : 1.0f;
  s.out = &m_Edges;
  s.Run();
}
