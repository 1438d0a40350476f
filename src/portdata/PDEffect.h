#pragma once

class CRender;
struct CMatrix;

using PassHandle = const void *;

// An effect that draw list items are drawn with, pass by pass. The caller
// stores the renderer in m_Render before Begin.
class CPDEffect {
 public:
  virtual ~CPDEffect() = default;
  virtual PassHandle Begin() = 0;
  virtual void BeginPass(PassHandle pass) = 0;
  virtual PassHandle NextPass(PassHandle pass) = 0;
  virtual void EndPass(PassHandle pass) = 0;
  virtual void End() = 0;
  virtual void SetLight(int index, const float *light) = 0;
  virtual void SetColor(const float *color) = 0;
  virtual void SetMatrix(int index, const CMatrix &matrix) = 0;
  virtual void Commit() = 0;

  CRender *m_Render = nullptr;
};
