#pragma once
// EditorSession: the documents of one run of `sonvale edit`, `shell` or a batch
// job, and the command language that acts on them. Every command that changes
// audio goes through the modification protocol, so it can be undone and a
// failed or cancelled one leaves the document as it was.
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/ef_cut_list_process.h"
#include "app/main_dialog.h"
#include "app/system_clipboard.h"
#include "effects/sound_process_multi.h"
#include "cli/command_args.h"
#include "cli/command_line.h"
#include "cli/terminal_front_end.h"

class EditorSession {
public:
  explicit EditorSession(bool interactive, bool quietProgress = false);
  ~EditorSession();
  EditorSession(const EditorSession&) = delete;
  EditorSession& operator=(const EditorSession&) = delete;

  // Runs every command of a line in order; stops at the first that fails and
  // answers its status (kCommandOK, kCommandCancelled, kCommandFailed).
  [[nodiscard]] int ExecuteLine(const std::string& line);
  // Opens a file as a new document, made current.
  [[nodiscard]] int OpenDocument(const std::string& path);
  // Saves the current document to path (empty: its own path), the format from
  // the name in `to` or the extension, keeping what it can of the format of the
  // document's file; quality is a --quality setting for lossy formats.
  [[nodiscard]] int SaveCurrent(const std::string& path, const std::string& to, const std::string& quality = {});

  [[nodiscard]] bool QuitRequested() const { return quit_; }
  // Warns on standard error of every document with changes that were not saved.
  void WarnUnsaved();
  [[nodiscard]] SVFile* Current();
  [[nodiscard]] SVWindowManager& Manager() { return main_.Windows(); }
  // The short help text of the command language.
  [[nodiscard]] static const char* HelpText();

private:
  using Handler = std::function<int(const CommandWords&)>;
  void Register();
  int Execute(const CommandWords& words);
  int Fail(const std::string& message);
  // The current document, or a message and null.
  SVFile* Need();
  bool Time(const std::string& text, long long* frames);
  // The range an edit acts on: the selection, or the whole document.
  void Range(long long* start, long long* end);
  // Runs a change of the current document under the modification protocol:
  // the change answers a process result; anything but success rolls back.
  int Modify(const char* label, const std::function<LProcessResult(SVFile&)>& change);
  // Runs an edit object on the current document's selection (the whole document
  // when nothing is selected) through the app's edit commands.
  int RunEdit(SVEfCutListProcess& edit);
  // The same, leaving nothing selected afterwards when nothing was selected before.
  int RunEditOnRange(SVEfCutListProcess& edit);
  int RunJob(const char* title, const SVProcessJob& job);
  int InsertList(const char* label, LCutListAudio list, bool replaceSelection);
  int Generate(const CommandWords& w);
  int Process(const CommandWords& w);
  int Effect(const CommandWords& w);
  int Chain(const CommandWords& w);
  int Bookmark(const CommandWords& w);
  int Region(const CommandWords& w);
  int Project(const CommandWords& w);
  int Status();
  int History();
  int Tags(const CommandWords& w);

  TerminalFrontEnd frontEnd_;
  SVSystemClipboardMemory board_;
  MainDialog main_;
  std::map<std::string, Handler> handlers_;
  // The effects applied so far, in order: what "chain save" writes.
  LSoundProcessMulti applied_;
  // The titles of the documents with unsaved changes, quoted and joined.
  std::string UnsavedTitles();
  bool interactive_;
  bool quit_ = false;
  // An interactive quit with unsaved changes was refused once; the next quit goes.
  bool quitWarned_ = false;
};
