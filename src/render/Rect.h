#pragma once
// Integer rectangles of windows, monitors and render units, in desktop
// coordinates (a monitor left of the primary one has a negative left edge).

struct CRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  // Integer division truncating toward zero: the projection's offsets are
  // defined on these centres, not on exact halves.
  int CenterX() const { return (left + right) / 2; }
  int CenterY() const { return (top + bottom) / 2; }
  bool operator==(const CRect &) const = default;
};

// A pixel area given by origin and size, as viewports and copies use it.
struct CPixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const CPixelRect &) const = default;
};
