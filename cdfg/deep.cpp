#include "cdfg/deep.h"

#include <cstdint>

#include "cdfg/memory.h"

namespace deep {
namespace {

constexpr std::size_t kBlockSize = 256 * 1024;
constexpr std::size_t kAlignment = alignof(std::max_align_t);

// Blocks of frames, innermost first. One empty block is kept in reserve, so that a call to and fro
// over a block's edge allocates nothing.
struct Block {
  Block* below;
  std::size_t used;
  std::size_t size;
};

constexpr std::size_t kHeader = (sizeof(Block) + kAlignment - 1) / kAlignment * kAlignment;

Block* top = nullptr;
Block* reserve = nullptr;

std::size_t Rounded(std::size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

void PushBlock(std::size_t frame_size) {
  Block* block = std::exchange(reserve, nullptr);
  if (block == nullptr || block->size < kHeader + frame_size) {
    MemFree(block);
    const std::size_t size = kHeader + frame_size > kBlockSize ? kHeader + frame_size : kBlockSize;
    block = static_cast<Block*>(MemRealloc(nullptr, size));
    block->size = size;
  }
  block->below = top;
  block->used = kHeader;
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
