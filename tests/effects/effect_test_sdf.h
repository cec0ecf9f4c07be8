#pragma once
// SDF helpers for the effect tests: files built in memory, effects saved and
// loaded the way a chain record holds them.
#include <gtest/gtest.h>

#include <vector>

#include "base/memory_stream.h"
#include "base/sdf_format.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"
#include "effects/sound_process.h"
#include "effects/sound_process_multi.h"

// An effect-chain file whose root holds what `fill` writes.
template <class Fill>
std::vector<unsigned char> MakeChainFile(Fill&& fill) {
  LMemoryStream stream;
  LSDFWriter writer;
  EXPECT_TRUE(writer.Open(stream, kSDFFileTypeEffectChain, kSDFDataVersionEffectChain));
  fill(writer);
  EXPECT_TRUE(writer.IsOK());
  writer.Close();
  return stream.Bytes();
}

// An effect saved into a record container 0x1000 at the root.
inline std::vector<unsigned char> SaveEffect(const LSoundProcess& effect) {
  return MakeChainFile([&](LSDFWriter& w) {
    w.StartContainer(kLSPMultiChunkEffect);
    effect.SaveToSDF(w);
    w.EndContainer(kLSPMultiChunkEffect);
  });
}

// Loads an effect from the first chunk at the root (a record container), or in
// the older flat layout, from the chunks of that container alone.
inline void LoadEffect(LSoundProcess& effect, const std::vector<unsigned char>& bytes, bool flat = false) {
  LMemoryStream stream(bytes);
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator root(reader);
  ASSERT_TRUE(root.StartNextChunk());
  LSDFReaderChunkIterator record(reader, root.Info());
  if (flat) {
    effect.LoadFromSDF(record);
  } else {
    effect.LoadFromSDF(reader, record);
  }
}

inline void LoadChain(LSoundProcessMulti& chain, const std::vector<unsigned char>& bytes) {
  LMemoryStream stream(bytes);
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator root(reader);
  chain.LoadFromSDF(reader, root);
}

inline std::vector<unsigned char> SaveChain(const LSoundProcessMulti& chain) {
  return MakeChainFile([&](LSDFWriter& w) { chain.SaveToSDF(w); });
}
