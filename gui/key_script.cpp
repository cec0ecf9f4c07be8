#include "gui/key_script.h"

#include <QApplication>
#include <QFile>
#include <QKeySequence>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <QtTest/QTest>

#include <cstdio>
#include <cstdlib>

#include "gui/process_dialog.h"

SVKeyScript::SVKeyScript(QWidget* window, QObject* parent) : QObject(parent), window_(window), timer_(new QTimer(this)) {
  timer_->setInterval(40);
  trace_ = std::getenv("SONVALE_GUI_SCRIPT_TRACE") != nullptr;
  connect(timer_, &QTimer::timeout, this, &SVKeyScript::Step);
}

bool SVKeyScript::Load(const QString& path, QString* message) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
    *message = QString("Das Tastenskript \"%1\" kann nicht gelesen werden.").arg(path);
    return false;
  }
  int number = 0;
  while (!file.atEnd()) {
    const QString line = QString::fromUtf8(file.readLine()).trimmed();
    ++number;
    if (line.isEmpty() || line.startsWith('#')) continue;
    if (!line.startsWith("type ") && QKeySequence::fromString(line, QKeySequence::PortableText).isEmpty()) {
      *message = QString("Zeile %1 des Tastenskripts ist keine Taste: %2").arg(number).arg(line);
      return false;
    }
    lines_ << line;
  }
  return true;
}

void SVKeyScript::Start() { timer_->start(); }

void SVKeyScript::Step() {
  if (lines_.isEmpty()) {
    timer_->stop();
    return;
  }
  // A running job has its dialog up: the keys wait for its end.
  for (QWidget* w : QApplication::topLevelWidgets()) {
    if (qobject_cast<LProcessDialog*>(w) && w->isVisible()) return;
  }
  // Keys reach shortcuts only in the active window; a display without a window
  // manager activates none by itself.
  QWidget* target = QApplication::activePopupWidget();
  if (!target) {
    target = QApplication::activeModalWidget();
    if (!target) target = window_;
    if (QApplication::activeWindow() != target->window()) {
      // Without a window manager the display may not give the focus back after a
      // menu closes: the application is told directly then.
      if (trace_ && waited_ == 0) std::fprintf(stderr, "Warte auf %s\n", target->metaObject()->className());
      if (++waited_ > 5) QApplication::setActiveWindow(target);
      target->activateWindow();
      return;
    }
  }
  waited_ = 0;
  if (target->focusWidget()) target = target->focusWidget();
  const QString line = lines_.takeFirst();
  if (trace_) std::fprintf(stderr, "Taste %s an %s\n", qPrintable(line), target->metaObject()->className());
  // Sent from a timer of its own: a key that opens a dialog waits inside it, and
  // this timer must go on meanwhile.
  QPointer<QWidget> to = target;
  QTimer::singleShot(0, this, [to, line] {
    if (!to) return;
    if (line.startsWith("type ")) {
      QTest::keyClicks(to, line.mid(5));
      return;
    }
    const QKeySequence keys = QKeySequence::fromString(line, QKeySequence::PortableText);
    for (int i = 0; i < keys.count() && to; ++i) QTest::keyClick(to, keys[i].key(), keys[i].keyboardModifiers());
  });
}
