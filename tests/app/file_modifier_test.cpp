// The modification protocol: start, commit, cancel and the roll-back of
// LFileModifier, single-channel editing, and what a commit does afterwards.
#include <gtest/gtest.h>

#include "app/app_settings.h"
#include "app/core_utils.h"
#include "app/undo_commands.h"
#include "app/file_modifier.h"
#include "base/disk_space.h"
#include "base/user_settings.h"
#include "edit_fixture.h"

namespace {

using FileModifierTest = EditTest;

// An edit that changes several things and then gives up.
void EditThatFailsHalfWay(SVFileGUI* window) {
  LFileModifier modifier(window);
  ASSERT_TRUE(modifier.Start("Effekt"));
  SVFile& file = *window->File();
  file.CutList().EfDelete(100, 400);
  file.OffsetBookmarks(100, -300);
  file.Selection() = SVSelection{0, 5, 0, 0, 0};
  file.CursorSet(1);
  file.AddBookmark("halb", 50);
  // The effect fails here; leaving the scope rolls back.
}

TEST_F(FileModifierTest, AFailedOrCancelledEditLeavesTheDocumentAndItsMenuAsBefore) {
  SVFileGUI* window = NewDocument(StaircaseList(2000, 2));
  SVFile& file = *window->File();
  LFileModifier first(window);
  ASSERT_TRUE(first.Start("Lesezeichen"));
  file.AddBookmark("a", 50);
  file.AddBookmark("b", 300);
  file.AddBookmark("c", 1500);
  ASSERT_TRUE(first.Commit());
  file.Selection() = SVSelection{200, 800, 0, 0, 0};
  file.CursorSet(600);
  const DocumentState before = StateOf(file);

  const SVUndoMenuState menuBefore = SVUndoMenuStateGet(&file);
  EditThatFailsHalfWay(window);
  EXPECT_EQ(StateOf(file), before);
  EXPECT_EQ(SVUndoMenuStateGet(&file), menuBefore) << "the edit before keeps its entry; nothing to redo";
  EXPECT_EQ(frontEnd_.notifications.back(), kSVNotifyModified);
  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  EXPECT_TRUE(file.Bookmarks().empty()) << "Undo still goes back past the bookmarks' edit";
  ASSERT_TRUE(SVUndoCommands::CmRedo(window));

  // With no entry before the failed edit's snapshot there is nothing to undo,
  // yet the roll-back still restores the state.
  SVFileGUI* bare = Dialog().Windows().FileWindowAdd(std::make_shared<SVFile>(StaircaseList(1000, 1)), "Roh", true);
  const DocumentState bareBefore = StateOf(*bare->File());
  EditThatFailsHalfWay(bare);
  EXPECT_EQ(StateOf(*bare->File()), bareBefore);
  EXPECT_FALSE(bare->File()->UndoEntry(bare->File()->UndoIndexCurrent()).IsUsed());
  Dialog().Windows().CurrentFileWindowSet(window);

  LFileModifier committed(window);
  ASSERT_TRUE(committed.Start("Löschen"));
  file.CutList().EfDelete(0, 10);
  ASSERT_TRUE(committed.Commit());
  const DocumentState edited = StateOf(file);
  const SVUndoMenuState menu = SVUndoMenuStateGet(&file);
  ASSERT_TRUE(SVCoreUtils::StartModifyFile(window, "Normalisieren"));
  SVCoreUtils::CancelModifyFile(window);
  EXPECT_EQ(StateOf(file), edited);
  EXPECT_EQ(SVUndoMenuStateGet(&file), menu);
  ASSERT_TRUE(SVUndoCommands::CmUndo(window));
  EXPECT_EQ(file.CutList().GetLength(), 2000);
}

TEST_F(FileModifierTest, ACommitRefreshesPlaysWhenTheSettingAsksAndWarnsOfAShortDisk) {
  SVFileGUI* window = NewDocument(StaircaseList(1000, 1));
  auto commitOne = [&] {
    LFileModifier modifier(window);
    ASSERT_TRUE(modifier.Start("Löschen"));
    window->File()->CutList().EfDelete(0, 10);
    EXPECT_TRUE(modifier.Commit());
  };
  const int refreshes = frontEnd_.refreshes;
  commitOne();
  EXPECT_GT(frontEnd_.refreshes, refreshes);
  EXPECT_EQ(frontEnd_.playbacks, 0);
  ASSERT_TRUE(LUserSettings::Instance().Set(kLSettingsDomain, kSVSettingsSection, kSVSettingAutoPlayback, "1"));
  commitOne();
  EXPECT_EQ(frontEnd_.playbacks, 1);
  ASSERT_TRUE(LUserSettings::Instance().Set(kLSettingsDomain, kSVSettingsSection, kSVSettingAutoPlayback, "0"));
  commitOne();
  EXPECT_EQ(frontEnd_.playbacks, 1);
  EXPECT_TRUE(frontEnd_.windowMessages.empty());

  window->File()->PathSet("/Musik/Aufnahme.wav");
  LDiskFreeBytesOverride([](const char*) { return 1024LL * 1024; });
  commitOne();
  ASSERT_EQ(frontEnd_.windowMessages.size(), 1u);
  EXPECT_NE(frontEnd_.windowMessages[0].find("Aktion der Datei \"/Musik/Aufnahme.wav\" kann aufgrund geringem"),
            std::string::npos);
  EXPECT_EQ(window->File()->CutList().GetLength(), 960) << "the edit is kept";
}

class ChannelEditTest : public FileModifierTest {
protected:
  void SetUp() override {
    FileModifierTest::SetUp();
    window_ = NewDocument(StaircaseList(1000, 2));
    window_->File()->ChannelEditModeSet(kSVChannelEditSingle);
    window_->ChannelEditSwitchSet(true, 1);
    original_ = DocReadAll(window_->File()->CutList());
  }
  SVFileGUI* window_ = nullptr;
  std::vector<float> original_;
};

TEST_F(ChannelEditTest, AnEditOfTheSameLengthIsMergedWithoutAQuestion) {
  SVFile& file = *window_->File();
  LFileModifier modifier(window_);
  ASSERT_TRUE(modifier.Start("Stille"));
  ASSERT_EQ(file.CutList().GetChannels(), 1) << "the edit sees the chosen channel alone";
  EXPECT_EQ(DocReadAll(file.CutList()), DocChannel(original_, 2, 1));
  file.CutList().EfDelete(10, 20);
  file.CutList().EfInsertSilence(10, 10);
  ASSERT_TRUE(modifier.Commit());
  EXPECT_TRUE(frontEnd_.questions.empty());

  ASSERT_EQ(file.CutList().GetChannels(), 2);
  const std::vector<float> merged = DocReadAll(file.CutList());
  EXPECT_EQ(DocChannel(merged, 2, 0), DocChannel(original_, 2, 0)) << "the other channel is untouched";
  std::vector<float> expected = DocChannel(original_, 2, 1);
  std::fill(expected.begin() + 10, expected.begin() + 20, 0.0f);
  EXPECT_EQ(DocChannel(merged, 2, 1), expected);
  EXPECT_FALSE(window_->HasChannelEditLists());
  EXPECT_EQ(frontEnd_.processTitles.back(), "Kanal wird ersetzt...");

  ASSERT_TRUE(SVUndoCommands::CmUndo(window_));
  EXPECT_EQ(DocReadAll(file.CutList()), original_);
}

TEST_F(ChannelEditTest, AShorterOrLongerChannelIsPutToTheUserAndMergedWhenContinued) {
  SVFile& file = *window_->File();
  {
    LFileModifier modifier(window_);
    ASSERT_TRUE(modifier.Start("Löschen"));
    file.CutList().EfDelete(0, 441);  // 10 ms at 44100 Hz
    frontEnd_.answer = 0;
    ASSERT_TRUE(modifier.Commit());
  }
  ASSERT_EQ(frontEnd_.questions.size(), 1u);
  const RecordingFrontEnd::Question& q = frontEnd_.questions[0];
  EXPECT_EQ(q.title, "Kanallängenänderungen");
  EXPECT_EQ(q.buttons, (std::vector<std::string>{"Fortfahren", "Abbrechen"}));
  EXPECT_EQ(q.text,
            "Dieser Vorgang wird die Audiodaten in diesem Kanal um 10 Millisekunden verkleinert. Dies wirkt sich auf "
            "die Ausrichtung mit den anderen Kanälen in der Datei aus. Möchten Sie fortfahren?");
  std::vector<float> merged = DocReadAll(file.CutList());
  ASSERT_EQ(file.CutList().GetLength(), 1000) << "the file keeps its length";
  EXPECT_EQ(DocChannel(merged, 2, 0), DocChannel(original_, 2, 0));
  std::vector<float> channel = DocChannel(merged, 2, 1);
  EXPECT_EQ(channel[0], DocStaircaseValue(441, 1));
  EXPECT_EQ(channel[558], DocStaircaseValue(999, 1));
  EXPECT_EQ(channel[559], 0.0f) << "the shortened channel ends in silence";

  LFileModifier modifier(window_);
  ASSERT_TRUE(modifier.Start("Stille einfügen"));
  file.CutList().EfInsertSilence(0, 882);
  ASSERT_TRUE(modifier.Commit());
  ASSERT_EQ(frontEnd_.questions.size(), 2u);
  EXPECT_NE(frontEnd_.questions[1].text.find("erweitert die Audiodaten in diesem Kanal um 20 Millisekunden"),
            std::string::npos);
  EXPECT_EQ(file.CutList().GetLength(), 1882) << "a longer channel lengthens the file";
  merged = DocReadAll(file.CutList());
  EXPECT_EQ(DocChannel(merged, 2, 0)[999], DocStaircaseValue(999, 0));
  EXPECT_EQ(DocChannel(merged, 2, 0)[1000], 0.0f);
  EXPECT_EQ(DocChannel(merged, 2, 1)[882], DocStaircaseValue(441, 1));
}

TEST_F(ChannelEditTest, DecliningOrCancellingTheMergeChangesNothing) {
  SVFile& file = *window_->File();
  {
    LFileModifier modifier(window_);
    ASSERT_TRUE(modifier.Start("Löschen"));
    file.CutList().EfDelete(0, 100);
    frontEnd_.answer = 1;
    EXPECT_FALSE(modifier.Commit());
  }
  EXPECT_EQ(file.CutList().GetChannels(), 2);
  EXPECT_EQ(DocReadAll(file.CutList()), original_);
  EXPECT_FALSE(window_->HasChannelEditLists());
  {
    LFileModifier modifier(window_);
    ASSERT_TRUE(modifier.Start("Stille"));
    file.CutList().EfDelete(0, 10);
    file.CutList().EfInsertSilence(0, 10);
    frontEnd_.cancelAfterChecks = 0;
    EXPECT_FALSE(modifier.Commit());
  }
  EXPECT_EQ(DocReadAll(file.CutList()), original_);

  const SVUndoMenuState menu = SVUndoMenuStateGet(&file);
  EXPECT_FALSE(SVCoreUtils::StartModifyFile(window_, "Stille"));
  EXPECT_EQ(DocReadAll(file.CutList()), original_);
  EXPECT_EQ(SVUndoMenuStateGet(&file), menu);
}

TEST_F(ChannelEditTest, WithTheSwitchOffTheWholeFileIsEdited) {
  window_->ChannelEditSwitchSet(false, 1);
  SVFile& file = *window_->File();
  LFileModifier modifier(window_);
  ASSERT_TRUE(modifier.Start("Löschen"));
  EXPECT_EQ(file.CutList().GetChannels(), 2);
  file.CutList().EfDelete(0, 100);
  ASSERT_TRUE(modifier.Commit());
  EXPECT_TRUE(frontEnd_.questions.empty());
  EXPECT_EQ(file.CutList().GetLength(), 900);
}

}  // namespace
