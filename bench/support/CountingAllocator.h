#pragma once
// Counts heap allocations made through operator new, so a benchmark can show
// that a steady-state frame allocates nothing.

#include <cstdint>

namespace CountingAllocator {
uint64_t Count();
// Allocations made while an instance lives.
class Scope {
 public:
  Scope() : m_Start(Count()) {}
  uint64_t Allocations() const { return Count() - m_Start; }

 private:
  uint64_t m_Start;
};
}  // namespace CountingAllocator
