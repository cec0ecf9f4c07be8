// The undo ring of a document: snapshots, Undo, Redo, the menu entries, the
// base entry, undo to last save, and what snapshots cost in the cache.
#include <gtest/gtest.h>

#include "app/core_utils.h"
#include "app/undo_commands.h"
#include "app/file.h"
#include "app/file_audio.h"
#include "app/file_modifier.h"
#include "app/mark_commands.h"
#include "edit_fixture.h"
#include "engine/sound_cache.h"

namespace {

class FileUndoTest : public EditTest {
protected:
  // One committed edit: deletes [from, to).
  static void DeleteEdit(SVFileGUI* window, const char* name, long long from, long long to) {
    LFileModifier modifier(window);
    ASSERT_TRUE(modifier.Start(name));
    window->File()->CutList().EfDelete(from, to);
    ASSERT_TRUE(modifier.Commit());
  }
  // One committed edit: inserts frames of silence at 0.
  static void SilenceEdit(SVFileGUI* window, long long frames) {
    LFileModifier modifier(window);
    ASSERT_TRUE(modifier.Start("Stille einfügen"));
    window->File()->CutList().EfInsertSilence(0, frames);
    ASSERT_TRUE(modifier.Commit());
  }
};

TEST_F(FileUndoTest, LoadEditUndoGivesTheLoadedStateOffersRedoAndANewEditCutsRedoOff) {
  SVFileGUI* window = Dialog().FileOpen(WriteStaircaseWave("take.wav", 1000, 2).c_str());
  ASSERT_NE(window, nullptr) << frontEnd_.lastError;
  SVFile& file = *window->File();
  const std::vector<float> loaded = DocReadAll(file.CutList());
  EXPECT_FALSE(file.IsModified());
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "Datei laden");

  SVUndoMenuState menu = Dialog().UpdateUndoMenuItem();
  EXPECT_FALSE(menu.undo.enabled) << "the base entry itself can never be undone";
  EXPECT_FALSE(menu.redo.enabled);

  DeleteEdit(window, "Löschen", 100, 200);
  menu = Dialog().UpdateUndoMenuItem();
  EXPECT_TRUE(menu.undo.enabled);
  EXPECT_EQ(menu.undo.label, "Rückgängig Löschen");
  EXPECT_EQ(menu.undo.command, kSVCmdUndo);
  EXPECT_EQ(menu.undo.key, kSVKeyUndo);
  EXPECT_FALSE(menu.redo.enabled);
  EXPECT_EQ(menu.redo.label, "Wiederholen ");
  EXPECT_EQ(frontEnd_.menu, menu) << "the front end is shown every change of the ring";
  EXPECT_TRUE(file.IsModified());
  EXPECT_EQ(file.CutList().GetLength(), 900);

  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  EXPECT_EQ(DocReadAll(file.CutList()), loaded);
  EXPECT_FALSE(file.IsModified());
  EXPECT_EQ(frontEnd_.notifications.back(), kSVNotifyClean);
  menu = Dialog().UpdateUndoMenuItem();
  EXPECT_FALSE(menu.undo.enabled);
  EXPECT_EQ(menu.undo.label, "Rückgängig ");
  EXPECT_TRUE(menu.redo.enabled);
  EXPECT_EQ(menu.redo.label, "Wiederholen Löschen");
  EXPECT_EQ(menu.redo.command, kSVCmdRedo);
  EXPECT_EQ(menu.redo.key, kSVKeyRedo);

  EXPECT_FALSE(SVUndoCommands::CmUndo(window)) << "nothing before the base";
  EXPECT_EQ(DocReadAll(file.CutList()), loaded);

  ASSERT_TRUE(SVUndoCommands::CmUndo(window, kSVCmdRedo));
  EXPECT_EQ(file.CutList().GetLength(), 900);
  EXPECT_TRUE(file.IsModified());
  EXPECT_EQ(frontEnd_.notifications.back(), kSVNotifyModified);
  menu = Dialog().UpdateUndoMenuItem();
  EXPECT_TRUE(menu.undo.enabled);
  EXPECT_EQ(menu.undo.label, "Rückgängig Löschen");
  EXPECT_FALSE(menu.redo.enabled);
  EXPECT_FALSE(SVUndoCommands::CmRedo(window)) << "nothing left to redo";

