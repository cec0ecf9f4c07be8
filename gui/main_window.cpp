#include "gui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>

#include "app/document_commands.h"
#include "app/file.h"
#include "app/file_gui.h"
#include "app/frame_time.h"
#include "app/command_line.h"
#include "effects/sound_process_table.h"
#include "formats/sound_file.h"
#include "gui/wave_view.h"

namespace {

// Commands whose success answers a listing that the user wants to read.
bool IsListing(int id) {
  switch (id) {
    case kSVCmdDocs:
    case kSVCmdBookmarks:
    case kSVCmdRegions:
    case kSVCmdTags:
    case kSVCmdStatus:
    case kSVCmdHelp:
      return true;
    default:
      return false;
  }
}

QString Text(const std::string& text) { return QString::fromStdString(text); }
// An entry's text: '&' would start a mnemonic.
QString MenuText(const std::string& text) { return Text(text).replace('&', "&&"); }

// The formats Speichern unter writes: its filter and the name the command takes.
struct SaveFormat {
  LSoundFileKind kind;
  const char* label;
  const char* patterns;
};
constexpr SaveFormat kSaveFormats[] = {
    {LSoundFileKind::kWave, "WAVE", "*.wav"},       {LSoundFileKind::kAiff, "AIFF", "*.aiff *.aif *.aifc"},
    {LSoundFileKind::kFlac, "FLAC", "*.flac"},      {LSoundFileKind::kMP3, "MP3", "*.mp3"},
    {LSoundFileKind::kOgg, "Ogg Vorbis", "*.ogg *.oga"}, {LSoundFileKind::kOpus, "Opus", "*.opus"},
    {LSoundFileKind::kRF64, "RF64", "*.rf64"},
};

constexpr const char* kOpenFilter =
    "Audiodateien (*.wav *.aiff *.aif *.aifc *.flac *.mp3 *.ogg *.oga *.opus *.rf64 *.w64 *.m4a *.aac *.wma *.amr "
    "*.gsm *.vox *.au *.caf *.mp4 *.mkv *.webm);;Alle Dateien (*)";

}  // namespace

SVMainWindow::SVMainWindow(QWidget* parent)
    : QMainWindow(parent), frontEnd_(this), main_(frontEnd_, board_), commands_(main_) {
  frontEnd_.ListenerSet(this);
  commands_.PlayWaitSet(false);
  setWindowTitle("Sonvale");
  setAccessibleName("Sonvale");
  setAcceptDrops(true);
  resize(1000, 600);

  tabs_ = new QTabWidget(this);
  tabs_->setAccessibleName("Dokumente");
  tabs_->setDocumentMode(true);
  tabs_->setTabsClosable(true);
  setCentralWidget(tabs_);
  connect(tabs_, &QTabWidget::currentChanged, this, &SVMainWindow::CurrentTabChanged);
  connect(tabs_, &QTabWidget::tabCloseRequested, this, [this](int index) {
    tabs_->setCurrentIndex(index);
    CloseCurrent();
  });

  auto* dock = new QDockWidget("Verlauf", this);
  dock->setObjectName("history");
  dock->setAccessibleName("Verlauf");
  history_ = new QListWidget(dock);
  history_->setAccessibleName("Verlauf der Änderungen");
  // Reached by its menu entry; it must not take the keys of the document when a tab closes.
  history_->setFocusPolicy(Qt::ClickFocus);
  dock->setWidget(history_);
  addDockWidget(Qt::RightDockWidgetArea, dock);
  // The jump rebuilds the list, so it waits until the list's own handler has returned.
  const auto jump = [this](QListWidgetItem* item) {
    if (!item || historyUpdating_) return;
    const unsigned long index = item->data(Qt::UserRole).toULongLong();
    QTimer::singleShot(0, this, [this, index] { HistoryJump(index); });
  };
  connect(history_, &QListWidget::itemActivated, this, jump);
  connect(history_, &QListWidget::itemClicked, this, jump);

  const char* statusNames[] = {"Format", "Länge", "Auswahl", "Cursor"};
  for (int i = 0; i < 4; ++i) {
    status_[i] = new QLabel(this);
    status_[i]->setAccessibleName(statusNames[i]);
    statusBar()->addPermanentWidget(status_[i]);
  }
  statusBar()->setAccessibleName("Statusleiste");

  MenusBuild();
  main_.RecentFiles().Reload();
  StateUpdate();
}

