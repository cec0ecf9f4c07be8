// The main window driven as a person would: keys, menu entries, dialogs and
// drops, each checked on the document, not on pixels.
#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QImage>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QUrl>
#include <QtTest/QTest>

#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "app/file.h"
#include "app/file_gui.h"
#include "base/user_settings.h"
#include "engine/sound_cache.h"
#include "gui/main_window.h"
#include "gui/process_dialog.h"
#include "support/temp_folder.h"

namespace {

class MainWindowTest : public ::testing::Test {
protected:
  void SetUp() override {
    LUserSettings::Instance().FolderSet(temp_.File("settings"));
    LSoundCache::Instance().FolderSet(temp_.File("cache").c_str());
    window_ = std::make_unique<SVMainWindow>();
    window_->show();
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
  }
  void TearDown() override {
    window_.reset();
    QApplication::clipboard()->clear();
    LSoundCache::Instance().FolderSet("");
    LUserSettings::Instance().FolderSet("");
  }

  // A WAVE file of a tone, made by a session of its own.
  std::string WriteTone(const std::string& name, int frames, int channels = 1) {
    SVFrontEndQuiet quiet;
    SVSystemClipboardMemory board;
    MainDialog main(quiet, board);
    SVCommandDispatcher commands(main);
    SVCommandArgs args;
    args.numbers = {44100, static_cast<double>(channels)};
    EXPECT_EQ(commands.Run(kSVCmdNew, args).result, kLProcessSuccess);
    args = {};
    args.numbers = {440};
    args.times = {frames};
    EXPECT_EQ(commands.Run(kSVCmdGenerateTone, args).result, kLProcessSuccess);
    args = {};
    args.texts = {temp_.File(name)};
    EXPECT_EQ(commands.Run(kSVCmdSaveAs, args).result, kLProcessSuccess);
    return temp_.File(name);
  }
  SVFile* Current() {
    SVFileGUI* window = window_->Main().Windows().CurrentFileWindow();
    return window ? window->File() : nullptr;
  }
  SVFile* Open(const std::string& path) {
    return window_->OpenFiles({QString::fromStdString(path)}) ? Current() : nullptr;
  }
  void Select(long long start, long long end) {
    SVCommandArgs args;
    args.times = {start, end};
    ASSERT_EQ(window_->RunCommandQuiet(kSVCmdSelect, args).result, kLProcessSuccess);
  }
  void Key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    // A closed message box leaves no window active on this platform; a window manager would.
    if (!window_->isActiveWindow()) {
      window_->activateWindow();
      ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }
    QTest::keyClick(window_.get(), static_cast<Qt::Key>(key), modifiers);
  }
  // The next message box is answered with the button of that text.
  static void AnswerNext(const QString& button) {
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, button] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (!box) return;
      for (QAbstractButton* b : box->buttons()) {
        if (b->text() == button) {
          timer->stop();
          timer->deleteLater();
          b->click();
          return;
        }
      }
    });
    timer->start(10);
  }

  TempFolder temp_;
  std::unique_ptr<SVMainWindow> window_;
};

TEST_F(MainWindowTest, EditsThroughKeysAndMenusUndoWithTheirTextsAndTheHistory) {
  SVFile* file = Open(WriteTone("a.wav", 20000));
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(window_->Tabs()->tabText(0), "a.wav");
  Select(1000, 3000);
  EXPECT_TRUE(window_->StatusText().contains("Auswahl 0:00:00.022 bis 0:00:00.068")) << window_->StatusText().toStdString();

  Key(Qt::Key_Delete);
  EXPECT_EQ(file->CutList().GetLength(), 18000);
  EXPECT_EQ(window_->Tabs()->tabText(0), "a.wav*");
  QAction* undo = window_->CommandAction(kSVCmdUndo);
  QAction* redo = window_->CommandAction(kSVCmdRedo);
  EXPECT_EQ(undo->text(), "Rückgängig Audio löschen");
  EXPECT_TRUE(undo->isEnabled());
  EXPECT_FALSE(redo->isEnabled());

  Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(file->CutList().GetLength(), 20000);
  EXPECT_EQ(redo->text(), "Wiederholen Audio löschen");
  EXPECT_FALSE(undo->isEnabled());
  Key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(file->CutList().GetLength(), 18000);

  Key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(file->Selection().end, 18000);
  window_->CommandAction(kSVCmdTrim)->trigger();  // nothing outside the selection: still an entry
  ASSERT_NE(window_->EffectAction("echo", "Grand Canyon"), nullptr);
  window_->EffectAction("echo", "Grand Canyon")->trigger();
  EXPECT_EQ(undo->text(), "Rückgängig Echo");
  Key(Qt::Key_End);
  EXPECT_EQ(file->Cursor(), 18000);

  // The history lists how the document came to be and every edit; a click goes there.
  QListWidget* history = window_->HistoryList();
  ASSERT_EQ(history->count(), 4);
  EXPECT_TRUE(history->item(0)->text().startsWith("Datei laden"));
  EXPECT_TRUE(history->item(3)->text().startsWith("Echo"));
  QTest::mouseClick(history->viewport(), Qt::LeftButton, {}, history->visualItemRect(history->item(0)).center());
  EXPECT_TRUE(QTest::qWaitFor([&] { return file->CutList().GetLength() == 20000; }));
  EXPECT_FALSE(file->IsModified());
  EXPECT_EQ(window_->Tabs()->tabText(0), "a.wav");
  EXPECT_EQ(redo->text(), "Wiederholen Audio löschen");
}