  // A new edit after Undo cuts Redo off.
  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  SilenceEdit(window, 5);
  menu = Dialog().UpdateUndoMenuItem();
  EXPECT_FALSE(menu.redo.enabled);
  EXPECT_EQ(menu.undo.label, "Rückgängig Stille einfügen");
  EXPECT_FALSE(SVUndoCommands::CmRedo(window));
  EXPECT_EQ(file.CutList().GetLength(), 1005);
}

TEST_F(FileUndoTest, AfterFortyEditsUndoStopsWhereTheRingEnds) {
  SVFileGUI* window = NewDocument(StaircaseList(1000, 1));
  SVFile& file = *window->File();
  // Edit i makes the list 1000 + i frames long, so the length names the state.
  for (int i = 1; i <= 40; ++i) SilenceEdit(window, 1);
  ASSERT_EQ(file.CutList().GetLength(), 1040);

  int undos = 0;
  while (SVUndoCommands::CmUndo(window)) ++undos;
  // Each snapshot frees the two entries ahead of it, and the first Undo keeps
  // the present state for Redo, so the ring holds 28 steps back, not 40.
  EXPECT_EQ(undos, 28);
  EXPECT_EQ(file.CutList().GetLength(), 1040 - 28);
  EXPECT_FALSE(Dialog().UpdateUndoMenuItem().undo.enabled);

  int redos = 0;
  while (SVUndoCommands::CmRedo(window)) ++redos;
  EXPECT_EQ(redos, 28);
  EXPECT_EQ(file.CutList().GetLength(), 1040);
}

TEST_F(FileUndoTest, UndoToLastSaveRestoresTheSavedStateAndIsFinal) {
  SVFileGUI* window = Dialog().FileOpen(WriteStaircaseWave("take.wav", 1000, 1).c_str());
  ASSERT_NE(window, nullptr) << frontEnd_.lastError;
  SVFile& file = *window->File();
  DeleteEdit(window, "Löschen", 0, 100);
  // What a save does to the document.
  file.SetFileClean();
  const std::vector<float> saved = DocReadAll(file.CutList());
  EXPECT_FALSE(file.IsUndoLastSaveAvailable()) << "the document is where it was saved";

  DeleteEdit(window, "Löschen", 0, 300);
  SilenceEdit(window, 50);
  ASSERT_TRUE(file.IsUndoLastSaveAvailable());
  ASSERT_TRUE(SVUndoCommands::CmUndoSave(window));
  EXPECT_EQ(DocReadAll(file.CutList()), saved);
  EXPECT_FALSE(file.IsModified());
  EXPECT_EQ(frontEnd_.notifications.back(), kSVNotifyClean);
  const SVUndoMenuState menu = Dialog().UpdateUndoMenuItem();
  EXPECT_FALSE(menu.undo.enabled);
  EXPECT_FALSE(menu.redo.enabled);
  EXPECT_FALSE(file.IsUndoLastSaveAvailable());
  EXPECT_FALSE(SVUndoCommands::CmUndoSave(window));
  EXPECT_EQ(DocReadAll(file.CutList()), saved);
}

TEST_F(FileUndoTest, UndoToLastSaveRunsOnlyToAnEntryThatStillHoldsTheSavedState) {
  SVFileGUI* window = NewDocument(StaircaseList(100, 1));
  SVFile& file = *window->File();
  SilenceEdit(window, 1);
  EXPECT_FALSE(SVUndoCommands::CmUndoSave(window)) << "a document that was never clean";
  EXPECT_EQ(file.CutList().GetLength(), 101);
  EXPECT_TRUE(Dialog().UpdateUndoMenuItem().undo.enabled);

  while (file.UndoIndexCurrent() != 30) SilenceEdit(window, 1);
  file.SetFileClean();
  EXPECT_EQ(file.UndoIndexLastSave(), 31u);
  EXPECT_FALSE(file.IsUndoLastSaveAvailable());

  SilenceEdit(window, 1);
  ASSERT_EQ(file.UndoIndexCurrent(), 31u);
  file.SetFileClean();
  // The save wrote 0, which the unwrapped test (31 + 1) does not match; entry 0 is free.
  EXPECT_EQ(file.UndoIndexLastSave(), 0u);
  const long long saved = file.CutList().GetLength();
  EXPECT_FALSE(SVUndoCommands::CmUndoSave(window));
  EXPECT_EQ(file.CutList().GetLength(), saved);

  SilenceEdit(window, 1);
  ASSERT_TRUE(file.IsUndoLastSaveAvailable());
  // Once the ring has gone round, the saved state is overwritten.
  for (int i = 0; i < 32; ++i) SilenceEdit(window, 1);
  EXPECT_FALSE(SVUndoCommands::CmUndoSave(window));
  EXPECT_EQ(file.CutList().GetLength(), saved + 33);
  EXPECT_TRUE(Dialog().UpdateUndoMenuItem().undo.enabled);
}

