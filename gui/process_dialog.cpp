#include "gui/process_dialog.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <thread>

// Written by the worker, read by the dialog: texts under a mutex, numbers atomic.
class LProcessDialog::Progress final : public LProcessInterface {
public:
  bool IsCancelled() override { return cancelled.load(std::memory_order_relaxed); }
  void SetStatus(const char* text, int line) override {
    std::lock_guard lock(mutex);
    status[line == 0 ? 0 : 1] = text ? text : "";
  }
  void SetProgress(double fraction) override { progress.store(fraction, std::memory_order_relaxed); }
  void SetError(const char* text) override {
    std::lock_guard lock(mutex);
    error = text ? text : "";
  }
  void SetProgressIndeterminateOn() override { indeterminate.store(true); }
  void SetProgressIndeterminateOff() override { indeterminate.store(false); }

  std::mutex mutex;
  std::string status[2];
  std::string error;
  std::atomic<double> progress{0.0};
  std::atomic<bool> indeterminate{false};
  std::atomic<bool> cancelled{false};
};

LProcessDialog::LProcessDialog(QWidget* parent) : QDialog(parent) {
  setModal(true);
  setAccessibleName("Fortschritt");
  auto* layout = new QVBoxLayout(this);
  for (int line = 0; line < 2; ++line) {
    status_[line] = new QLabel(this);
    status_[line]->setAccessibleName(line == 0 ? "Vorgang" : "Status");
    status_[line]->setMinimumWidth(360);
    layout->addWidget(status_[line]);
  }
  bar_ = new QProgressBar(this);
  bar_->setRange(0, 1000);
  bar_->setFormat("%p %");
  bar_->setAccessibleName("Fortschritt in Prozent");
  layout->addWidget(bar_);
  cancel_ = new QPushButton("Abbrechen", this);
  cancel_->setAccessibleName("Abbrechen");
  layout->addWidget(cancel_, 0, Qt::AlignRight);
  connect(cancel_, &QPushButton::clicked, this, &LProcessDialog::Cancel);
  poll_ = new QTimer(this);
  poll_->setInterval(50);
  connect(poll_, &QTimer::timeout, this, &LProcessDialog::Poll);
}

LProcessDialog::~LProcessDialog() = default;

void LProcessDialog::Cancel() {
  if (!progress_) return;
  progress_->cancelled.store(true);
  cancel_->setEnabled(false);
  status_[1]->setText("Wird abgebrochen...");
}

void LProcessDialog::Poll() {
  if (!progress_) return;
  {
    std::lock_guard lock(progress_->mutex);
    status_[0]->setText(QString::fromStdString(progress_->status[0]));
    if (!progress_->cancelled.load()) status_[1]->setText(QString::fromStdString(progress_->status[1]));
  }
  if (progress_->indeterminate.load()) {
    bar_->setRange(0, 0);
  } else {
    bar_->setRange(0, 1000);
    bar_->setValue(static_cast<int>(std::clamp(progress_->progress.load(), 0.0, 1.0) * 1000));
  }
}

LProcessResult LProcessDialog::Run(const char* title, const SVProcessJob& job, std::string* message) {
  if (!job) return kLProcessFailed;
  Progress progress;
  progress.SetStatus(title, 0);
  progress_ = &progress;
  setWindowTitle(QString::fromUtf8(title ? title : ""));
  cancel_->setEnabled(true);
  Poll();

  QEventLoop loop;
  LProcessResult result = kLProcessFailed;
  std::atomic<bool> done{false};
  // The worker only reads documents; it tells the main thread by a queued call.
  std::thread worker([&] {
    result = job(progress);
    done.store(true);
    QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
  });
  QTimer::singleShot(kShowDelayMs, this, [this, &done] {
    if (!done.load()) show();
  });
  poll_->start();
  if (!done.load()) loop.exec();
  worker.join();
  poll_->stop();
  hide();
  progress_ = nullptr;
  if (message) *message = progress.error;
  return result;
}
