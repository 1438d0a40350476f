#include "support/CountingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<uint64_t> g_Count{0};
}

uint64_t CountingAllocator::Count() { return g_Count.load(std::memory_order_relaxed); }

void *operator new(std::size_t size) {
  g_Count.fetch_add(1, std::memory_order_relaxed);
  if (void *p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void *operator new[](std::size_t size) { return operator new(size); }
void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t) noexcept { std::free(p); }
