#pragma once
// LAudioBlockRing: a lock-free single-producer single-consumer ring of blocks of
// frames, each labelled with where its frames stand in the source and the
// request it answers. The player's reader fills it ahead; the real-time callback
// drains it and drops blocks of a request that was replaced (a seek, a stop)
// without the reader ever waiting for the callback. Allocated once.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

class LAudioBlockRing {
public:
  struct Block {
    long long position = 0;       // source frame of the first frame
    std::uint32_t generation = 0;  // the request that it belongs to
    long frames = 0;
    bool last = false;  // the end of what this request plays
    float* samples = nullptr;
  };

  LAudioBlockRing(int blocks, long framesPerBlock, int channels);
  LAudioBlockRing(const LAudioBlockRing&) = delete;
  LAudioBlockRing& operator=(const LAudioBlockRing&) = delete;

  long FramesPerBlock() const { return framesPerBlock_; }
  int Channels() const { return channels_; }

  // Producer: the next free block to fill, or null when the ring is full; Push hands it over.
  Block* Free();
  void Push();
  // Consumer: the oldest filled block, or null when empty; Pop gives it back.
  Block* Front();
  void Pop();
  int FilledBlocks() const;

private:
  std::vector<float> samples_;
  std::vector<Block> blocks_;
  long framesPerBlock_;
  int channels_;
  alignas(64) std::atomic<std::size_t> pushed_{0};
  alignas(64) std::atomic<std::size_t> popped_{0};
};
