#pragma once
// LProcessDialog: runs a long job on a worker thread behind a progress dialog
// with the job's status lines, a percentage and a working "Abbrechen". The main
// thread keeps its event loop, so windows repaint, but the dialog is modal: the
// user touches no document until the job has ended, and Run returns only then.
#include <QDialog>

#include <atomic>
#include <mutex>
#include <string>

#include "app/front_end.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

class LProcessDialog final : public QDialog {
  Q_OBJECT

public:
  explicit LProcessDialog(QWidget* parent = nullptr);
  ~LProcessDialog() override;

  // Runs job under title; answers its result. message: why it failed, when it said.
  LProcessResult Run(const char* title, const SVProcessJob& job, std::string* message);
  // What the user pressed; the job stops at its next cancellation test.
  void Cancel();

  // Milliseconds before the dialog shows, so that short jobs do not flash it.
  static constexpr int kShowDelayMs = 150;

protected:
  void reject() override { Cancel(); }

private:
  // What the worker reports, read by the dialog's timer.
  class Progress;
  void Poll();

  QLabel* status_[2];
  QProgressBar* bar_;
  QPushButton* cancel_;
  QTimer* poll_;
  Progress* progress_ = nullptr;
};