SVMainWindow::~SVMainWindow() {
  frontEnd_.ListenerSet(nullptr);
  // The widgets go after the members: what they signal then must not reach us.
  tabs_->disconnect(this);
  history_->disconnect(this);
  // The views must not paint documents the manager frees.
  for (int i = 0; i < tabs_->count(); ++i) {
    if (auto* view = qobject_cast<SVWaveView*>(tabs_->widget(i))) view->WindowSet(nullptr);
  }
}

QAction* SVMainWindow::ActionAdd(QMenu* menu, const QString& text, const char* name) {
  QAction* action = menu->addAction(text);
  action->setObjectName(name);
  return action;
}

QAction* SVMainWindow::CommandActionAdd(QMenu* menu, int id) {
  const SVCommandInfo* info = SVCommandFind(id);
  if (!info) return nullptr;
  bool asks = false;
  for (const SVArgSpec& arg : info->args) asks |= arg.kind != SVArgKind::kNone && !arg.optional;
  // An entry that asks for more says so.
  const bool dialog = asks || id == kSVCmdSaveAs;
  QAction* action = menu->addAction(MenuText(info->label) + (dialog ? "..." : ""));
  action->setData(id);
  action->setObjectName(QString("command%1").arg(id));
  action->setToolTip(Text(SVCommandUsage(*info)));
  connect(action, &QAction::triggered, this, [this, id] { Trigger(id); });
  actions_[id] = action;
  return action;
}

