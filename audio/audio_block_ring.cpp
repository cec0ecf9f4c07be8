#include "audio/audio_block_ring.h"

#include <algorithm>

LAudioBlockRing::LAudioBlockRing(int blocks, long framesPerBlock, int channels)
    : framesPerBlock_(std::max(framesPerBlock, 1L)), channels_(std::max(channels, 1)) {
  blocks = std::max(blocks, 2);
  samples_.assign(static_cast<std::size_t>(blocks) * framesPerBlock_ * channels_, 0.0f);
  blocks_.resize(static_cast<std::size_t>(blocks));
  for (std::size_t i = 0; i < blocks_.size(); ++i)
    blocks_[i].samples = samples_.data() + i * static_cast<std::size_t>(framesPerBlock_ * channels_);
}

LAudioBlockRing::Block* LAudioBlockRing::Free() {
  const std::size_t p = pushed_.load(std::memory_order_relaxed);
  if (p - popped_.load(std::memory_order_acquire) >= blocks_.size()) return nullptr;
  return &blocks_[p % blocks_.size()];
}

void LAudioBlockRing::Push() { pushed_.store(pushed_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

LAudioBlockRing::Block* LAudioBlockRing::Front() {
  const std::size_t q = popped_.load(std::memory_order_relaxed);
  if (pushed_.load(std::memory_order_acquire) == q) return nullptr;
  return &blocks_[q % blocks_.size()];
}

void LAudioBlockRing::Pop() { popped_.store(popped_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

int LAudioBlockRing::FilledBlocks() const {
  return static_cast<int>(pushed_.load(std::memory_order_acquire) - popped_.load(std::memory_order_acquire));
}
