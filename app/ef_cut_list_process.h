#pragma once
// SVEfCutListProcess: an edit or effect applied to the selection of a document,
// in two steps. Render cuts the selected audio out as a cut list of its own,
// lets the object transform that piece (ProcessCutList) and, with a frequency
// band, lays the processed band over the band-stopped rest of the selected
// time; it only reads the document. Splice then puts the result in place of the
// selection. The audio around the selection is never rewritten, and a cancelled
// or failed render leaves the document as it was.
//
// Threads: Render may run on a worker thread inside a progress job, while the
// main thread leaves the document's cut list and selection alone; Splice runs
// on the main thread, between the start and the end of the modification
// protocol (core_utils.h).
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

  // The new audio for the selection, kept for Splice: 0 on success;
  // kSVEfResultInvalidSelection with nothing done; otherwise the non-zero result
  // of ProcessCutList, or 1 when the band was not laid back. Never changes the document.
  [[nodiscard]] int Render(LProcessInterface& process);
  // After a successful Render: the rendered audio replaces the selection as it
  // was when rendered, and the selection ends where the new audio ends.
  void Splice();
  // Render, then Splice on success; answers Render's result.
  [[nodiscard]] int ProcessAndInsertCutList(LProcessInterface& process);

  [[nodiscard]] LCutListAudio& CutList() const { return list_; }
  [[nodiscard]] SVSelection& Selection() const { return selection_; }
  // After Splice: how the positions of the
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
  // What Render made: the selection it read, the lengths it cut out and made
  // (the band's mix aside), and what replaces the selection.
  SVSelection rendered_;
  long long cutLength_ = 0;
  long long newLength_ = 0;
  LCutListAudio result_;
  bool ready_ = false;
  LArray<SVFrameShift> pieceShifts_;
  LArray<SVFrameShift> shifts_;
};