TEST_F(MainWindowTest, ArgumentFormsReadValuesAsTheCommandDoesAndRefuseOthers) {
  SVFile* file = Open(WriteTone("f.wav", 4000));
  ASSERT_NE(file, nullptr);
  // Types into the form that the entry opens, then presses Return.
  auto fill = [](const QString& text) {
    QTimer::singleShot(0, [text] {
      QWidget* form = QApplication::activeModalWidget();
      ASSERT_NE(form, nullptr);
      auto* field = form->findChild<QLineEdit*>();
      ASSERT_NE(field, nullptr);
      EXPECT_EQ(field->accessibleName(), "DB");
      QTest::keyClicks(field, text);
      QTest::keyClick(field, Qt::Key_Return);
    });
  };
  fill("laut");
  AnswerNext("OK");
  window_->CommandAction(kSVCmdAmplify)->trigger();
  EXPECT_FALSE(file->IsModified()) << "a value the command cannot read runs nothing";
  fill("-6,0");
  window_->CommandAction(kSVCmdAmplify)->trigger();
  EXPECT_EQ(window_->CommandAction(kSVCmdUndo)->text(), "Rückgängig Verstärken");
}

TEST_F(MainWindowTest, CancelInTheProgressDialogLeavesTheDocumentAsItWas) {
  SVFile* file = Open(WriteTone("long.wav", 44100, 2));
  ASSERT_NE(file, nullptr);
  SVCommandArgs repeat;
  repeat.numbers = {3600};
  ASSERT_EQ(window_->RunCommandQuiet(kSVCmdRepeat, repeat).result, kLProcessSuccess);
  const LCutListAudio before = file->CutList();
  bool seen = false;
  QTimer click;
  QObject::connect(&click, &QTimer::timeout, [&] {
    for (QWidget* w : QApplication::topLevelWidgets()) {
      auto* dialog = qobject_cast<LProcessDialog*>(w);
      if (!dialog || !dialog->isVisible()) continue;
      auto* cancel = dialog->findChild<QPushButton*>();
      if (!cancel || !cancel->isEnabled()) continue;
      seen = true;
      EXPECT_EQ(cancel->text(), "Abbrechen");
      QTest::mouseClick(cancel, Qt::LeftButton);
    }
  });
  click.start(5);
  window_->CommandAction(kSVCmdReverse)->trigger();
  click.stop();
  EXPECT_TRUE(seen);
  EXPECT_EQ(file->CutList().GetLength(), before.GetLength());
  EXPECT_EQ(file->CutList().SegmentCount(), before.SegmentCount());
  EXPECT_EQ(window_->CommandAction(kSVCmdUndo)->text(), "Rückgängig Schleife");
  EXPECT_FALSE(window_->CommandAction(kSVCmdRedo)->isEnabled());
}

