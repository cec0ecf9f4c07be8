#pragma once
// SVEditCommands: every change of a document's audio, by one path. The
// modification starts (undo snapshot) under the edit's label; the edit object
// renders the new audio in a progress job of the front end, which may run it on
// a worker thread and only reads the document; back on the main thread the
// result is spliced in, bookmarks follow it, and the modification commits. A
// render that is cancelled or fails has changed nothing: the modification is
// cancelled and the document, its flags and the undo ring are as they were. A
// commit that is declined after the splice is rolled back as LFileModifier does.
// Edits that render nothing go the same way without the job.
//
// Results: 0 committed; 1 cancelled (also when the commit was declined, as a
// single-channel edit whose length changed can be); 2 nothing done (no
// document, an invalid selection, a failure).
//
// Kept apart from SVCoreUtils, which owns the modification protocol itself.
// Called on the main thread.
#include <functional>

#include "app/ef_cut_list_process.h"
#include "app/file.h"
#include "app/file_gui.h"
#include "engine/cut_list_audio.h"

// Undo labels of the edits that render nothing.
inline constexpr const char* kSVTrimLabel = "Trimmen";
inline constexpr const char* kSVRepeatLabel = "Schleife";

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
  // channel alone (see SVCoreUtils::StartModifyFile). label: the undo
  // description and progress title; null for the effect's own name.
  [[nodiscard]] static int Run(SVFileGUI* window, SVEfCutListProcess& effect,
                               SVEditScope scope = SVEditScope::kSelectionOrWhole, bool channelEdit = true,
                               const char* label = nullptr);

  // An edit that renders nothing: change runs on the document between the start
  // and the commit of the modification and moves the bookmarks itself.
  [[nodiscard]] static int Change(SVFileGUI* window, const char* label, const std::function<void(SVFile&)>& change);

  // clip in place of the selection, or at the cursor (scope kReplaceSelection),
  // or at the insert point alone (kInsertPoint); the selection then covers it and
  // the cursor follows it, so inserts in a row line up. An empty document takes
  // the clip's format, other documents get the clip converted to theirs.
  [[nodiscard]] static int InsertClip(SVFileGUI* window, const LCutListAudio& clip, const char* label = nullptr,
                                      SVEditScope scope = SVEditScope::kReplaceSelection);
  // frames of silence at the selection's start (or the cursor).
  [[nodiscard]] static int InsertSilence(SVFileGUI* window, long long frames);
  // The sound file at path, loaded under a progress job, inserted as a clip.
  [[nodiscard]] static int InsertFile(SVFileGUI* window, const char* path);
  // The whole document to another channel count (never a single channel of it).
  [[nodiscard]] static int ConvertChannels(SVFileGUI* window, int channels);
  // Everything but the selection goes; the cursor goes to the start.
  [[nodiscard]] static int Trim(SVFileGUI* window);
  // The selection (the whole document when nothing is selected) count more times after itself.
  [[nodiscard]] static int Repeat(SVFileGUI* window, unsigned long count);
};
