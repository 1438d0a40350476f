#pragma once
// Many coloured lines a node rebuilds every frame, drawn as line lists in
// chunks of m_RenderBufferLines through the ring.
//
//   m_Lines.SetSize(n);                       // in Update
//   m_Lines.AddLine(x0, y0, z0, x1, y1, z1, color);
//   m_Lines.RestoreDevice(render);            // in the node's RestoreDevice

#include <vector>

#include "portdata/BatchRender.h"
#include "render/VertexFormat.h"

class CRenderLines : public CBatchRender {
 public:
  struct Line {
    VertexPC from, to;
  };

  // Room for `count` lines; the list starts empty.
  void SetSize(int count);
  // Appends a line; beyond the size from SetSize it is dropped.
  void AddLine(float x0, float y0, float z0, float x1, float y1, float z1, const float color[4]);
  int Count() const { return m_Count; }
  const Line *Lines() const { return m_Items.data(); }

  bool RestoreDevice(CRender *render) override;
  void Draw(CRender *render) override;

  int m_RenderBufferLines = 1000;

 private:
  std::vector<Line> m_Items;
  int m_Count = 0;
};
