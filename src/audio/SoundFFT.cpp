#include "audio/SoundFFT.h"

#include "audio/SoundVector.h"

#include <cmath>

using namespace SoundVector;

namespace {
constexpr double Pi = 3.14159265358979323846;
}  // namespace

CSoundFFT::CSoundFFT() {
  int bits = 0;
  while ((1 << bits) < Size) ++bits;
  for (int i = 0; i < Size; ++i) {
    int r = 0;
    for (int b = 0; b < bits; ++b)
      if (i & (1 << b)) r |= 1 << (bits - 1 - b);
    m_BitReverse[i] = r;
  }
  for (int k = 0; k < InputSize; ++k)
    m_Window[k] = static_cast<float>(0.5 + 0.5 * std::sin(k * 2.0 * Pi / InputSize - Pi / 2.0));
  for (int i = 0; i < Bins; ++i)
    m_Equalise[i] = static_cast<float>(-0.1 * std::log(static_cast<double>(Bins - i) / Bins));
  m_Cos[0] = 1.0f;
  m_Sin[0] = 0.0f;
  for (int half = 1; half < Size; half *= 2) {
    for (int j = 0; j < half; ++j) {
      const double angle = -2.0 * Pi * j / (2 * half);
      m_Cos[half + j] = static_cast<float>(std::cos(angle));
      m_Sin[half + j] = static_cast<float>(std::sin(angle));
    }
  }
}

// Decimation in time over input in bit reversed order. Position 4g + q
// holds input rev(4g + q), so each group of four is one radix-4 butterfly
// of the first two stages (twiddles 1 and -i). Four groups are done at
// once, a group per lane. The zero padding past InputSize is read from the
// input arrays, which are never written there.
void CSoundFFT::LoadFirstStages(const float *left, const float *right) {
  for (int n = 0; n < InputSize; n += 4) {
    const V4 w = Load(m_Window + n);
    Store(m_InRe + n, Load(left + n) * w);
    Store(m_InIm + n, Load(right + n) * w);
  }
  // rev(k + 4j + q) = rev(k + q) + rev(4j) for k a multiple of 16.
  const int o1 = m_BitReverse[4], o2 = m_BitReverse[8], o3 = m_BitReverse[12];
  auto gather = [&](const float *in, int k, int q) {
    const float *p = in + m_BitReverse[k + q];
    return V4{p[0], p[o1], p[o2], p[o3]};
  };
  for (int k = 0; k < Size; k += 16) {
    const V4 r0 = gather(m_InRe, k, 0) + gather(m_InRe, k, 1), r1 = gather(m_InRe, k, 0) - gather(m_InRe, k, 1);
    const V4 r2 = gather(m_InRe, k, 2) + gather(m_InRe, k, 3), r3 = gather(m_InRe, k, 2) - gather(m_InRe, k, 3);
    const V4 i0 = gather(m_InIm, k, 0) + gather(m_InIm, k, 1), i1 = gather(m_InIm, k, 0) - gather(m_InIm, k, 1);
    const V4 i2 = gather(m_InIm, k, 2) + gather(m_InIm, k, 3), i3 = gather(m_InIm, k, 2) - gather(m_InIm, k, 3);
    // (r3 + i i3) * -i = i3 - i r3
    V4 y[4] = {r0 + r2, r1 + i3, r0 - r2, r1 - i3};
    Transpose(y);
    for (int g = 0; g < 4; ++g) Store(m_Re + k + 4 * g, y[g]);
    V4 z[4] = {i0 + i2, i1 - r3, i0 - i2, i1 + r3};
    Transpose(z);
    for (int g = 0; g < 4; ++g) Store(m_Im + k + 4 * g, z[g]);
  }
}

// The remaining stages two at a time: the stage of half size h pairs points
// h apart with twiddle W(2h, j), the next pairs points 2h apart with
// W(4h, j) and W(4h, j + h) = -i W(4h, j).
void CSoundFFT::LaterStages() {
  static_assert(Size == 4 << 8, "the stages after the first two must pair up");
  for (int h = 4; h < Size; h *= 4) {
    const float *w1r = m_Cos + h, *w1i = m_Sin + h;
    const float *w2r = m_Cos + 2 * h, *w2i = m_Sin + 2 * h;
    for (int k = 0; k < Size; k += 4 * h) {
      float *re = m_Re + k, *im = m_Im + k;
      for (int j = 0; j < h; j += 4) {
        const V4 x0r = Load(re + j), x0i = Load(im + j);
        const V4 x1r = Load(re + j + h), x1i = Load(im + j + h);
        const V4 x2r = Load(re + j + 2 * h), x2i = Load(im + j + 2 * h);
        const V4 x3r = Load(re + j + 3 * h), x3i = Load(im + j + 3 * h);
        const V4 ar = Load(w1r + j), ai = Load(w1i + j);
        const V4 t1r = ar * x1r - ai * x1i, t1i = ar * x1i + ai * x1r;
        const V4 t3r = ar * x3r - ai * x3i, t3i = ar * x3i + ai * x3r;
        const V4 y0r = x0r + t1r, y0i = x0i + t1i, y1r = x0r - t1r, y1i = x0i - t1i;
        const V4 y2r = x2r + t3r, y2i = x2i + t3i, y3r = x2r - t3r, y3i = x2i - t3i;
        const V4 br = Load(w2r + j), bi = Load(w2i + j);
        const V4 u2r = br * y2r - bi * y2i, u2i = br * y2i + bi * y2r;
        const V4 u3r = br * y3r - bi * y3i, u3i = br * y3i + bi * y3r;
        Store(re + j, y0r + u2r);
        Store(im + j, y0i + u2i);
        Store(re + j + 2 * h, y0r - u2r);
        Store(im + j + 2 * h, y0i - u2i);
        Store(re + j + h, y1r + u3i);
        Store(im + j + h, y1i - u3r);
        Store(re + j + 3 * h, y1r - u3i);
        Store(im + j + 3 * h, y1i + u3r);
      }
    }
  }
}

// The inputs are real, so one complex transform carries both channels: left
// as the real part, right as the imaginary part, separated afterwards by the
// symmetry of the spectrum of a real signal.
void CSoundFFT::TransformPair(const float *left, const float *right, float *outLeft, float *outRight) {
  LoadFirstStages(left, right);
  LaterStages();
  // Bin k of left is (Z[k] + conj(Z[N - k])) / 2, of right (Z[k] -
  // conj(Z[N - k])) / 2i. Bin 0 is weighted 0 anyway.
  outLeft[0] = outRight[0] = 0.0f;
  int k = 1;
  for (; k + 4 <= Bins; k += 4) {
    const V4 a = Load(m_Re + k), b = Load(m_Im + k);
    const V4 c = Reverse(Load(m_Re + Size - k - 3)), d = Reverse(Load(m_Im + Size - k - 3));
    const V4 lr = a + c, li = b - d, rr = b + d, ri = a - c;
    const V4 eq = Load(m_Equalise + k) * 0.5f;
    Store(outLeft + k, eq * Sqrt(lr * lr + li * li));
    Store(outRight + k, eq * Sqrt(rr * rr + ri * ri));
  }
  for (; k < Bins; ++k) {
    const float a = m_Re[k], b = m_Im[k], c = m_Re[Size - k], d = m_Im[Size - k];
    const float lr = a + c, li = b - d, rr = b + d, ri = a - c;
    outLeft[k] = m_Equalise[k] * 0.5f * std::sqrt(lr * lr + li * li);
    outRight[k] = m_Equalise[k] * 0.5f * std::sqrt(rr * rr + ri * ri);
  }
}
