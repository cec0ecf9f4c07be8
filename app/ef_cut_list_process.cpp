#include "app/ef_cut_list_process.h"

#include "app/cut_list_render.h"
#include "effects/eq.h"
#include "effects/mix_simple.h"
#include "effects/point_list.h"
#include "engine/source_to_sink.h"

namespace {

// The band-stop curve that keeps everything of the selected time but the band.
LSoundSource OpenBandStopped(const LCutListAudio& list, const SVSelection& selection) {
  LPointList points;
  points.Add(kSVBandLowestHz, 0.0);
  points.Add(selection.lowFrequency - 1.0, 0.0);
  points.Add(selection.lowFrequency, kSVBandFloorDb);
  points.Add(selection.highFrequency, kSVBandFloorDb);
  points.Add(selection.highFrequency + 1.0, 0.0);
  points.Add(kSVBandHighestHz, 0.0);
  LSPEq eq;
  points.MapPointListToEq(eq, list.GetSampleRate());
  LSoundSource source = list.OpenSource();
  return eq.OpenSource(source);
}

}  // namespace

int SVEfCutListProcess::Render(LProcessInterface& process) {
  ready_ = false;
  const SVSelection selection = selection_;
  if (selection.end < selection.start ||
      (selection.band != 0 && selection.highFrequency < selection.lowFrequency))
    return kSVEfResultInvalidSelection;

  process.SetStatus(GetEffectName(), 0);
  process.SetStatus(kSVEfPleaseWait, 1);

  // An empty selection is a point: nothing is cut out there, so the piece is
  // empty too (Trim would give the whole document, which the splice would then
  // add to it). Edits that insert fill the piece themselves.
  const bool atPoint = selection.IsEmpty();
  LCutListAudio piece;
  if (atPoint)
    piece.SetFormat(list_.GetSampleRate(), list_.GetChannels());
  else
    piece = selection.Trim(process, list_);
  // A band render that was stopped leaves an empty piece that must not replace anything.
  if (process.IsCancelled()) return kLProcessCancelled;
  pieceShifts_.clear();
  shifts_.clear();
  cutLength_ = piece.GetLength();
  const int result = ProcessCutList(process, piece);
  if (result != 0) return result;

  newLength_ = piece.GetLength();
  if (atPoint || !selection.HasBand()) {
    result_ = std::move(piece);
  } else {
    LCutListAudio mixed;
    if (MixBandOverRest(process, selection, piece, mixed) != kLProcessSuccess) return kLProcessCancelled;
    result_ = std::move(mixed);
  }
  rendered_ = selection;
  ready_ = true;
  return kLProcessSuccess;
}

void SVEfCutListProcess::Splice() {
  if (!ready_) return;
  ready_ = false;
  const SVSelection& selection = rendered_;
  list_.EfDelete(selection.start, selection.end);
  list_.EfInsert(selection.start, result_);
  result_ = LCutListAudio();
  const long long length = newLength_;
  selection_.end = selection.start + length;
  for (const SVFrameShift& shift : pieceShifts_) shifts_.push_back({selection.start + shift.from, shift.delta});
  const long long delta = length - cutLength_;
  if (pieceShifts_.empty() && delta != 0) {
    // Frames past the new end of the selection went; the rest moves with the end.
    const long long end = selection.start + cutLength_;
    shifts_.push_back({delta > 0 ? end : end + delta, delta});
  }
}

int SVEfCutListProcess::ProcessAndInsertCutList(LProcessInterface& process) {
  const int result = Render(process);
  if (result == kLProcessSuccess) Splice();
  return result;
}

int SVEfCutListProcess::MixBandOverRest(LProcessInterface& process, const SVSelection& selection,
                                        const LCutListAudio& piece, LCutListAudio& result) const {
  LCutListAudio rest(list_);
  if (!selection.IsEmpty() && selection.lowFrequency != selection.highFrequency)
    rest.EfTrim(selection.start, selection.end);
  LCutListAudio remainder;
  // A failed render leaves remainder empty; the band is then laid over nothing.
  (void)SVCutListRender(process, kSVSelectionRenderTitle, OpenBandStopped(rest, selection), remainder);
  if (process.IsCancelled()) return kLProcessCancelled;

  // An empty remainder has the default format, not the document's; the piece has it.
  const LCutListAudio& format = remainder.IsEmpty() ? piece : remainder;
  LSoundSource pieceSource = piece.OpenSource();
  LSPMixSimple mix(remainder.OpenSource());
  LCutListAudio mixed;
  LProcessResult done;
  {
    // The job closes the sink, which publishes into mixed.
    LPRSourceToSink job(kSVEfBandMixTitle, mix.OpenSource(pieceSource),
                        mixed.OpenSink(static_cast<int>(format.GetSampleRate()), format.GetChannels(), ""), true);
    done = Process(process, job);
  }
  if (done != kLProcessSuccess) return kLProcessCancelled;
  result = std::move(mixed);
  return kLProcessSuccess;
}