void SVMainWindow::MenusBuild() {
  struct Place {
    const char* group;
    QMenu* menu;
  };
  menuBar()->setAccessibleName("Menüleiste");
  QMenu* file = menuBar()->addMenu("&Datei");
  QMenu* edit = menuBar()->addMenu("&Bearbeiten");
  QMenu* view = menuBar()->addMenu("&Ansicht");
  QMenu* effects = menuBar()->addMenu("E&ffekte");
  QMenu* processes = menuBar()->addMenu("&Prozesse");
  QMenu* playback = menuBar()->addMenu("&Wiedergabe");
  windowMenu_ = menuBar()->addMenu("Fe&nster");
  QMenu* help = menuBar()->addMenu("&Hilfe");
  for (QMenu* m : {file, edit, view, effects, processes, playback, windowMenu_, help}) {
    m->setAccessibleName(m->title().remove('&'));
    connect(m, &QMenu::aboutToShow, this, &SVMainWindow::ActionsUpdate);
  }
  connect(windowMenu_, &QMenu::aboutToShow, this, &SVMainWindow::WindowMenuFill);

  // Every command of the table gets its entry, in the table's order, in the
  // menu of its group; listings of the document go to Ansicht.
  const std::map<std::string, QMenu*> byGroup = {
      {"Dokumente", file}, {"Dateien", file},     {"Position", edit},    {"Bearbeiten", edit},
      {"Verlauf", edit},   {"Prozesse", processes}, {"Effekte", effects}, {"Marken", edit},
      {"Metadaten", edit}, {"Wiedergabe", playback}, {"Sonstiges", help},
  };
  QMenu* generate = nullptr;
  for (const SVCommandInfo& info : SVCommandTable()) {
    QMenu* menu = byGroup.count(info.group) ? byGroup.at(info.group) : help;
    switch (info.id) {
      case kSVCmdEffect:
        EffectsMenuBuild(effects);
        effects->addSeparator();
        continue;
      case kSVCmdDocs:
      case kSVCmdDoc:
        // The window menu lists the documents itself.
        continue;
      case kSVCmdBookmarks:
      case kSVCmdRegions:
      case kSVCmdTags:
      case kSVCmdStatus:
        menu = view;
        break;
      case kSVCmdQuit:
        file->addSeparator();
        menu = file;
        break;
      case kSVCmdGenerateTone:
      case kSVCmdGenerateNoise:
      case kSVCmdGenerateSilence:
        if (!generate) {
          generate = edit->addMenu("Erzeugen");
          generate->setAccessibleName("Erzeugen");
        }
        menu = generate;
        break;
      case kSVCmdCopy:
      case kSVCmdSelect:
      case kSVCmdUndo:
      case kSVCmdBookmarkAdd:
      case kSVCmdProjectSave:
        menu->addSeparator();
        break;
      default:
        break;
    }
    CommandActionAdd(menu, info.id);
    if (info.id == kSVCmdPaste) {
      QAction* toNew = ActionAdd(edit, "In neue Datei einfügen", "pasteToNew");
      connect(toNew, &QAction::triggered, this, &SVMainWindow::PasteToNew);
    }
    if (info.id == kSVCmdClose) {
      recentMenu_ = file->addMenu("Zuletzt geöffnet");
      recentMenu_->setAccessibleName("Zuletzt geöffnete Dateien");
    }
  }

  QAction* zoomIn = ActionAdd(view, "Vergrößern", "zoomIn");
  zoomIn->setShortcuts({QKeySequence(Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Plus)});
  connect(zoomIn, &QAction::triggered, this, [this] {
    if (SVWaveView* v = CurrentView()) v->ZoomIn();
  });
  QAction* zoomOut = ActionAdd(view, "Verkleinern", "zoomOut");
  zoomOut->setShortcuts({QKeySequence(Qt::Key_Minus), QKeySequence(Qt::CTRL | Qt::Key_Minus)});
  connect(zoomOut, &QAction::triggered, this, [this] {
    if (SVWaveView* v = CurrentView()) v->ZoomOut();
  });
  QAction* fit = ActionAdd(view, "Ganze Datei zeigen", "zoomFit");
  connect(fit, &QAction::triggered, this, [this] {
    if (SVWaveView* v = CurrentView()) v->ZoomToFit();
  });
  QAction* toSelection = ActionAdd(view, "Auswahl zeigen", "zoomSelection");
  connect(toSelection, &QAction::triggered, this, [this] {
    if (SVWaveView* v = CurrentView()) v->ZoomToSelection();
  });
  view->addSeparator();
  QAction* historyToggle = findChild<QDockWidget*>("history")->toggleViewAction();
  historyToggle->setText("Verlauf anzeigen");
  view->addAction(historyToggle);

  // Keys of the cursor and of playback, through the same commands.
  QAction* home = ActionAdd(edit, "Cursor an den Anfang", "cursorHome");
  home->setShortcut(Qt::Key_Home);
  connect(home, &QAction::triggered, this, [this] {
    SVCommandArgs args;
    args.times.push_back(0);
    RunCommand(kSVCmdCursor, args);
  });
  QAction* end = ActionAdd(edit, "Cursor an das Ende", "cursorEnd");
  end->setShortcut(Qt::Key_End);
  connect(end, &QAction::triggered, this, [this] {
    SVFileGUI* window = main_.Windows().CurrentFileWindow();
    if (!window) return;
    SVCommandArgs args;
    args.times.push_back(window->File()->CutList().GetLength());
    RunCommand(kSVCmdCursor, args);
  });
  QAction* toggle = ActionAdd(playback, "Wiedergabe starten/anhalten", "playToggle");
  toggle->setShortcut(Qt::Key_Space);
  connect(toggle, &QAction::triggered, this, &SVMainWindow::PlayToggle);

  QAction* keys = ActionAdd(help, "Tastenkürzel", "keys");
  connect(keys, &QAction::triggered, this, [this] {
    frontEnd_.Alert("Tastenkürzel",
                    "Strg+O Öffnen, Strg+S Speichern, Strg+Z Rückgängig, Strg+Umschalt+Z Wiederholen,\n"
                    "Strg+X/C/V Ausschneiden/Kopieren/Einfügen, Entf Löschen, Strg+A Alles auswählen,\n"
                    "Pos1/Ende Cursor an Anfang/Ende, + und − Zoom, Leertaste Wiedergabe.\n"
                    "Alt und der unterstrichene Buchstabe öffnen ein Menü.");
  });
  QAction* about = ActionAdd(help, "Über Sonvale", "about");
  connect(about, &QAction::triggered, this, [this] {
    frontEnd_.Alert("Über Sonvale", "Sonvale, ein Audioeditor.");
  });

  const std::pair<int, QKeySequence> shortcuts[] = {
      {kSVCmdOpen, QKeySequence::Open},
      {kSVCmdNew, QKeySequence::New},
      {kSVCmdClose, QKeySequence(Qt::CTRL | Qt::Key_W)},
      {kSVCmdSave, QKeySequence::Save},
      {kSVCmdSaveAs, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)},
      {kSVCmdUndo, QKeySequence(Qt::CTRL | Qt::Key_Z)},
      {kSVCmdRedo, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)},
      {kSVCmdCut, QKeySequence::Cut},
      {kSVCmdCopy, QKeySequence::Copy},
      {kSVCmdPaste, QKeySequence::Paste},
      {kSVCmdDelete, QKeySequence(Qt::Key_Delete)},
      {kSVCmdSelectAll, QKeySequence::SelectAll},
      {kSVCmdQuit, QKeySequence(Qt::CTRL | Qt::Key_Q)},
  };
  for (const auto& [id, keys] : shortcuts) actions_.at(id)->setShortcut(keys);

  QToolBar* tools = addToolBar("Werkzeuge");
  tools->setObjectName("tools");
  tools->setAccessibleName("Werkzeugleiste");
  for (int id : {kSVCmdOpen, kSVCmdSave, kSVCmdUndo, kSVCmdRedo, kSVCmdCut, kSVCmdCopy, kSVCmdPaste, kSVCmdDelete,
                 kSVCmdTrim, kSVCmdPlay, kSVCmdStop}) {
    tools->addAction(actions_.at(id));
  }
  tools->addAction(zoomIn);
  tools->addAction(zoomOut);

  // Every entry is reachable by name for a screen reader.
  for (QAction* action : findChildren<QAction*>()) {
    if (action->text().isEmpty()) continue;
    action->setStatusTip(action->toolTip());
  }
  for (QWidget* w : tools->findChildren<QWidget*>()) {
    if (auto* button = qobject_cast<QAbstractButton*>(w)) button->setAccessibleName(button->text().remove('&'));
  }
}

