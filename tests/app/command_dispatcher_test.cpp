// The dispatcher: every command of the table runs once on a document, commits
// under its own label when it changes the audio, and is refused without the
// document it needs; edits give exactly the frames they must and undo exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

#include "app/command_dispatcher.h"
#include "app/file.h"
#include "app/file_gui.h"
#include "audio/audio_fixture.h"
#include "edit_fixture.h"
#include "engine/sound_cache.h"
#include "support/reporting_child.h"
#include "effects/echo.h"
#include "effects/effect_chain_file.h"

namespace {

class CommandDispatcherTest : public EditTest {
protected:
  SVCommandResult Run(int id, SVCommandArgs args = {}) { return commands_->Run(id, args); }
  void SetUp() override {
    EditTest::SetUp();
    // Sound goes to the null device, which runs on a clock of its own.
    ::setenv(kLAudioBackendVariable, "null", 1);
    commands_ = std::make_unique<SVCommandDispatcher>(Dialog());
  }
  void TearDown() override {
    commands_.reset();
    EditTest::TearDown();
  }
  std::unique_ptr<SVCommandDispatcher> commands_;
};

SVCommandArgs Times(LArray<long long> times) { return SVCommandArgs{std::move(times), {}, {}, {}}; }
SVCommandArgs Numbers(LArray<double> numbers) { return SVCommandArgs{{}, std::move(numbers), {}, {}}; }
SVCommandArgs Texts(LArray<std::string> texts) { return SVCommandArgs{{}, {}, std::move(texts), {}}; }

TEST_F(CommandDispatcherTest, EveryCommandRunsUnderItsLabelAndNeedsWhatTheTableSays) {
  const std::string wave = WriteStaircaseWave("in.wav", 4000, 2);
  const std::string chainFile = temp_.File("kette.ecf");
  LSoundProcessMulti echo;
  echo.Append(std::make_unique<LSPEcho>());
  ASSERT_TRUE(LEffectChainSaveFile(echo, chainFile.c_str()));
  struct Case {
    Case(SVCommandArgs a = {}, std::function<void()> b = {}) : args(std::move(a)), before(std::move(b)) {}
    SVCommandArgs args;
    std::function<void()> before;
  };
  const auto edit = [this] { ASSERT_EQ(Run(kSVCmdAmplify, Numbers({-6})).result, kLProcessSuccess); };
  std::map<int, Case> cases = {
      {kSVCmdOpen, {Texts({wave})}},
      {kSVCmdNew, {Numbers({8000, 1})}},
      {kSVCmdDoc, {Numbers({1})}},
      {kSVCmdSelect, {Times({10, 20})}},
      {kSVCmdBand, {Numbers({100, 200})}},
      {kSVCmdCursor, {Times({5})}},
      {kSVCmdPaste, {{}, [this] { ASSERT_EQ(Run(kSVCmdCopy).result, kLProcessSuccess); }}},
      {kSVCmdSilence, {Times({100})}},
      {kSVCmdInsertFile, {Texts({wave})}},
      {kSVCmdChannels, {Numbers({1})}},
      {kSVCmdRepeat, {Numbers({2})}},
      {kSVCmdGenerateTone, {SVCommandArgs{{100}, {440}, {}, {}}}},
      {kSVCmdGenerateNoise, {Times({100})}},
      {kSVCmdGenerateSilence, {Times({100})}},
      {kSVCmdAmplify, {Numbers({-6})}},
      {kSVCmdPan, {Numbers({0.5})}},
      {kSVCmdTempo, {Numbers({150})}},
      {kSVCmdPitch, {Numbers({3, 50})}},
      {kSVCmdSpeed, {Numbers({80})}},
      {kSVCmdVoicePitch, {Numbers({-3})}},
      {kSVCmdPSProfile, {Texts({"0=100", "100=80:2"})}},
      {kSVCmdEffect, {Texts({"echo"})}},
      // A noise profile wants at least one spectrum's worth (2048 frames) of noise.
      {kSVCmdNoiseProfile, {{}, [this] { Run(kSVCmdSelectAll); }}},
      {kSVCmdNoiseReduce, {{}, [this] { Run(kSVCmdSelectAll), Run(kSVCmdNoiseProfile); }}},
      {kSVCmdChain, {Texts({chainFile})}},
      {kSVCmdChainSave, {Texts({temp_.File("neu.ecf")})}},
      {kSVCmdUndo, {{}, edit}},
      {kSVCmdRedo, {{}, [&] { edit(), Run(kSVCmdUndo); }}},
      {kSVCmdRevert, {{}, [&] { Run(kSVCmdSave, Texts({temp_.File("revert.wav")})), edit(); }}},
      {kSVCmdBookmarkAdd, {Texts({"neu"})}},
      {kSVCmdBookmarkDelete, {Texts({"m"})}},
      {kSVCmdRegionAdd, {SVCommandArgs{{10, 20}, {}, {"r"}, {}}}},
      {kSVCmdTag, {Texts({"TITLE=Probe"})}},
      {kSVCmdSave, {Texts({temp_.File("save.wav")})}},
      {kSVCmdSaveAs, {Texts({temp_.File("saveas.flac")})}},
      {kSVCmdProjectSave, {Texts({temp_.File("p.svp")})}},
      {kSVCmdProjectOpen, {Texts({temp_.File("p.svp")})}},
      {kSVCmdRecord, {Times({100})}},
      {kSVCmdMp3Gain, {Numbers({3}), [this] { ASSERT_EQ(Run(kSVCmdSaveAs, Texts({temp_.File("g.mp3")})).result, 0); }}},
  };
  for (const SVCommandInfo& info : SVCommandTable()) {
    SCOPED_TRACE(info.word);
    SVFileGUI* window = NewDocument(StaircaseList(4000, 2));
    SVFile& file = *window->File();
    file.AddBookmark("m", 3500);
    file.Selection() = SVSelection{1000, 3000, 0, 0, 0};
    file.CursorSet(1000);
    const Case& c = cases[info.id];
    if (c.before) c.before();
    EXPECT_TRUE(commands_->IsEnabled(info.id));
    const unsigned long index = file.UndoIndexCurrent();
    const SVCommandResult result = Run(info.id, c.args);
    ASSERT_EQ(result.result, kLProcessSuccess) << result.message;
    // Edits take one step under the table's label; effects and chains under the effect's name.
    const bool undoStep = info.acts != SVCommandActs::kNothing && info.id != kSVCmdUndo && info.id != kSVCmdRedo &&
                          info.id != kSVCmdRevert && info.id != kSVCmdClose;
    if (undoStep && file.UndoIndexCurrent() != index && info.id != kSVCmdEffect && info.id != kSVCmdChain) {
      EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, info.label);
    }
    // Stay below the limit of open files.
    while (Dialog().Windows().FileWindowCount() > 40) Dialog().Windows().FileWindowClose(Dialog().Windows().FileWindowAt(0, 0));
  }
  EXPECT_TRUE(commands_->QuitRequested());

