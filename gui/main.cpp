// sonvale-gui [DATEI...]: the desktop editor. With --screenshot it renders the
// window with one document into a PNG file and ends.
#include <QApplication>
#include <QPixmap>
#include <QTabWidget>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "app/file.h"
#include "app/file_gui.h"
#include "app/command_line.h"
#include "gui/key_script.h"
#include "gui/main_window.h"
#include "gui/wave_view.h"

namespace {

constexpr const char* kUsage =
    "Aufruf: sonvale-gui [DATEI...]\n"
    "        sonvale-gui DATEI --screenshot AUS.png [--size BxH] [--select ANFANG ENDE] [--zoom FRAMES_PRO_PIXEL]\n";

int Fail(const std::string& message) {
  std::fprintf(stderr, "sonvale-gui: %s\n%s", message.c_str(), kUsage);
  return 2;
}

struct Options {
  std::vector<std::string> files;
  std::string screenshot;
  int width = 1200;
  int height = 500;
  std::string selectStart, selectEnd;
  double zoom = 0;  // 0: the whole document
  bool help = false;
};

bool Parse(int argc, char** argv, Options* o, std::string* error) {
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    auto value = [&](const char* name) -> const char* {
      if (i + 1 >= argc) {
        *error = std::string("Nach ") + name + " fehlt ein Wert.";
        return nullptr;
      }
      return argv[++i];
    };
    if (a == "--help" || a == "-h") {
      o->help = true;
    } else if (a == "--screenshot") {
      const char* v = value("--screenshot");
      if (!v) return false;
      o->screenshot = v;
    } else if (a == "--size") {
      const char* v = value("--size");
      if (!v) return false;
      char x = 0;
      int consumed = 0;
      if (std::sscanf(v, "%d%c%d%n", &o->width, &x, &o->height, &consumed) != 3 || (x != 'x' && x != 'X') ||
          v[consumed] != '\0' || o->width < 100 || o->height < 100 || o->width > 8000 || o->height > 8000) {
        *error = std::string("Die Größe \"") + v + "\" ist nicht BREITExHÖHE mit 100 bis 8000 Pixeln.";
        return false;
      }
    } else if (a == "--select") {
      if (i + 2 >= argc) {
        *error = "Nach --select fehlen ANFANG und ENDE.";
        return false;
      }
      o->selectStart = argv[++i];
      o->selectEnd = argv[++i];
    } else if (a == "--zoom") {
      const char* v = value("--zoom");
      if (!v) return false;
      if (!ParseNumber(v, &o->zoom) || o->zoom <= 0) {
        *error = std::string("Der Zoom \"") + v + "\" ist keine Zahl über 0 (Frames pro Pixel).";
        return false;
      }
    } else if (a.size() > 1 && a[0] == '-') {
      *error = "Unbekannte Option \"" + a + "\".";
      return false;
    } else {
      o->files.push_back(a);
    }
  }
  const bool extras = o->width != 1200 || o->height != 500 || !o->selectStart.empty() || o->zoom > 0;
  if (o->screenshot.empty() && extras) {
    *error = "--size, --select und --zoom gelten nur mit --screenshot.";
    return false;
  }
  if (!o->screenshot.empty() && o->files.size() != 1) {
    *error = "--screenshot braucht genau eine Datei.";
    return false;
  }
  return true;
}

int Screenshot(SVMainWindow& window, const Options& o) {
  SVCommandArgs open;
  open.texts.push_back(o.files[0]);
  SVCommandResult result = window.RunCommandQuiet(kSVCmdOpen, open);
  if (result.result != kLProcessSuccess) return Fail(result.message);
  if (!o.selectStart.empty()) {
    SVCommandArgs select;
    long long frames[2];
    const std::string* texts[] = {&o.selectStart, &o.selectEnd};
    for (int i = 0; i < 2; ++i) {
      if (!ParseTimeToFrames(*texts[i], window.Commands().Rate(), &frames[i]))
        return Fail("Die Zeit \"" + *texts[i] + "\" ist keine Zeit wie 1:02.5, 90 oder 4410f.");
      select.times.push_back(frames[i]);
    }
    result = window.RunCommandQuiet(kSVCmdSelect, select);
    if (result.result != kLProcessSuccess) return Fail(result.message);
  }
  window.resize(o.width, o.height);
  window.show();
  QApplication::processEvents();
  if (SVWaveView* view = window.CurrentView()) {
    if (o.zoom > 0) {
      view->ZoomSet(o.zoom);
    } else {
      view->ZoomToFit();
    }
  }
  // Laid out and painted before the picture is taken.
  for (int i = 0; i < 3; ++i) QApplication::processEvents();
  const QPixmap picture = window.grab();
  if (picture.isNull() || !picture.save(QString::fromStdString(o.screenshot), "PNG"))
    return Fail("Das Bild \"" + o.screenshot + "\" kann nicht geschrieben werden.");
  std::printf("Bild geschrieben: %s (%dx%d)\n", o.screenshot.c_str(), picture.width(), picture.height());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  std::string error;
  if (!Parse(argc, argv, &options, &error)) return Fail(error);
  if (options.help) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  // A picture needs no display.
  if (!options.screenshot.empty()) {
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // The offscreen platform's notes about what it cannot do are no news for a picture.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
      if (type == QtCriticalMsg || type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(text));
    });
  }
  QApplication app(argc, argv);
  QApplication::setApplicationName("Sonvale");
  QApplication::setDesktopFileName("sonvale");
  SVMainWindow window;
  if (!options.screenshot.empty()) return Screenshot(window, options);

  window.show();
  const std::string recovered = window.Commands().RecordingsRecover();
  window.RunCommandQuiet(kSVCmdDocs);
  if (!recovered.empty()) window.Main().FrontEnd().Alert("Aufnahmen wiederhergestellt", recovered.c_str());
  QStringList files;
  for (const std::string& f : options.files) files << QString::fromStdString(f);
  window.OpenFiles(files);

  SVKeyScript script(&window);
  if (const char* path = std::getenv("SONVALE_GUI_SCRIPT"); path && *path) {
    QString message;
    if (!script.Load(QString::fromLocal8Bit(path), &message)) return Fail(message.toStdString());
    script.Start();
  }
  return app.exec();
}
