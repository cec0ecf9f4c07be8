#include "app/ef_sound_source_process.h"

#include "engine/source_to_sink.h"

LSoundSource SVEfSoundSourceProcess::OpenSource(LSoundSource& input) { return input; }

LSoundSource SVEfSoundSourceProcess::OpenSource(LProcessInterface& process, LSoundSource& input) {
  (void)process;
  return OpenSource(input);
}

int SVEfSoundSourceProcess::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  LCutListAudio output;
  LSoundSource input = piece.OpenSource();
  if (process.IsCancelled()) return kLProcessCancelled;
  LSoundSource effect = OpenSource(process, input);
  if (process.IsCancelled()) return kLProcessCancelled;
  // The pump would write frames of one layout into a sink of another.
  if (effect.IsEmpty() || effect.IsError() || effect.GetChannels() != piece.GetChannels()) return kLProcessFailed;
  LSoundSink sink = output.OpenSink(static_cast<int>(piece.GetSampleRate()), piece.GetChannels(), "");
  if (process.IsCancelled()) return kLProcessCancelled;
  LProcessResult result;
  {
    // Closing the sink at the end of the job publishes the item into output.
    LPRSourceToSink job(GetEffectName(), std::move(effect), std::move(sink), true);
    result = Process(process, job);
  }
  if (result != kLProcessSuccess) return kLProcessCancelled;
  piece = std::move(output);
  return kLProcessSuccess;
}
