#include "app/ef_edit_samples.h"

#include "app/cut_list_render.h"
#include "engine/sample_buffer_source.h"

int SVEfEditSamples::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  if (piece.GetChannels() == 0) return kLProcessFailed;
  if (samples_.size() < piece.GetChannels()) {
    piece.Clear();
    return kLProcessSuccess;
  }
  LCutListAudio output;
  const LProcessResult rendered = SVCutListRender(
      process, GetEffectName(),
      LMakeSource<LSRCSampleBuffer>(samples_, piece.GetSampleRate(), piece.GetChannels()), output);
  if (rendered != kLProcessSuccess) return rendered;
  piece = std::move(output);
  return kLProcessSuccess;
}
