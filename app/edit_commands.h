#pragma once
// SVEditCommands: the commands that change a document's audio through an
// SVEfCutListProcess. Each one starts a modification labelled with the
// object's name, runs ProcessAndInsertCutList in a progress job of the front
// end, and commits. A job that is cancelled or fails has changed nothing, so its
// modification is cancelled and the undo ring stays as it was; a commit that is
// declined after the audio changed is rolled back as LFileModifier does.
//
// Results: 0 committed; 1 cancelled (also when the commit was declined, as a
// single-channel edit whose length changed can be); 2 nothing done (no
// document, an invalid selection, a failure).
//
// Kept apart from SVCoreUtils, which owns the modification protocol itself.
// Main thread only.
#include "app/ef_cut_list_process.h"
#include "app/ef_normalize.h"
#include "app/file_gui.h"
#include "engine/cut_list_audio.h"

// What of the document an edit acts on; set on the document's selection once
// the modification has started, so an undo brings the old selection back.
enum class SVEditScope {
  kSelectionOrWhole,  // the selection; the whole document when nothing is selected
  kReplaceSelection,  // the selection's time range, or the cursor when nothing is selected
  kInsertPoint,       // nothing, at the selection's start (the cursor when nothing is selected)
  kWhole,             // the whole document
};

class SVEditCommands {
public:
  // Runs effect, which must be made over the window's document (its CutList()
  // and Selection()). channelEdit: the edit may work on the window's chosen
  // channel alone (see SVCoreUtils::StartModifyFile).
  [[nodiscard]] static int Run(SVFileGUI* window, SVEfCutListProcess& effect,
                               SVEditScope scope = SVEditScope::kSelectionOrWhole, bool channelEdit = true);

  // clip in place of the selection, or at the cursor; an empty document takes
  // the clip's format, other documents get the clip converted to theirs.
  [[nodiscard]] static int InsertClip(SVFileGUI* window, const LCutListAudio& clip);
  // frames of silence at the selection's start (or the cursor).
  [[nodiscard]] static int InsertSilence(SVFileGUI* window, long long frames);
  // The sound file at path, loaded under a progress job, inserted as a clip.
  [[nodiscard]] static int InsertFile(SVFileGUI* window, const char* path);
  // Linear fades over the selection (the whole document when nothing is selected).
  [[nodiscard]] static int FadeIn(SVFileGUI* window);
  [[nodiscard]] static int FadeOut(SVFileGUI* window);
  [[nodiscard]] static int Normalize(SVFileGUI* window, double targetDb = kSVNormalizeDefaultDb);
  // The whole document to another channel count (never a single channel of it).
  [[nodiscard]] static int ConvertChannels(SVFileGUI* window, int channels);
  // The silence at the start and the end of the document goes.
  [[nodiscard]] static int TrimStartAndEnd(SVFileGUI* window);
};
