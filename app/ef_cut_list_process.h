#pragma once
// SVEfCutListProcess: an edit or effect applied to the selection of a document.
// ProcessAndInsertCutList cuts the selected audio out as a cut list of its own,
// lets the object transform that piece (ProcessCutList) and splices the result
// back in place of the selection. Only the selected range of the document's cut
// list is replaced, and only after all rendering is done, so the audio around
// it is never rewritten and a cancelled or failed job leaves the document as it
// was. With a frequency band, the band is processed and laid back over the rest
// of the selected time, which passes through a band-stop filter.
//
// Runs on the main thread inside a progress job, between the start and the end
// of the modification protocol (core_utils.h, file_modifier.h).
#include "app/selection.h"
#include "base/array.h"
#include "base/process_interface.h"
#include "engine/cut_list_audio.h"

// ProcessAndInsertCutList: the selection ends before it starts, or its band is upside down.
inline constexpr int kSVEfResultInvalidSelection = 2;

// Detail line shown under the effect's name while it runs.
inline constexpr const char* kSVEfPleaseWait = "Bitte warten...";
// Job that lays the processed band over the rest of the selected time.
inline constexpr const char* kSVEfBandMixTitle = "Über Auswahl einfügen";

// How positions of the document moved, in the form OffsetBookmarks takes:
// an insertion (delta > 0) or a deletion (delta < 0) starting at from.
struct SVFrameShift {
  long long from = 0;
  long long delta = 0;
};

class SVEfCutListProcess {
public:
  // Acts on list and selection, which must outlive the object; the splice edits
  // list in place and moves the selection's end.
  SVEfCutListProcess(LCutListAudio& list, SVSelection& selection) : list_(list), selection_(selection) {}
  virtual ~SVEfCutListProcess() = default;
  SVEfCutListProcess(const SVEfCutListProcess&) = delete;
  SVEfCutListProcess& operator=(const SVEfCutListProcess&) = delete;

  // The action's label: the first status line and the undo description.
  [[nodiscard]] virtual const char* GetEffectName() const = 0;
  // Transforms piece in place: 0 on success, else non-zero with piece as it was.
  [[nodiscard]] virtual int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) = 0;

  // 0 on success, the selection then ending where the new audio ends;
  // kSVEfResultInvalidSelection with nothing done; otherwise the non-zero result
  // of ProcessCutList, or 1 when the band was not laid back, with the document
  // as it was.
  [[nodiscard]] int ProcessAndInsertCutList(LProcessInterface& process);

  [[nodiscard]] LCutListAudio& CutList() const { return list_; }
  [[nodiscard]] SVSelection& Selection() const { return selection_; }
  // After a successful ProcessAndInsertCutList: how the positions of the
  // document moved, to be applied in order (bookmarks follow them). Unless the
  // effect says where it removed or added frames, the length change counts as
  // made at the end of the selection.
  [[nodiscard]] const LArray<SVFrameShift>& Shifts() const { return shifts_; }

protected:
  // For ProcessCutList: frames were inserted (delta > 0) or deleted at from,
  // a position in the piece as it stands at that moment.
  void ShiftRecord(long long from, long long delta) { pieceShifts_.push_back({from, delta}); }

private:
  // The processed band laid over the band-stopped rest of the selected time, into result.
  [[nodiscard]] int MixBandOverRest(LProcessInterface& process, const SVSelection& selection,
                                    const LCutListAudio& piece, LCutListAudio& result) const;

  LCutListAudio& list_;
  SVSelection& selection_;
  LArray<SVFrameShift> pieceShifts_;
  LArray<SVFrameShift> shifts_;
};
