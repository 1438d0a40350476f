#pragma once
// TextWriter: writes its text a character at a time; an expression moves,
// turns, scales and colors each character during the first part of its life.

#include <memory>
#include <vector>

#include "nodes/text/FontEffectNode.h"

class CExprEvaluator;
class CPortBool;
class CPortFloat;

class CTextWriterNode : public CFontEffectNode {
 public:
  static CNodeInfo *CreateInfo();
  CTextWriterNode();
  ~CTextWriterNode() override;

  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  // Characters shown so far (line ends count).
  float Written() const { return m_Written; }

 private:
  struct CharRecord {
    float age = 0;
    float center[3] = {};
    float halfWidth = 0, halfHeight = 0;
    uint32_t color = 0xFFFFFFFFu;
    float rot[3] = {};
    bool frozen = false;
  };
  static CQuadBatch::Quad *VertexHook(void *user, CQuadBatch::Quad *out, int quad, int line, float corner[3], float w,
                                      float h, const float uv0[2], const float uv1[2]);
  CQuadBatch::Quad *PlaceChar(CQuadBatch::Quad *out, int i, int line, const float corner[3], float w, float h,
                              const float uv0[2], const float uv1[2]);
  void ResetWriter(size_t length);

  CPortInt *m_TextAlign = nullptr;
  CPortVector *m_Pos = nullptr;
  CPortBool *m_UseCharsPerSec = nullptr;
  CPortFloat *m_CharsPerSec = nullptr;
  CPortFloat *m_CharExpressionTime = nullptr;
  CPortFloat *m_ResetDelay = nullptr;
  CPortString *m_TextLines = nullptr;
  CPortInt *m_RandomSeed = nullptr;
  CPortString *m_Expression = nullptr;

  std::unique_ptr<CExprEvaluator> m_Eval;
  struct Variables {
    double pos[3] = {}, rot[3] = {}, col[4] = {};
    double charnr = 0, numchars = 0, linenr = 0, numlines = 0, time = 0, age = 0, permrand = 0, width = 0,
           height = 0;
  } m_Vars;
  std::vector<CharRecord> m_Chars;
  float m_Accumulated = 0, m_Written = 0, m_FinishTime = 0;
};
