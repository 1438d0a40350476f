#pragma once
// Memory for the nodes of one parsed text. Nodes of one tree sit next to each
// other in a few blocks instead of being spread over the heap, and a new
// parse releases them all at once.

#include <cstddef>
#include <memory>
#include <vector>

namespace ExprEval {

class NodeArena {
 public:
  NodeArena() = default;
  NodeArena(const NodeArena &) = delete;
  NodeArena &operator=(const NodeArena &) = delete;

  void *Allocate(size_t size, size_t align);
  // Forgets every allocation; keeps the largest block for the next tree.
  void Reset();

 private:
  struct Block {
    std::unique_ptr<std::byte[]> data;
    size_t size = 0;
  };
  std::vector<Block> m_Blocks;
  size_t m_Used = 0;  // bytes used in the last block
};

}  // namespace ExprEval
