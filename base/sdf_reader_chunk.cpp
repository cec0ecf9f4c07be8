#include "base/sdf_reader_chunk.h"

#include <algorithm>

unsigned long long LSDFReaderChunk::Remaining() const {
  unsigned long long at = reader_.Position();
  if (at < info_.dataOffset || at - info_.dataOffset >= info_.length) return 0;
  return info_.length - (at - info_.dataOffset);
}

unsigned long long LSDFReaderChunk::ReadData(void* buffer, unsigned long long size) {
  return reader_.Read(buffer, std::min(size, Remaining()));
}

bool LSDFReaderChunk::ReadData(LArray<unsigned char>& data) {
  unsigned long long want = Remaining();
  // The iterator keeps chunks within the stream; this keeps a stray info from allocating.
  if (want > reader_.StreamSize() - std::min(reader_.Position(), reader_.StreamSize())) {
    data.clear();
    return false;
  }
  data.resize(static_cast<std::size_t>(want));
  unsigned long long got = reader_.Read(data.data(), want);
  data.resize(static_cast<std::size_t>(got));
  return got == want;
}

bool LSDFReaderChunk::ReadValue(void* value, unsigned long long size) {
  return ReadData(value, size) == size;
}

bool LSDFReaderChunk::ReadBool(bool& value) {
  unsigned char byte = 0;
  if (!ReadValue(&byte, 1)) return false;
  value = byte != 0;
  return true;
}

bool LSDFReaderChunk::ReadInt(int& value) { return ReadValue(&value, sizeof value); }
bool LSDFReaderChunk::ReadInt64(long long& value) { return ReadValue(&value, sizeof value); }
bool LSDFReaderChunk::ReadFloat(float& value) { return ReadValue(&value, sizeof value); }

bool LSDFReaderChunk::ReadString(char* buffer) {
  // The rest is passed over when the iterator moves on.
  unsigned long long want = std::min(Remaining(), kSDFStringBufferSize);
  return ReadData(buffer, want) == want;
}

bool LSDFReaderChunk::ReadString(LStringLong& value) {
  LArray<unsigned char> data;
  bool complete = ReadData(data);
  auto zero = std::find(data.begin(), data.end(), 0);
  value.assign(data.begin(), zero);
  return complete;
}

bool LSDFReaderChunk::ReadUnknownChunk(LList<LSDFUnknownChunk>& list) {
  LSDFUnknownChunk chunk;
  chunk.id = info_.id;
  chunk.type = info_.type;
  chunk.index = info_.index;
  if (!reader_.SeekTo(info_.dataOffset) || !ReadData(chunk.data)) return false;
  list.push_back(std::move(chunk));
  return true;
}
