#pragma once
// Float to whole number without undefined behaviour: out-of-range values
// saturate and NaN gives 0. Every float that becomes an index or a count
// goes through here.

#include <cmath>
#include <cstdint>
#include <limits>

template <typename Int = int32_t>
constexpr Int SatInt(double v) {
  if (std::isnan(v)) return 0;
  constexpr double lo = static_cast<double>(std::numeric_limits<Int>::min());
  constexpr double hi = static_cast<double>(std::numeric_limits<Int>::max());
  if (v <= lo) return std::numeric_limits<Int>::min();
  if (v >= hi) return std::numeric_limits<Int>::max();
  return static_cast<Int>(v);  // truncates toward zero
}