TEST_F(FileUndoTest, ASnapshotCollapsesAnEmptySelectionOrEqualBandToTheCursor) {
  SVFileGUI* window = NewDocument(StaircaseList(1000, 1));
  SVFile& file = *window->File();
  file.CursorSet(300);
  file.Selection() = SVSelection{100, 200, 500, 500, 1};
  file.SaveForUndo("Band");
  const SVSelection& band = file.UndoEntry(file.UndoIndexCurrent()).selection;
  EXPECT_EQ(band.start, 300);
  EXPECT_EQ(band.end, 300);
  EXPECT_EQ(file.Selection().start, 100) << "the live selection stays";

  file.Selection() = SVSelection{150, 150, 0, 0, 0};
  file.SaveForUndo("Leer");
  EXPECT_EQ(file.UndoEntry(file.UndoIndexCurrent()).selection.start, 300);

  file.Selection() = SVSelection{100, 200, 500, 900, 1};
  file.SaveForUndo("Rechteck");
  const SVSelection& kept = file.UndoEntry(file.UndoIndexCurrent()).selection;
  EXPECT_EQ(kept.start, 100);
  EXPECT_EQ(kept.end, 200);
  EXPECT_EQ(kept.highFrequency, 900);
}

TEST_F(FileUndoTest, UndoBringsBackSelectionCursorAndViewAndTakesBackMarksOneStepAtATime) {
  SVFileGUI* window = NewDocument(StaircaseList(1000, 1));
  SVFile& file = *window->File();
  file.Selection() = SVSelection{10, 20, 0, 0, 0};
  file.CursorSet(15);
  file.View() = SVViewState{7, 8};

  LFileModifier modifier(window);
  ASSERT_TRUE(modifier.Start("Alles ändern"));
  file.Selection() = SVSelection{30, 40, 0, 0, 0};
  file.CursorSet(35);
  file.View() = SVViewState{1, 2};
  file.CutList().EfDelete(0, 100);
  ASSERT_TRUE(modifier.Commit());
  ASSERT_TRUE(SVMarkCommands::BookmarkAdd(window, "Marke", 500));
  ASSERT_TRUE(SVMarkCommands::BookmarkMove(window, "Marke", 20));
  EXPECT_FALSE(SVMarkCommands::BookmarkMove(window, "fehlt", 20));
  EXPECT_EQ(Dialog().UpdateUndoMenuItem().undo.label, "Rückgängig Lesezeichen verschieben");

  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  ASSERT_EQ(file.Bookmarks().size(), 1u);
  EXPECT_EQ(file.Bookmarks().front().position, 500);
  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  EXPECT_TRUE(file.Bookmarks().empty());
  EXPECT_EQ(file.CutList().GetLength(), 900) << "the edit before the bookmark stays";
  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  EXPECT_EQ(file.Selection().start, 10);
  EXPECT_EQ(file.Selection().end, 20);
  EXPECT_EQ(file.Cursor(), 15);
  EXPECT_EQ(file.View(), (SVViewState{7, 8}));
  ASSERT_TRUE(SVUndoCommands::CmRedo(window));
  EXPECT_EQ(file.Cursor(), 35);
  ASSERT_TRUE(SVUndoCommands::CmRedo(window));
  ASSERT_TRUE(SVUndoCommands::CmRedo(window));
  EXPECT_EQ(file.Bookmarks().front().position, 20);
  ASSERT_TRUE(SVMarkCommands::BookmarkDelete(window, "Marke"));
  EXPECT_TRUE(file.Bookmarks().empty());
  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  EXPECT_EQ(file.Bookmarks().size(), 1u);
}

