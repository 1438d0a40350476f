#pragma once
// The camera that SetCamera copies into the renderer. View space is
// left-handed: +Z looks from the eye to the target, +Y is up.

#include "render/Matrix.h"

enum { PROJ_Perspective = 0, PROJ_Orthographic = 1 };

struct CCamera;

// Points the camera from `eye` at `target` and rebuilds its view matrix and
// axes.
void LookAt(CCamera &camera, const CVector3 &target, const CVector3 &eye, const CVector3 &up);

struct CCamera {
  CMatrix m_View;
  CVector3 m_Eye{0, 0, 0};
  CVector3 m_Right{1, 0, 0};
  CVector3 m_Up{0, 1, 0};
  CVector3 m_Forward{0, 0, 1};
  float m_Fov = 45.0f;  // vertical, degrees
  float m_Near = 1.0f;
  float m_Far = 100.0f;
  int m_ProjectionType = PROJ_Perspective;

  CCamera() { LookAt(*this, {0, 0, 1}, {0, 0, 0}, {0, 1, 0}); }
};
