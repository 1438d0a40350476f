#pragma once
// Four lanes of floats for the analysis' inner loops. The compiler maps them
// onto whatever vector unit the target has, or onto scalar code; loads and
// stores need no alignment.

#include <cmath>
#include <cstring>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace SoundVector {
typedef float V4 __attribute__((vector_size(16)));
typedef int I4 __attribute__((vector_size(16)));

inline V4 Load(const float *p) {
  V4 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
inline void Store(float *p, V4 v) { std::memcpy(p, &v, sizeof v); }
// Lanes in reverse order.
inline V4 Reverse(V4 v) { return __builtin_shufflevector(v, v, 3, 2, 1, 0); }
// The even and the odd lanes of a followed by b.
inline V4 Evens(V4 a, V4 b) { return __builtin_shufflevector(a, b, 0, 2, 4, 6); }
inline V4 Odds(V4 a, V4 b) { return __builtin_shufflevector(a, b, 1, 3, 5, 7); }
// Rows become columns.
inline void Transpose(V4 (&m)[4]) {
  const V4 t0 = __builtin_shufflevector(m[0], m[1], 0, 4, 1, 5), t1 = __builtin_shufflevector(m[0], m[1], 2, 6, 3, 7);
  const V4 t2 = __builtin_shufflevector(m[2], m[3], 0, 4, 1, 5), t3 = __builtin_shufflevector(m[2], m[3], 2, 6, 3, 7);
  m[0] = __builtin_shufflevector(t0, t2, 0, 1, 4, 5);
  m[1] = __builtin_shufflevector(t0, t2, 2, 3, 6, 7);
  m[2] = __builtin_shufflevector(t1, t3, 0, 1, 4, 5);
  m[3] = __builtin_shufflevector(t1, t3, 2, 3, 6, 7);
}
inline V4 Abs(V4 v) { return (V4)((I4)v & 0x7fffffff); }
inline float Sum(V4 v) { return (v[0] + v[1]) + (v[2] + v[3]); }
inline float SumOf(const float *p, int n) {
  V4 acc = {0.0f, 0.0f, 0.0f, 0.0f};
  int i = 0;
  for (; i + 4 <= n; i += 4) acc += Load(p + i);
  float s = Sum(acc);
  for (; i < n; ++i) s += p[i];
  return s;
}
inline V4 Sqrt(V4 v) {
#if defined(__SSE__)
  return (V4)_mm_sqrt_ps((__m128)v);
#else
  return V4{std::sqrt(v[0]), std::sqrt(v[1]), std::sqrt(v[2]), std::sqrt(v[3])};
#endif
}
}  // namespace SoundVector