TEST_F(MainWindowTest, ClipboardOffersAiffAndOurTypeAndPastesFromOtherPrograms) {
  SVFile* file = Open(WriteTone("c.wav", 10000));
  ASSERT_NE(file, nullptr);
  Select(0, 4000);
  Key(Qt::Key_C, Qt::ControlModifier);
  const QMimeData* offered = QApplication::clipboard()->mimeData();
  ASSERT_NE(offered, nullptr);
  EXPECT_TRUE(offered->hasFormat("audio/aiff"));
  EXPECT_TRUE(offered->hasFormat("application/x-sonvale-internal"));
  const QByteArray aiff = offered->data("audio/aiff");  // rendered only now
  ASSERT_GT(aiff.size(), 8000);
  EXPECT_EQ(aiff.left(4), "FORM");
  EXPECT_EQ(aiff.mid(8, 4), "AIFF");

  Key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(file->CutList().GetLength(), 10000) << "the selection was replaced by itself";
  Select(0, 0);
  Key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(file->CutList().GetLength(), 14000);

  // What another program copies comes as AIFF bytes.
  auto* foreign = new QMimeData;
  foreign->setData("audio/aiff", aiff);
  QApplication::clipboard()->setMimeData(foreign);
  Select(0, 0);
  Key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(file->CutList().GetLength(), 18000);
  window_->PasteToNew();
  ASSERT_EQ(window_->Tabs()->count(), 2);
  EXPECT_EQ(Current()->CutList().GetLength(), 4000);
}

TEST_F(MainWindowTest, DroppedFilesOpenInTabs) {
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QString::fromStdString(WriteTone("d1.wav", 1000))),
                QUrl::fromLocalFile(QString::fromStdString(WriteTone("d2.wav", 2000)))});
  const QPoint at = window_->rect().center();
  QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window_.get(), &enter);
  ASSERT_TRUE(enter.isAccepted());
  QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window_.get(), &drop);
  ASSERT_TRUE(QTest::qWaitFor([this] { return window_->Tabs()->count() == 2; }));
  EXPECT_EQ(window_->Tabs()->tabText(1), "d2.wav");
  EXPECT_EQ(Current()->CutList().GetLength(), 2000);
}

TEST_F(MainWindowTest, ClosingAModifiedDocumentAsksToSaveAndOutsideChangesOfferAReload) {
  const std::string path = WriteTone("e.wav", 5000);
  SVFile* file = Open(path);
  ASSERT_NE(file, nullptr);
  Select(0, 1000);
  Key(Qt::Key_Delete);
  AnswerNext("Abbrechen");
  EXPECT_FALSE(window_->CloseCurrent());
  EXPECT_EQ(window_->Tabs()->count(), 1);
  AnswerNext("Speichern");
  EXPECT_TRUE(window_->CloseCurrent());
  EXPECT_EQ(window_->Tabs()->count(), 0);

  file = Open(path);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->CutList().GetLength(), 4000) << "saved before closing";
  Key(Qt::Key_A, Qt::ControlModifier);
  Key(Qt::Key_Delete);
  AnswerNext("Verwerfen");
  EXPECT_TRUE(window_->ConfirmQuit());

  // Another program writes the file: the window offers to load it again.
  WriteTone("e.wav", 3000);
  std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::seconds(5));
  AnswerNext("Neu laden");
  window_->CheckOutsideChanges();
  EXPECT_EQ(file->CutList().GetLength(), 3000);
  EXPECT_EQ(window_->Tabs()->tabText(0), "e.wav");
  Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(file->CutList().GetLength(), 0) << "the edit before the reload is one Undo away";
}

TEST_F(MainWindowTest, ScreenshotOptionWritesAPictureOfTheRequestedSize) {
  const std::string wave = WriteTone("s.wav", 8000, 2);
  const QString png = QString::fromStdString(temp_.File("s.png"));
  QProcess run;
  run.start(SONVALE_GUI_BINARY, {QString::fromStdString(wave), "--screenshot", png, "--size", "640x360", "--select",
                                 "2000f", "4000f", "--zoom", "20"});
  ASSERT_TRUE(run.waitForFinished(60000));
  EXPECT_EQ(run.exitCode(), 0) << run.readAllStandardError().toStdString();
  EXPECT_EQ(QImage(png).size(), QSize(640, 360));

  run.start(SONVALE_GUI_BINARY, {QString::fromStdString(wave), "--screenshot", png, "--size", "wide"});
  ASSERT_TRUE(run.waitForFinished(60000));
  EXPECT_EQ(run.exitCode(), 2);
  EXPECT_TRUE(QString::fromUtf8(run.readAllStandardError()).contains("BREITExHÖHE"));
}

}  // namespace