void SVMainWindow::EffectsMenuBuild(QMenu* menu) {
  for (const LSoundProcessTypeRow& row : LSoundProcessTypeRows()) {
    if (!row.word || !row.make) continue;
    const std::unique_ptr<LSoundProcess> effect = row.make();
    if (!effect) continue;
    const QString word = row.word;
    const QString name = MenuText(row.name);
    const int presets = effect->GetNumPresets();
    QAction* plain = nullptr;
    if (presets <= 0) {
      plain = menu->addAction(name);
    } else {
      QMenu* sub = menu->addMenu(name);
      sub->setAccessibleName(Text(row.name));
      plain = sub->addAction("Standardeinstellungen");
      sub->addSeparator();
      for (int i = 0; i < presets; ++i) {
        char preset[kLPathMax] = {};
        effect->GetPresetsName(i, preset);
        QAction* action = sub->addAction(MenuText(preset));
        action->setData(kSVCmdEffect);
        action->setProperty("effect", word);
        action->setProperty("preset", QString::fromUtf8(preset));
        connect(action, &QAction::triggered, this, [this, word, p = QString::fromUtf8(preset)] { EffectTrigger(word, p); });
        effectActions_ << action;
      }
    }
    plain->setData(kSVCmdEffect);
    plain->setProperty("effect", word);
    connect(plain, &QAction::triggered, this, [this, word] { EffectTrigger(word, {}); });
    effectActions_ << plain;
  }
}

QAction* SVMainWindow::CommandAction(int id) const {
  const auto it = actions_.find(id);
  return it == actions_.end() ? nullptr : it->second;
}

QAction* SVMainWindow::EffectAction(const char* word, const char* preset) const {
  for (QAction* action : effectActions_) {
    if (action->property("effect").toString() != word) continue;
    if (action->property("preset").toString() == QString(preset ? preset : "")) return action;
  }
  return nullptr;
}

SVWaveView* SVMainWindow::CurrentView() const { return qobject_cast<SVWaveView*>(tabs_->currentWidget()); }

SVWaveView* SVMainWindow::ViewOf(const SVFileGUI* window) const {
  for (int i = 0; i < tabs_->count(); ++i) {
    auto* view = qobject_cast<SVWaveView*>(tabs_->widget(i));
    if (view && view->Window() == window) return view;
  }
  return nullptr;
}

// ---- Commands ----

SVCommandResult SVMainWindow::RunCommand(int id, const SVCommandArgs& args) {
  if (frontEnd_.Busy()) return {kLProcessCancelled, "Ein Vorgang läuft noch.", {}};
  const SVCommandResult result = commands_.Run(id, args);
  TabsSync();
  StateUpdate();
  if (result.result == kLProcessFailed) {
    frontEnd_.Alert("Fehler", result.message.c_str());
  } else if (result.result == kLProcessSuccess) {
    if (!result.message.empty() && IsListing(id)) {
      const SVCommandInfo* info = SVCommandFind(id);
      frontEnd_.Alert(info ? info->label : "Hinweis", result.message.c_str());
    } else if (!result.message.empty()) {
      statusBar()->showMessage(Text(result.message), 5000);
    }
    if (!result.warning.empty()) frontEnd_.Alert("Hinweis", result.warning.c_str());
  } else if (!result.message.empty()) {
    statusBar()->showMessage(Text(result.message), 5000);
  }
  return result;
}

SVCommandResult SVMainWindow::RunCommandQuiet(int id, const SVCommandArgs& args) {
  if (frontEnd_.Busy()) return {kLProcessCancelled, "Ein Vorgang läuft noch.", {}};
  const SVCommandResult result = commands_.Run(id, args);
  TabsSync();
  StateUpdate();
  return result;
}

