#pragma once
// SVMainWindow: the editor's main window. A tab per file window of the window
// manager, each an SVWaveView; menus and a toolbar built from the command
// table, whose every entry runs the one command handler of app/ by its number;
// a history list, a status bar with the format, length, selection and cursor.
// Widgets show; the dispatcher decides.
#include <QMainWindow>

#include <map>

#include "app/command_dispatcher.h"
#include "app/main_dialog.h"
#include "gui/qt_clipboard.h"
#include "gui/qt_front_end.h"

class QAction;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QMenu;
class QTabWidget;
class SVWaveView;

class SVMainWindow final : public QMainWindow, private SVQtFrontEndListener {
  Q_OBJECT

public:
  explicit SVMainWindow(QWidget* parent = nullptr);
  ~SVMainWindow() override;

  [[nodiscard]] SVCommandDispatcher& Commands() { return commands_; }
  [[nodiscard]] MainDialog& Main() { return main_; }
  // Runs a command as a menu entry does: a failure's message and a listing are
  // shown, the tabs, menus and status bar follow.
  SVCommandResult RunCommand(int id, const SVCommandArgs& args = {});
  // The same, showing nothing: for the command line's options and for scripts.
  SVCommandResult RunCommandQuiet(int id, const SVCommandArgs& args = {});
  // Opens the files in new tabs; false when one of them failed (it was shown why).
  bool OpenFiles(const QStringList& paths);
  // The menu entry of a command number (for effects: the plain "Effekt" entry is none).
  [[nodiscard]] QAction* CommandAction(int id) const;
  [[nodiscard]] QAction* EffectAction(const char* word, const char* preset = nullptr) const;
  [[nodiscard]] SVWaveView* CurrentView() const;
  [[nodiscard]] QTabWidget* Tabs() const { return tabs_; }
  [[nodiscard]] QListWidget* HistoryList() const { return history_; }
  // The texts of the status bar's fields, joined by " | ".
  [[nodiscard]] QString StatusText() const;
  // Closes the current document, asking to save it when it is modified; false when the user stayed.
  bool CloseCurrent();
  // Asks for every unsaved document; false when the user wants to stay.
  bool ConfirmQuit();
  // Offers every document whose file another program changed for reloading.
  void CheckOutsideChanges();
  // Pastes the clipboard's audio into a new document.
  void PasteToNew();

protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  // SVQtFrontEndListener.
  void FrontEndNotify(SVFileGUI* window, int code) override;
  void FrontEndRefresh(SVFileGUI* window) override;
  void FrontEndUndoMenu(const SVUndoMenuState& state) override;
  void FrontEndRecentFiles(const LArray<LStringLong>& paths) override;
  void FrontEndPlay(SVFileGUI* window) override;
  void FrontEndBeforeJob() override;

  void MenusBuild();
  QAction* ActionAdd(QMenu* menu, const QString& text, const char* name);
  QAction* CommandActionAdd(QMenu* menu, int id);
  void EffectsMenuBuild(QMenu* menu);
  void WindowMenuFill();
  // What a menu entry of a command does: asks for its arguments, then runs it.
  void Trigger(int id);
  void EffectTrigger(const QString& word, const QString& preset);
  // Asks for the arguments of a command in a small form; false when cancelled or wrong.
  bool ArgumentsAsk(const SVCommandInfo& info, SVCommandArgs* args);
  bool SaveAs();
  bool SaveCurrent();
  // Speichern / Verwerfen / Abbrechen for a modified window; false when the user stays.
  bool SaveQuestion(SVFileGUI* window);
  // Undoes or redoes until the entry at ring index is the current one.
  void HistoryJump(unsigned long index);
  void PlayToggle();

  // The tabs follow the window manager: views of closed windows go, new windows get one.
  void TabsSync();
  void TabTitleUpdate(SVFileGUI* window);
  [[nodiscard]] SVWaveView* ViewOf(const SVFileGUI* window) const;
  void CurrentTabChanged(int index);
  // Enabled states, status bar and history after anything changed.
  void StateUpdate();
  void ActionsUpdate();
  void StatusUpdate();
  void HistoryUpdate();

  // The clipboard first: the app's clipboard tells it when it goes.
  SVQtClipboard board_;
  SVQtFrontEnd frontEnd_;
  MainDialog main_;
  SVCommandDispatcher commands_;

  QTabWidget* tabs_ = nullptr;
  QListWidget* history_ = nullptr;
  QMenu* recentMenu_ = nullptr;
  QMenu* windowMenu_ = nullptr;
  std::map<int, QAction*> actions_;
  QList<QAction*> effectActions_;
  QLabel* status_[4] = {};
  bool playing_ = false;
  bool checkingOutside_ = false;
  bool historyUpdating_ = false;
};
