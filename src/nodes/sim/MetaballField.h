#pragma once
// The iso-surface of a field of balls, each adding mass / r^2, by marching
// cubes that start at each ball, walk down to the surface and then follow
// it voxel by voxel: the cost follows the surface's area, not the grid's
// volume. Grid points on the grid's outer faces count as empty, so every
// surface closes inside the grid.

#include <bit>
#include <cstdint>
#include <vector>

#include "render/VertexFormat.h"

// 1 / sqrt(x) from the float's bits and one Newton step.
inline float FastInvSqrt(float x) {
  const float y = std::bit_cast<float>(0x5F3759DFu - (std::bit_cast<uint32_t>(x) >> 1));
  return y * (1.5f - 0.5f * x * y * y);
}

struct MetaBall {
  float pos[3], vel[3], attractor[3];
  float timer, mass;
};

class CMetaballField {
 public:
  // Grid sizes above this would need hundreds of megabytes of state.
  static constexpr int MaxGrid = 200;
  static constexpr int MaxVertices = 3000, MaxIndices = 3000;
  // Past this many indices a batch is handed on: one voxel adds at most 15.
  static constexpr int FlushIndices = 2970;

  // Where the surface goes, a batch at a time: the walk writes at most
  // MaxVertices and MaxIndices through the pointers, then calls Flush.
  class Sink {
   public:
    virtual ~Sink() = default;
    // Takes a full or final batch; unless `last`, points the two pointers
    // at room for the next one.
    virtual void Flush(int vertexCount, int indexCount, bool last) = 0;
    VertexPNTC *m_Vertices = nullptr;
    uint16_t *m_Indices = nullptr;
  };

  // N voxels per axis over -1..1, clamped to 2..MaxGrid.
  void SetGrid(int n);
  int GridSize() const { return m_N; }
  float VoxelSize() const { return m_V; }

  // Writes the surface where the energy crosses `level` into the sink.
  void Polygonise(const MetaBall *balls, int count, float level, Sink &sink);
  // Voxels the last Polygonise visited.
  int VisitedVoxels() const { return m_Visited; }

 private:
  int Index(int i, int j, int k) const { return (k * (m_N + 1) + j) * (m_N + 1) + i; }
  float Energy(int i, int j, int k);
  bool Computed(int index) const { return m_State[index] == m_Stamp + 1; }
  // The voxel's case; writes its triangles.
  int ComputeVoxel(int i, int j, int k);
  void AddNeighbours(int i, int j, int k, int c);
  void NewStamp();

  int m_N = 0;
  float m_V = 1.0f;
  std::vector<float> m_Energy;
  // A grid point's energy is known, and a voxel queued (stamp) or computed
  // (stamp + 1), only for the current stamp: no clearing per frame.
  std::vector<uint8_t> m_Known, m_State;
  uint8_t m_Stamp = 0;
  std::vector<int> m_Open;

  const MetaBall *m_Balls = nullptr;
  int m_BallCount = 0;
  float m_Level = 0.0f;
  Sink *m_Sink = nullptr;
  int m_VertexCount = 0, m_IndexCount = 0, m_Visited = 0;
};
