// The SDF reader on any bytes, with the file type the bytes name: every chunk is
// read every way the loaders read, the root's chunks are kept as unknown chunks
// and written back, and the copy must read as the same chunks. Cache item
// descriptions (type 43) also go through their own reader and writer, whose
// second write must equal the first.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/memory_stream.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"
#include "engine/sound_cache_audio_info.h"
#include "fuzz_check.h"

namespace {

constexpr int kMostDepth = 16;

void ReadEveryWay(LSDFReader& reader, LSDFReaderChunkIterator& it, int depth) {
  while (it.StartNextChunk()) {
    FuzzCheck(it.Info().dataOffset + it.Length() <= reader.StreamSize(), "a chunk lies within the stream");
    LArray<unsigned char> data;
    if (it.Chunk().ReadData(data)) FuzzCheck(data.size() == it.Length(), "a whole read gives the whole length");
    char text[kSDFStringBufferSize];
    (void)it.Chunk().ReadString(text);
    LStringLong string;
    (void)it.Chunk().ReadString(string);
    long long value = 0;
    (void)it.Chunk().ReadInt64(value);
    bool flag = false;
    (void)it.Chunk().ReadBool(flag);
    if (it.Type() == kSDFChunkTypeContainer && depth < kMostDepth) {
      LSDFReaderChunkIterator inner(reader, it.Info());
      ReadEveryWay(reader, inner, depth + 1);
    }
  }
}

// The root's chunks as unknown chunks; false when the stream is not an SDF file of the type.
bool ReadRoot(const unsigned char* data, std::size_t size, unsigned int type, unsigned short* version,
              LList<LSDFUnknownChunk>& chunks) {
  LMemoryStream stream(data, size);
  LSDFReader reader;
  if (!reader.Open(stream, type)) return false;
  *version = reader.DataVersion();
  LSDFReaderChunkIterator it(reader);
  while (it.StartNextChunk()) {
    if (!it.Chunk().ReadUnknownChunk(chunks)) break;
  }
  return true;
}

bool SameChunk(const LSDFUnknownChunk& a, const LSDFUnknownChunk& b) {
  return a.id == b.id && a.type == b.type && a.data == b.data;
}

void RoundTripRoot(const std::uint8_t* data, std::size_t size, unsigned int type) {
  unsigned short version = 0;
  LList<LSDFUnknownChunk> chunks;
  if (!ReadRoot(data, size, type, &version, chunks)) return;
  LMemoryStream copy;
  LSDFWriter writer;
  FuzzCheck(writer.Open(copy, type, version, chunks), "a writer opens on memory");
  FuzzCheck(writer.Close() && !writer.IsOK(), "a writer closes on memory");
  LList<LSDFUnknownChunk> again;
  unsigned short versionAgain = 0;
  FuzzCheck(ReadRoot(copy.Bytes().data(), copy.Bytes().size(), type, &versionAgain, again), "the copy opens");
  FuzzCheck(versionAgain == version, "the copy keeps the data version");
  // Chunks with no data are dropped on writing, by design.
  auto next = again.begin();
  for (const LSDFUnknownChunk& chunk : chunks) {
    if (chunk.data.empty()) continue;
    FuzzCheck(next != again.end() && SameChunk(chunk, *next), "the copy holds the same chunks in the same order");
    ++next;
  }
  FuzzCheck(next == again.end(), "the copy holds nothing more");
}

void RoundTripDescription(const std::uint8_t* data, std::size_t size) {
  LMemoryStream stream(data, size);
  LSoundCacheAudioInfo info;
  if (!LSoundCacheAudioInfoRead(stream, &info)) return;
  LMemoryStream first;
  FuzzCheck(LSoundCacheAudioInfoWrite(first, info), "a description writes to memory");
  LSoundCacheAudioInfo back;
  FuzzCheck(first.Seek(0) && LSoundCacheAudioInfoRead(first, &back), "a written description reads back");
  FuzzCheck(back.sampleRate == info.sampleRate && back.channels == info.channels, "rate and channels survive");
  FuzzCheck(back.hasLastUse == info.hasLastUse && back.lastUse == info.lastUse, "the last use survives");
  FuzzCheck(back.hasOriginal == info.hasOriginal, "the original file survives");
  LMemoryStream second;
  FuzzCheck(LSoundCacheAudioInfoWrite(second, back), "a description writes again");
  FuzzCheck(first.Bytes() == second.Bytes(), "writing what was read gives the same file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const unsigned int type = FuzzLE32(data, size, 6);
  {
    LMemoryStream stream(data, size);
    LSDFReader reader(1 + size % 257);
    if (reader.Open(stream, type)) {
      LSDFReaderChunkIterator it(reader);
      ReadEveryWay(reader, it, 0);
    }
  }
  RoundTripRoot(data, size, type);
  if (type == kSDFFileTypeCacheItemInfo) RoundTripDescription(data, size);
  return 0;
}
