#pragma once
// SVCommandDispatcher: the one way in for every user command, toolkit-free. A
// menu entry, a toolbar button, a shortcut and a line of the command language
// all come here with a command number (command_table.h) and arguments already
// parsed. Run does the command on the current document and answers how it
// went with a German message; it prints nothing, and every question or
// progress display goes through the front end. IsEnabled answers for menus.
//
// Main thread only; long work runs in the front end's progress jobs.
#include <map>
#include <memory>
#include <string>

#include "app/command_table.h"
#include "app/ef_cut_list_process.h"
#include "app/main_dialog.h"
#include "audio/audio_device.h"
#include "audio/audio_player.h"
#include "base/array.h"
#include "base/process_interface.h"
#include "effects/noise_reduce.h"
#include "effects/sound_process_multi.h"

// A command's arguments, in the order of the table's row within each kind.
struct SVCommandArgs {
  LArray<long long> times;  // frames at the current document's rate (see Rate)
  LArray<double> numbers;
  LArray<std::string> texts;
  std::map<std::string, std::string> options;  // "--to" -> "mp3"; an option without value maps to ""
};

struct SVCommandResult {
  LProcessResult result = kLProcessSuccess;
  // On failure or cancellation why; on success what the command reports (a
  // listing, where a file went), often nothing.
  std::string message;
  // On success, what the user should know besides: lines, each ending in '\n'.
  std::string warning;
};

class SVCommandDispatcher {
public:
  explicit SVCommandDispatcher(MainDialog& main);
  SVCommandDispatcher(const SVCommandDispatcher&) = delete;
  SVCommandDispatcher& operator=(const SVCommandDispatcher&) = delete;

  [[nodiscard]] SVCommandResult Run(int id, const SVCommandArgs& args = {});
  // Whether the command can run now: a document, a selection, two channels as
  // the table asks, and something to undo, redo, revert or save as a chain.
  [[nodiscard]] bool IsEnabled(int id);
  // The rate that times are counted in: the current document's, else 44100.
  [[nodiscard]] std::uint32_t Rate() const;

  // Play waits for the end before it returns (a script), else it returns at once.
  void PlayWaitSet(bool wait) { playWait_ = wait; }
  // Opens the recordings that a killed program left as documents titled
  // "Wiederhergestellte Aufnahme …"; answers a German note per recording.
  // Each counts as offered once its document is saved or the user quits
  // knowingly without saving; until then the next start offers it again.
  [[nodiscard]] std::string RecordingsRecover();
  // Quit asks once before it drops unsaved changes (an interactive session).
  void QuitConfirmSet(bool confirm) { quitConfirm_ = confirm; }
  [[nodiscard]] bool QuitRequested() const { return quit_; }
  // The titles of the documents with unsaved changes, quoted and joined; empty
  // when none. Recovered recordings only when asked: unsaved they come back.
  [[nodiscard]] std::string UnsavedTitles(bool recovered = true) const;
  [[nodiscard]] MainDialog& Main() const { return main_; }

private:
  SVCommandResult Dispatch(const SVCommandInfo& info, const SVCommandArgs& args);
  [[nodiscard]] SVFileGUI* Window() const;
  // The result of an edit command (0 committed, 1 cancelled, else failed).
  SVCommandResult EditResult(int result, const char* label) const;
  // An edit over the selection, or the whole document when nothing is selected,
  // which then leaves nothing selected, as it found it.
  SVCommandResult EditRange(SVEfCutListProcess& edit, const char* label);
  SVCommandResult Job(const char* title, const SVProcessJob& job) const;
  SVCommandResult Documents(int id, const SVCommandArgs& args);
  SVCommandResult Position(int id, const SVCommandArgs& args);
  SVCommandResult Edit(const SVCommandInfo& info, const SVCommandArgs& args);
  SVCommandResult Generate(const SVCommandInfo& info, const SVCommandArgs& args);
  SVCommandResult Process(const SVCommandInfo& info, const SVCommandArgs& args);
  SVCommandResult Effect(const SVCommandArgs& args);
  SVCommandResult Restoration(const SVCommandInfo& info, const SVCommandArgs& args);
  SVCommandResult Chain(int id, const SVCommandArgs& args);
  SVCommandResult History(int id);
  SVCommandResult Marks(const SVCommandInfo& info, const SVCommandArgs& args);
  SVCommandResult Files(int id, const SVCommandArgs& args);
  SVCommandResult Status() const;
  SVCommandResult Loudness() const;
  SVCommandResult LosslessGain(const SVCommandInfo& info, const SVCommandArgs& args);
  SVCommandResult Play(const SVCommandArgs& args);
  SVCommandResult Record(const SVCommandArgs& args);
  // The backend, made at the first use; nullptr with the message when there is none.
  LAudioBackend* Backend(std::string* message);
  void PlayStop();
  SVCommandResult Quit();

  MainDialog& main_;
  // The effects applied so far, in order: what "chain save" writes.
  LSoundProcessMulti applied_;
  // The noise "rauschprofil" took, for every document of the session (as a
  // clipboard is): its spectrum for the noise reduction and the audio itself,
  // which the multiband gate learns its thresholds from.
  LNoiseProfile noiseProfile_;
  LCutListAudio noiseAudio_;
  bool quitConfirm_ = false;
  // A quit with unsaved changes was refused once; a quit right after it goes.
  bool quitWarned_ = false;
  bool quit_ = false;
  bool playWait_ = false;
  std::unique_ptr<LAudioBackend> backend_;
  std::unique_ptr<LAudioPlayer> player_;
  std::shared_ptr<LAudioMixerInput> playing_;
  // Recovered recordings not yet counted as offered, by their document.
  std::map<SVFileGUI*, unsigned short> recovered_;
};
