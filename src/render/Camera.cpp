#include "render/Camera.h"

void LookAt(CCamera &camera, const CVector3 &target, const CVector3 &eye, const CVector3 &up) {
  CVector3 forward = Normalize(target - eye);
  CVector3 right = Normalize(Cross(up, forward));
  CVector3 upOrtho = Normalize(Cross(forward, right));
  camera.m_Eye = eye;
  camera.m_Right = right;
  camera.m_Up = upOrtho;
  camera.m_Forward = forward;
  camera.m_View = CMatrix{{right.x, upOrtho.x, forward.x, 0,  //
                           right.y, upOrtho.y, forward.y, 0,  //
                           right.z, upOrtho.z, forward.z, 0,  //
                           -Dot(right, eye), -Dot(upOrtho, eye), -Dot(forward, eye), 1}};
}
