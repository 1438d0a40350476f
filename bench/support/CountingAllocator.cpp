#include "support/CountingAllocator.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {
std::atomic<uint64_t> g_Count{0};

void *Allocate(std::size_t size, std::size_t align) {
  g_Count.fetch_add(1, std::memory_order_relaxed);
  if (size == 0) size = 1;
  void *p = align > alignof(std::max_align_t) ? std::aligned_alloc(align, (size + align - 1) / align * align)
                                              : std::malloc(size);
  return p;
}
}  // namespace

uint64_t CountingAllocator::Count() { return g_Count.load(std::memory_order_relaxed); }

// Every form of new and delete goes through the same pair, so no form is
// left to the default allocator (a sanitizer would call the pairing a mismatch).
void *operator new(std::size_t size) {
  if (void *p = Allocate(size, 0)) return p;
  throw std::bad_alloc();
}
void *operator new[](std::size_t size) { return operator new(size); }
void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return Allocate(size, 0); }
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept { return Allocate(size, 0); }
void *operator new(std::size_t size, std::align_val_t align) {
  if (void *p = Allocate(size, static_cast<std::size_t>(align))) return p;
  throw std::bad_alloc();
}
void *operator new[](std::size_t size, std::align_val_t align) { return operator new(size, align); }
void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t) noexcept { std::free(p); }
void operator delete(void *p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void *p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void *p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void *p, const std::nothrow_t &) noexcept { std::free(p); }
void operator delete[](void *p, const std::nothrow_t &) noexcept { std::free(p); }