TEST_F(FileUndoTest, UndoOfARegionStepInOneDocumentKeepsTheRegionsOfAnother) {
  SVFileGUI* first = NewDocument(StaircaseList(1000, 1));
  SVFileGUI* second = NewDocument(StaircaseList(2000, 1));
  const SVRegionList& regions = Dialog().Windows().Project().Regions();
  auto names = [&regions] {
    std::string out;
    for (const SVRegion& r : regions) out += std::string(r.name) + "@" + std::to_string(r.start) + " ";
    return out;
  };
  ASSERT_TRUE(SVMarkCommands::RegionAdd(first, "Strophe", 0, 100));
  SilenceEdit(first, 10);
  ASSERT_TRUE(SVMarkCommands::RegionAdd(second, "Refrain", 500, 900));
  ASSERT_TRUE(SVMarkCommands::RegionMove(first, "Strophe", 50, 150));
  ASSERT_TRUE(SVMarkCommands::RegionDelete(second, "Refrain"));
  EXPECT_EQ(names(), "Strophe@50 ");

  ASSERT_TRUE(SVUndoCommands::CmUndo(first));
  EXPECT_EQ(names(), "Strophe@0 ") << "the move goes back, the other document's delete stays";
  ASSERT_TRUE(SVUndoCommands::CmUndo(first));
  ASSERT_TRUE(SVUndoCommands::CmUndo(second));
  EXPECT_EQ(names(), "Strophe@0 Refrain@500 ");
  ASSERT_TRUE(SVUndoCommands::CmUndo(first));
  EXPECT_EQ(names(), "Refrain@500 ");
  ASSERT_TRUE(SVUndoCommands::CmRedo(first));
  EXPECT_EQ(names(), "Strophe@0 Refrain@500 ");
  ASSERT_TRUE(SVUndoCommands::CmRedo(first));
  ASSERT_TRUE(SVUndoCommands::CmRedo(first));
  EXPECT_EQ(names(), "Strophe@50 Refrain@500 ");
  EXPECT_EQ(regions.front().cutList.GetLength(), 100);
}

TEST_F(FileUndoTest, SnapshotsShareTheAudioAndTheDocumentReleasesEveryItem) {
  SVFileGUI* window = NewDocument(StaircaseList(10000, 2));
  SVFile& file = *window->File();
  const unsigned short item = file.CutList().Segments().front().ItemNumber();
  const int filesBefore = CacheAudioFiles();
  ASSERT_EQ(filesBefore, 1);

  for (int i = 0; i < 32; ++i) DeleteEdit(window, "Löschen", 10, 20);
  EXPECT_EQ(CacheAudioFiles(), filesBefore) << "snapshots copy segments, never audio";
  EXPECT_GT(LSoundCache::Instance().RefCountGet(item), 32);

  Dialog().Windows().FileWindowClose(window);
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(item), 0);
  EXPECT_EQ(LSoundCache::Instance().CountedItemCount(), 0);
  EXPECT_EQ(CacheAudioFiles(), 0) << "an item that is no copy of a file goes with its last reference";
}

TEST_F(FileUndoTest, SetFileCleanOfTheAudioDocumentLeavesTheRing) {
  SVFileAudio audio(StaircaseList(100, 1));
  audio.SaveForUndo("Eins");
  audio.SaveForUndo("Zwei");
  audio.SetFileClean();
  EXPECT_FALSE(audio.IsModified());
  EXPECT_EQ(audio.UndoIndexLastSave(), kSVUndoIndexUnknown);
  EXPECT_TRUE(audio.UndoEntry(audio.UndoIndexCurrent()).modified);

  SVFile& asFile = audio;
  asFile.SetFileClean();
  EXPECT_EQ(audio.UndoIndexLastSave(), kSVUndoIndexUnknown) << "the audio document's own SetFileClean runs";
}

}  // namespace
