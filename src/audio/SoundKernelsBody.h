#pragma once
// The bodies of the sound kernels for one vector type. Only the kernel
// units include this, each built for its own instruction set; everything is
// in an unnamed namespace so that no unit's copies are shared with another.

#include "audio/SoundKernels.h"
#include "audio/SoundVector.h"

#include <utility>

namespace SoundVector {
namespace {

// Calls f.operator()<K>() for K from 0 to Count - 1, unrolled.
template <int Count, class F>
[[gnu::always_inline]] inline void Unrolled(F &&f) {
  [&]<int... K>(std::integer_sequence<int, K...>) [[gnu::always_inline]] { (f.template operator()<K>(), ...); }(
      std::make_integer_sequence<int, Count>{});
}

// Complex multiply of (xr, xi) by (wr, wi).
template <class V>
inline void Rotate(V &xr, V &xi, V wr, V wi) {
  const V r = wr * xr - wi * xi;
  xi = wr * xi + wi * xr;
  xr = r;
}

// Out of place, decimation in time: y[k] = the sum over m below N of
// x[Offset + m * Stride] W(N, mk), where inputs at Valid and beyond are 0.
// Inputs that are known to be 0 cost nothing, and the trivial twiddles (1,
// -i and the diagonals) are done without multiplying by them.
template <int N, int Offset, int Stride, int Valid, class V>
[[gnu::always_inline]] inline void Dft(const V *xr, const V *xi, V *yr, V *yi, const float *wr, const float *wi) {
  if constexpr (N == 1 || Offset + Stride >= Valid) {
    // At most the first input counts: its value in every output.
    const V r = Offset < Valid ? xr[Offset] : V{}, i = Offset < Valid ? xi[Offset] : V{};
    for (int k = 0; k < N; ++k) {
      yr[k] = r;
      yi[k] = i;
    }
  } else {
    constexpr int Half = N / 2;
    Dft<Half, Offset, 2 * Stride, Valid>(xr, xi, yr, yi, wr, wi);
    Dft<Half, Offset + Stride, 2 * Stride, Valid>(xr, xi, yr + Half, yi + Half, wr, wi);
    // W(N, K) is W(Side, K * Side / N) of the tables.
    constexpr int Step = SoundFFTTables::Side / N;
    Unrolled<Half>([&]<int K>() [[gnu::always_inline]] {
      V tr = yr[Half + K], ti = yi[Half + K];
      if constexpr (4 * K == N) {  // -i
        const V r = ti;
        ti = -tr;
        tr = r;
      } else if constexpr (8 * K == N || 8 * K == 3 * N) {  // (c, -c) or (-c, -c)
        const V c = Splat<V>(0.70710678118654752f);
        const V r = 8 * K == N ? tr + ti : ti - tr;
        ti = 8 * K == N ? ti - tr : -(tr + ti);
        tr = r * c;
        ti = ti * c;
      } else if constexpr (K != 0) {
        Rotate(tr, ti, Splat<V>(wr[K * Step]), Splat<V>(wi[K * Step]));
      }
      const V er = yr[K], ei = yi[K];
      yr[K] = er + tr;
      yi[K] = ei + ti;
      yr[Half + K] = er - tr;
      yi[Half + K] = ei - ti;
    });
  }
}

// The Side-point transforms down L neighbouring columns of a Side x Side
// matrix (rows Side floats apart) at once, a column per lane; only the
// first Rows rows are read, the rest count as 0.
template <int Rows, class V>
[[gnu::always_inline]] inline void ColumnDft(const SoundFFTTables &t, const float *re, const float *im, V *yr, V *yi) {
  constexpr int Side = SoundFFTTables::Side;
  V xr[Rows], xi[Rows];
  for (int r = 0; r < Rows; ++r) {
    xr[r] = Load<V>(re + r * Side);
    xi[r] = Load<V>(im + r * Side);
  }
  Dft<Side, 0, 1, Rows>(xr, xi, yr, yi, t.sideRe, t.sideIm);
}

// The spectra of two channels, low-passed and windowed. Both channels go
// through one complex transform (left real, right imaginary), done
// as Side x Side: transforms down the columns (a lane per column), the
// twiddle, a transpose, transforms down the columns again; the result comes
// out in natural order with no bit reversal. Only the first InputSize / Side
// rows of the input are not 0.
template <class V>
void TransformPair(const SoundFFTTables &t, SoundFFTWork &w, const float *left, const float *right, float *outLeft,
                   float *outRight) {
  constexpr int L = Lanes<V>, Side = SoundFFTTables::Side, Rows = SoundFFTTables::InputSize / Side;
  constexpr int Size = SoundFFTTables::Size, Bins = SoundFFTTables::Bins;
  static_assert(Side % L == 0 && SoundFFTTables::InputSize % L == 0 && Bins % L == 0);
  // The low-pass, y[i] = (x[i] + x[i - 1]) / 2 with y[0] = x[0], and the
  // window.
  for (int i = 0; i < L; ++i) {
    w.inRe[i] = (i == 0 ? left[0] : (left[i] + left[i - 1]) * 0.5f) * t.window[i];
    w.inIm[i] = (i == 0 ? right[0] : (right[i] + right[i - 1]) * 0.5f) * t.window[i];
  }
  for (int n = L; n < SoundFFTTables::InputSize; n += L) {
    const V half = Load<V>(t.window + n) * 0.5f;
    Store(w.inRe + n, (Load<V>(left + n) + Load<V>(left + n - 1)) * half);
    Store(w.inIm + n, (Load<V>(right + n) + Load<V>(right + n - 1)) * half);
  }

  for (int g = 0; g < Side; g += L) {
    V yr[Side], yi[Side];
    ColumnDft<Rows>(t, w.inRe + g, w.inIm + g, yr, yi);
    // Block by block of L rows: twiddle, transpose, and store as columns.
    for (int k = 0; k < Side; k += L) {
      V br[L], bi[L];
      for (int q = 0; q < L; ++q) {
        br[q] = yr[k + q];
        bi[q] = yi[k + q];
        Rotate(br[q], bi[q], Load<V>(t.twiddleRe + (k + q) * Side + g), Load<V>(t.twiddleIm + (k + q) * Side + g));
      }
      Transpose(br);
      Transpose(bi);
      for (int q = 0; q < L; ++q) {
        Store(w.midRe + (g + q) * Side + k, br[q]);
        Store(w.midIm + (g + q) * Side + k, bi[q]);
      }
    }
  }

  for (int h = 0; h < Side; h += L) {
    V yr[Side], yi[Side];
    ColumnDft<Side>(t, w.midRe + h, w.midIm + h, yr, yi);
    for (int k = 0; k < Side; ++k) {
      Store(w.outRe + k * Side + h, yr[k]);
      Store(w.outIm + k * Side + h, yi[k]);
    }
  }

  // The inputs are real, so the spectra separate by symmetry: bin k of left
  // is (Z[k] + conj(Z[N - k])) / 2, of right (Z[k] - conj(Z[N - k])) / 2i.
  // Bin 0 is weighted 0 anyway. The last block overlaps the one before it.
  outLeft[0] = outRight[0] = 0.0f;
  for (int i = 1; i < Bins; i += L) {
    const int k = i + L <= Bins ? i : Bins - L;
    const V a = Load<V>(w.outRe + k), b = Load<V>(w.outIm + k);
    const V c = Reverse(Load<V>(w.outRe + Size - k - (L - 1))), d = Reverse(Load<V>(w.outIm + Size - k - (L - 1)));
    const V lr = a + c, li = b - d, rr = b + d, ri = a - c;
    const V eq = Load<V>(t.equalise + k) * 0.5f;
    Store(outLeft + k, eq * Sqrt(lr * lr + li * li));
    Store(outRight + k, eq * Sqrt(rr * rr + ri * ri));
  }
}

// out[i] = the mean of in[2i] and in[2i + 1], for i from `from` to `to`.
template <class V>
void Halve(const float *in, float *out, int from, int to) {
  constexpr int L = Lanes<V>;
  int i = from;
  for (; i + L - 1 <= to; i += L) Store(out + i, PairMeans(Load<V>(in + 2 * i), Load<V>(in + 2 * i + L)));
  for (; i <= to; ++i) out[i] = (in[2 * i] + in[2 * i + 1]) * 0.5f;
}

// err[j] = the sum of |c[i + j] - p[i]| * w[i] for i from first to last, for
// j below Count, in one pass. The weights are not negative, so this is the
// weighted error |(c - p) * w|.
template <int Count, class V>
void WeightedErrors(const float *c, const float *p, const float *w, int first, int last, float *err) {
  constexpr int L = Lanes<V>;
  V acc[Count] = {};
  int i = first;
  for (; i + L - 1 <= last; i += L) {
    const V pi = Load<V>(p + i), wi = Load<V>(w + i);
    for (int j = 0; j < Count; ++j) acc[j] += Abs(Load<V>(c + i + j) - pi) * wi;
  }
  for (int j = 0; j < Count; ++j) {
    err[j] = Sum(acc[j]);
    for (int k = i; k <= last; ++k) err[j] += __builtin_fabsf(c[k + j] - p[k]) * w[k];
  }
}

// An octave's copy starts where the bigger ones before it end.
constexpr int OctaveStart(int size, int octave) {
  int start = 0;
  for (int o = 0; o < octave; ++o) start += size >> o;
  return start;
}

template <class V>
int AlignSearch(const SoundAlignTables &t, const float *current, const float *previous) {
  constexpr int Samples = SoundAlignTables::Samples, Shown = SoundAlignTables::Shown;
  // Octave o of each lies at OctaveStart(size, o); octave 0 is the input.
  // Only what the search can read is filled in.
  float cur[2 * Samples];
  float old[2 * Shown];
  const float *curOctave[SoundAlignTables::MaxOctaves] = {current};
  const float *oldOctave[SoundAlignTables::MaxOctaves] = {previous};
  for (int o = 1; o < t.octaves; ++o) {
    float *c = cur + OctaveStart(Samples, o), *p = old + OctaveStart(Shown, o);
    Halve<V>(curOctave[o - 1], c, t.currentFrom[o], t.currentTo[o]);
    Halve<V>(oldOctave[o - 1], p, t.previousFrom[o], t.previousTo[o]);
    curOctave[o] = c;
    oldOctave[o] = p;
  }

  int lo = 0, hi = t.offsets[t.octaves - 1], best = 0;
  for (int o = t.octaves - 1; o >= 0; --o) {
    // Never more than four offsets: the top octave has three, and each one
    // below looks at most two either side of twice the best.
    float err[4];
    const float *c = curOctave[o] + lo, *p = oldOctave[o], *w = t.weights[o];
    switch (hi - lo) {
      case 1: WeightedErrors<1, V>(c, p, w, t.first[o], t.last[o], err); break;
      case 2: WeightedErrors<2, V>(c, p, w, t.first[o], t.last[o], err); break;
      case 3: WeightedErrors<3, V>(c, p, w, t.first[o], t.last[o], err); break;
      default: WeightedErrors<4, V>(c, p, w, t.first[o], t.last[o], err); break;
    }
    // The smallest wins, the first of equals.
    float bestErr = HUGE_VALF;
    best = lo;
    for (int j = 0; j < hi - lo; ++j)
      if (err[j] < bestErr) {
        bestErr = err[j];
        best = lo + j;
      }
    if (o > 0) {
      lo = 2 * best - 1 > 0 ? 2 * best - 1 : 0;
      hi = 2 * best + 3 < t.offsets[o - 1] ? 2 * best + 3 : t.offsets[o - 1];
    }
  }
  return best;
}

template <class V>
constexpr SoundKernels KernelsOf(const char *name) {
  return SoundKernels{name, &TransformPair<V>, &AlignSearch<V>};
}
}  // namespace
}  // namespace SoundVector