void SVMainWindow::Trigger(int id) {
  const SVCommandInfo* info = SVCommandFind(id);
  if (!info || frontEnd_.Busy()) return;
  SVCommandArgs args;
  switch (id) {
    case kSVCmdOpen: {
      const QStringList paths = QFileDialog::getOpenFileNames(this, "Öffnen", {}, kOpenFilter);
      if (!paths.isEmpty()) OpenFiles(paths);
      return;
    }
    case kSVCmdClose:
      CloseCurrent();
      return;
    case kSVCmdSave:
      SaveCurrent();
      return;
    case kSVCmdSaveAs:
      SaveAs();
      return;
    case kSVCmdQuit:
      close();
      return;
    case kSVCmdHistory:
      findChild<QDockWidget*>("history")->show();
      history_->setFocus();
      return;
    case kSVCmdProjectOpen:
    case kSVCmdProjectSave:
    case kSVCmdInsertFile:
    case kSVCmdChain:
    case kSVCmdChainSave: {
      const bool save = id == kSVCmdProjectSave || id == kSVCmdChainSave;
      const bool project = id == kSVCmdProjectOpen || id == kSVCmdProjectSave;
      const QString filter = project                                          ? "Sonvale-Projekt (*.svp)"
                             : (id == kSVCmdChain || id == kSVCmdChainSave) ? "Effektkette (*.ecf)"
                                                                            : QString(kOpenFilter);
      QString path = save ? QFileDialog::getSaveFileName(this, Text(info->label), {}, filter)
                          : QFileDialog::getOpenFileName(this, Text(info->label), {}, filter);
      if (path.isEmpty()) return;
      const QString suffix = project ? ".svp" : ".ecf";
      if (save && !path.endsWith(suffix, Qt::CaseInsensitive)) path += suffix;
      args.texts.push_back(path.toStdString());
      break;
    }
    default:
      if (!ArgumentsAsk(*info, &args)) return;
      break;
  }
  RunCommand(id, args);
  if (id == kSVCmdPlay) playing_ = true;
  if (id == kSVCmdStop) playing_ = false;
}

void SVMainWindow::EffectTrigger(const QString& word, const QString& preset) {
  SVCommandArgs args;
  args.texts.push_back(word.toStdString());
  if (!preset.isEmpty()) args.texts.push_back("preset=" + preset.toStdString());
  RunCommand(kSVCmdEffect, args);
}

bool SVMainWindow::ArgumentsAsk(const SVCommandInfo& info, SVCommandArgs* args) {
  bool any = false;
  for (const SVArgSpec& arg : info.args) any |= arg.kind != SVArgKind::kNone;
  if (!any) return true;
  // Prefilled from the document where that is what the user most likely means.
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  const unsigned rate = commands_.Rate();
  auto time = [rate](long long frames) { return Text(SVFramesTimeText(frames, rate)); };
  std::vector<QString> values;
  if (window) {
    const SVSelection& s = window->File()->Selection();
    if (info.id == kSVCmdSelect || info.id == kSVCmdRegionAdd) values = {time(s.start), time(s.end)};
    if (info.id == kSVCmdCursor) values = {time(window->File()->Cursor())};
    if (info.id == kSVCmdRegionAdd) values.insert(values.begin(), "Region");
  }

  QDialog dialog(this);
  dialog.setWindowTitle(Text(info.label));
  dialog.setAccessibleName(Text(info.label));
  auto* form = new QFormLayout(&dialog);
  form->addRow(new QLabel("Zeiten wie 1:02.5, 90 (Sekunden) oder 4410f (Frames); Zahlen mit Komma oder Punkt.", &dialog));
  std::vector<QLineEdit*> fields;
  for (const SVArgSpec& arg : info.args) {
    if (arg.kind == SVArgKind::kNone) break;
    auto* field = new QLineEdit(&dialog);
    const QString name = Text(arg.name) + (arg.optional ? " (optional)" : "");
    field->setAccessibleName(Text(arg.name));
    if (fields.size() < values.size()) field->setText(values[fields.size()]);
    form->addRow(name, field);
    fields.push_back(field);
  }
  auto* buttons = new QDialogButtonBox(&dialog);
  buttons->addButton("OK", QDialogButtonBox::AcceptRole)->setDefault(true);
  buttons->addButton("Abbrechen", QDialogButtonBox::RejectRole);
  for (QAbstractButton* b : buttons->buttons()) b->setAccessibleName(b->text());
  form->addRow(buttons);
  connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  fields.front()->setFocus();
  if (dialog.exec() != QDialog::Accepted) return false;

  // The fields become a line of the command language, read as the command reads it.
  std::string line = std::string(info.word).substr(0, std::string(info.word).find('|'));
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::string value = fields[i]->text().trimmed().toStdString();
    if (value.empty()) continue;
    const bool many = info.args[i].kind == SVArgKind::kTexts;
    line += many ? " " + value : " \"" + value + "\"";
  }
  std::vector<CommandWords> commands;
  std::string error;
  int id = 0;
  if (!SplitCommandLine(line, &commands, &error) || commands.size() != 1 ||
      !ParseCommandWords(commands[0], rate, &id, args, &error)) {
    frontEnd_.Alert("Fehler", error.c_str());
    return false;
  }
  return id == info.id;
}

