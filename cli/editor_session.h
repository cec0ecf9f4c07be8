#pragma once
// EditorSession: the documents of one run of `sonvale edit`, `shell` or a batch
// job. It reads lines of the command language into command numbers and
// arguments, runs them through the app's dispatcher, prints what they answer
// and turns their results into exit statuses.
#include <string>

#include "app/command_dispatcher.h"
#include "app/main_dialog.h"
#include "app/system_clipboard.h"
#include "cli/command_args.h"
#include "app/command_line.h"
#include "cli/terminal_front_end.h"

class EditorSession {
public:
  explicit EditorSession(bool interactive, bool quietProgress = false);
  EditorSession(const EditorSession&) = delete;
  EditorSession& operator=(const EditorSession&) = delete;

  // Runs every command of a line in order; stops at the first that fails and
  // answers its status (kCommandOK, kCommandCancelled, kCommandFailed).
  [[nodiscard]] int ExecuteLine(const std::string& line);
  // Runs one command, prints its message and answers its status.
  [[nodiscard]] int Run(int id, const SVCommandArgs& args);
  // Opens a file as a new document, made current.
  [[nodiscard]] int OpenDocument(const std::string& path);
  // Saves the current document to path (empty: its own path) in the format named by to.
  [[nodiscard]] int SaveCurrent(const std::string& path, const std::string& to);

  // Opens what recordings of a killed program left, with a note on standard error.
  void RecordingsRecover();
  [[nodiscard]] bool QuitRequested() const { return commands_.QuitRequested(); }
  // Warns on standard error of every document with changes that were not saved.
  void WarnUnsaved();
  [[nodiscard]] SVFile* Current();
  [[nodiscard]] SVWindowManager& Manager() { return main_.Windows(); }
  // The short help text of the command language.
  [[nodiscard]] static const char* HelpText();

private:
  TerminalFrontEnd frontEnd_;
  SVSystemClipboardMemory board_;
  MainDialog main_;
  SVCommandDispatcher commands_;
};
