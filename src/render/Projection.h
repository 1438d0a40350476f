#pragma once
// The projection of one render unit. Several monitors show one wide picture:
// each unit's projection takes its own share of the virtual rectangle, offset
// by where the unit's centre lies in it. With `allScreensSame` (or while
// drawing into a render target, `flipped`) the unit is its own whole view.

#include "render/Camera.h"
#include "render/Rect.h"

CMatrix ProjectionMatrix(const CCamera &camera, const CRect &unit, const CRect &virtualRect, bool allScreensSame,
                         bool flipped);