bool SVMainWindow::OpenFiles(const QStringList& paths) {
  bool all = true;
  for (const QString& path : paths) {
    SVCommandArgs args;
    args.texts.push_back(QFileInfo(path).absoluteFilePath().toStdString());
    all &= RunCommand(kSVCmdOpen, args).result == kLProcessSuccess;
  }
  return all;
}

bool SVMainWindow::SaveCurrent() {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  if (!window) return false;
  if (!*window->File()->Path()) return SaveAs();
  return RunCommand(kSVCmdSave).result == kLProcessSuccess;
}

bool SVMainWindow::SaveAs() {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  if (!window) return false;
  QStringList filters;
  for (const SaveFormat& f : kSaveFormats) filters << QString("%1 (%2)").arg(f.label, f.patterns);
  QFileDialog dialog(this, "Speichern unter");
  dialog.setAccessibleName("Speichern unter");
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setNameFilters(filters);
  const QString current = QString::fromUtf8(window->File()->Path());
  if (!current.isEmpty()) dialog.selectFile(current);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
  QString path = dialog.selectedFiles().front();
  const SaveFormat& format = kSaveFormats[std::max<qsizetype>(0, filters.indexOf(dialog.selectedNameFilter()))];
  LSoundFileKind named;
  SVCommandArgs args;
  // A name without an extension of ours gets the chosen format's.
  if (!LSoundFileKindForPath(path.toUtf8().constData(), &named)) {
    path += QString(format.patterns).section(' ', 0, 0).mid(1);
  }
  args.texts.push_back(path.toStdString());
  return RunCommand(kSVCmdSaveAs, args).result == kLProcessSuccess;
}

bool SVMainWindow::SaveQuestion(SVFileGUI* window) {
  if (!window || !window->File()->IsModified()) return true;
  main_.Windows().CurrentFileWindowSet(window);
  TabsSync();
  const std::string text = "Die Änderungen an \"" + window->Title() + "\" sind nicht gespeichert. Jetzt speichern?";
  switch (frontEnd_.Ask("Nicht gespeichert", text.c_str(), {"Speichern", "Verwerfen", "Abbrechen"})) {
    case 0:
      return SaveCurrent();
    case 1:
      return true;
    default:
      return false;
  }
}

bool SVMainWindow::CloseCurrent() {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  if (!window || frontEnd_.Busy() || !SaveQuestion(window)) return false;
  return RunCommand(kSVCmdClose).result == kLProcessSuccess;
}

bool SVMainWindow::ConfirmQuit() {
  SVWindowManager& m = main_.Windows();
  for (int t = 0; t < m.TabCount(); ++t) {
    for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
      if (!SaveQuestion(m.FileWindowAt(t, i))) return false;
    }
  }
  return true;
}

void SVMainWindow::PasteToNew() {
  if (frontEnd_.Busy()) return;
  std::string message;
  SVFileGUI* window = SVDocumentCommands::PasteToNew(main_, &message);
  TabsSync();
  StateUpdate();
  if (!window) frontEnd_.Alert("Fehler", message.c_str());
}

void SVMainWindow::PlayToggle() {
  if (!playing_) {
    if (RunCommand(kSVCmdPlay).result == kLProcessSuccess) playing_ = true;
  } else {
    RunCommand(kSVCmdStop);
    playing_ = false;
  }
}

void SVMainWindow::HistoryJump(unsigned long index) {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  if (!window || frontEnd_.Busy()) return;
  const int steps = SVDocumentCommands::UndoHistoryStepsTo(window->File(), index);
  for (int n = 0; n < std::abs(steps); ++n) {
    if (commands_.Run(steps < 0 ? kSVCmdUndo : kSVCmdRedo).result != kLProcessSuccess) break;
  }
  TabsSync();
  StateUpdate();
}

