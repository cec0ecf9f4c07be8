#include "effects/sound_process_unknown.h"

#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

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

std::string LSPUnknownNamesIn(const LSoundProcessMulti& chain) {
  std::string names;
  for (const LSoundProcess* p = chain.GetFirst(); p; p = p->pNext) {
    if (!dynamic_cast<const LSPUnknown*>(p)) continue;
    const int type = p->GetSoundProcessType();
    const char* name = LSoundProcessTypeName(type);
    if (!names.empty()) names += ", ";
    names += name ? std::string(name) + " (Typ " + std::to_string(type) + ")" : "Typ " + std::to_string(type);
  }
  return names;
}
