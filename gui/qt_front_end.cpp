#include "gui/qt_front_end.h"

#include <QMessageBox>
#include <QPushButton>

#include "gui/process_dialog.h"

void SVQtFrontEnd::Notify(SVFileGUI* window, int code) {
  if (listener_) listener_->FrontEndNotify(window, code);
}

void SVQtFrontEnd::Refresh(SVFileGUI* window) {
  if (listener_) listener_->FrontEndRefresh(window);
}

int SVQtFrontEnd::Ask(const char* title, const char* text, const LArray<LStringLong>& buttons) {
  if (buttons.empty()) return -1;
  QMessageBox box(QMessageBox::Question, QString::fromUtf8(title ? title : ""), QString::fromUtf8(text ? text : ""),
                  QMessageBox::NoButton, parent_);
  box.setAccessibleName(QString::fromUtf8(title ? title : "Frage"));
  QList<QAbstractButton*> added;
  for (const LStringLong& label : buttons) {
    QPushButton* button = box.addButton(QString::fromStdString(label), QMessageBox::ActionRole);
    button->setAccessibleName(QString::fromStdString(label));
    added << button;
  }
  // Closing the box answers as the last button, the safe one.
  box.setEscapeButton(added.back());
  box.setDefaultButton(qobject_cast<QPushButton*>(added.front()));
  box.exec();
  const int chosen = static_cast<int>(added.indexOf(box.clickedButton()));
  return chosen < 0 ? static_cast<int>(buttons.size()) - 1 : chosen;
}

void SVQtFrontEnd::Alert(const char* title, const char* text) {
  QMessageBox box(QMessageBox::Information, QString::fromUtf8(title && *title ? title : "Hinweis"),
                  QString::fromUtf8(text ? text : ""), QMessageBox::NoButton, parent_);
  box.setAccessibleName(box.windowTitle());
  box.addButton("OK", QMessageBox::AcceptRole)->setAccessibleName("OK");
  box.exec();
}

void SVQtFrontEnd::WindowMessage(SVFileGUI*, const char* text) { Alert("Warnung", text); }

void SVQtFrontEnd::StartPlayback(SVFileGUI* window) {
  if (listener_) listener_->FrontEndPlay(window);
}

LProcessResult SVQtFrontEnd::RunProcess(const char* title, const SVProcessJob& job) {
  if (listener_) listener_->FrontEndBeforeJob();
  LProcessDialog dialog(parent_);
  std::string message;
  ++busy_;
  const LProcessResult result = dialog.Run(title, job, &message);
  --busy_;
  if (result == kLProcessFailed && !message.empty()) LastErrorSet(message);
  return result;
}

void SVQtFrontEnd::UndoMenuShow(const SVUndoMenuState& state) {
  if (listener_) listener_->FrontEndUndoMenu(state);
}

void SVQtFrontEnd::RecentFilesShow(const LArray<LStringLong>& paths) {
  if (listener_) listener_->FrontEndRecentFiles(paths);
}
