// The history list with its jumps, paste into a new document, and reloading a
// file changed on disk without losing the edits made before.
#include <gtest/gtest.h>

#include <filesystem>

#include "app/document_commands.h"
#include "app/edit_commands.h"
#include "app/file.h"
#include "document_fixture.h"

namespace {

using DocumentCommandsTest = DocumentTest;

std::vector<std::string> Labels(const LArray<SVUndoHistoryEntry>& entries) {
  std::vector<std::string> labels;
  for (const SVUndoHistoryEntry& e : entries) labels.push_back(e.description.c_str());
  return labels;
}

TEST_F(DocumentCommandsTest, HistoryListsReachableStatesAndCountsTheStepsToEach) {
  SVFileGUI* window = Dialog().FileOpen(WriteStaircaseWave("a.wav", 1000, 1).c_str());
  ASSERT_NE(window, nullptr);
  SVFile& file = *window->File();
  for (const char* label : {"A", "B", "C"})
    ASSERT_EQ(SVEditCommands::Change(window, label, [](SVFile& f) { f.CutList().EfDelete(0, 100); }), 0);
  const std::vector<std::string> all = {"Datei laden", "A", "B", "C"};
  LArray<SVUndoHistoryEntry> history = SVDocumentCommands::UndoHistory(&file);
  ASSERT_EQ(Labels(history), all);
  EXPECT_TRUE(history.back().current);
  EXPECT_EQ(SVDocumentCommands::UndoHistoryStepsTo(&file, history.front().index), -3);

  for (int i = 0; i < 3; ++i) ASSERT_TRUE(file.Undo());
  EXPECT_EQ(file.CutList().GetLength(), 1000);
  history = SVDocumentCommands::UndoHistory(&file);
  EXPECT_EQ(Labels(history), all) << "the state kept for Redo is not a step of its own";
  EXPECT_TRUE(history.front().current);
  EXPECT_EQ(SVDocumentCommands::UndoHistoryStepsTo(&file, history.back().index), 3);
  EXPECT_EQ(SVDocumentCommands::UndoHistoryStepsTo(&file, history[2].index), 2);
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(file.Redo());
  EXPECT_EQ(file.CutList().GetLength(), 700);
  EXPECT_EQ(SVDocumentCommands::UndoHistoryStepsTo(&file, 99), 0) << "not an entry";
}

TEST_F(DocumentCommandsTest, PasteToNewTakesTheClipboardOrSaysWhyNot) {
  std::string message;
  EXPECT_EQ(SVDocumentCommands::PasteToNew(Dialog(), &message), nullptr);
  EXPECT_EQ(message, "Die Zwischenablage enthält kein Audio.");
  Dialog().Clipboard().Copy(StaircaseList(500, 2));
  SVFileGUI* window = SVDocumentCommands::PasteToNew(Dialog(), &message);
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->File()->CutList().GetLength(), 500);
  EXPECT_EQ(window->Title(), "Unbenannt");
  EXPECT_TRUE(window->File()->IsModified());
}

TEST_F(DocumentCommandsTest, ReloadIsAnEditThatUndoTakesBack) {
  const std::string path = WriteStaircaseWave("b.wav", 2000, 1);
  SVFileGUI* window = Dialog().FileOpen(path.c_str());
  ASSERT_NE(window, nullptr);
  SVFile& file = *window->File();
  ASSERT_EQ(SVEditCommands::Change(window, "A", [](SVFile& f) { f.CutList().EfDelete(0, 500); }), 0);
  file.AddBookmark("spät", 1400);
  ASSERT_EQ(WriteStaircaseWave("b.wav", 1200, 1), path);

  ASSERT_EQ(SVDocumentCommands::Reload(window), kLProcessSuccess);
  EXPECT_EQ(file.CutList().GetLength(), 1200);
  EXPECT_FALSE(file.IsModified()) << "the document equals its file";
  EXPECT_EQ(file.Bookmarks().size(), 0) << "a bookmark past the new end goes";
  EXPECT_FALSE(file.TestForFileModifications());
  ASSERT_TRUE(file.Undo());
  EXPECT_EQ(file.CutList().GetLength(), 1500) << "the edit before the reload is kept";
  EXPECT_TRUE(file.IsModified());

  std::filesystem::remove(path);
  EXPECT_EQ(SVDocumentCommands::Reload(window), kLProcessFailed);
  EXPECT_EQ(file.CutList().GetLength(), 1500);
}

}  // namespace