  // Without a document every command that needs one is refused and greyed.
  while (Dialog().Windows().TabCount() > 0) Dialog().Windows().FileWindowClose(Dialog().Windows().FileWindowAt(0, 0));
  for (const SVCommandInfo& info : SVCommandTable()) {
    if (!(info.needs & kSVNeedDocument)) continue;
    SCOPED_TRACE(info.word);
    EXPECT_FALSE(commands_->IsEnabled(info.id));
    const SVCommandResult result = Run(info.id, cases[info.id].args);
    EXPECT_EQ(result.result, kLProcessFailed);
    EXPECT_NE(result.message.find("kein Dokument"), std::string::npos) << result.message;
  }
  EXPECT_EQ(Run(1).result, kLProcessFailed);
  NewDocument(StaircaseList(100, 1));
  EXPECT_EQ(Run(kSVCmdSelect, Times({10})).message, "Aufruf: select ANFANG ENDE") << "a result, never an exception";
}

TEST_F(CommandDispatcherTest, CutPasteDeleteAndReverseGiveExactlyTheFramesTheyMustAndUndoExactly) {
  SVFileGUI* window = NewDocument(StaircaseList(8000, 1));
  SVFile& file = *window->File();
  const std::vector<float> loaded = DocReadAll(file.CutList());
  std::vector<float> model = DocReadAll(file.CutList());
  const auto step = [&](int id, SVCommandArgs args = {}) {
    const SVCommandResult result = Run(id, std::move(args));
    ASSERT_EQ(result.result, kLProcessSuccess) << result.message;
  };
  step(kSVCmdSelect, Times({100, 200}));
  step(kSVCmdCut);
  step(kSVCmdCursor, Times({1000}));
  step(kSVCmdPaste);
  step(kSVCmdSelect, Times({0, 10}));
  step(kSVCmdDelete);
  step(kSVCmdSelect, Times({50, 54}));
  step(kSVCmdReverse);
  const std::vector<float> clip(model.begin() + 100, model.begin() + 200);
  model.erase(model.begin() + 100, model.begin() + 200);
  model.insert(model.begin() + 1000, clip.begin(), clip.end());
  model.erase(model.begin(), model.begin() + 10);
  std::reverse(model.begin() + 50, model.begin() + 54);
  EXPECT_EQ(DocReadAll(file.CutList()), model);

  // A whole-document edit leaves nothing selected; undo back to the start is exact.
  step(kSVCmdSelectNone);
  step(kSVCmdAmplify, Numbers({-6}));
  EXPECT_TRUE(file.Selection().IsEmpty());
  for (int i = 0; i < 5; ++i) step(kSVCmdUndo);
  EXPECT_EQ(DocReadAll(file.CutList()), loaded);
  EXPECT_EQ(file.Selection().start, 100) << "the selection of the first edit comes back with it";
  EXPECT_EQ(Run(kSVCmdUndo).message, "Es gibt nichts rückgängig zu machen.");
  step(kSVCmdRedo);
  EXPECT_EQ(file.CutList().GetLength(), 7900);
  EXPECT_NE(Run(kSVCmdRevert).result, kLProcessSuccess) << "never saved: nothing to go back to";
}

