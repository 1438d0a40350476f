#include "nodes/value/RGBAToColorNode.h"

#include "scene/PortValues.h"

CNodeInfo *CRGBAToColor::CreateInfo() {
  return MakeInfo("RGBAToColor", [] { return static_cast<CNode *>(new CRGBAToColor); },
                  "Combines a red, green, blue and alpha component to a color",
                  new CPortFloat("Red", "The red color component", 1.0f, 0.01f, 0.0f, 1.0f),
                  new CPortFloat("Green", "The green color component", 1.0f, 0.01f, 0.0f, 1.0f),
                  new CPortFloat("Blue", "The blue color component", 1.0f, 0.01f, 0.0f, 1.0f));
}
