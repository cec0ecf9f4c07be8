#pragma once
// SVQtFrontEnd: the document model's front end in the desktop editor. Questions
// and messages are German message boxes; long jobs run in an LProcessDialog;
// what the model reports about windows, the undo entries and the recent files
// goes to the main window through its listener.
#include <QPointer>
#include <QWidget>

#include "app/front_end.h"
#include "app/undo_menu.h"

class SVQtFrontEndListener {
public:
  virtual ~SVQtFrontEndListener() = default;
  virtual void FrontEndNotify(SVFileGUI* window, int code) = 0;
  virtual void FrontEndRefresh(SVFileGUI* window) = 0;
  virtual void FrontEndUndoMenu(const SVUndoMenuState& state) = 0;
  virtual void FrontEndRecentFiles(const LArray<LStringLong>& paths) = 0;
  virtual void FrontEndPlay(SVFileGUI* window) = 0;
  // A job is about to run: the window drops what the model has closed.
  virtual void FrontEndBeforeJob() = 0;
};

class SVQtFrontEnd final : public SVFrontEnd {
public:
  // parent: the window the dialogs belong to; may be set later.
  explicit SVQtFrontEnd(QWidget* parent = nullptr) : parent_(parent) {}
  void ParentSet(QWidget* parent) { parent_ = parent; }
  void ListenerSet(SVQtFrontEndListener* listener) { listener_ = listener; }
  // Whether a job is running (its dialog is up).
  [[nodiscard]] bool Busy() const { return busy_ > 0; }

  void Notify(SVFileGUI* window, int code) override;
  void Refresh(SVFileGUI* window) override;
  int Ask(const char* title, const char* text, const LArray<LStringLong>& buttons) override;
  void Alert(const char* title, const char* text) override;
  void WindowMessage(SVFileGUI* window, const char* text) override;
  void StartPlayback(SVFileGUI* window) override;
  LProcessResult RunProcess(const char* title, const SVProcessJob& job) override;
  void UndoMenuShow(const SVUndoMenuState& state) override;
  void RecentFilesShow(const LArray<LStringLong>& paths) override;

private:
  QPointer<QWidget> parent_;
  SVQtFrontEndListener* listener_ = nullptr;
  int busy_ = 0;
};
