#include "effects/sound_process_unknown.h"

char* LSPUnknown::GetName(char* buffer) const {
  LSoundProcessCopyName(buffer, "Unbekannt");
  return buffer;
}

void LSPUnknown::SaveToSDF(LSDFWriter& writer) const {
  for (const LSDFUnknownChunk& chunk : listChunks) writer.WriteUnknownChunk(chunk);
}

void LSPUnknown::LoadFromSDF(LSDFReader&, LSDFReaderChunkIterator& iterator) {
  while (iterator.StartNextChunk()) {
    // A chunk that cannot be read whole is left out rather than kept damaged.
    (void)iterator.Chunk().ReadUnknownChunk(listChunks);
  }
}
