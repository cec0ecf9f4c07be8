#include <QApplication>
#include <QMainWindow>

#include "gui/wave_view.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QMainWindow window;
  window.setWindowTitle("Sonvale");
  window.setCentralWidget(new SVWaveView(&window));
  window.show();
  return app.exec();
}