void SVMainWindow::CheckOutsideChanges() {
  if (checkingOutside_ || frontEnd_.Busy()) return;
  checkingOutside_ = true;
  SVWindowManager& m = main_.Windows();
  std::vector<SVFileGUI*> changed;
  for (int t = 0; t < m.TabCount(); ++t) {
    for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
      SVFileGUI* window = m.FileWindowAt(t, i);
      if (window->File()->TestForFileModifications()) changed.push_back(window);
    }
  }
  for (SVFileGUI* window : changed) {
    if (m.TabOf(window) < 0) continue;
    const std::string text = "Die Datei \"" + std::string(window->File()->Path()) +
                             "\" wurde von einem anderen Programm geändert. Neu laden? Ihre Änderungen bleiben mit "
                             "\"Rückgängig\" erreichbar.";
    if (frontEnd_.Ask("Datei geändert", text.c_str(), {"Neu laden", "Behalten"}) != 0) continue;
    if (SVDocumentCommands::Reload(window) == kLProcessFailed) {
      const std::string why = frontEnd_.LastError().empty()
                                  ? "Die Datei \"" + std::string(window->File()->Path()) + "\" konnte nicht geladen werden."
                                  : frontEnd_.LastError();
      frontEnd_.Alert("Fehler", why.c_str());
    }
  }
  TabsSync();
  StateUpdate();
  checkingOutside_ = false;
}

// ---- Window events ----

void SVMainWindow::closeEvent(QCloseEvent* event) {
  if (frontEnd_.Busy() || !ConfirmQuit()) {
    event->ignore();
    return;
  }
  event->accept();
}

void SVMainWindow::dragEnterEvent(QDragEnterEvent* event) {
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile()) {
      event->acceptProposedAction();
      return;
    }
  }
}

void SVMainWindow::dropEvent(QDropEvent* event) {
  QStringList paths;
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile()) paths << url.toLocalFile();
  }
  if (paths.isEmpty()) return;
  event->acceptProposedAction();
  // Opened after the drop has ended, so the other program is not kept waiting.
  QTimer::singleShot(0, this, [this, paths] { OpenFiles(paths); });
}

void SVMainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
    QTimer::singleShot(0, this, &SVMainWindow::CheckOutsideChanges);
  }
}

// ---- What the model reports ----

void SVMainWindow::FrontEndNotify(SVFileGUI* window, int) { TabTitleUpdate(window); }

void SVMainWindow::FrontEndRefresh(SVFileGUI* window) {
  if (SVWaveView* view = ViewOf(window)) view->DocumentChanged();
  TabTitleUpdate(window);
  StatusUpdate();
}

void SVMainWindow::FrontEndUndoMenu(const SVUndoMenuState& state) {
  for (const SVUndoMenuItem* item : {&state.undo, &state.redo}) {
    QAction* action = CommandAction(item->command);
    if (!action) continue;
    action->setText(MenuText(item->label));
    action->setToolTip(Text(item->label));
    action->setEnabled(item->enabled);
  }
  HistoryUpdate();
}

void SVMainWindow::FrontEndRecentFiles(const LArray<LStringLong>& paths) {
  if (!recentMenu_) return;
  recentMenu_->clear();
  int n = 0;
  for (const LStringLong& path : paths) {
    const QString p = Text(path);
    QAction* action = recentMenu_->addAction(QString("&%1 %2").arg(++n % 10).arg(p));
    connect(action, &QAction::triggered, this, [this, p] { OpenFiles({p}); });
  }
  recentMenu_->setEnabled(n > 0);
}

void SVMainWindow::FrontEndPlay(SVFileGUI*) {
  if (RunCommand(kSVCmdPlay).result == kLProcessSuccess) playing_ = true;
}

void SVMainWindow::FrontEndBeforeJob() { TabsSync(); }

// ---- Tabs and state ----

void SVMainWindow::TabsSync() {
  SVWindowManager& m = main_.Windows();
  std::vector<SVFileGUI*> windows;
  for (int t = 0; t < m.TabCount(); ++t) {
    for (int i = 0; i < m.TabFileWindowCount(t); ++i) windows.push_back(m.FileWindowAt(t, i));
  }
  const QSignalBlocker block(tabs_);
  for (int p = tabs_->count() - 1; p >= 0; --p) {
    auto* view = qobject_cast<SVWaveView*>(tabs_->widget(p));
    if (!view || std::find(windows.begin(), windows.end(), view->Window()) != windows.end()) continue;
    tabs_->removeTab(p);
    view->WindowSet(nullptr);
    view->deleteLater();
  }
  for (SVFileGUI* window : windows) {
    if (ViewOf(window)) continue;
    auto* view = new SVWaveView(tabs_);
    view->WindowSet(window);
    connect(view, &SVWaveView::SelectionChanged, this, &SVMainWindow::StateUpdate);
    tabs_->addTab(view, QString());
    TabTitleUpdate(window);
  }
  SVWaveView* current = ViewOf(m.CurrentFileWindow());
  if (current && current != tabs_->currentWidget()) {
    tabs_->setCurrentWidget(current);
    current->setFocus();
  }
}

