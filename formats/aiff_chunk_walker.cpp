#include "formats/aiff_chunk_walker.h"

#include "formats/aiff_format.h"

long long LAiffChunk::BodyOffset() const { return offset + kLAiffChunkHeaderBytes; }

bool LAiffChunkWalker::Start(bool* aifc) {
  unsigned char head[kLAiffFormHeaderBytes];
  if (!stream_.Seek(0) || !stream_.ReadAll(head, sizeof head)) return false;
  const std::uint32_t form = LAiffGetBE32(head + 8);
  if (LAiffGetBE32(head) != kLAiffIdForm || (form != kLAiffIdAiff && form != kLAiffIdAifc)) return false;
  if (aifc) *aifc = form == kLAiffIdAifc;
  streamSize_ = stream_.Size();
  position_ = kLAiffFormHeaderBytes;
  return true;
}

bool LAiffChunkWalker::Next(LAiffChunk* chunk) {
  unsigned char header[kLAiffChunkHeaderBytes];
  if ((streamSize_ >= 0 && position_ + kLAiffChunkHeaderBytes > streamSize_) || !stream_.Seek(position_) ||
      !stream_.ReadAll(header, sizeof header)) {
    return false;
  }
  chunk->id = LAiffGetBE32(header);
  chunk->size = LAiffGetBE32(header + 4);
  chunk->offset = position_;
  position_ = chunk->BodyOffset() + chunk->size + (chunk->size & 1);
  return true;
}
