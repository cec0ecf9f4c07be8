#pragma once
// LSPUnknown: the stand-in for an effect whose type id this build does not know
// (a newer build's effect, or one not available on this platform). It keeps the
// raw chunks of the effect's record and writes them back verbatim, and passes the
// sound through unchanged, so a chain is loaded, played and saved without loss.
#include "base/list.h"
#include "base/sdf_unknown_chunk.h"
#include <string>

#include "effects/sound_process.h"
#include "effects/sound_process_multi.h"

class LSPUnknown final : public LSoundProcess {
public:
  explicit LSPUnknown(int type) : nType(type) {}
  LSPUnknown(const LSPUnknown&) = default;

  // The type id as read.
  int nType;
  // The chunks of the effect's record, in the order read.
  LList<LSDFUnknownChunk> listChunks;

  // Answers the input itself (one more reference).
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override { return input; }
  char* GetName(char* buffer) const override;
  int GetSoundProcessType() const override { return nType; }
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPUnknown(*this); }
  void SaveToSDF(LSDFWriter& writer) const override;
  using LSoundProcess::LoadFromSDF;
  // Keeps every chunk of the record as it is.
  void LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) override;
};

// The effects of a chain that stand in for ones this build cannot run, named for a
// warning ("Chor (Typ 4), Typ 99"); empty when there are none.
[[nodiscard]] std::string LSPUnknownNamesIn(const LSoundProcessMulti& chain);
