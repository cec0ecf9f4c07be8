#include "base/sdf_writer.h"

#include <climits>
#include <cstring>

namespace {

void PutChunkHeader(unsigned char* p, unsigned short id, unsigned short type, unsigned long long length) {
  std::memcpy(p, &id, 2);
  std::memcpy(p + 2, &type, 2);
  std::memcpy(p + 4, &length, 8);
}

const LList<LSDFUnknownChunk>& NoChunks() {
  static const LList<LSDFUnknownChunk> none;
  return none;
}

}  // namespace

bool LSDFWriter::Fail() {
  ok_ = false;
  return false;
}

bool LSDFWriter::Put(const void* data, unsigned long long size) {
  if (!ok_) return false;
  if (size > static_cast<unsigned long long>(LLONG_MAX)) return Fail();
  if (size == 0) return true;
  return stream_->WriteAll(data, static_cast<long long>(size)) || Fail();
}

bool LSDFWriter::Open(LByteStream& stream, unsigned int fileType, unsigned short dataVersion) {
  return Open(stream, fileType, dataVersion, NoChunks());
}

bool LSDFWriter::Open(LByteStream& stream, unsigned int fileType, unsigned short dataVersion,
                      const LList<LSDFUnknownChunk>& rootUnknown) {
  stream_ = &stream;
  ok_ = true;
  dataVersion_ = dataVersion;
  open_.clear();
  unsigned char header[kSDFFileHeaderSize];
  std::memcpy(header, kSDFMagic, 4);
  std::memcpy(header + 4, &kSDFFormatVersion, 2);
  std::memcpy(header + 6, &fileType, 4);
  std::memcpy(header + 10, &dataVersion, 2);
  return Put(header, sizeof header) && StartContainer(kSDFRootChunkId, rootUnknown);
}

bool LSDFWriter::Close() {
  if (!ok_) return true;
  while (!open_.empty()) {
    if (!EndContainer(open_.back().id)) return false;
  }
  bool written = Put(kSDFMagic, kSDFTrailerSize);
  ok_ = false;
  return written;
}

bool LSDFWriter::StartChunk(unsigned short id, unsigned short type, int order) {
  if (!ok_) return false;
  if (order != kSDFNoOrder && !open_.empty() && !WritePendingBefore(open_.size() - 1, order)) return false;
  unsigned char header[kSDFChunkHeaderSize];
  PutChunkHeader(header, id, type, 0);
  if (!Put(header, sizeof header)) return false;
  long long dataOffset = stream_->Tell();
  if (dataOffset < static_cast<long long>(kSDFChunkHeaderSize)) return Fail();
  open_.push_back({id, type, dataOffset, nullptr, {}});
  return true;
}

bool LSDFWriter::EndChunk(unsigned short /*id*/) {
  if (!ok_) return false;
  if (open_.empty()) return Fail();
  OpenChunk chunk = open_.back();
  open_.pop_back();
  long long end = stream_->Tell();
  if (end < chunk.dataOffset) return Fail();
  unsigned long long length = static_cast<unsigned long long>(end - chunk.dataOffset);
  if (!stream_->Seek(chunk.dataOffset - 8) || !Put(&length, 8)) return Fail();
  return stream_->Seek(end) || Fail();
}

bool LSDFWriter::StartContainer(unsigned short id, int order) {
  return StartContainer(id, NoChunks(), order);
}

bool LSDFWriter::StartContainer(unsigned short id, const LList<LSDFUnknownChunk>& preserved, int order) {
  if (!StartChunk(id, kSDFChunkTypeContainer, order)) return false;
  std::size_t level = open_.size() - 1;
  open_[level].preserved = &preserved;
  open_[level].pending = preserved.begin();
  // Chunks that stood first, without a gap, stay first.
  for (int index = 0; HasPending(level) && open_[level].pending->index == index; ++index) {
    const LSDFUnknownChunk& chunk = *open_[level].pending++;
    if (!WriteUnknownChunk(chunk)) return false;
  }
  return true;
}

bool LSDFWriter::EndContainer(unsigned short id) {
  if (!ok_) return false;
  if (open_.empty()) return Fail();
  return WriteAllPending(open_.size() - 1) && EndChunk(id);
}

bool LSDFWriter::HasPending(std::size_t level) const {
  const OpenChunk& chunk = open_[level];
  return chunk.preserved && chunk.pending != chunk.preserved->end();
}

// `level` indexes the stack rather than referring into it: writing a chunk pushes onto it.
bool LSDFWriter::WritePendingBefore(std::size_t level, int order) {
  while (HasPending(level) && open_[level].pending->index < order) {
    const LSDFUnknownChunk& chunk = *open_[level].pending++;
    if (!WriteUnknownChunk(chunk)) return false;
  }
  return ok_;
}

bool LSDFWriter::WriteAllPending(std::size_t level) {
  while (HasPending(level)) {
    const LSDFUnknownChunk& chunk = *open_[level].pending++;
    if (!WriteUnknownChunk(chunk)) return false;
  }
  return ok_;
}

bool LSDFWriter::WriteUnknownChunk(const LSDFUnknownChunk& chunk) {
  if (!ok_) return false;
  if (chunk.data.empty()) return true;
  return StartChunk(chunk.id, chunk.type, chunk.index) && Put(chunk.data.data(), chunk.data.size()) &&
         EndChunk(chunk.id);
}

bool LSDFWriter::WriteData(const void* data, unsigned long long size) {
  if (!ok_) return false;
  if (open_.empty()) return Fail();
  return Put(data, size);
}

bool LSDFWriter::WriteBool(unsigned short id, bool value, int order) {
  unsigned char byte = value ? 1 : 0;
  return StartChunk(id, kSDFChunkTypeBool, order) && Put(&byte, 1) && EndChunk(id);
}

bool LSDFWriter::WriteInt(unsigned short id, int value, int order) {
  return StartChunk(id, kSDFChunkTypeInt, order) && Put(&value, 4) && EndChunk(id);
}

bool LSDFWriter::WriteInt64(unsigned short id, long long value, int order) {
  return StartChunk(id, kSDFChunkTypeInt64, order) && Put(&value, 8) && EndChunk(id);
}

bool LSDFWriter::WriteFloat(unsigned short id, float value, int order) {
  return StartChunk(id, kSDFChunkTypeFloat, order) && Put(&value, 4) && EndChunk(id);
}

bool LSDFWriter::WriteString(unsigned short id, const char* value, int order) {
  if (!value) value = "";
  return StartChunk(id, kSDFChunkTypeString, order) && Put(value, std::strlen(value) + 1) && EndChunk(id);
}

bool LSDFWriter::WriteBlob(unsigned short id, const unsigned char* data, unsigned long long size, int /*order*/) {
  if (size > 0 && !data) return Fail();
  return StartChunk(id, kSDFChunkTypeBlob, kSDFNoOrder) && Put(data, size) && EndChunk(id);
}
