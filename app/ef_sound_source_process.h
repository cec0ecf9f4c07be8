#pragma once
// SVEfSoundSourceProcess: an effect that is a filter on a sound source. The
// selected piece is read through the source that OpenSource wraps around it and
// rendered into a new cache item, which becomes the piece. An effect overrides
// one of the two OpenSource operations; the one with the progress interface is
// for effects that must look at the whole input first (normalising).
#include "app/ef_cut_list_process.h"
#include "engine/sound_source.h"

class SVEfSoundSourceProcess : public SVEfCutListProcess {
public:
  using SVEfCutListProcess::SVEfCutListProcess;

  // 0 with piece replaced by the rendered effect; 1 when cancelled or the render
  // failed; kLProcessFailed when the effect's source is in error or changes the
  // channel count. piece is kept unless the result is 0.
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;

  // The effect's source over input; the input itself by default.
  [[nodiscard]] virtual LSoundSource OpenSource(LSoundSource& input);
  // The same with progress and cancel; calls the one above by default.
  [[nodiscard]] virtual LSoundSource OpenSource(LProcessInterface& process, LSoundSource& input);
};
