#pragma once
// SVCoreUtils: the modification protocol every edit of the audio goes through.
// StartModifyFile takes the undo snapshot (labelled with the edit's name)
// before anything changes; the edit changes the live cut list; EndModifyFile
// commits, or CancelModifyFile drops the snapshot of an edit that did nothing.
// LFileModifier (file_modifier.h) rolls back an edit that failed half way. All
// of it runs on the main thread.
#include "app/file_gui.h"
#include "app/window_manager.h"
#include "engine/cut_list_audio.h"

// Question asked when a single-channel edit changed the channel's length.
inline constexpr const char* kSVChannelLengthTitle = "Kanallängenänderungen";
inline constexpr const char* kSVChannelLengthContinue = "Fortfahren";
inline constexpr const char* kSVChannelLengthCancel = "Abbrechen";
inline constexpr const char* kSVChannelLengthShorter =
    "Dieser Vorgang wird die Audiodaten in diesem Kanal um %d Millisekunden verkleinert. Dies wirkt sich auf die "
    "Ausrichtung mit den anderen Kanälen in der Datei aus. Möchten Sie fortfahren?";
inline constexpr const char* kSVChannelLengthLonger =
    "Dieser Vorgang erweitert die Audiodaten in diesem Kanal um %d Millisekunden. Dies wirkt sich auf die "
    "Ausrichtung mit den anderen Kanälen in der Datei aus. Möchten Sie fortfahren?";
// Shown in the window when the working folder runs short after an edit; %s is the file.
inline constexpr const char* kSVLowDiskText =
    "Die letzte von Ihnen durchgeführte Aktion der Datei \"%s\" kann aufgrund geringem Speicherplatz nicht "
    "gesichert werden. Bitte versuchen Sie die Datei an anderer Stelle zu speichern oder durch Entfernen "
    "unerwünschter Dateien Platz freizugeben und versuchen Sie es erneut.";

class SVCoreUtils {
public:
  // Begins an edit of the window's document: snapshot, both flags on, the
  // window told it is modified. channelEdit: the edit may work on the window's
  // chosen channel alone; in single-channel editing that channel is then split
  // out and becomes the live cut list. False, with the snapshot dropped, when
  // there is no document or the split was cancelled or failed.
  [[nodiscard]] static bool StartModifyFile(SVFileGUI* window, const char* description, bool channelEdit = true);
  // Commits the edit; true when committed. In single-channel editing a changed
  // channel length is put to the user first, and the channel is merged back;
  // declining or cancelling the merge answers false without committing.
  [[nodiscard]] static bool EndModifyFile(SVFileGUI* window);
  // Drops the snapshot of an edit that did nothing or failed before changing
  // anything; the live state stays (a split-out channel goes back to the whole list).
  static void CancelModifyFile(SVFileGUI* window);
  // Rolls back an edit that changed the document and then failed or was not
  // committed: exactly the state before StartModifyFile returns, its snapshot
  // is dropped, and the entries before it stay for Undo.
  static void RollBackModifyFile(SVFileGUI* window);
};
