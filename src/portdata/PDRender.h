#pragma once

class CRender;

// A render stage: draws itself after drawing whatever feeds it.
class CPDRender {
 public:
  virtual ~CPDRender() = default;
  virtual void Render(CRender *render) = 0;
};