TEST_F(CommandDispatcherTest, PlayAndRecordGoThroughTheDeviceAndAKilledRecordingComesBackUntilSaved) {
  {
    ReportingChild child([&](int reportFd) -> int { RecordUntilKilled(cacheFolder_, reportFd, 5000, 2); });
    ASSERT_TRUE(child.Started());
    long long written = 0;
    ASSERT_TRUE(child.Read(&written, sizeof written));
    ASSERT_TRUE(child.Kill());
  }
  LSoundCache::Instance().FolderSet("");
  LSoundCache::Instance().FolderSet(cacheFolder_.c_str());
  EXPECT_NE(commands_->RecordingsRecover().find("\"Wiederhergestellte Aufnahme vom "), std::string::npos);
  SVFileGUI* recovered = Dialog().Windows().CurrentFileWindow();
  ASSERT_NE(recovered, nullptr);
  EXPECT_EQ(recovered->Title().rfind("Wiederhergestellte Aufnahme vom ", 0), 0u) << recovered->Title();
  EXPECT_EQ(recovered->File()->CutList().GetLength(), 5000);
  EXPECT_TRUE(recovered->File()->IsModified()) << "quitting asks before it goes";
  EXPECT_EQ(commands_->UnsavedTitles(false), "") << "a script's end does not lose it";
  ASSERT_EQ(Run(kSVCmdClose).result, kLProcessSuccess);
  EXPECT_EQ(commands_->RecordingsRecover().empty(), false) << "closed unsaved: offered again";
  ASSERT_EQ(Run(kSVCmdSave, Texts({temp_.File("aufnahme.wav")})).result, kLProcessSuccess);
  Run(kSVCmdClose);
  EXPECT_EQ(commands_->RecordingsRecover(), "") << "saved: offered for the last time";

  SVFileGUI* window = NewDocument(StaircaseList(4000, 1));
  SVFile& file = *window->File();
  commands_->PlayWaitSet(true);
  EXPECT_EQ(Run(kSVCmdPlay, Times({3000, 2000})).result, kLProcessFailed);
  ASSERT_EQ(Run(kSVCmdPlay, Times({0, 441})).result, kLProcessSuccess) << "waits for the end";
  EXPECT_EQ(Run(kSVCmdStop).result, kLProcessSuccess);

  // At the cursor of the document, replacing the selection, as one step to undo.
  std::vector<float> model = DocReadAll(file.CutList());
  const std::vector<float> loaded = model;
  file.Selection() = SVSelection{1000, 3000, 0, 0, 0};
  ASSERT_EQ(Run(kSVCmdRecord, Times({441})).result, kLProcessSuccess);
  model.erase(model.begin() + 1000, model.begin() + 3000);
  model.insert(model.begin() + 1000, 441, 0.0f);  // the null device hears silence
  EXPECT_EQ(DocReadAll(file.CutList()), model);
  ASSERT_EQ(Run(kSVCmdUndo).result, kLProcessSuccess);
  EXPECT_EQ(DocReadAll(file.CutList()), loaded);

  // Without a document it makes one.
  while (Dialog().Windows().TabCount() > 0) Dialog().Windows().FileWindowClose(Dialog().Windows().FileWindowAt(0, 0));
  ASSERT_EQ(Run(kSVCmdRecord, Times({441})).result, kLProcessSuccess);
  ASSERT_NE(Dialog().Windows().CurrentFileWindow(), nullptr);
  EXPECT_EQ(Dialog().Windows().CurrentFileWindow()->File()->CutList().GetLength(), 441);
}

}  // namespace
