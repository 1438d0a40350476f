#include "render/RenderTypes.h"

int PrimitiveVertexCount(int type, int primitiveCount) {
  switch (type) {
    case PT_PointList: return primitiveCount;
    case PT_LineList: return primitiveCount * 2;
    case PT_LineStrip: return primitiveCount + 1;
    case PT_TriangleList: return primitiveCount * 3;
    case PT_TriangleStrip: return primitiveCount + 2;
    default: return 0;
  }
}

const char *const g_BlendNames[BLEND_Count] = {
    "Zero",          "One",          "Source color",    "Dest color",     "Inv source color", "Inv dest color",
    "Source alpha",  "Dest alpha",   "Inv src alpha",   "Inv dest alpha", "Src alpha sat",
};

RenderStateRecord DefaultRenderStates() {
  RenderStateRecord r{};
  r[RS_DepthTest] = 1;
  r[RS_DepthWrite] = 1;
  r[RS_SrcBlend] = BLEND_One;
  r[RS_DstBlend] = BLEND_Zero;
  return r;
}
