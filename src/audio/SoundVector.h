#pragma once
// Lanes of floats for the analysis' inner loops: V4 everywhere, V8 where the
// translation unit is built for AVX. The compiler maps them onto whatever
// vector unit the target has, or onto scalar code; loads and stores need no
// alignment. Everything here has internal linkage, so a unit built for a
// wider instruction set never lends its copies to one that is not.

#include <cmath>
#include <cstring>

#if defined(__SSE__)
#include <immintrin.h>
#endif

namespace SoundVector {
namespace {
typedef float V4 __attribute__((vector_size(16)));
typedef int I4 __attribute__((vector_size(16)));
#if defined(__AVX__)
typedef float V8 __attribute__((vector_size(32)));
typedef int I8 __attribute__((vector_size(32)));
#endif

template <class V>
constexpr int Lanes = sizeof(V) / sizeof(float);

template <class V>
inline V Load(const float *p) {
  V v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <class V>
inline void Store(float *p, V v) {
  std::memcpy(p, &v, sizeof v);
}
template <class V>
inline V Splat(float x) {
  return V{} + x;
}

// Lanes in reverse order.
inline V4 Reverse(V4 v) { return __builtin_shufflevector(v, v, 3, 2, 1, 0); }
// The even and the odd lanes of a followed by b.
inline V4 Evens(V4 a, V4 b) { return __builtin_shufflevector(a, b, 0, 2, 4, 6); }
inline V4 Odds(V4 a, V4 b) { return __builtin_shufflevector(a, b, 1, 3, 5, 7); }
// Means of neighbouring pairs of a followed by b.
inline V4 PairMeans(V4 a, V4 b) { return (Evens(a, b) + Odds(a, b)) * 0.5f; }
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
inline V4 Sqrt(V4 v) {
#if defined(__SSE__)
  return (V4)_mm_sqrt_ps((__m128)v);
#else
  return V4{std::sqrt(v[0]), std::sqrt(v[1]), std::sqrt(v[2]), std::sqrt(v[3])};
#endif
}

#if defined(__AVX__)
inline V8 Reverse(V8 v) { return __builtin_shufflevector(v, v, 7, 6, 5, 4, 3, 2, 1, 0); }
// Pairs summed within each half, then the quarters put in order: cheaper
// than picking evens and odds across halves.
inline V8 PairMeans(V8 a, V8 b) {
  const V8 s = __builtin_shufflevector(a, b, 0, 2, 8, 10, 4, 6, 12, 14) +
               __builtin_shufflevector(a, b, 1, 3, 9, 11, 5, 7, 13, 15);
  return __builtin_shufflevector(s, s, 0, 1, 4, 5, 2, 3, 6, 7) * 0.5f;
}
inline void Transpose(V8 (&m)[8]) {
  V8 t[8], u[8];
  for (int i = 0; i < 8; i += 2) {
    t[i] = __builtin_shufflevector(m[i], m[i + 1], 0, 8, 1, 9, 4, 12, 5, 13);
    t[i + 1] = __builtin_shufflevector(m[i], m[i + 1], 2, 10, 3, 11, 6, 14, 7, 15);
  }
  for (int i = 0; i < 8; i += 4)
    for (int j = 0; j < 2; ++j) {
      // Columns 2j and 2j + 1, each with the one four further in its upper half.
      u[i + 2 * j] = __builtin_shufflevector(t[i + j], t[i + j + 2], 0, 1, 8, 9, 4, 5, 12, 13);
      u[i + 2 * j + 1] = __builtin_shufflevector(t[i + j], t[i + j + 2], 2, 3, 10, 11, 6, 7, 14, 15);
    }
  for (int i = 0; i < 4; ++i) {
    m[i] = __builtin_shufflevector(u[i], u[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
    m[i + 4] = __builtin_shufflevector(u[i], u[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
  }
}
inline V8 Abs(V8 v) { return (V8)((I8)v & 0x7fffffff); }
inline float Sum(V8 v) {
  return Sum(__builtin_shufflevector(v, v, 0, 1, 2, 3) + __builtin_shufflevector(v, v, 4, 5, 6, 7));
}
inline V8 Sqrt(V8 v) { return (V8)_mm256_sqrt_ps((__m256)v); }
#endif

inline float SumOf(const float *p, int n) {
  // Four sums at a time, so that each addition need not wait for the last.
  V4 a{}, b{}, c{}, d{};
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    a += Load<V4>(p + i);
    b += Load<V4>(p + i + 4);
    c += Load<V4>(p + i + 8);
    d += Load<V4>(p + i + 12);
  }
  for (; i + 4 <= n; i += 4) a += Load<V4>(p + i);
  float s = Sum((a + b) + (c + d));
  for (; i < n; ++i) s += p[i];
  return s;
}
}  // namespace
}  // namespace SoundVector
