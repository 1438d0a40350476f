#include "expr/NodeArena.h"

#include <algorithm>

namespace ExprEval {
namespace {
constexpr size_t kFirstBlockSize = 1024;
constexpr size_t kMaxBlockSize = 64 * 1024;
}  // namespace

void *NodeArena::Allocate(size_t size, size_t align) {
  if (!m_Blocks.empty()) {
    Block &block = m_Blocks.back();
    size_t offset = (m_Used + align - 1) & ~(align - 1);
    if (offset + size <= block.size) {
      m_Used = offset + size;
      return block.data.get() + offset;
    }
  }
  size_t next = m_Blocks.empty() ? kFirstBlockSize : std::min(m_Blocks.back().size * 2, kMaxBlockSize);
  Block block;
  block.size = std::max(next, size + align);
  block.data.reset(new std::byte[block.size]);
  m_Blocks.push_back(std::move(block));
  // operator new[] gives memory aligned for any fundamental type; the
  // first allocation of a block needs no further alignment.
  m_Used = size;
  return m_Blocks.back().data.get();
}

void NodeArena::Reset() {
  if (m_Blocks.size() > 1) {
    auto largest = std::max_element(m_Blocks.begin(), m_Blocks.end(),
                                    [](const Block &a, const Block &b) { return a.size < b.size; });
    Block keep = std::move(*largest);
    m_Blocks.clear();
    m_Blocks.push_back(std::move(keep));
  }
  m_Used = 0;
}

}  // namespace ExprEval
