// The edit commands: each runs its object under the modification protocol in
// a job of the front end, commits under the object's label, and is undone
// exactly; cancelled or refused edits leave no trace.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "app/core_utils.h"
#include "app/undo_commands.h"
#include "app/edit_commands.h"
#include "app/ef_auto_trim.h"
#include "app/ef_gain.h"
#include "app/ef_normalize.h"
#include "app/ef_reverse.h"
#include "app/file.h"
#include "edit_fixture.h"
#include "engine/sound_cache.h"

namespace {

using EditCommandsTest = EditTest;

const char* LastLabel(const SVFile& file) { return file.UndoEntry(file.UndoIndexCurrent()).description; }

TEST_F(EditCommandsTest, AClipOfTheSameFormatGoesInWithoutAudioAndAnotherFormatIsConverted) {
  SVFileGUI* window = NewDocument(StaircaseList(4000, 2));
  SVFile& file = *window->File();
  const std::vector<float> before = DocReadAll(file.CutList());
  const LCutListAudio clip = DocListOf(std::vector<float>(600, -1.0f), 2);
  const int files = CacheAudioFiles();

  // Nothing selected: at the cursor, and the selection then covers the clip.
  file.CursorSet(1000);
  ASSERT_EQ(SVEditCommands::InsertClip(window, clip), 0);
  EXPECT_EQ(CacheAudioFiles(), files);
  EXPECT_EQ(file.Selection().start, 1000);
  EXPECT_EQ(file.Selection().end, 1300);
  std::vector<float> expected = Frames(before, 2, 0, 1000);
  expected.insert(expected.end(), 600, -1.0f);
  const std::vector<float> tail = Frames(before, 2, 1000, 4000);
  expected.insert(expected.end(), tail.begin(), tail.end());
  EXPECT_EQ(DocReadAll(file.CutList()), expected);

  // A selection is replaced (its band does not matter to an insert).
  file.Selection() = SVSelection{0, 1300, 100, 200, 1};
  ASSERT_EQ(SVEditCommands::InsertClip(window, clip), 0);
  EXPECT_EQ(file.CutList().GetLength(), 3300);
  EXPECT_EQ(Frames(DocReadAll(file.CutList()), 2, 300, 3300), tail);
  EXPECT_EQ(CacheAudioFiles(), files);

  // A clip of another format is converted.
  const LCutListAudio mono = StaircaseList(500, 1);
  file.Selection() = SVSelection{};
  file.CursorSet(3300);
  ASSERT_EQ(SVEditCommands::InsertClip(window, mono), 0);
  ASSERT_EQ(file.CutList().GetChannels(), 2);
  const std::vector<float> after = DocReadAll(file.CutList());
  for (long long f = 0; f < 500; ++f) {
    ASSERT_EQ(after[static_cast<std::size_t>((3300 + f) * 2)], DocStaircaseValue(f, 0));
    ASSERT_EQ(after[static_cast<std::size_t>((3300 + f) * 2 + 1)], DocStaircaseValue(f, 0));
  }

  // An empty document takes the clip's format.
  SVFileGUI* empty = NewDocument(LCutListAudio());
  const LCutListAudio stereo = StaircaseList(300, 2, 22050);
  ASSERT_EQ(SVEditCommands::InsertClip(empty, stereo), 0);
  EXPECT_EQ(empty->File()->CutList().GetSampleRate(), 22050u);
  EXPECT_EQ(empty->File()->CutList().GetChannels(), 2);
  EXPECT_EQ(DocReadAll(empty->File()->CutList()), DocReadAll(stereo));
}

TEST_F(EditCommandsTest, SilenceAndFilesGoInAtTheCursorAndBookmarksFollow) {
  SVFileGUI* window = NewDocument(StaircaseList(2000, 2));
  SVFile& file = *window->File();
  file.AddBookmark("vorher", 499);
  file.AddBookmark("danach", 500);
  file.CursorSet(500);
  const int files = CacheAudioFiles();
  ASSERT_EQ(SVEditCommands::InsertSilence(window, 250), 0);
  EXPECT_EQ(CacheAudioFiles(), files);
  EXPECT_EQ(file.Bookmarks().front().position, 499);
  EXPECT_EQ(file.Bookmarks().back().position, 750);
  const std::vector<float> after = DocReadAll(file.CutList());
  EXPECT_EQ(Frames(after, 2, 500, 750), std::vector<float>(500, 0.0f));
  EXPECT_EQ(after[750 * 2], DocStaircaseValue(500, 0));

  const std::string wave = WriteStaircaseWave("datei.wav", 100, 2);
  file.Selection() = SVSelection{};
  file.CursorSet(0);
  ASSERT_EQ(SVEditCommands::InsertFile(window, wave.c_str()), 0);
  const std::vector<float> withFile = DocReadAll(file.CutList());
  for (long long f = 0; f < 100; ++f)
    ASSERT_EQ(withFile[static_cast<std::size_t>(f * 2 + 1)], DocStaircaseValue(f, 1) / 65536.0f);
  EXPECT_EQ(file.Bookmarks().back().position, 850);

  EXPECT_NE(SVEditCommands::InsertFile(window, temp_.File("fehlt.wav").c_str()), 0);
  EXPECT_STREQ(LastLabel(file), "Datei einfügen");
}

TEST_F(EditCommandsTest, BookmarksFollowTheFramesATrimRemovedAtBothEnds) {
  // 1000 frames of silence, 2000 of sound, 1000 of silence.
  std::vector<float> samples(4000, 0.0f);
  std::fill(samples.begin() + 1000, samples.begin() + 3000, 0.5f);
  SVFileGUI* window = NewDocument(DocListOf(samples, 1));
  SVFile& file = *window->File();
  for (long long at : {500, 1500, 2999, 3500}) file.AddBookmark(std::to_string(at).c_str(), at);
  SVEfAutoTrim trim(file.CutList(), file.Selection(), true);
  ASSERT_EQ(SVEditCommands::Run(window, trim, SVEditScope::kWhole), 0);
  ASSERT_EQ(file.CutList().GetLength(), 2000);
  std::vector<long long> positions;
  for (const LSVBookmark& b : file.Bookmarks()) positions.push_back(b.position);
  EXPECT_EQ(positions, (std::vector<long long>{500, 1999})) << "those in the silence went, the rest moved with the sound";
}

TEST_F(EditCommandsTest, ConvertingChannelsChangesTheWholeDocumentsFormat) {
  SVFileGUI* window = NewDocument(StaircaseList(3000, 2));
  SVFile& file = *window->File();
  file.Selection() = SVSelection{100, 200, 0, 0, 0};
  ASSERT_EQ(SVEditCommands::ConvertChannels(window, 1), 0);
  ASSERT_EQ(file.CutList().GetChannels(), 1);
  const std::vector<float> mono = DocReadAll(file.CutList());
  ASSERT_EQ(mono.size(), 3000u);
  for (long long f = 0; f < 3000; ++f) ASSERT_EQ(mono[static_cast<std::size_t>(f)], static_cast<float>(f) + 0.125f);
  EXPECT_EQ(file.Selection().start, 0);
  EXPECT_EQ(file.Selection().end, 3000);

  ASSERT_EQ(SVEditCommands::ConvertChannels(window, 3), 0);
  ASSERT_EQ(file.CutList().GetChannels(), 3);
  const std::vector<float> three = DocReadAll(file.CutList());
  EXPECT_EQ(DocChannel(three, 3, 2), mono);
}

TEST_F(EditCommandsTest, CancellingAnyJobOfAnEditLeavesTheDocumentAndTheCacheAsTheyWere) {
  // A band edit (three renders), a measuring source effect and a cut-list process.
  struct Sweep {
    const char* name;
    std::function<std::unique_ptr<SVEfCutListProcess>(SVFile&)> make;
    SVSelection selection;
    long minimumChecks;
  };
  const std::vector<Sweep> sweeps = {
      {"Band", [](SVFile& f) { return std::make_unique<SVEfGain>(f.CutList(), f.Selection(), 6.0); },
       SVSelection{4000, 20000, 1000, 2000, 1}, 6},
      {"Normalisieren", [](SVFile& f) { return std::make_unique<SVEfNormalize>(f.CutList(), f.Selection(), -3.0); },
       SVSelection{1000, 20000, 0, 0, 0}, 4},
      {"Umkehren", [](SVFile& f) { return std::make_unique<SVEfReverse>(f.CutList(), f.Selection()); },
       SVSelection{100, 23000, 0, 0, 0}, 2},
  };
  for (const Sweep& sweep : sweeps) {
    SCOPED_TRACE(sweep.name);
    SVFileGUI* window = NewDocument(DocListOf(Tones({{600, 0.3}, {1500, 0.3}}, 24000, 8000), 1, 8000));
    SVFile& file = *window->File();
    file.Selection() = sweep.selection;
    file.SetFileClean();  // a cancel must not leave it marked modified
    const DocumentState before = StateOf(file);
    const SVUndoMenuState menu = SVUndoMenuStateGet(&file);
    const unsigned long index = file.UndoIndexCurrent();
    const int counted = LSoundCache::Instance().CountedItemCount();
    const int files = CacheAudioFiles();
    int result = 1;
    long checks = 0;
    for (; checks < 200 && result != 0; ++checks) {
      frontEnd_.cancelAfterChecks = checks;
      const std::unique_ptr<SVEfCutListProcess> edit = sweep.make(file);
      result = SVEditCommands::Run(window, *edit);
      if (result == 0) break;
      SCOPED_TRACE(checks);
      EXPECT_EQ(result, 1);
      EXPECT_EQ(StateOf(file), before);
      EXPECT_EQ(file.UndoIndexCurrent(), index);
      EXPECT_EQ(SVUndoMenuStateGet(&file), menu);
      EXPECT_EQ(LSoundCache::Instance().CountedItemCount(), counted);
      EXPECT_EQ(CacheAudioFiles(), files);
      EXPECT_EQ(frontEnd_.notifications.back(), kSVNotifyClean) << "the window is told it is clean again";
    }
    ASSERT_EQ(result, 0);
    EXPECT_GT(checks, sweep.minimumChecks) << "the job asks between the blocks of every render";
    EXPECT_EQ(CacheAudioFiles(), files + 1);
    frontEnd_.cancelAfterChecks = -1;
    ASSERT_TRUE(SVUndoCommands::CmUndo(window));
    EXPECT_EQ(StateOf(file), before);
  }
}

TEST_F(EditCommandsTest, TheJobOnlyRendersAndTheSpliceAndBookmarksComeAfterIt) {
  SVFileGUI* window = NewDocument(StaircaseList(3000, 1));
  SVFile& file = *window->File();
  file.AddBookmark("b", 2500);
  file.Selection() = SVSelection{1000, 2000, 0, 0, 0};
  const std::vector<SegmentShape> before = ShapeOf(file.CutList());
  std::vector<SegmentShape> seenAfterJob;
  long long bookmarkAfterJob = -1;
  frontEnd_.afterJob = [&] {
    seenAfterJob = ShapeOf(file.CutList());
    bookmarkAfterJob = file.Bookmarks().front().position;
  };
  LambdaProcess half(file.CutList(), file.Selection(), [](LProcessInterface&, LCutListAudio& piece) {
    piece.EfDelete(0, piece.GetLength() / 2);
    return 0;
  });
  ASSERT_EQ(SVEditCommands::Run(window, half), 0);
  frontEnd_.afterJob = nullptr;
  EXPECT_EQ(seenAfterJob, before) << "a job that may run on a worker thread must not change the document";
  EXPECT_EQ(bookmarkAfterJob, 2500);
  EXPECT_EQ(file.CutList().GetLength(), 2500);
  EXPECT_EQ(file.Bookmarks().front().position, 2000);
}

TEST_F(EditCommandsTest, AnInvalidSelectionLeavesNoUndoEntry) {
  SVFileGUI* window = NewDocument(StaircaseList(1000, 1));
  SVFile& file = *window->File();
  file.Selection() = SVSelection{100, 900, 3000, 2000, 1};
  const unsigned long index = file.UndoIndexCurrent();
  SVEfReverse reverse(file.CutList(), file.Selection());
  EXPECT_EQ(SVEditCommands::Run(window, reverse), kSVEfResultInvalidSelection);
  EXPECT_EQ(file.UndoIndexCurrent(), index);
  EXPECT_EQ(file.Selection().end, 900);
  EXPECT_EQ(SVEditCommands::Run(nullptr, reverse), kLProcessFailed);
  // An object made over another document's audio is refused.
  LCutListAudio other = StaircaseList(100, 1);
  SVSelection selection{0, 100, 0, 0, 0};
  SVEfReverse stranger(other, selection);
  EXPECT_EQ(SVEditCommands::Run(window, stranger), kLProcessFailed);
}

}  // namespace
