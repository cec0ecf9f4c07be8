#pragma once
// SVKeyScript: plays a file of keys into the application as if a person typed
// them, for runs without a person (an end-to-end test on a virtual display).
// One entry a line: a key sequence in Qt's portable form ("Ctrl+A", "Alt+P",
// "Down", "Return"), or "type TEXT" for text; "#" starts a comment line. Keys go
// to the open menu, else the modal dialog, else the focused widget. While a job
// runs the script waits.
#include <QObject>
#include <QStringList>

class SVQtFrontEnd;
class QTimer;
class QWidget;

class SVKeyScript final : public QObject {
  Q_OBJECT

public:
  SVKeyScript(QWidget* window, QObject* parent = nullptr);
  // Reads the script; false with a German message when it cannot be read or a line is no key.
  bool Load(const QString& path, QString* message);
  void Start();

private:
  void Step();

  QWidget* window_;
  QStringList lines_;
  QTimer* timer_;
  bool trace_ = false;  // SONVALE_GUI_SCRIPT_TRACE: each key on standard error
  int waited_ = 0;  // steps spent waiting for the target to become active
};
