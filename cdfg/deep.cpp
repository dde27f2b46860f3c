#include "cdfg/deep.h"

#include <cstdint>

#include "cdfg/large_pages.h"
#include "cdfg/memory.h"

namespace deep {
namespace {

constexpr std::size_t kBlockSize = 256 * 1024;
// A block under so many others is large: whoever goes so deep goes deeper.
constexpr std::size_t kUsualBlocks = 8;
constexpr std::size_t kLargeBlockSize = 2 * kLargePage;
constexpr std::size_t kAlignment = alignof(std::max_align_t);

// Blocks of frames, innermost first. One empty block is kept in reserve, so that a call to and fro
// over a block's edge allocates nothing.
struct Block {
  Block* below;
  std::size_t used;
  std::size_t size;
  std::size_t count_below;
};

constexpr std::size_t kHeader = (sizeof(Block) + kAlignment - 1) / kAlignment * kAlignment;

Block* top = nullptr;
Block* reserve = nullptr;

std::size_t Rounded(std::size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

Block* NewBlock(std::size_t at_least, bool is_large) {
  const std::size_t usual = is_large ? kLargeBlockSize : kBlockSize;
  const std::size_t size = at_least > usual ? at_least : usual;
  void* memory = size == kLargeBlockSize ? NewChunk(size, true) : nullptr;
  if (memory == nullptr) memory = MemRealloc(nullptr, size);
  auto* block = static_cast<Block*>(memory);
  block->size = size;
  return block;
}

void PushBlock(std::size_t frame_size) {
  const std::size_t count_below = top == nullptr ? 0 : top->count_below + 1;
  Block* block = std::exchange(reserve, nullptr);
  if (block == nullptr || block->size < kHeader + frame_size) {
    MemFree(block);
    block = NewBlock(kHeader + frame_size, count_below >= kUsualBlocks);
  }
  block->below = top;
  block->used = kHeader;
  block->count_below = count_below;
  top = block;
}

void PopBlock() {
  MemFree(reserve);
  reserve = std::exchange(top, top->below);
}

}  // namespace

void* TakeFrame(std::size_t size) {
  size = Rounded(size);
  if (top == nullptr || top->used + size > top->size) PushBlock(size);
  void* frame = reinterpret_cast<char*>(top) + top->used;
  top->used += size;
  return frame;
}

void GiveFrameBack(void* frame, std::size_t size) {
  (void)frame;
  top->used -= Rounded(size);
  if (top->used == kHeader) PopBlock();
}

void Rethrow() { std::rethrow_exception(std::exchange(thrown, nullptr)); }

void Drive(std::coroutine_handle<> outermost) {
  while (!outermost.done()) innermost.resume();
}

}  // namespace deep
