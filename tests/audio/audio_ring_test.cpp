#include "audio/audio_ring.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "audio/audio_block_ring.h"

TEST(AudioRing, FramesCrossTheWrapInOrderBetweenTwoThreadsInOddBlocks) {
  constexpr int kChannels = 3;
  constexpr long kFrames = 200000;
  LAudioRing ring(1000, kChannels);
  EXPECT_EQ(ring.CapacityFrames(), 1024);
  std::thread producer([&] {
    std::vector<float> block(234 * kChannels);
    for (long at = 0; at < kFrames;) {
      const long n = std::min(234L, kFrames - at);
      for (long f = 0; f < n; ++f)
        for (int c = 0; c < kChannels; ++c) block[f * kChannels + c] = static_cast<float>((at + f) * kChannels + c);
      const long taken = ring.Write(block.data(), n);
      // A full ring takes fewer frames; the rest is offered again.
      if (taken < n) std::memmove(block.data(), block.data() + taken * kChannels, (n - taken) * kChannels * sizeof(float));
      at += taken;
      if (taken == 0) std::this_thread::yield();
    }
  });
  std::vector<float> got;
  std::vector<float> block(97 * kChannels);
  while (static_cast<long>(got.size()) < kFrames * kChannels) {
    const long n = ring.Read(block.data(), 97);
    got.insert(got.end(), block.begin(), block.begin() + n * kChannels);
    if (n == 0) std::this_thread::yield();
  }
  producer.join();
  for (long i = 0; i < kFrames * kChannels; ++i) ASSERT_EQ(got[i], static_cast<float>(i)) << "sample " << i;
  EXPECT_EQ(ring.ReadableFrames(), 0);
  float one[kChannels] = {};
  EXPECT_EQ(ring.Read(one, 1), 0) << "an empty ring gives nothing";
}

TEST(AudioBlockRing, AFullRingRefusesABlockAndTheOldestComesFirst) {
  LAudioBlockRing ring(3, 16, 2);
  for (int i = 0; i < 3; ++i) {
    LAudioBlockRing::Block* b = ring.Free();
    ASSERT_NE(b, nullptr);
    b->position = i;
    ring.Push();
  }
  EXPECT_EQ(ring.Free(), nullptr);
  ASSERT_NE(ring.Front(), nullptr);
  EXPECT_EQ(ring.Front()->position, 0);
  ring.Pop();
  EXPECT_NE(ring.Free(), nullptr);
  EXPECT_EQ(ring.FilledBlocks(), 2);
}
