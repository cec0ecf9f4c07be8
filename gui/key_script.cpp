#include "gui/key_script.h"

#include <QApplication>
#include <QFile>
#include <QKeySequence>
#include <QTimer>
#include <QWidget>
#include <QtTest/QTest>

#include "gui/process_dialog.h"

SVKeyScript::SVKeyScript(QWidget* window, QObject* parent) : QObject(parent), window_(window), timer_(new QTimer(this)) {
  timer_->setInterval(40);
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
  QWidget* target = QApplication::activePopupWidget();
  if (!target) target = QApplication::activeModalWidget();
  if (target && target->focusWidget()) target = target->focusWidget();
  if (!target) target = QApplication::focusWidget();
  if (!target) target = window_;
  const QString line = lines_.takeFirst();
  if (line.startsWith("type ")) {
    QTest::keyClicks(target, line.mid(5));
    return;
  }
  const QKeySequence keys = QKeySequence::fromString(line, QKeySequence::PortableText);
  for (int i = 0; i < keys.count(); ++i) {
    QTest::keyClick(target, keys[i].key(), keys[i].keyboardModifiers());
  }
}
