#pragma once
// MainDialog: the editor's main controller, toolkit-free. It owns the window
// manager, the clipboard and the recent-files list, opens and creates
// documents, records their base undo entry, and computes the Undo and Redo
// entries that the front end shows.
#include <string>

#include "app/clipboard.h"
#include "app/front_end.h"
#include "app/recent_file_list.h"
#include "app/system_clipboard.h"
#include "app/undo_menu.h"
#include "app/window_manager.h"
#include "engine/cut_list_audio.h"

// Progress titles of loading and saving a file.
inline constexpr const char* kSVLoadTitle = "Laden der Ursprungsaudiodatei";
inline constexpr const char* kSVSaveTitle = "Speichern";

// What FileSave is asked for.
struct SVFileSaveRequest {
  std::string path;     // empty: the document's own path
  std::string format;   // a format name; empty: by the path's extension
  std::string quality;  // a quality setting for lossy formats, or empty
  bool dither = false;
};

class MainDialog {
public:
  // How a document came to be; names its base undo entry.
  enum INITIAL_ACTION : int {
    kInitialLoad = 0,               // "Datei laden"
    kInitialNewFile = 1,            // "Leere Datei erstellen"
    kInitialCopyToNew = 2,          // "In neue Datei kopieren"
    kInitialPasteToNew = 3,         // "In eine neue Datei einfügen"
    kInitialRestore = 4,            // "Inhalte wiederherstellen"
    kInitialDuplicate = 5,          // "Duplikat"
    kInitialDuplicateLoaded = 6,    // "Duplikatdatei geladen"
  };

  MainDialog(SVFrontEnd& frontEnd, SVSystemClipboard& board);
  MainDialog(const MainDialog&) = delete;
  MainDialog& operator=(const MainDialog&) = delete;

  [[nodiscard]] SVFrontEnd& FrontEnd() const { return frontEnd_; }
  [[nodiscard]] SVWindowManager& Windows() { return windows_; }
  [[nodiscard]] SVClipboard& Clipboard() { return clipboard_; }
  [[nodiscard]] SVSystemClipboard& SystemClipboard() const { return board_; }
  [[nodiscard]] LRecentFileList& RecentFiles() { return recent_; }

  // The Undo and Redo entries for the current window, also shown by the front end.
  SVUndoMenuState UpdateUndoMenuItem();
  // The base undo entry of the current window's new document: the first real
  // edit can be undone back to it, the base itself never. Values outside the
  // table add nothing.
  void InitialUndoEntrySave(INITIAL_ACTION action);
  // The label of an action, nullptr outside the table.
  [[nodiscard]] static const char* InitialActionLabel(int action);

  // Opens a file in a new tab: refused at the file limit, loaded under a
  // progress display, clean, with its base entry, added to the recent files.
  // nullptr when refused, cancelled or failed (the front end showed why).
  SVFileGUI* FileOpen(const char* path);
  // Saves the window's document to path (empty: its own path). The format is
  // the one named by request.format, else the one the path's extension names,
  // keeping what it can of the format of the document's own file; quality is a
  // setting for lossy formats. Bookmarks travel as the file's markers. The old
  // file stays until the new one is complete. Then the document is clean, named
  // path, knows the file's modification time, and path heads the recent files.
  // message: why it failed; warnings: what the chosen format could not keep.
  [[nodiscard]] LProcessResult FileSave(SVFileGUI* window, const SVFileSaveRequest& request, std::string* message,
                                        std::string* warnings);
  // A new untitled document over list, titled wanted made unique.
  SVFileGUI* FileNewFromCutList(const LCutListAudio& list, const char* wanted, INITIAL_ACTION action);

private:
  SVFrontEnd& frontEnd_;
  SVSystemClipboard& board_;
  SVWindowManager windows_;
  SVClipboard clipboard_;
  LRecentFileList recent_;
};
