#pragma once

class CRender;

// Something that draws itself with the render state and effect in force.
class CPDObject {
 public:
  virtual ~CPDObject() = default;
  virtual void Draw(CRender *) {}
};
