#include "cli/editor_session.h"

#include <cstdio>

#include "app/file_gui.h"

EditorSession::EditorSession(bool interactive, bool quietProgress)
    : frontEnd_(interactive, quietProgress), main_(frontEnd_, board_), commands_(main_) {
  commands_.QuitConfirmSet(interactive);
  // A script's next command comes after the sound; the prompt comes back at once.
  commands_.PlayWaitSet(!interactive);
}

void EditorSession::RecordingsRecover() { std::fputs(commands_.RecordingsRecover().c_str(), stderr); }

SVFile* EditorSession::Current() {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  return window ? window->File() : nullptr;
}

int EditorSession::ExecuteLine(const std::string& line) {
  std::vector<CommandWords> lines;
  std::string error;
  if (!SplitCommandLine(line, &lines, &error)) {
    PrintError(error);
    return kCommandFailed;
  }
  for (const CommandWords& words : lines) {
    int id = 0;
    SVCommandArgs args;
    if (!ParseCommandWords(words, commands_.Rate(), &id, &args, &error)) {
      PrintError(error);
      return kCommandFailed;
    }
    const int status = Run(id, args);
    if (status != kCommandOK || QuitRequested()) return status;
  }
  return kCommandOK;
}

int EditorSession::Run(int id, const SVCommandArgs& args) {
  const SVCommandResult result = commands_.Run(id, args);
  if (result.result != kLProcessSuccess) {
    PrintError(result.message);
    return result.result;
  }
  if (!result.message.empty()) std::printf("%s\n", result.message.c_str());
  std::fputs(result.warning.c_str(), stderr);
  return kCommandOK;
}

int EditorSession::OpenDocument(const std::string& path) {
  SVCommandArgs args;
  args.texts.push_back(path);
  return Run(kSVCmdOpen, args);
}

int EditorSession::SaveCurrent(const std::string& path, const std::string& to) {
  SVCommandArgs args;
  if (!path.empty()) args.texts.push_back(path);
  if (!to.empty()) args.options["--to"] = to;
  return Run(kSVCmdSave, args);
}

void EditorSession::WarnUnsaved() {
  const std::string titles = commands_.UnsavedTitles(false);
  if (!titles.empty()) {
    std::fprintf(stderr, "Warnung: Die Änderungen an %s wurden nicht gespeichert und gehen verloren.\n", titles.c_str());
  }
}

const char* EditorSession::HelpText() {
  static const std::string text = SVCommandHelpText();
  return text.c_str();
}