void SVMainWindow::TabTitleUpdate(SVFileGUI* window) {
  SVWaveView* view = ViewOf(window);
  if (!view) return;
  const QString title = Text(window->Title()) + (window->File()->IsModified() ? "*" : "");
  const int index = tabs_->indexOf(view);
  tabs_->setTabText(index, title);
  tabs_->setTabToolTip(index, QString::fromUtf8(window->File()->Path()));
  view->setAccessibleName(Text(window->Title()));
  if (view == CurrentView()) setWindowTitle(title + " – Sonvale");
}

void SVMainWindow::CurrentTabChanged(int) {
  SVWaveView* view = CurrentView();
  if (view && view->Window()) {
    main_.Windows().CurrentFileWindowSet(view->Window());
    TabTitleUpdate(view->Window());
    view->setFocus();
  } else {
    setWindowTitle("Sonvale");
  }
  main_.UpdateUndoMenuItem();
  StateUpdate();
}

void SVMainWindow::StateUpdate() {
  ActionsUpdate();
  StatusUpdate();
  HistoryUpdate();
}

void SVMainWindow::ActionsUpdate() {
  for (const auto& [id, action] : actions_) action->setEnabled(commands_.IsEnabled(id));
  const bool document = commands_.IsEnabled(kSVCmdEffect);
  for (QAction* action : effectActions_) action->setEnabled(document);
  if (QAction* toNew = findChild<QAction*>("pasteToNew")) toNew->setEnabled(true);
}

void SVMainWindow::StatusUpdate() {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  if (!window || !window->File()) {
    for (QLabel* label : status_) label->clear();
    return;
  }
  const SVFile& file = *window->File();
  const LCutListAudio& list = file.CutList();
  const unsigned rate = list.GetSampleRate();
  auto time = [rate](long long frames) { return Text(SVFramesTimeText(frames, rate)); };
  const SVSelection& s = file.Selection();
  status_[0]->setText(QString("%1 Hz, %2 %3").arg(rate).arg(list.GetChannels()).arg(list.GetChannels() == 1 ? "Kanal" : "Kanäle"));
  status_[1]->setText("Länge " + time(list.GetLength()));
  status_[2]->setText(s.IsEmpty() ? QString("Auswahl: keine")
                                  : QString("Auswahl %1 bis %2 (%3)").arg(time(s.start), time(s.end), time(s.end - s.start)));
  status_[3]->setText("Cursor " + time(file.Cursor()));
}

QString SVMainWindow::StatusText() const {
  QStringList parts;
  for (const QLabel* label : status_) parts << label->text();
  return parts.join(" | ");
}

void SVMainWindow::HistoryUpdate() {
  historyUpdating_ = true;
  history_->clear();
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  for (const SVUndoHistoryEntry& entry : SVDocumentCommands::UndoHistory(window ? window->File() : nullptr)) {
    auto* item = new QListWidgetItem(Text(entry.description) + "  " + Text(entry.timeStamp), history_);
    item->setData(Qt::UserRole, static_cast<qulonglong>(entry.index));
    if (entry.current) {
      QFont font = item->font();
      font.setBold(true);
      item->setFont(font);
      history_->setCurrentItem(item);
    }
  }
  historyUpdating_ = false;
}

void SVMainWindow::WindowMenuFill() {
  windowMenu_->clear();
  SVWindowManager& m = main_.Windows();
  int n = 0;
  for (int t = 0; t < m.TabCount(); ++t) {
    for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
      SVFileGUI* window = m.FileWindowAt(t, i);
      const int number = ++n;
      QAction* action = windowMenu_->addAction(QString("&%1 %2").arg(number).arg(MenuText(window->Title())));
      action->setCheckable(true);
      action->setChecked(window == m.CurrentFileWindow());
      connect(action, &QAction::triggered, this, [this, number] {
        SVCommandArgs args;
        args.numbers.push_back(number);
        RunCommand(kSVCmdDoc, args);
      });
    }
  }
  if (n == 0) windowMenu_->addAction("Keine Dokumente")->setEnabled(false);
}
