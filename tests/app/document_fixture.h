#pragma once
// What the document tests share: a fixture with its own cache, settings and
// temporary folders that checks, when a test ends, that no cache item is left
// counted and no descriptor open; a front end that records what the model told
// it; and audio built in code (a staircase, so a misplaced frame names itself).
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/front_end.h"
#include "app/main_dialog.h"
#include "app/system_clipboard.h"
#include "app/undo_menu.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_source.h"
#include "support/temp_folder.h"

// Records every call; questions get the preset answer, jobs run quietly and may
// be cancelled after a number of checks.
class RecordingFrontEnd final : public SVFrontEnd {
public:
  void Notify(SVFileGUI*, int code) override { notifications.push_back(code); }
  void Refresh(SVFileGUI*) override { ++refreshes; }
  int Ask(const char* title, const char* text, const LArray<LStringLong>& buttons) override {
    questions.push_back({title, text, std::vector<std::string>(buttons.begin(), buttons.end())});
    return answer;
  }
  void Alert(const char* title, const char* text) override { alerts.emplace_back(title, text); }
  void WindowMessage(SVFileGUI*, const char* text) override { windowMessages.emplace_back(text); }
  void StartPlayback(SVFileGUI*) override { ++playbacks; }
  LProcessResult RunProcess(const char* title, const SVProcessJob& job) override;
  void UndoMenuShow(const SVUndoMenuState& state) override { menu = state; }

  struct Question {
    std::string title;
    std::string text;
    std::vector<std::string> buttons;
  };

  int answer = 0;               // what Ask answers
  long cancelAfterChecks = -1;  // >= 0: jobs are cancelled after this many checks
  std::function<void()> afterJob;  // called when a job has ended, before RunProcess returns
  std::vector<int> notifications;
  int refreshes = 0;
  std::vector<Question> questions;
  std::vector<std::pair<std::string, std::string>> alerts;  // title, text
  std::vector<std::string> windowMessages;
  int playbacks = 0;
  std::vector<std::string> processTitles;
  std::string lastError;
  SVUndoMenuState menu;
};

class DocumentTest : public ::testing::Test {
protected:
  void SetUp() override;
  void TearDown() override;

  // A new cache item of the staircase (frame f, channel c) = f + c / 4, as a list.
  [[nodiscard]] static LCutListAudio StaircaseList(long long frames, int channels, std::uint32_t rate = 44100);
  // Writes a float WAVE file of the staircase scaled by 1/65536 (exact in float).
  [[nodiscard]] std::string WriteStaircaseWave(const std::string& name, long long frames, int channels);
  // The ".aud" files in the cache folder.
  [[nodiscard]] int CacheAudioFiles() const;

  MainDialog& Dialog() { return *dialog_; }

  TempFolder temp_;
  std::string cacheFolder_;
  std::string tempFiles_;  // TMPDIR of the code under test
  RecordingFrontEnd frontEnd_;
  SVSystemClipboardMemory board_;

private:
  std::unique_ptr<MainDialog> dialog_;
  std::string savedTmpDir_;
  bool hadTmpDir_ = false;
  int descriptors_ = 0;
};

[[nodiscard]] float DocStaircaseValue(long long frame, int channel);
[[nodiscard]] std::vector<float> DocStaircase(long long frames, int channels);
// A cut list of the samples, through a new cache item.
[[nodiscard]] LCutListAudio DocListOf(std::vector<float> samples, int channels, std::uint32_t rate = 44100);
// Reads a whole source or list, once in one piece and once in blocks of 234
// frames; fails the test when the two differ.
[[nodiscard]] std::vector<float> DocReadAll(LSoundSource source);
[[nodiscard]] std::vector<float> DocReadAll(const LCutListAudio& list);
// One channel of interleaved samples.
[[nodiscard]] std::vector<float> DocChannel(const std::vector<float>& samples, int channels, int channel);
