#pragma once
// SVWindowManager: the file windows of the main window, grouped in tabs, the
// current window, and the project (documents in tab order, regions). It gives
// every window a title no other window has and keeps the number of open files
// under its limit.
#include <memory>

#include "app/file_gui.h"
#include "app/front_end.h"
#include "app/project.h"
#include "app/undo_menu.h"
#include "base/array.h"
#include "base/counted_ptr.h"
#include "base/string_long.h"

// The file window that would be the 45th is refused.
inline constexpr int kSVMaxFileWindows = 45;
// FileWindowAdd: put the window into a new tab.
inline constexpr int kSVNewTab = -1;

inline constexpr const char* kSVMaxFilesTitle = "Fehler";
inline constexpr const char* kSVMaxFilesText =
    "Max. Dateianzahl überschritten. Bitte schließen Sie einige Dateien, bevor Sie weitere laden.";
// Values recorded in "UsageStats" when a file is refused. Read by the usage
// report; keep them.
inline constexpr const char* kSVUsageMaxFilesFailed = "MaxFilOpen";
inline constexpr const char* kSVUsageMaxFilesReason = "MaximumAllowedFileNumberReached";

class SVWindowManager {
public:
  explicit SVWindowManager(SVFrontEnd& frontEnd) : frontEnd_(frontEnd) {}
  SVWindowManager(const SVWindowManager&) = delete;
  SVWindowManager& operator=(const SVWindowManager&) = delete;

  [[nodiscard]] SVFrontEnd& FrontEnd() const { return frontEnd_; }
  [[nodiscard]] SVProject& Project() { return project_; }

  // Opens a window on file in tab (kSVNewTab: a new tab at the end), titled
  // wanted made unique, and makes it current. The document joins the project.
  SVFileGUI* FileWindowAdd(LCountedPtr<SVFile> file, const char* wanted, bool withoutExtension, int tab = kSVNewTab);
  // Closes the window; its tab goes when it was the last window in it. The
  // document is freed when nobody else holds it.
  void FileWindowClose(SVFileGUI* window);

  [[nodiscard]] int TabCount() const { return static_cast<int>(tabs_.size()); }
  [[nodiscard]] int TabFileWindowCount(int tab) const;
  [[nodiscard]] SVFileGUI* FileWindowAt(int tab, int index) const;
  // The tab holding window, -1 when it is not one of ours.
  [[nodiscard]] int TabOf(const SVFileGUI* window) const;
  [[nodiscard]] int FileWindowCount() const;
  [[nodiscard]] bool HasFileWindowTitled(const char* title) const;

  [[nodiscard]] SVFileGUI* CurrentFileWindow() const { return current_; }
  void CurrentFileWindowSet(SVFileGUI* window) { current_ = window; }

  // Whether another file may be opened; at the limit the user is told why and
  // the refusal is recorded in "UsageStats".
  [[nodiscard]] bool CheckMaxFiles();
  // out := wanted when no window bears it, else a numbered variant no window
  // bears. The number follows the title's trailing digits; it is read from the
  // separator before them on purpose, so "Take_3" numbers on from 1 and "Take 3"
  // from 4. A "FileNameFormat" with the same shape numbers from 0 instead.
  void EnsureUniqueFileWindowTitle(LStringLong& out, const char* wanted, bool withoutExtension) const;

  // Computes the Undo and Redo entries for the current window and shows them.
  SVUndoMenuState UndoMenuUpdate();
  // Shows the project's regions again (full: all of them).
  void RegionsApply(bool full);

private:
  using Tab = LArray<std::unique_ptr<SVFileGUI>>;
  void ProjectDocumentsUpdate();

  SVFrontEnd& frontEnd_;
  SVProject project_;
  LArray<Tab> tabs_;
  SVFileGUI* current_ = nullptr;
};
